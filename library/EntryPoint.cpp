#include <foundation/Module.h>

/// Called by the system under its loader lock, so it must not wait.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    tessel::KeepModule(module, reason == DLL_PROCESS_ATTACH);
    return TRUE;
}
