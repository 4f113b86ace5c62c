#pragma once

#include <tessel/foundation/platform.h>

/// Status code of success. Every other status is a Win32 or Winsock error or a code that the operation names.
inline constexpr unsigned long STATUS_OK = 0;

/// The calling thread's last Win32 error (GetLastError).
/// @return the error code; 0 for none
TESSEL_API unsigned long GetError();
