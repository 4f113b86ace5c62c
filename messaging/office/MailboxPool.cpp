#include <foundation/Report.h>
#include <foundation/SharedField.h>
#include <messaging/office/PostOfficeLock.h>
#include <tessel/foundation/status.h>
#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

using tessel::LoadShared;
using tessel::PostOfficeLock;
using tessel::ReportUnless;

constexpr tessel::ReportSite kMessageTooLong{"CMailbox", 59};
constexpr tessel::ReportSite kBlocksLow{"CMailbox", 76};
constexpr tessel::ReportSite kBlockHasOtherUsers{"CMailbox", 182};
constexpr tessel::ReportSite kBlockTooShort{"CMailbox", 189};
constexpr tessel::ReportSite kBlockStillUsed{"CMailbox", 199};
constexpr tessel::ReportSite kNoBlockOfThePool{"CMailbox", 206};
constexpr tessel::ReportSite kBlockIsFree{"CMailbox", 207};

constexpr int kAttempts = 100;
constexpr unsigned long kAttemptPauseMs = 1;

/// Number of the block that this process allocated last; protected by the post office's lock.
unsigned short allocationCursor = 1;
/// Whether to report a low free count; protected by the post office's lock.
bool lowWarningArmed = true;
/// Greatest length passed to Send(); for debugging only.
std::atomic<unsigned long> longestMessage = 0;

/// Claims a free block. The exchange is needed under the lock, too: creating a post office releases the lock of a slow
/// holder (ODD-17).
bool Claim(SBLOCK& block, std::uint16_t number) {
    std::uint16_t free = 0;
    return std::atomic_ref<std::uint16_t>(block.BlkNum).compare_exchange_strong(free, number);
}

/// Length of both parts and the extra byte, limited to 2^32 - 1.
/// GUARD-15: a wrapped sum would let the parts be copied past the end of the block.
unsigned long TotalLength(unsigned long first, unsigned long second) {
    const unsigned long long sum = 1ULL + first + second;
    return static_cast<unsigned long>(std::min(sum, 0xFFFFFFFFULL));
}

void NoteLength(unsigned long length) {
    unsigned long longest = longestMessage;
    while (length > longest && !longestMessage.compare_exchange_weak(longest, length)) {
    }
}

} // namespace

/// A message to be sent.
struct CMailBox::Message {
    HWND receiver;
    ORCAOBJID to;
    unsigned short receiverSlot;
    unsigned long msgId;
    unsigned long length;
    unsigned long firstLength;
    const unsigned char* firstData;
    unsigned long secondLength;
    const unsigned char* secondData;

    void CopyTo(SBLOCK& block) const {
        block.Reserved = 0;
        block.MsgId = msgId;
        if (firstLength > 0) std::memcpy(block.Data, firstData, firstLength);
        // ODD-24: the bytes of a null second part count in the length but are not written, like the extra byte.
        if (secondData != nullptr) std::memcpy(block.Data + firstLength, secondData, secondLength);
    }
};

int CMailBox::Send(ORCAOBJID to, unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
                   unsigned long secondLength, const unsigned char* secondData) {
    unsigned short slot = 0;
    const HWND receiver = GetMailBox(to, slot);
    if (receiver == nullptr) return ERROR_SERVICE_NOT_FOUND;
    const unsigned long length = TotalLength(firstLength, secondLength);
    ReportUnless(SMALL_BLOCK_SIZE >= length, "SMALL_BLOCK_SIZE >= Len", kMessageTooLong);
    NoteLength(length);
    if (length <= SMALL_BLOCK_SIZE && firstData == nullptr && firstLength > 0)
        return ERROR_INVALID_PARAMETER; // GUARD-09

    const Message message{receiver, to, slot, msgId, length, firstLength, firstData, secondLength, secondData};
    int status = ERROR_BUSY;
    for (int attempt = 0; attempt < kAttempts && status == ERROR_BUSY; ++attempt) {
        status = Deliver(message);
        if (status == ERROR_BUSY) Sleep(kAttemptPauseMs);
    }
    return status;
}

int CMailBox::Deliver(const Message& message) {
    SBLOCK* block = nullptr;
    int status = AllocateForSend(message, block);
    if (block == nullptr) return status;
    message.CopyTo(*block);
    if (!PostMessageW(message.receiver, MAILBOX_NOTIFICATION, 0, block - m_pSmallBlocks)) {
        status = static_cast<int>(GetLastError());
        (void)ReleaseMemory(block); // allocated just now
    }
    return status;
}

