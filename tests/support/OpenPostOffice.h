#pragma once

#include <tessel/messaging/postoffice.h>

/// The process's post office while the object exists; the first member of a fixture.
struct OpenPostOffice {
    OpenPostOffice() { CPostOffice::CreateGlobalPostOffice(); }
    ~OpenPostOffice() { CPostOffice::DestroyGlobalPostOffice(); }
    OpenPostOffice(OpenPostOffice&&) = delete;
};
