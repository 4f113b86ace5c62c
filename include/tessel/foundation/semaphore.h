#pragma once

#include <tessel/foundation/platform.h>

/// Counts permits shared by threads, or by every process that uses the same name.
///
/// It has no owner: any thread may give a permit back. The cross-process lock of the post office is one.
/// Copies share one handle and each copy closes it: pass by pointer or reference.
/// Threads: any thread may call any operation; destroy it only once nobody waits.
/// A constructor never fails visibly: without a handle, waits return 1 and the error is kept.
class TESSEL_API CSemaphore {
public:
    /// Opens the semaphore of that name or, failing that or without a name, creates it.
    /// The error that the last of these calls left is kept (ERROR_ALREADY_EXISTS when another process
    /// created it in between).
    /// @param name     name shared between processes; null for none
    /// @param initial  permits at the start, when it is created
    /// @param maximum  greatest number of permits, when it is created
    CSemaphore(const wchar_t* name, long initial, long maximum);

    /// Opens the semaphore of that name or creates it with no permit and a maximum of 10,000; then sleeps 2 ms.
    /// No error is kept.
    /// @param name    name shared between processes; null for none
    /// @param signal  not 0: a semaphore that this call created is given one permit
    CSemaphore(const wchar_t* name, int signal);

    /// Shares the handle by value.
    CSemaphore(const CSemaphore&) = default;

    /// Shares the handle by value; the handle held before is not closed.
    /// @return this object
    CSemaphore& operator=(const CSemaphore&) = default;

    /// Closes the handle, if there is one.
    virtual ~CSemaphore();

    /// Waits for one permit.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: taken; 1: time-out, abandonment or failure; after a failure the Win32 error is kept
    int WaitOnSemaphore(unsigned long timeoutMs);

    /// Waits for one permit of this or of another handle. After an abandoned one it tries to release a permit of
    /// it and, 1 ms later, waits again: a mutex cannot be released so and is then owned twice.
    /// @param timeoutMs  milliseconds for each wait; 0 polls, INFINITE waits for ever
    /// @param handle     a waitable handle, which stays the caller's; null for this semaphore
    /// @return 0: taken; WAIT_TIMEOUT (258): time-out; else the Win32 error of a failed wait, which is not kept
    int WaitOnSemaphoreA(unsigned long timeoutMs, void* handle);

    /// Gives one permit back.
    /// @return 0: given back; else the Win32 error (ERROR_TOO_MANY_POSTS over the maximum), which is kept too
    int ReleaseSemaphoreA();

    /// Gives several permits back; the sense of the result is the reverse of ReleaseSemaphoreA().
    /// @param count  permits, at least 1
    /// @return 1: given back; 0: failed, nothing changed, the Win32 error is kept
    int ReleaseSemaphore(long count);

    /// The error that was kept last, by any thread: look at it after a failure, or after a construction that gives
    /// the maximum. Success leaves it as it was.
    /// @return a Win32 error
    unsigned long GetKeptError() const;

    /// The semaphore's handle, for the system's own wait functions.
    /// @return the handle, still this object's; null when there is none
    HANDLE GetHandle() const { return m_hSemaphore; }

private:
    friend struct CSemaphoreLayout;

    unsigned long KeepError();

    unsigned long m_ulLastError;
    HANDLE m_hSemaphore;
};

/// A lock for threads or, with a name, for processes: a semaphore with a single permit.
///
/// It has no owner: any thread may unlock it, and a thread that locks it twice waits for itself.
/// For a short lock inside one process the standard library's mutex is quicker; this one can also be
/// waited for together with other objects.
/// Threads: any thread may call any operation; destroy it only once nobody waits.
class TESSEL_API CThreadLock : public CSemaphore {
public:
    /// Opens the lock of that name, or creates it free.
    /// @param name  name shared between processes; null for none
    explicit CThreadLock(const wchar_t* name = nullptr);

    /// Takes the lock.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: locked; 1: time-out or failure (the error is kept)
    int Lock(unsigned long timeoutMs);

    /// Frees the lock.
    /// @return 1: unlocked; 0: it was free already, or failure (the error is kept)
    int Unlock();

    /// Whether somebody holds the lock; it takes and frees it to find out.
    /// @return 1: locked, or the wait failed; 0: free
    int IsLocked();
};
