#include <foundation/Library.h>
#include <tessel/status.h>

#include <atomic>

namespace {

std::atomic<HINSTANCE> ownModule = nullptr;
std::atomic<HINSTANCE> stringModule = nullptr;

} // namespace

namespace tessel {

void KeepModule(HINSTANCE module, bool attaches) {
    ownModule = module;
    if (attaches) (void)TesselSetStringModule(module); // an earlier module stays, which is as good
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
