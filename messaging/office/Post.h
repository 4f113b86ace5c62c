#pragma once

#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/postoffice.h>

#include <cstddef>

/// The one post office of the process: the lock and the mapped region. CPostOffice is its front.
///
/// Owns the semaphore, the mapping and the view. The addresses are null while the region is unmapped.
class CPost {
public:
    /// Opens the region or, under the lock, creates it.
    CPost();
    ~CPost();
    CPost(const CPost&) = delete;
    CPost& operator=(const CPost&) = delete;

private:
    friend class CPostOffice;
    friend struct CPostLayout;

    bool OpenRegion();
    bool CreateRegion();
    bool MapRegion(HANDLE mapping, std::size_t size);
    void FindTables();
    void Unmap();

    CSemaphore* m_pLock;
    HANDLE m_hMapping;
    unsigned char* m_pBase;
    FILE_HEADER* m_pHeader;
    MAILBOX* m_pMailboxes;
    RESOURCE* m_pResources;
    SBLOCK* m_pSmallBlocks;

    /// Set when a post office is created; for debugging only.
    static int m_iConstructing;
};
