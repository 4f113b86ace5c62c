#pragma once

#include <messaging/office/Journal.h>
#include <messaging/office/RecoverableLock.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/postoffice.h>

#include <cstddef>

/// The one post office of the process: the lock, the mapped region and its journal. CPostOffice is its front.
///
/// Owns the semaphore, the mappings and the views. The addresses are null while the region is unmapped.
class CPost {
public:
    /// Opens the region or, under the lock, creates it.
    CPost();
    ~CPost();
    CPost(const CPost&) = delete;
    CPost& operator=(const CPost&) = delete;

    /// Acquires the lock. What a holder was changing when it ended is repaired first.
    /// @param timeoutMs  milliseconds
    /// @return whether it is held
    bool Lock(unsigned long timeoutMs);

    /// Releases the lock; then reports if it had been left by a holder that ended.
    void Unlock();

    /// Leaves the lock to the process if the calling thread, which ends, holds it. For the entry point: does not wait.
    static void OnThreadEnd();

    /// The journal; parts of it may be missing.
    tessel::Journal& GetJournal() { return m_journal; }

private:
    friend class CPostOffice;
    friend struct CPostLayout;

    bool OpenRegion();
    bool CreateRegion();
    void Initialize();
    bool IsUnfinished() const;
    bool MapRegion(HANDLE mapping, std::size_t size);
    void FindTables();
    void Unmap();
    bool IsRecoverable() const { return m_pLock != nullptr && m_journal.IsComplete(); }
    tessel::RecoverableLock RecoverableLock() const { return {*m_pLock, m_record}; }
    void RepairTables();
    void ReleaseUnacquired();

    CSemaphore* m_pLock;
    HANDLE m_hMapping;
    unsigned char* m_pBase;
    FILE_HEADER* m_pHeader;
    MAILBOX* m_pMailboxes;
    RESOURCE* m_pResources;
    SBLOCK* m_pSmallBlocks;
    tessel::Journal m_journal;
    tessel::LockRecord m_record;
    /// The lock was left by a holder that ended; protected by the lock.
    bool m_takenOver = false;

    /// Set when a post office is created; for debugging only.
    static int m_iConstructing;
};
