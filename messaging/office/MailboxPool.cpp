#include <foundation/Report.h>
#include <foundation/SharedField.h>
#include <messaging/office/BlockNotes.h>
#include <messaging/office/PoolReports.h>
#include <messaging/office/PostOfficeLock.h>
#include <tessel/foundation/status.h>
#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <atomic>

namespace {

using tessel::Begin;
using tessel::Change;
using tessel::End;
using tessel::JOURNAL;
using tessel::LoadShared;
using tessel::PoolReports;
using tessel::PostOfficeLock;
using tessel::ReportUnless;

constexpr tessel::ReportSite kNoBlockOfThePool{"CMailbox", 206};
constexpr tessel::ReportSite kBlockIsFree{"CMailbox", 207};

/// Number of the block that this process allocated last; protected by the post office's lock.
unsigned short allocationCursor = 1;

/// Claims a free block. The exchange is needed under the lock, too: creating a post office may release the lock of a
/// slow holder (ODD-17).
bool Claim(SBLOCK& block, std::uint16_t number) {
    std::uint16_t free = 0;
    return std::atomic_ref<std::uint16_t>(block.BlkNum).compare_exchange_strong(free, number);
}

/// Wakes a sender that waits for a free block, if one does.
void OfferRoom() {
    JOURNAL* const journal = tessel::OpenJournal();
    if (journal == nullptr || LoadShared(journal->roomWanted) == 0) return;
    if (std::atomic_ref<std::uint32_t>(journal->roomWanted).exchange(0) != 0) (void)SetEvent(tessel::RoomEvent());
}

} // namespace

int CMailBox::AllocateSmallBlock(unsigned long length, unsigned short receiverSlot, SBLOCK*& block) {
    PoolReports reports;
    const int status = Allocate(length, receiverSlot, block, reports);
    // What becomes of it only its caller knows, who may post it by other means.
    if (block != nullptr) tessel::ForgetBlock(tessel::OpenJournal(), NumberOf(*block));
    return status;
}

