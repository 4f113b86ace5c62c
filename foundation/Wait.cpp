#include <foundation/Permit.h>
#include <foundation/WaitResult.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/foundation/wait.h>

#include <algorithm>
#include <memory>
#include <new>

namespace {

using tessel::kNotSignalled;

/// The handles at the start of a wait. As many as the system can wait for need no allocation.
class HandleCopy {
public:
    HandleCopy(CThreadLock& lock, const unsigned long& count, HANDLE* const& handles) {
        // Not held if a destroyed copy has closed the lock; copy the handles even then.
        const tessel::Permit locked(lock, INFINITE);
        m_count = count;
        if (m_count > MAXIMUM_WAIT_OBJECTS) m_large.reset(new (std::nothrow) HANDLE[m_count]);
        if (Handles() != nullptr) std::copy_n(handles, m_count, Handles());
    }
    bool Failed() const { return m_count > MAXIMUM_WAIT_OBJECTS && m_large == nullptr; }
    unsigned long Count() const { return m_count; }
    HANDLE* Handles() { return m_count > MAXIMUM_WAIT_OBJECTS ? m_large.get() : m_small; }

private:
    unsigned long m_count;
    HANDLE m_small[MAXIMUM_WAIT_OBJECTS];
    std::unique_ptr<HANDLE[]> m_large;
};

HANDLE* CopyOf(const HANDLE* handles, unsigned long count, unsigned long room) {
    HANDLE* const copy = room == 0 ? nullptr : new (std::nothrow) HANDLE[room];
    if (copy != nullptr) std::copy_n(handles, count, copy);
    return copy;
}

DWORD WaitFor(HandleCopy& objects, unsigned long timeoutMs, bool waitAll) {
    if (objects.Count() == 1) return WaitForSingleObjectEx(objects.Handles()[0], timeoutMs, FALSE);
    return WaitForMultipleObjectsEx(objects.Count(), objects.Handles(), waitAll, timeoutMs, FALSE);
}

} // namespace

CWait::CWait() : m_ulSpare(0), m_ulCount(0), m_pHandles(nullptr), m_Lock(nullptr) {}

// GUARD-05: each copy has its own array; a shared one would be freed twice.
CWait::CWait(const CWait& other) : m_ulSpare(other.m_ulSpare), m_ulCount(0), m_pHandles(nullptr), m_Lock(other.m_Lock) {
    CopyHandles(other);
}

CWait& CWait::operator=(const CWait& other) {
    if (this == &other) return *this;
    CopyHandles(other);
    m_ulSpare = other.m_ulSpare;
    m_Lock = other.m_Lock;
    return *this;
}

CWait::~CWait() {
    delete[] m_pHandles;
}

void CWait::CopyHandles(const CWait& other) {
    const tessel::Permit locked(other.m_Lock, INFINITE);
    HANDLE* const copy = CopyOf(other.m_pHandles, other.m_ulCount, other.m_ulCount);
    delete[] m_pHandles;
    m_pHandles = copy;
    m_ulCount = copy == nullptr ? 0 : other.m_ulCount;
}

void CWait::AddObject(const CEvent& object) {
    Add(object.GetHandle());
}

void CWait::AddObject(const CSemaphore& object) {
    Add(object.GetHandle());
}

void CWait::DeleteObject(const CEvent& object) {
    Delete(object.GetHandle());
}

void CWait::DeleteObject(const CSemaphore& object) {
    Delete(object.GetHandle());
}

void CWait::Add(HANDLE handle) {
    const tessel::Permit locked(m_Lock, INFINITE);
    HANDLE* const longer = CopyOf(m_pHandles, m_ulCount, m_ulCount + 1);
    if (longer == nullptr) return;
    longer[m_ulCount] = handle;
    delete[] m_pHandles;
    m_pHandles = longer;
    m_ulCount += 1;
}

void CWait::Delete(HANDLE handle) {
    const tessel::Permit locked(m_Lock, INFINITE);
    HANDLE* const end = m_pHandles + m_ulCount;
    HANDLE* const found = std::find(m_pHandles, end, handle);
    if (found == end) return;
    m_ulCount -= 1;
    // ODD-09: the copy overwrites itself upwards, so the removed handle stays and its successors are lost.
    for (HANDLE* entry = found; entry != end - 1; ++entry) entry[1] = entry[0];
    if (m_ulCount > 0) return;
    delete[] m_pHandles;
    m_pHandles = nullptr;
}

unsigned long CWait::WaitOnObjects(void*& signalled, unsigned long timeoutMs, bool waitAll) {
    HandleCopy objects(m_Lock, m_ulCount, m_pHandles);
    if (objects.Count() == 0) return 0;
    const DWORD result = objects.Failed() ? WAIT_FAILED : WaitFor(objects, timeoutMs, waitAll);
    const DWORD error = objects.Failed() ? ERROR_NOT_ENOUGH_MEMORY : GetLastError();
    if (result < objects.Count()) {
        if (!waitAll) signalled = objects.Handles()[result];
        return 0;
    }
    signalled = nullptr;
    return result == WAIT_FAILED ? error : kNotSignalled;
}

unsigned long CWait::WaitOnAnyObject(unsigned long timeoutMs) {
    void* discarded = nullptr;
    return WaitOnObjects(discarded, timeoutMs, false);
}

unsigned long CWait::WaitOnAnyObject(void*& signalled, unsigned long timeoutMs) {
    return WaitOnObjects(signalled, timeoutMs, false);
}

unsigned long CWait::WaitOnAllObjects(unsigned long timeoutMs) {
    void* discarded = nullptr;
    return WaitOnObjects(discarded, timeoutMs, true);
}

unsigned long CWait::WaitOnAnyObjectOrMsg(void*& signalled, MSG& message, unsigned long timeoutMs) {
    signalled = nullptr;
    message = MSG{};
    HandleCopy objects(m_Lock, m_ulCount, m_pHandles);
    if (objects.Count() == 0) return 0;
    if (objects.Failed()) return ERROR_NOT_ENOUGH_MEMORY;
    const DWORD result =
        MsgWaitForMultipleObjectsEx(objects.Count(), objects.Handles(), timeoutMs, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    if (result == WAIT_FAILED) return GetLastError();
    if (result < objects.Count()) {
        signalled = objects.Handles()[result];
        return 0;
    }
    if (result != objects.Count()) return kNotSignalled;
    (void)PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); // nothing to remove if it was a sent message
    return 0;
}
