#include "ImportPatch.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

template <class T> T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + offset);
}

IMAGE_IMPORT_DESCRIPTOR* Imports(HMODULE module) {
    const auto* const dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* const nt = At<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
    const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    return At<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress);
}

void** FindSlot(HMODULE module, const char* function) {
    for (auto* import = Imports(module); import->Name != 0; ++import) {
        auto* name = At<IMAGE_THUNK_DATA>(module, import->OriginalFirstThunk);
        auto* slot = At<void*>(module, import->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const auto* const entry = At<IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(name->u1.AddressOfData));
            if (std::strcmp(reinterpret_cast<const char*>(entry->Name), function) == 0) return slot;
        }
    }
    std::fprintf(stderr, "%s is not imported: nothing to patch\n", function);
    std::abort();
}

void Write(void** slot, void* value) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof *slot, protection, &protection);
}

} // namespace

ImportPatch::ImportPatch(Stub stub)
    : m_stub(std::move(stub)), m_slot(FindSlot(GetModuleHandleW(L"Tessel.dll"), m_stub.name.c_str())),
      m_original(*m_slot) {
    Write(m_slot, m_stub.function);
}

ImportPatch::~ImportPatch() {
    Write(m_slot, m_original);
}
