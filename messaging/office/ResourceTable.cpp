#include <messaging/office/ResourceTable.h>

#include <foundation/SharedField.h>

#include <atomic>

namespace tessel {

ResourceTableLock::ResourceTableLock() {
    (void)resourceTableLock.WaitOnSemaphore(INFINITE); // cannot time out
}

ResourceTableLock::~ResourceTableLock() {
    (void)resourceTableLock.ReleaseSemaphoreA(); // held until now
}

bool ClaimResource(RESOURCE& record, std::uint32_t holder, std::uint32_t claimant) {
    return std::atomic_ref<std::uint32_t>(record.ThreadId).compare_exchange_strong(holder, claimant);
}

void ClearResource(RESOURCE& record) {
    for (std::uint32_t* field : {&record.Type, &record.Owner, &record.ProcessId, &record.Id, &record.hWnd}) {
        StoreShared<std::uint32_t>(*field, 0);
    }
    StoreShared<std::uint32_t>(record.ThreadId, 0);
}

} // namespace tessel
