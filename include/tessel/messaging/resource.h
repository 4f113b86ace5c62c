#pragma once

#include <tessel/messaging/postoffice.h>

/// Registers windows under a key, machine-wide, so that any process can find them.
///
/// The table has POST_OFFICE_RESOURCES records in the post office's region. Entries carry the thread and the process
/// of the object that added them, and stay until they are deleted: FreeThreadResources() before a thread ends,
/// ResetProcess() when a process has ended. A search takes the first match; free records are all zero.
///
/// Order: CPostOffice::CreateGlobalPostOffice() first. Without a mapped post office every operation does nothing
/// and returns its failure value.
/// Copies are equal: the object holds two ids and an address.
/// Threads: any thread may call any operation. Adding and deleting wait for one another within a process; look-ups
/// take no lock and may see an entry that is being filled.
class TESSEL_API CResource {
public:
    /// Speaks for the calling thread and its process; a missing post office is reported.
    CResource();

    /// Copies the ids and the address.
    CResource(const CResource&) = default;

    /// Copies the ids and the address.
    /// @return this object
    CResource& operator=(const CResource&) = default;

    /// Leaves the table as it is.
    virtual ~CResource() = default;

    /// Adds an entry in the first free slot; the same key may be there already.
    /// @param type   kind of the resource
    /// @param id     which of its kind
    /// @param hWnd   the window; stays the caller's
    /// @param owner  value that tells owners apart, such as a process id
    /// @return 0: added; 1: the table is full (reported) or missing
    int AddResource(RESOURCE_TYPE type, RESOURCE_ID id, HWND hWnd, unsigned long owner);

    /// Deletes the first entry of that key, whoever added it.
    /// @param type   kind of the resource
    /// @param id     which of its kind
    /// @param owner  value given to AddResource()
    /// @return 0: deleted; 1: there is none, or no table
    int DeleteResource(RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner);

    /// Finds the window of the first entry of that key.
    /// @param type   kind of the resource
    /// @param id     which of its kind
    /// @param owner  value given to AddResource()
    /// @return the window; null when there is none
    HWND GetResource(RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner);

    /// The table.
    /// @return POST_OFFICE_RESOURCES records in the region's memory; null without a post office
    RESOURCE* GetResourceAddress();

    /// Deletes every entry of the thread that made this object, whichever thread calls. Takes no lock: an entry
    /// that is being added at the same moment may be deleted half-way.
    void FreeThreadResources();

    /// Deletes every entry of a process. Takes no lock: for one that has ended.
    /// @param pid  Win32 id of the process; 0 names none
    /// @return 0
    int ResetProcess(unsigned long pid);

    /// Whether the calling thread registered a resource with id 1.
    /// @return 1: it did; 0xFFFFFFFF: it did not, or there is no table
    unsigned long GetManagerFromThread();

private:
    friend struct CResourceLayout;

    bool IsMapped();
    RESOURCE* ClaimFreeRecord();

    unsigned long m_ulThreadId;
    unsigned long m_ulProcessId;
    RESOURCE* m_pResources;
};
