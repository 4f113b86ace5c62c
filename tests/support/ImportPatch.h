#pragma once

#include <windows.h>

/// Replaces a Windows function in a module's import table for as long as the object lives. Calls from
/// elsewhere, the test's own among them, reach the real function.
class ImportPatch {
public:
    template <class Function>
    ImportPatch(const wchar_t* module, const char* name, Function* replacement)
        : ImportPatch(module, name, reinterpret_cast<void*>(replacement)) {}
    ImportPatch(const wchar_t* module, const char* name, void* replacement);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

private:
    void** m_slot;
    void* m_original;
};
