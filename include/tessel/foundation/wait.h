#pragma once

#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>

/// A set of events and semaphores to wait for together. Windows allows at most 64 in one wait, 63 if the wait includes
/// messages.
///
/// The set stores handle values: an added object must outlive its place in the set.
/// A copy has its own array and shares the lock's handle, which each copy closes. Once one copy is destroyed, only
/// destroy the others, and do so before anything else is opened, because the handle value may be reused. Pass by
/// pointer or reference.
/// Threads: any thread may add, delete, copy and wait at the same time; a wait continues with the objects that were in
/// the set when it began. Destroy the set, or assign to it, only when no other thread uses it.
class TESSEL_API CWait {
public:
    /// Creates an empty set.
    CWait();

    /// Copies the handle values and shares the lock's handle.
    /// @param other  set to copy
    CWait(const CWait& other);

    /// Copies the handle values and shares the lock's handle; does not close the lock's previous handle.
    /// @param other  set to copy
    /// @return this object
    CWait& operator=(const CWait& other);

    /// Frees the array; the handles stay open.
    virtual ~CWait();

    /// Adds an object, even if it is in the set already. Out of memory, it adds nothing.
    /// @param object  owned by the caller
    void AddObject(const CEvent& object);

    /// Adds an object, even if it is in the set already. Out of memory, it adds nothing.
    /// @param object  owned by the caller
    void AddObject(const CSemaphore& object);

    /// Removes an object. This works only for the last object of the set. Otherwise the handle stays, overwrites all
    /// that follow it, and the set becomes one shorter.
    /// @param object  an object in the set; any other has no effect
    void DeleteObject(const CEvent& object);

    /// Removes an object, with the same effect on those that follow it.
    /// @param object  an object in the set; any other has no effect
    void DeleteObject(const CSemaphore& object);

    /// Waits until one object is signalled.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: signalled, or the set is empty; 0xFFFFFFFF: time-out, or an abandoned mutex; else the Win32 error
    unsigned long WaitOnAnyObject(unsigned long timeoutMs);

    /// Waits until one object is signalled and identifies it.
    /// @param signalled  receives the handle, owned by its object; null if none was; unchanged for an empty set
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: signalled, or the set is empty; 0xFFFFFFFF: time-out, or an abandoned mutex; else the Win32 error
    unsigned long WaitOnAnyObject(void*& signalled, unsigned long timeoutMs);

    /// Waits until all objects are signalled at the same time. Windows rejects a set that contains an object twice.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: all signalled, or the set is empty; 0xFFFFFFFF: time-out, or an abandoned mutex; else the Win32 error
    unsigned long WaitOnAllObjects(unsigned long timeoutMs);

    /// Waits until one object is signalled or the calling thread has input.
    /// @param signalled  receives the handle; null if there is none
    /// @param message    receives a message removed from the thread's queue, for the caller to dispatch; otherwise
    ///                   cleared
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits indefinitely
    /// @return 0: an object is signalled, a message arrived, a sent message was handled, or the set is empty;
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