int CMailBox::AllocateForSend(const Message& message, SBLOCK*& block) {
    const PostOfficeLock lock(m_PostOffice);
    if (!lock) return ERROR_INVALID_HANDLE;
    if (!IsMapped()) return ERROR_NOT_ENOUGH_MEMORY;
    // GUARD-206: it was looked up without the lock; the slot may now be free or belong to another receiver.
    if (LoadShared(m_pMailboxes[message.receiverSlot].ObjId) != message.to) return ERROR_SERVICE_NOT_FOUND;
    const int status = AllocateSmallBlock(message.length, message.receiverSlot, block);
    if (block == nullptr) return status;
    std::atomic_ref<std::uint32_t>(m_pHeader->FreeSmallBlks).fetch_sub(1);
    WatchFreeBlocks();
    return status;
}

/// Reports a low free count once, and again only after it has been high.
void CMailBox::WatchFreeBlocks() {
    const std::uint32_t free = LoadShared(m_pHeader->FreeSmallBlks);
    if (lowWarningArmed && free < m_usLowWater) {
        lowWarningArmed = false;
        ReportUnless(false, "!\"Message resources low\"", kBlocksLow);
    } else if (!lowWarningArmed && free > m_usHighWater) {
        lowWarningArmed = true;
    }
}

int CMailBox::AllocateSmallBlock(unsigned long length, unsigned short receiverSlot, SBLOCK*& block) {
    block = nullptr;
    if (!IsMapped()) return ERROR_NOT_ENOUGH_MEMORY;
    const bool fits = length <= std::min(LoadShared(m_pHeader->SmallBlkSize), SMALL_BLOCK_SIZE); // GUARD-13
    ReportUnless(fits, "!\"Message size > pHeader->SmallBlkSize\"", kBlockTooShort);
    if (!fits) return ERROR_NOT_ENOUGH_MEMORY;
    if (receiverSlot >= m_usMailboxCount) return ERROR_SERVICE_NOT_FOUND; // GUARD-16

    // ODD-20: skips the block at the starting point, even if it is the only free one.
    const unsigned short start = allocationCursor < m_usBlockCount ? allocationCursor : 1;
    unsigned short cursor = start;
    do {
        if (++cursor >= m_usBlockCount) cursor = 1; // block 0 is never allocated
        if (cursor == start) return ERROR_BUSY;
    } while (LoadShared(m_pSmallBlocks[cursor].BlkNum) != 0 || !Claim(m_pSmallBlocks[cursor], cursor));
    allocationCursor = cursor;

    SBLOCK& found = m_pSmallBlocks[cursor];
    const std::uint32_t users = std::atomic_ref<std::uint32_t>(found.RefCount).fetch_add(1) + 1;
    found.Length = length;
    found.Receiver = m_pMailboxes[receiverSlot].ObjId;
    found.Sender = m_OwnId;
    block = &found;
    ReportUnless(users == 1, "pSmall[cnt].RefCount == 1", kBlockHasOtherUsers);
    return STATUS_OK;
}

/// GUARD-17: never follow a pointer that is not a block of the pool.
bool CMailBox::IsBlockOfPool(const SBLOCK* block) {
    if (!IsMapped() || block == nullptr) return false;
    const auto distance = reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(m_pSmallBlocks);
    return distance < m_usBlockCount * sizeof(SBLOCK) && distance % sizeof(SBLOCK) == 0;
}

int CMailBox::ReleaseMemory(SBLOCK* block) {
    const bool valid = IsBlockOfPool(block);
    ReportUnless(valid, "pBlock", kNoBlockOfThePool);
    if (!valid) return 1;
    const bool released = FreeUnderLock(*block);
    ReportUnless(released, "pBlock->BlkNum", kBlockIsFree);
    return released ? 0 : 1;
}

bool CMailBox::FreeUnderLock(SBLOCK& block) {
    const PostOfficeLock lock(m_PostOffice);
    return lock && FreeBlock(block);
}

/// Returns a block to the pool. The caller holds the post office's lock.
/// GUARD-19: if two threads release a block at the same time, only one succeeds and counts it.
bool CMailBox::FreeBlock(SBLOCK& block) {
    if (std::atomic_ref<std::uint16_t>(block.BlkNum).exchange(0) == 0) return false;
    const std::uint32_t users = std::atomic_ref<std::uint32_t>(block.RefCount).fetch_sub(1) - 1;
    ReportUnless(users == 0, "pBlock->RefCount == 0", kBlockStillUsed);
    std::atomic_ref<std::uint32_t>(m_pHeader->FreeSmallBlks).fetch_add(1);
    return true;
}

void CMailBox::FreeBlocksOf(unsigned long receiver) {
    for (SBLOCK* block = m_pSmallBlocks; block != m_pSmallBlocks + m_usBlockCount; ++block) {
        if (LoadShared(block->BlkNum) != 0 && block->Receiver == receiver)
            (void)FreeBlock(*block); // or another thread has freed it
    }
}

SBLOCK* CMailBox::GetMessageBlock(unsigned int index) {
    return IsMapped() && index < m_usBlockCount ? m_pSmallBlocks + index : nullptr;
}

SBLOCK* CMailBox::GetDirectMessage(unsigned short index) {
    if (!IsMapped()) return nullptr;
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
