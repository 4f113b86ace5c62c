#pragma once

#include <tessel/foundation/platform.h>

/// A flag that threads or processes can wait for (CreateEventW).
///
/// Copies share one handle and each copy closes it: pass by pointer or reference.
/// Threads: any thread may call any operation; destroy it only when no thread is waiting.
class TESSEL_API CEvent {
public:
    /// Opens the named event or creates it.
    ///
    /// If the event exists but cannot be opened (access denied, or the name belongs to another kind of object), none
    /// is created: the handle is then INVALID_HANDLE_VALUE, and the result of a wait is undefined. Windows interprets
    /// that value as the calling process, so never wait on it without a time-out; check IsOpen() first.
    /// @param name          name shared between processes; null for none
    /// @param manualReset   if it is created, not 0: it stays signalled until ResetEvent(); 0: it ends one wait
    /// @param initialState  if it is created, not 0: it starts signalled
    /// @param openToAll     not 0: if it is created, every user may open it (null DACL)
    explicit CEvent(const wchar_t* name = nullptr, int manualReset = 0, int initialState = 0, int openToAll = 0);

    /// Duplicates a handle; if that fails, creates an unnamed auto-reset event.
    ///
    /// The duplication passes the process id in place of a process handle, so it usually fails: expect a new event.
    /// @param handle  low 32 bits of an event handle, owned by the caller; 0 for none
    explicit CEvent(unsigned long handle);

    /// Shares the handle by value.
    CEvent(const CEvent&) = default;

    /// Shares the handle by value; does not close the previous handle.
    /// @return this object
    CEvent& operator=(const CEvent&) = default;

    /// Closes the handle, if there is one.
    virtual ~CEvent();

    /// Waits for the signal.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: signalled; 0xFFFFFFFF: time-out or abandoned; else the Win32 error of the failed wait
    unsigned long WaitOnEvent(unsigned long timeoutMs);

    /// Waits for the signal or for input to the calling thread. Removes and dispatches all pending messages; a WM_QUIT
    /// among them is lost.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: signalled; 0xFFFFFFFF: time-out, or messages were dispatched; else the Win32 error
    unsigned long WaitOnEventMsg(unsigned long timeoutMs);

    /// Whether the event is signalled. This resets an auto-reset event.
    /// @return 1: signalled; 0: not signalled, or the wait failed
    int IsSignalled();

    /// Signals the event.
    /// @return STATUS_OK or the Win32 error
    unsigned long SetEvent();

    /// Resets the event.
    /// @return STATUS_OK or the Win32 error
    unsigned long ResetEvent();

    /// Wakes the threads that are waiting now and resets the event. Windows may miss a waiter; prefer SetEvent().
    /// @return STATUS_OK or the Win32 error
    unsigned long PulseEvent();

    /// Whether the event is usable.
    /// @return true: it has a handle; false: it could be neither opened nor created
    bool IsOpen() const { return m_hEvent != nullptr && m_hEvent != INVALID_HANDLE_VALUE; }

    /// The event's handle, for the system's wait functions.
    /// @return the handle, owned by this object; null: none; INVALID_HANDLE_VALUE: it could not be opened
    HANDLE GetHandle() const { return m_hEvent; }

private:
    friend struct CEventLayout;

    HANDLE m_hEvent;
};
