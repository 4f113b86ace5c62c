#include <messaging/office/ResourceTable.h>

#include <foundation/SharedField.h>
#include <messaging/office/Census.h>
#include <messaging/office/RecoverableLock.h>

#include <atomic>

namespace tessel {

namespace {

// A thread that is ended while it holds the lock must not stop the others, which may be ending the process.
alignas(8) std::uint64_t lockHolder = 0;
const Handle lockTurn(CreateEventW(nullptr, FALSE, FALSE, nullptr));
const LockRecord lockRecord{&lockHolder, lockTurn.Get(), nullptr};

} // namespace

ResourceTableLock::ResourceTableLock() {
    (void)RecoverableLock(resourceTableLock, lockRecord).Acquire(INFINITE); // cannot time out
}

ResourceTableLock::~ResourceTableLock() {
    RecoverableLock(resourceTableLock, lockRecord).Release();
}

bool ClaimResource(RESOURCE& record, std::uint32_t holder, std::uint32_t claimant) {
    return std::atomic_ref<std::uint32_t>(record.ThreadId).compare_exchange_strong(holder, claimant);
}

/// If this process ends within, the record is one of an ended process or, at last, of an ended thread: a sweep finds
/// it.
void ClearResource(RESOURCE& record) {
    StoreShared<std::uint32_t>(record.ProcessId, GetCurrentProcessId());
    for (std::uint32_t* field : {&record.Type, &record.Owner, &record.Id, &record.hWnd}) {
        StoreShared<std::uint32_t>(*field, 0);
    }
    StoreShared<std::uint32_t>(record.ThreadId, GetCurrentThreadId());
    StoreShared<std::uint32_t>(record.ProcessId, 0);
    StoreShared<std::uint32_t>(record.ThreadId, 0);
}

void NoteResourceOwner(std::size_t index, std::uint32_t processId) {
    JOURNAL* const journal = OpenJournal();
    if (journal == nullptr) return;
    const Identity owner = IdIn(ThisProcess()) == processId ? ThisProcess() : WithoutStartTime(processId);
    StoreShared<std::uint64_t>(journal->resources[index], owner);
}

unsigned short RemoveResourcesOfEnded(RESOURCE* table, const JOURNAL& journal) {
    const std::span<RESOURCE> records = ResourceRecords(table);
    Census census;
    unsigned short removed = 0;
    for (RESOURCE& record : records) {
        const std::uint32_t holder = LoadShared(record.ThreadId);
        if (holder == 0) continue;
        const std::uint32_t processId = LoadShared(record.ProcessId);
        const std::uint64_t noted = LoadShared(journal.resources[&record - records.data()]);
        const Identity owner = IdIn(noted) == processId ? noted : WithoutStartTime(processId);
        census.Ask(owner);
        const bool ended = processId != 0 ? census.HasEnded(owner) : WatchThread(holder).ended;
        if (!ended || !ClaimResource(record, holder, GetCurrentThreadId())) continue;
        ClearResource(record);
        ++removed;
    }
    return removed;
}

} // namespace tessel
