#include <windows.h>

/// Signals that it is running, and returns when asked to.
extern "C" __declspec(dllexport) void ManagerMain(HINSTANCE module) {
    const HANDLE started = OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, L"Tessel test manager started");
    const HANDLE stop = OpenEventW(EVENT_ALL_ACCESS, FALSE, L"Tessel test manager stop");
    if (module != nullptr) ReleaseSemaphore(started, 1, nullptr);
    WaitForSingleObject(stop, INFINITE);
    CloseHandle(stop);
    CloseHandle(started);
}
