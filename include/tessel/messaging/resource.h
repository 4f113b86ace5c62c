#pragma once

#include <tessel/messaging/postoffice.h>

/// Registers windows under a key so that any process of the post office can find them.
///
/// The table has POST_OFFICE_RESOURCES records in the post office's region. Each entry records the thread and the
/// process of the object that added it, and stays until it is deleted: call FreeThreadResources() before a thread
/// ends, ResetProcess() after a process has ended. The host removes the entries of its dialogs itself. A search returns
/// the first match; free records are all zero.
///
/// Order: CPostOffice::CreateGlobalPostOffice() first. Without a mapped post office every operation does nothing
/// and returns its failure value.
/// Copies are equal: the object holds two ids and an address.
/// Threads: any thread may call any operation. Within a process, adding and deleting are serialised; look-ups take no
/// lock and may see an entry that is being filled.
class TESSEL_API CResource {
public:
    /// Acts for the calling thread and its process. Reports a missing post office.
    CResource();

    /// Copies the ids and the address.
    CResource(const CResource&) = default;

    /// Copies the ids and the address.
    /// @return this object
    CResource& operator=(const CResource&) = default;

    /// Does not change the table.
    virtual ~CResource() = default;

    /// Adds an entry in the first free slot, even if the key exists.
    /// @param type   kind of the resource
    /// @param id     which of its kind
    /// @param hWnd   the window, owned by the caller
    /// @param owner  value that distinguishes owners, such as a process id
    /// @return 0: added; 1: the table is full (reported) or missing
    int AddResource(RESOURCE_TYPE type, RESOURCE_ID id, HWND hWnd, unsigned long owner);

    /// Deletes the first entry with the key, even if another process added it.
    /// @param type   kind of the resource
    /// @param id     which of its kind
    /// @param owner  value passed to AddResource()
    /// @return 0: deleted; 1: there is none, or no table
    int DeleteResource(RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner);

    /// Finds the window of the first entry with the key.
    /// @param type   kind of the resource
    /// @param id     which of its kind
    /// @param owner  value passed to AddResource()
    /// @return the window; null if there is none
    HWND GetResource(RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner);

    /// The table.
    /// @return POST_OFFICE_RESOURCES records in the region's memory; null without a post office
    RESOURCE* GetResourceAddress();

    /// Deletes every entry of the thread that created this object, on whatever thread it is called. Takes no lock: an
    /// entry that is being added at the same time may be deleted half-filled.
    void FreeThreadResources();

    /// Deletes every entry of a process that has ended. Takes no lock.
    /// @param pid  Win32 id of the process; 0 matches no entry
    /// @return 0
    int ResetProcess(unsigned long pid);

    /// Whether the calling thread registered a resource with id 1.
    /// @return 1: yes; 0xFFFFFFFF: no, or there is no table
    unsigned long GetManagerFromThread();

private:
    friend struct CResourceLayout;

    bool IsMapped();
    RESOURCE* ClaimFreeRecord();

    unsigned long m_ulThreadId;
    unsigned long m_ulProcessId;
    RESOURCE* m_pResources;
};
