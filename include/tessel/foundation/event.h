#pragma once

#include <tessel/foundation/platform.h>

/// A flag that threads or processes wait for (CreateEventW).
///
/// Copies share one handle and each copy closes it: pass by pointer or reference.
/// Threads: any thread may call any operation; destroy it only when no thread waits.
class TESSEL_API CEvent {
public:
    /// Opens the event of that name or creates it.
    ///
    /// If an event exists but cannot be opened (access denied, or the name of another kind of object), no new one is
    /// created: the handle is then INVALID_HANDLE_VALUE, which the system takes for the calling process. Never wait on
    /// it without a time-out; check IsOpen() first.
    /// @param name          name shared between processes; null for none
    /// @param manualReset   for a new event: not 0: it stays signalled until ResetEvent(); 0: it wakes one wait
    /// @param initialState  for a new event: not 0: it starts signalled
    /// @param openToAll     for a new event: not 0: everyone may open it (null DACL)
    explicit CEvent(const wchar_t* name = nullptr, int manualReset = 0, int initialState = 0, int openToAll = 0);

    /// Duplicates a handle or, if that fails, creates an unnamed auto-reset event.
    ///
    /// The duplication uses the process id instead of a process handle, so it normally fails and a new event is
    /// created.
    /// @param handle  low 32 bits of an event handle, owned by the caller; 0 for none
    explicit CEvent(unsigned long handle);

    /// Shares the handle by value.
    CEvent(const CEvent&) = default;

    /// Shares the handle by value; the previous handle is not closed.
    /// @return this object
    CEvent& operator=(const CEvent&) = default;

    /// Closes the handle, if there is one.
    virtual ~CEvent();

    /// Waits for the signal.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: signalled; 0xFFFFFFFF: time-out or abandoned; else the Win32 error of the failed wait
    unsigned long WaitOnEvent(unsigned long timeoutMs);

    /// Waits for the signal or for input of the calling thread; waiting messages are removed and dispatched, and a
    /// WM_QUIT among them is lost.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    /// @return 0: signalled; 0xFFFFFFFF: time-out, or messages were handled; else the Win32 error
    unsigned long WaitOnEventMsg(unsigned long timeoutMs);

    /// Whether the event is signalled; asking resets an auto-reset event.
    /// @return 1: it was; 0: it was not, or the wait failed
    int IsSignalled();

    /// Signals the event.
    /// @return STATUS_OK or the Win32 error
    unsigned long SetEvent();

    /// Resets the event.
    /// @return STATUS_OK or the Win32 error
    unsigned long ResetEvent();

    /// Wakes the threads waiting at this moment and resets the event. Windows may miss a waiter; prefer SetEvent().
    /// @return STATUS_OK or the Win32 error
    unsigned long PulseEvent();

    /// Whether the event is usable.
    /// @return true: it has a handle; false: it could be neither opened nor created
    bool IsOpen() const { return m_hEvent != nullptr && m_hEvent != INVALID_HANDLE_VALUE; }

    /// The event's handle, for the system's own wait functions.
    /// @return the handle, owned by this object; null for none, INVALID_HANDLE_VALUE after a failed open
    HANDLE GetHandle() const { return m_hEvent; }

private:
    friend struct CEventLayout;

    HANDLE m_hEvent;
};
