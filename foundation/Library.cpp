#include <foundation/Library.h>
#include <tessel/status.h>

namespace {

HINSTANCE ownModule = nullptr;
HINSTANCE stringModule = nullptr;

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
    if (stringModule != nullptr) return STATUS_STRING_MODULE_SET;
    stringModule = module;
    return STATUS_OK;
}

int TesselLoadString(unsigned int id, wchar_t* buffer, int sizeInChars) {
    if (buffer == nullptr || sizeInChars < 1) return 0;
    buffer[0] = L'\0';
    if (stringModule == nullptr || id == 0) return 0;
    return LoadStringW(stringModule, id, buffer, sizeInChars);
}
