#include <foundation/Module.h>
#include <tessel/foundation/module.h>
#include <tessel/foundation/status.h>

#include <atomic>

namespace {

std::atomic<HINSTANCE> ownModule = nullptr;
std::atomic<HINSTANCE> stringModule = nullptr;

} // namespace

namespace tessel {

void KeepModule(HINSTANCE module, bool attaches) {
    ownModule = module;
    if (attaches) (void)TesselSetStringModule(module); // a module that is set already stays
}

} // namespace tessel

unsigned long GetError() {
    return GetLastError();
}

HINSTANCE TesselGetModuleInstance() {
    return ownModule;
}

unsigned long TesselSetStringModule(HINSTANCE module) {
    HINSTANCE none = nullptr;
    return stringModule.compare_exchange_strong(none, module) ? STATUS_OK : STATUS_STRING_MODULE_SET;
}

int TesselLoadString(unsigned int id, wchar_t* buffer, int sizeInChars) {
    if (buffer == nullptr || sizeInChars < 1) return 0;
    buffer[0] = L'\0';
    if (stringModule == nullptr || id == 0) return 0;
    return LoadStringW(stringModule, id, buffer, sizeInChars);
}

// ODD-29: loads modules despite its name.
HINSTANCE LoadImageW(const wchar_t* name) {
    return LoadLibraryW(name);
}

UINT UnLoadImage(HINSTANCE module) {
    return static_cast<UINT>(FreeLibrary(module));
}

HINSTANCE InitRichEditControls() {
    return LoadLibraryW(L"Riched20.dll");
}

int ReleaseRichEditControls(HINSTANCE module) {
    return FreeLibrary(module);
}
