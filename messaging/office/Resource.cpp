#include <foundation/Report.h>
#include <foundation/SharedField.h>
#include <messaging/office/LiveRegions.h>
#include <messaging/office/ResourceLock.h>
#include <messaging/office/WindowHandle.h>
#include <tessel/messaging/resource.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <span>

struct CResourceLayout {
    static_assert(offsetof(CResource, m_ulThreadId) == sizeof(void*));
    static_assert(offsetof(CResource, m_ulProcessId) == sizeof(void*) + 4);
    static_assert(offsetof(CResource, m_pResources) == sizeof(void*) + 8);
    static_assert(sizeof(CResource) == 2 * sizeof(void*) + 8);
};

namespace {

using tessel::LoadShared;
using tessel::StoreShared;

constexpr unsigned long kNoManager = 0xFFFFFFFF;
constexpr unsigned long kManagerId = 1;

/// Index of the highest slot that was ever filled; under the lock, for a look with the debugger only.
unsigned long highestSlot = 0;

/// Keeps threads of this process from adding and deleting at the same time.
class TableLock {
public:
    TableLock() { (void)tessel::resourceTableLock.WaitOnSemaphore(INFINITE); } // cannot time out
    ~TableLock() { (void)tessel::resourceTableLock.ReleaseSemaphoreA(); }
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;
};

/// All records; none without a table.
std::span<RESOURCE> Records(RESOURCE* table) {
    return {table, table == nullptr ? 0U : POST_OFFICE_RESOURCES};
}

RESOURCE* Find(RESOURCE* table, RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner) {
    for (RESOURCE& record : Records(table)) {
        if (LoadShared(record.Type) == type && LoadShared(record.Id) == id && LoadShared(record.Owner) == owner) {
            return &record;
        }
    }
    return nullptr;
}

/// Takes a free record for a thread; another process may be doing the same, so the thread id is the claim.
bool Claim(RESOURCE& record, unsigned long threadId) {
    std::uint32_t free = 0;
    return std::atomic_ref<std::uint32_t>(record.ThreadId).compare_exchange_strong(free, threadId);
}

/// Fills a claimed record; the key comes last, so that a look-up that sees it finds the window.
void Fill(RESOURCE& record, RESOURCE_TYPE type, RESOURCE_ID id, std::uint32_t window, unsigned long owner) {
    StoreShared(record.hWnd, window);
    StoreShared<std::uint32_t>(record.Owner, owner);
    StoreShared<std::uint32_t>(record.Id, id);
    StoreShared<std::uint32_t>(record.Type, type);
}

/// Clears a record; the claim goes last, so that nobody fills it meanwhile.
void Clear(RESOURCE& record) {
    for (std::uint32_t* field : {&record.Type, &record.Owner, &record.ProcessId, &record.Id, &record.hWnd}) {
        StoreShared<std::uint32_t>(*field, 0);
    }
    StoreShared<std::uint32_t>(record.ThreadId, 0);
}

} // namespace

CResource::CResource()
    : m_ulThreadId(GetCurrentThreadId()), m_ulProcessId(GetCurrentProcessId()),
      m_pResources(CPostOffice().GetResourceAddr()) {
    tessel::ReportUnless(m_pResources != nullptr, "pRes", "CRes", __LINE__);
}

/// GUARD-14: the address was good when the object was made, and the post office may have gone since.
bool CResource::IsMapped() {
    return tessel::IsInRegion(m_pResources);
}

int CResource::AddResource(RESOURCE_TYPE type, RESOURCE_ID id, HWND hWnd, unsigned long owner) {
    int result = 1;
    if (!IsMapped()) return result;
    {
        const TableLock lock;
        const auto records = Records(m_pResources);
        const auto free = std::find_if(records.begin(), records.end(),
                                       [this](RESOURCE& record) { return Claim(record, m_ulThreadId); });
        if (free != records.end()) {
            StoreShared<std::uint32_t>(free->ProcessId, m_ulProcessId);
            Fill(*free, type, id, tessel::ToShared(hWnd), owner);
            highestSlot = std::max(highestSlot, static_cast<unsigned long>(free - records.begin()));
            result = 0;
        }
    }
    tessel::ReportUnless(result == 0, "!result", "CRes", __LINE__);
    return result;
}

int CResource::DeleteResource(RESOURCE_TYPE type, RESOURCE_ID id, unsigned long owner) {
    if (!IsMapped()) return 1;
    const TableLock lock;
    RESOURCE* const found = Find(m_pResources, type, id, owner);
    if (found == nullptr) return 1;
    Clear(*found);
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
    for (RESOURCE& record : Records(m_pResources)) {
        if (LoadShared(record.ThreadId) == m_ulThreadId) Clear(record);
    }
}

int CResource::ResetProcess(unsigned long pid) {
    // GUARD-204: 0 is the process of free records, and of those that are just being filled.
    if (!IsMapped() || pid == 0) return 0;
    for (RESOURCE& record : Records(m_pResources)) {
        if (LoadShared(record.ProcessId) == pid) Clear(record);
    }
    return 0;
}

unsigned long CResource::GetManagerFromThread() {
    if (!IsMapped()) return kNoManager;
    for (const RESOURCE& record : Records(m_pResources)) {
        if (LoadShared(record.Id) != kManagerId || LoadShared(record.ThreadId) != GetCurrentThreadId()) continue;
        return kManagerId; // ODD-26: the id that was looked for, whatever the entry stands for
    }
    return kNoManager;
}
