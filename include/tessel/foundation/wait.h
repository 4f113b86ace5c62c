#pragma once

#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>

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
