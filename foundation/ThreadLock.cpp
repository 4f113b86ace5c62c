#include <tessel/foundation/semaphore.h>

static_assert(sizeof(CThreadLock) == sizeof(CSemaphore));

CThreadLock::CThreadLock(const wchar_t* name) : CSemaphore(name, 1, 1) {}

int CThreadLock::Lock(unsigned long timeoutMs) {
    return WaitOnSemaphore(timeoutMs);
}

int CThreadLock::Unlock() {
    return ReleaseSemaphore(1);
}

int CThreadLock::IsLocked() {
    const int result = WaitOnSemaphore(0);
    if (result != 0) return result;
    (void)ReleaseSemaphore(1); // the permit was taken just now, so there is room for it
    return 0;
}
