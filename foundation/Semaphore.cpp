#include <foundation/SharedField.h>
#include <tessel/foundation/semaphore.h>

namespace {

constexpr long kSignalMaximum = 10000;
constexpr DWORD kOpenPauseMs = 2;
constexpr DWORD kRetryPauseMs = 1;

} // namespace

CSemaphore::CSemaphore(const wchar_t* name, long initial, long maximum) : m_ulLastError(0), m_hSemaphore(nullptr) {
    if (name != nullptr) m_hSemaphore = OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, TRUE, name);
    if (m_hSemaphore == nullptr) m_hSemaphore = CreateSemaphoreW(nullptr, initial, maximum, name);
    m_ulLastError = GetLastError();
}

CSemaphore::CSemaphore(const wchar_t* name, int signal)
    : m_ulLastError(0), m_hSemaphore(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, TRUE, name)) {
    if (m_hSemaphore == nullptr) {
        m_hSemaphore = CreateSemaphoreW(nullptr, 0, kSignalMaximum, name);
        const bool created = m_hSemaphore != nullptr && GetLastError() != ERROR_ALREADY_EXISTS;
        if (created && signal != 0) (void)::ReleaseSemaphore(m_hSemaphore, 1, nullptr); // below the maximum
    }
    Sleep(kOpenPauseMs);
}

CSemaphore::~CSemaphore() {
    if (m_hSemaphore != nullptr) (void)CloseHandle(m_hSemaphore); // a copy may have closed it
}

unsigned long CSemaphore::GetKeptError() const {
    return tessel::LoadShared(m_ulLastError);
}

unsigned long CSemaphore::KeepError() {
    const unsigned long error = GetLastError();
    tessel::StoreShared(m_ulLastError, error);
    return error;
}

int CSemaphore::WaitOnSemaphore(unsigned long timeoutMs) {
    const DWORD result = WaitForSingleObjectEx(m_hSemaphore, timeoutMs, FALSE);
    if (result == WAIT_FAILED) (void)KeepError();
    return result == WAIT_OBJECT_0 ? 0 : 1;
}

int CSemaphore::WaitOnSemaphoreA(unsigned long timeoutMs, void* handle) {
    if (handle == nullptr) handle = m_hSemaphore;
    for (;;) {
        const DWORD result = WaitForSingleObjectEx(handle, timeoutMs, FALSE);
        if (result == WAIT_FAILED) return static_cast<int>(GetLastError());
        if (result != WAIT_ABANDONED) return static_cast<int>(result);
        (void)::ReleaseSemaphore(handle, 1, nullptr); // fails on a mutex, which the next wait acquires again
        Sleep(kRetryPauseMs);
    }
}

int CSemaphore::ReleaseSemaphoreA() {
    if (::ReleaseSemaphore(m_hSemaphore, 1, nullptr)) return 0;
    return static_cast<int>(KeepError());
}

// ODD-05: returns 1 for success, ReleaseSemaphoreA returns 0.
int CSemaphore::ReleaseSemaphore(long count) {
    if (::ReleaseSemaphore(m_hSemaphore, count, nullptr)) return 1;
    (void)KeepError();
    return 0;
}

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
    (void)ReleaseSemaphore(1); // cannot fail: the permit was just acquired
    return 0;
}
