#pragma once

#include <tessel/foundation/platform.h>

/// Counts permits that threads share, or all processes that use the same name.
///
/// It has no owner: any thread may release a permit. The cross-process lock of the post office is a CSemaphore.
/// Copies share one handle and each copy closes it: pass by pointer or reference.
/// Threads: any thread may call any operation; destroy it only when no thread is waiting.
/// A constructor has no result: if it fails, there is no handle, waits return 1 and the error is kept.
class TESSEL_API CSemaphore {
public:
    /// Opens the named semaphore. If that fails or there is no name, creates one.
    /// Keeps the last error of these calls (ERROR_ALREADY_EXISTS if another process created it in between).
    /// @param name     name shared between processes; null for none
    /// @param initial  initial permits, if it is created
    /// @param maximum  maximum number of permits, if it is created
    CSemaphore(const wchar_t* name, long initial, long maximum);

    /// Opens the named semaphore or creates it with no permit and a maximum of 10,000; then sleeps 2 ms.
    /// Keeps no error.
    /// @param name    name shared between processes; null for none
    /// @param signal  not 0: adds one permit if this call created the semaphore
    CSemaphore(const wchar_t* name, int signal);

    /// Shares the handle by value.
    CSemaphore(const CSemaphore&) = default;

    /// Shares the handle by value; does not close the previous handle.
    /// @return this object
    CSemaphore& operator=(const CSemaphore&) = default;

    /// Closes the handle, if there is one.
    virtual ~CSemaphore();

    /// Waits for one permit.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: taken; 1: time-out, abandonment or failure; after a failure the Win32 error is kept
    int WaitOnSemaphore(unsigned long timeoutMs);

    /// Waits for one permit of this semaphore or of another handle. If the wait finds the handle abandoned, it tries to
    /// release a permit and waits again 1 ms later. That release fails on a mutex, which the caller then owns twice.
    /// @param timeoutMs  milliseconds per wait; 0 polls, INFINITE waits indefinitely
    /// @param handle     a waitable handle, owned by the caller; null: this semaphore
    /// @return 0: taken; WAIT_TIMEOUT (258): time-out; else the Win32 error of the failed wait, which is not kept
    int WaitOnSemaphoreA(unsigned long timeoutMs, void* handle);

    /// Releases one permit.
    /// @return 0: released; else the Win32 error (ERROR_TOO_MANY_POSTS above the maximum), which is also kept
    int ReleaseSemaphoreA();

    /// Releases several permits. The meaning of the result is the reverse of ReleaseSemaphoreA().
    /// @param count  permits, at least 1
    /// @return 1: released; 0: failed, nothing changed, the Win32 error is kept
    int ReleaseSemaphore(long count);

    /// The most recently kept error of any thread. Read it after a failure, or after the constructor that takes the
    /// maximum; success does not change it.
    /// @return a Win32 error
    unsigned long GetKeptError() const;

    /// The semaphore's handle, for the system's wait functions.
    /// @return the handle, owned by this object; null if there is none
    HANDLE GetHandle() const { return m_hSemaphore; }

private:
    friend struct CSemaphoreLayout;

    unsigned long KeepError();

    unsigned long m_ulLastError;
    HANDLE m_hSemaphore;
};

/// A lock for threads or, with a name, for processes: a semaphore with a single permit.
///
/// It has no owner: any thread may unlock it, and locking it twice deadlocks. Within one process std::mutex is faster;
/// this lock can also be waited for together with other objects.
/// Threads: any thread may call any operation; destroy it only when no thread is waiting.
class TESSEL_API CThreadLock : public CSemaphore {
public:
    /// Opens the named lock, or creates it unlocked.
    /// @param name  name shared between processes; null for none
    explicit CThreadLock(const wchar_t* name = nullptr);

    /// Acquires the lock.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: locked; 1: time-out or failure (the error is kept)
    int Lock(unsigned long timeoutMs);

    /// Releases the lock.
    /// @return 1: unlocked; 0: it was not locked, or failure (the error is kept)
    int Unlock();

    /// Whether the lock is held; acquires and releases it to find out.
    /// @return 1: held, or the wait failed; 0: free
    int IsLocked();
};
