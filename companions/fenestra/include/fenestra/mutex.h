#pragma once

#include <fenestra/export.h>

/// Base class of the locks: one kernel object and the wait for it.
///
/// Not copyable: each object owns one handle and closes it.
class FENESTRA_API CSyncObject {
public:
    CSyncObject(const CSyncObject&) = delete;
    CSyncObject& operator=(const CSyncObject&) = delete;

    /// Closes the handle.
    virtual ~CSyncObject();

    /// Waits for the object. Any thread.
    /// @param timeoutMs  milliseconds; INFINITE waits indefinitely
    /// @return true: taken, possibly from an owner that ended without releasing it;
    ///         false: time-out or failure (GetLastError())
    virtual bool Lock(unsigned long timeoutMs = INFINITE);

    /// Releases the object.
    /// @return true: released; false: failure (GetLastError())
    virtual bool Unlock() = 0;

    /// The kernel object, still owned by this one; null when it could not be created.
    /// @return the handle
    HANDLE GetHandle() const { return m_hObject; }

protected:
    /// Takes over a kernel object.
    /// @param object  handle to own; may be null
    explicit CSyncObject(HANDLE object) : m_hObject(object) {}

private:
    HANDLE m_hObject;
};

/// A lock with an owner, which the owning thread may take repeatedly (CreateMutexW).
class FENESTRA_API CMutex : public CSyncObject {
public:
    /// Creates the mutex, or opens the one of that name.
    /// @param initiallyOwned  true: the calling thread owns a new mutex from the start
    /// @param name            name shared between processes; null for none
    explicit CMutex(bool initiallyOwned = false, const wchar_t* name = nullptr);

    /// Releases the mutex; only its owner can.
    /// @return true: released; false: the calling thread is not its owner
    bool Unlock() override;
};
