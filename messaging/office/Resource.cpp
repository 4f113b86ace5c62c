#include <foundation/Report.h>
#include <foundation/SharedField.h>
#include <messaging/office/DialogEntries.h>
#include <messaging/office/LiveRegions.h>
#include <messaging/office/ResourceTable.h>
#include <messaging/office/WindowHandle.h>
#include <tessel/messaging/resource.h>

#include <algorithm>

namespace {

using tessel::ClaimResource;
using tessel::ClearResource;
using tessel::LoadShared;
using tessel::ResourceRecords;
using tessel::ResourceTableLock;
using tessel::StoreShared;

constexpr unsigned long kNoManager = 0xFFFFFFFF;
constexpr unsigned long kManagerId = 1;

/// Index of the highest slot ever filled; protected by the lock, for debugging only.
unsigned long highestSlot = 0;

RESOURCE* Find(RESOURCE* table, RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner) {
    for (RESOURCE& record : ResourceRecords(table)) {
        if (LoadShared(record.Type) == type && LoadShared(record.Id) == id && LoadShared(record.Owner) == owner) {
            return &record;
        }
    }
    return nullptr;
}

/// Fills a claimed record. The key is written last, so that a look-up that matches finds the window.
void Fill(RESOURCE& record, RESOURCE_TYPE type, RESOURCE_ID id, std::uint32_t window, unsigned long owner) {
    StoreShared(record.hWnd, window);
    StoreShared<std::uint32_t>(record.Owner, owner);
    StoreShared<std::uint32_t>(record.Id, id);
    StoreShared<std::uint32_t>(record.Type, type);
}

} // namespace

CResource::CResource()
    : m_ulThreadId(GetCurrentThreadId()), m_ulProcessId(GetCurrentProcessId()),
      m_pResources(CPostOffice().GetResourceAddr()) {
    tessel::ReportUnless(m_pResources != nullptr, "pRes", {"CRes", __LINE__});
}

/// GUARD-14: the post office may have been destroyed since the object was created.
bool CResource::IsMapped() {
    return tessel::IsInRegion(m_pResources);
}

RESOURCE* CResource::ClaimFreeRecord() {
    const auto records = ResourceRecords(m_pResources);
    const auto claim = [&records] {
        return std::find_if(records.begin(), records.end(),
                            [](RESOURCE& record) { return ClaimResource(record, 0, GetCurrentThreadId()); });
    };
    auto free = claim();
    if (free == records.end()) { // GUARD-280: killed processes may have left their dialogs
        tessel::RemoveDialogsOfEndedProcesses(records);
        free = claim();
    }
    if (free == records.end()) return nullptr;
    highestSlot = std::max(highestSlot, static_cast<unsigned long>(free - records.begin()));
    return &*free;
}

int CResource::AddResource(RESOURCE_TYPE type, RESOURCE_ID id, HWND hWnd, unsigned long owner) {
    int result = 1;
    if (!IsMapped()) return result;
    {
        const ResourceTableLock lock;
        RESOURCE* const record = ClaimFreeRecord();
        if (record != nullptr) {
            tessel::NoteResourceOwner(static_cast<std::size_t>(record - m_pResources), m_ulProcessId);
            StoreShared<std::uint32_t>(record->ProcessId, m_ulProcessId);
            Fill(*record, type, id, tessel::ToShared(hWnd), owner);
            // Last: the object's thread may have ended, and a sweep takes what such a thread has claimed for abandoned.
            StoreShared<std::uint32_t>(record->ThreadId, m_ulThreadId);
            result = 0;
        }
    }
    tessel::ReportUnless(result == 0, "!result", {"CRes", __LINE__});
    return result;
}

int CResource::DeleteResource(RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner) {
    if (!IsMapped()) return 1;
    const ResourceTableLock lock;
    RESOURCE* const found = Find(m_pResources, type, id, owner);
    if (found == nullptr) return 1;
    ClearResource(*found);
    return 0;
}

HWND CResource::GetResource(RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner) {
    const RESOURCE* const found = IsMapped() ? Find(m_pResources, type, id, owner) : nullptr;
    return found == nullptr ? nullptr : tessel::FromShared(LoadShared(found->hWnd));
}

RESOURCE* CResource::GetResourceAddress() {
    return IsMapped() ? m_pResources : nullptr;
}

void CResource::FreeThreadResources() {
    if (!IsMapped()) return;
    for (RESOURCE& record : ResourceRecords(m_pResources)) {
        if (LoadShared(record.ThreadId) == m_ulThreadId) ClearResource(record);
    }
}

int CResource::ResetProcess(unsigned long pid) {
    // GUARD-204: free records and records that are being filled have the process id 0.
    if (!IsMapped() || pid == 0) return 0;
    for (RESOURCE& record : ResourceRecords(m_pResources)) {
        if (LoadShared(record.ProcessId) == pid) ClearResource(record);
    }
    return 0;
}

unsigned long CResource::GetManagerFromThread() {
    if (!IsMapped()) return kNoManager;
    for (const RESOURCE& record : ResourceRecords(m_pResources)) {
        if (LoadShared(record.Id) != kManagerId || LoadShared(record.ThreadId) != GetCurrentThreadId()) continue;
        return kManagerId; // ODD-26: always the id that was searched for
    }
    return kNoManager;
}