/// @param reports  receives what is to be reported
int CMailBox::Allocate(unsigned long length, unsigned short receiverSlot, SBLOCK*& block, PoolReports& reports) {
    block = nullptr;
    if (!IsMapped()) return ERROR_NOT_ENOUGH_MEMORY;
    const bool fits = length <= std::min(LoadShared(m_pHeader->SmallBlkSize), SMALL_BLOCK_SIZE); // GUARD-13
    if (!fits) {
        ++reports.tooLong;
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    if (receiverSlot >= m_usMailboxCount) return ERROR_SERVICE_NOT_FOUND; // GUARD-16
    const unsigned short number = ClaimBlock();
    if (number == 0) return ERROR_BUSY;

    SBLOCK& found = m_pSmallBlocks[number];
    if (std::atomic_ref<std::uint32_t>(found.RefCount).fetch_add(1) != 0) ++reports.sharedWhenAllocated;
    found.Length = length;
    found.Receiver = m_pMailboxes[receiverSlot].ObjId;
    found.Sender = m_OwnId;
    NoteAllocation(tessel::OpenJournal(), number, tessel::ReceiverAt(m_pMailboxes, receiverSlot), receiverSlot);
    block = &found;
    return STATUS_OK;
}

/// Claims the next free block after the one allocated last. The caller holds the post office's lock, whose release
/// completes the change.
/// @return its number; 0: none is free
unsigned short CMailBox::ClaimBlock() {
    // Block 0 is never allocated.
    const auto next = [this](unsigned short number) {
        return static_cast<unsigned short>(number + 1 < m_usBlockCount ? number + 1 : 1);
    };
    // ODD-20: skips the block at the starting point, even if it is the only free one.
    const unsigned short start = allocationCursor < m_usBlockCount ? allocationCursor : 1;
    JOURNAL* const journal = tessel::OpenJournal();
    for (unsigned short number = next(start); number != start; number = next(number)) {
        SBLOCK& block = m_pSmallBlocks[number];
        if (LoadShared(block.BlkNum) != 0) continue;
        Begin(journal, Change::ALLOCATE, number, LoadShared(m_pHeader->FreeSmallBlks), LoadShared(block.RefCount));
        if (Claim(block, number)) return allocationCursor = number;
    }
    End(journal);
    return 0;
}

/// @param block  a block of the pool
unsigned short CMailBox::NumberOf(const SBLOCK& block) {
    return static_cast<unsigned short>(&block - m_pSmallBlocks);
}

/// GUARD-17: never follow a pointer that is not a block of the pool.
bool CMailBox::IsBlockOfPool(const SBLOCK* block) {
    if (!IsMapped() || block == nullptr) return false;
    const auto distance = reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(m_pSmallBlocks);
    return distance < m_usBlockCount * sizeof(SBLOCK) && distance % sizeof(SBLOCK) == 0;
}

int CMailBox::ReleaseMemory(SBLOCK* block) {
    return ReleaseMany(&block, 1) == 1 ? 0 : 1;
}

unsigned short CMailBox::ReleaseMany(SBLOCK* const* blocks, unsigned short count) {
    if (blocks == nullptr) return 0; // GUARD-09
    const auto foreign = static_cast<unsigned short>(
        std::count_if(blocks, blocks + count, [this](const SBLOCK* block) { return !IsBlockOfPool(block); }));
    for (unsigned short i = 0; i < foreign; ++i) ReportUnless(false, "pBlock", kNoBlockOfThePool);
    if (foreign == count) return 0;
    const unsigned short released = FreeUnderLock({blocks, count});
    for (int i = released + foreign; i < count; ++i) ReportUnless(false, "pBlock->BlkNum", kBlockIsFree);
    return released;
}

/// @return how many were in use until now
unsigned short CMailBox::FreeUnderLock(std::span<SBLOCK* const> blocks) {
    PoolReports reports;
    unsigned short released = 0;
    {
        const PostOfficeLock lock(m_PostOffice);
        if (!lock) return 0;
        for (SBLOCK* const block : blocks) {
            if (IsBlockOfPool(block) && FreeBlock(*block, reports)) ++released;
        }
    }
    OfferRoom();
    return released;
}

/// Returns a block to the pool. The caller holds the post office's lock.
/// GUARD-19: if two threads release a block at the same time, only one succeeds and counts it.
/// @param reports  receives what is to be reported
bool CMailBox::FreeBlock(SBLOCK& block, PoolReports& reports) {
    if (LoadShared(block.BlkNum) == 0) return false;
    JOURNAL* const journal = tessel::OpenJournal();
    const unsigned short index = NumberOf(block);
    Begin(journal, Change::FREE, index, LoadShared(m_pHeader->FreeSmallBlks) + 1, LoadShared(block.RefCount) - 1);
    const bool inUse = std::atomic_ref<std::uint16_t>(block.BlkNum).exchange(0) != 0;
    if (inUse) {
        tessel::ForgetBlock(journal, index);
        if (std::atomic_ref<std::uint32_t>(block.RefCount).fetch_sub(1) != 1) ++reports.sharedWhenFreed;
        std::atomic_ref<std::uint32_t>(m_pHeader->FreeSmallBlks).fetch_add(1);
    }
    End(journal);
    return inUse;
}

/// Notes that a message has been fetched, if it was sent to this mailbox.
void CMailBox::NoteFetch(unsigned int index) {
    const SBLOCK& block = m_pSmallBlocks[index];
    if (LoadShared(block.Receiver) == m_OwnId) NoteFetched(tessel::OpenJournal(), index, block, m_usSlot);
}

SBLOCK* CMailBox::GetMessageBlock(unsigned int index) {
    if (!IsMapped() || index >= m_usBlockCount) return nullptr;
    NoteFetch(index);
    return m_pSmallBlocks + index;
}

SBLOCK* CMailBox::GetDirectMessage(unsigned short index) {
    if (!IsMapped()) return nullptr;
    if (index < m_usBlockCount) NoteFetch(index);
    // ODD-21: not checked. Computed with integers, because the address may lie outside the pool.
    return reinterpret_cast<SBLOCK*>(reinterpret_cast<std::uintptr_t>(m_pSmallBlocks) + index * sizeof(SBLOCK));
}

int CMailBox::MsgResourcesLow() {
    return GetFreeBlockCount() < m_usLowWater ? 1 : 0;
}

int CMailBox::MsgResourcesHigh() {
    return m_usHighWater < GetFreeBlockCount() ? 1 : 0;
}

unsigned long CMailBox::GetFreeBlockCount() {
    return IsMapped() ? LoadShared(m_pHeader->FreeSmallBlks) : 0;
}
