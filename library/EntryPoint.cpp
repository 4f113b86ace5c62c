#include <foundation/Module.h>
#include <messaging/office/Post.h>

/// Called by the system under its loader lock, so it must not wait.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_THREAD_DETACH) CPost::OnThreadEnd();
    tessel::KeepModule(module, reason == DLL_PROCESS_ATTACH);
    return TRUE;
}
