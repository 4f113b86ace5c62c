#pragma once

#include <tessel/platform.h>

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

/// A flag that threads or processes wait for (CreateEventW).
///
/// Copies share one handle and each copy closes it: pass by pointer or reference.
/// Threads: any thread may call any operation; destroy it only once nobody waits.
class TESSEL_API CEvent {
public:
    /// Opens the event of that name or creates it.
    ///
    /// An event that exists but cannot be opened (access denied, a name of another kind) is not
    /// created anew: the handle is then INVALID_HANDLE_VALUE and waiting reports what the system says of
    /// it. The system takes that value for the calling process itself, so never wait on it without a
    /// time-out; check IsOpen() first.
    /// @param name          name shared between processes; null for none
    /// @param manualReset   when it is created, not 0: it stays signalled until ResetEvent(), else it wakes one wait
    /// @param initialState  when it is created, not 0: it starts signalled
    /// @param openToAll     not 0: everyone may open a newly created one (null DACL)
    explicit CEvent(const wchar_t* name = nullptr, int manualReset = 0, int initialState = 0, int openToAll = 0);

    /// Duplicates a handle or, where that fails, creates an unnamed auto-reset event.
    ///
    /// The duplication names the process by its id instead of a handle, so it fails as a rule and a
    /// fresh event is what to expect.
    /// @param handle  low 32 bits of an event handle, which stays the caller's; 0 for none
    explicit CEvent(unsigned long handle);

    /// Shares the handle by value.
    CEvent(const CEvent&) = default;

    /// Shares the handle by value; the handle held before is not closed.
    /// @return this object
    CEvent& operator=(const CEvent&) = default;

    /// Closes the handle, if there is one.
    virtual ~CEvent();

    /// Waits for the signal.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: signalled; 0xFFFFFFFF: time-out or abandoned; else the Win32 error of the failed wait
    unsigned long WaitOnEvent(unsigned long timeoutMs);

    /// Waits for the signal or for input of the calling thread; waiting messages are removed and dispatched,
    /// a WM_QUIT among them is lost.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: signalled; 0xFFFFFFFF: time-out, or messages were handled; else the Win32 error
    unsigned long WaitOnEventMsg(unsigned long timeoutMs);

    /// Whether the event is signalled; on an auto-reset event the question takes the signal.
    /// @return 1: it was; 0: it was not, or the wait failed
    int IsSignalled();

    /// Signals the event.
    /// @return STATUS_OK or the Win32 error
    unsigned long SetEvent();

    /// Takes the signal back.
    /// @return STATUS_OK or the Win32 error
    unsigned long ResetEvent();

    /// Wakes who waits at this moment and takes the signal back. Windows may miss a waiter; prefer SetEvent().
    /// @return STATUS_OK or the Win32 error
    unsigned long PulseEvent();

    /// Whether the event can be used.
    /// @return true: it has a handle; false: it could be neither opened nor created
    bool IsOpen() const { return m_hEvent != nullptr && m_hEvent != INVALID_HANDLE_VALUE; }

    /// The event's handle, for the system's own wait functions.
    /// @return the handle, still this object's; null for none, INVALID_HANDLE_VALUE after a failed open
    HANDLE GetHandle() const { return m_hEvent; }

private:
    friend struct CEventLayout;

    HANDLE m_hEvent;
};

/// A set of events and semaphores to wait for together, 64 at most in one wait (63 when messages
/// are waited for too): Windows refuses more.
///
/// The set holds handle values: an object that was added must outlive its place in the set.
/// A copy has an array of its own and shares the lock's handle, which each copy closes: once one of them is
/// destroyed the others must only be destroyed, before anything else is opened, as the handle may be another object's
/// by then. Pass by pointer or reference.
/// Threads: any thread may add, delete, copy and wait at the same time; a wait goes on with the objects that were
/// in the set when it began. Destroy it, and assign to it, only when nobody uses it.
class TESSEL_API CWait {
public:
    /// Makes an empty set.
    CWait();

    /// Copies the handle values and shares the lock's handle.
    /// @param other  set to copy
    CWait(const CWait& other);

    /// Copies the handle values and shares the lock's handle; the lock's handle held before is not closed.
    /// @param other  set to copy
    /// @return this object
    CWait& operator=(const CWait& other);

    /// Forgets the handles, which stay open.
    virtual ~CWait();

    /// Adds an object; one that is in the set already is added once more. Without memory nothing is added.
    /// @param object  stays the caller's
    void AddObject(const CEvent& object);

    /// Adds an object; one that is in the set already is added once more. Without memory nothing is added.
    /// @param object  stays the caller's
    void AddObject(const CSemaphore& object);

    /// Removes an object. Only the last of the set is removed cleanly: in front of others the handle itself
    /// stays, and what followed it is overwritten with it, while the set gets shorter by one.
    /// @param object  one that was added; any other changes nothing
    void DeleteObject(const CEvent& object);

    /// Removes an object, with the same effect on those behind it.
    /// @param object  one that was added; any other changes nothing
    void DeleteObject(const CSemaphore& object);

    /// Waits until one object is signalled.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: one is, or the set is empty; 0xFFFFFFFF: time-out, or an abandoned mutex; else the Win32 error
    unsigned long WaitOnAnyObject(unsigned long timeoutMs);

    /// Waits until one object is signalled and says which.
    /// @param signalled  receives the handle, which stays its object's; null when none was; unchanged for an empty set
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: one is, or the set is empty; 0xFFFFFFFF: time-out, or an abandoned mutex; else the Win32 error
    unsigned long WaitOnAnyObject(void*& signalled, unsigned long timeoutMs);

    /// Waits until all objects are signalled at the same time. Windows refuses a set that holds one twice.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: all are, or the set is empty; 0xFFFFFFFF: time-out, or an abandoned mutex; else the Win32 error
    unsigned long WaitOnAllObjects(unsigned long timeoutMs);

    /// Waits until one object is signalled or the calling thread has input.
    /// @param signalled  receives the handle; null when there is none
    /// @param message    receives a message removed from the thread's queue, which the caller dispatches; else cleared
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: an object or a message came, or a sent message was handled meanwhile, or the set is empty;
    ///         0xFFFFFFFF: time-out, or an abandoned mutex; else the Win32 error
    unsigned long WaitOnAnyObjectOrMsg(void*& signalled, MSG& message, unsigned long timeoutMs);

private:
    friend struct CWaitLayout;

    void CopyHandles(const CWait& other);
    void Add(HANDLE handle);
    void Delete(HANDLE handle);
    unsigned long WaitOnObjects(void*& signalled, unsigned long timeoutMs, bool waitAll);

    unsigned long m_ulSpare;
    unsigned long m_ulCount;
    HANDLE* m_pHandles;
    mutable CThreadLock m_Lock;
};
