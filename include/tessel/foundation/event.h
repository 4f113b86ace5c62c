#pragma once

#include <tessel/foundation/platform.h>

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
