#include <foundation/Report.h>
#include <foundation/SharedField.h>
#include <messaging/office/BlockNotes.h>
#include <messaging/office/PoolReports.h>
#include <messaging/office/PostOfficeLock.h>
#include <tessel/foundation/status.h>
#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

namespace {

using tessel::JOURNAL;
using tessel::LoadShared;
using tessel::PoolReports;
using tessel::PostOfficeLock;
using tessel::StoreShared;

constexpr tessel::ReportSite kMessageTooLong{"CMailbox", 59};

constexpr int kAttempts = 100;
constexpr unsigned long kAttemptPauseMs = 1;
/// How long a sender waits to be woken by a release before it tries again; a release wakes only one sender.
constexpr unsigned long kRoomPauseMs = 20;
/// The receiver's limit is reached, which waiting does not change soon. Never returned to callers.
constexpr int kReceiverFull = -1;

/// Whether to report a low free count; protected by the post office's lock.
bool lowWarningArmed = true;
/// Greatest length passed to Send(); for debugging only.
std::atomic<unsigned long> longestMessage = 0;

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
    ORCAOBJID to;
    unsigned long msgId = 0;
    unsigned long firstLength = 0;
    const unsigned char* firstData = nullptr;
    unsigned long secondLength = 0;
    const unsigned char* secondData = nullptr;
    HWND receiver = nullptr;
    unsigned short receiverSlot = 0;

    unsigned long Length() const { return TotalLength(firstLength, secondLength); }
    /// The same receiver with the content of a message of a batch.
    Message With(const OUTGOING_MESSAGE& content) const {
        return {to, content.msgId, content.length, content.data, 0, nullptr, receiver, receiverSlot};
    }

    /// The first part may lie in the block.
    void CopyTo(SBLOCK& block) const {
        block.Reserved = 0;
        block.MsgId = msgId;
        if (firstLength > 0) std::memmove(block.Data, firstData, firstLength);
        // ODD-24: the bytes of a null second part count in the length but are not written, like the extra byte.
        if (secondData != nullptr) std::memcpy(block.Data + firstLength, secondData, secondLength);
    }
};

int CMailBox::Send(ORCAOBJID to, unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
                   unsigned long secondLength, const unsigned char* secondData) {
    Message message{to, msgId, firstLength, firstData, secondLength, secondData};
    int status = Address(message);
    if (status != STATUS_OK) return status;
    status = ERROR_BUSY;
    for (int attempt = 0; attempt < kAttempts && status == ERROR_BUSY; ++attempt) {
        status = DeliverOrRedirect(message);
        if (status == ERROR_BUSY) Sleep(kAttemptPauseMs);
    }
    if (status == ERROR_BUSY) status = SendAfterSweep(message);
    return status == kReceiverFull ? ERROR_BUSY : status;
}

int CMailBox::SendWithin(unsigned long timeoutMs, ORCAOBJID to, unsigned long msgId, unsigned long firstLength,
                         const unsigned char* firstData, unsigned long secondLength, const unsigned char* secondData) {
    Message message{to, msgId, firstLength, firstData, secondLength, secondData};
    int status = Address(message);
    if (status != STATUS_OK) return status;
    const unsigned long long start = GetTickCount64();
    for (;;) {
        status = DeliverOrRedirect(message);
        if (status != ERROR_BUSY) break;
        const unsigned long long spent = timeoutMs == INFINITE ? 0 : GetTickCount64() - start;
        if (spent >= timeoutMs) break;
        AwaitRoom(static_cast<unsigned long>(std::min<unsigned long long>(timeoutMs - spent, kRoomPauseMs)));
    }
    if (status == ERROR_BUSY && timeoutMs > 0) status = SendAfterSweep(message);
    return status == kReceiverFull ? ERROR_BUSY : status;
}

/// Waits until a block may be free.
void CMailBox::AwaitRoom(unsigned long mostMs) {
    JOURNAL* const journal = tessel::OpenJournal();
    HANDLE const room = tessel::RoomEvent();
    if (journal == nullptr || room == nullptr) return Sleep(kAttemptPauseMs);
    StoreShared<std::uint32_t>(journal->roomWanted, 1);
    (void)WaitForSingleObject(room, mostMs); // trying again decides
}

/// Finds the receiver of a message and checks its parts.
int CMailBox::Address(Message& message) {
    return FindReceiver(message) ? CheckParts(message) : ERROR_SERVICE_NOT_FOUND;
}

bool CMailBox::FindReceiver(Message& message) {
    // GUARD-293: free records have the id 0, and may name the window of a receiver that has gone.
    message.receiver = message.to == 0 ? nullptr : GetMailBox(message.to, message.receiverSlot);
    return message.receiver != nullptr;
}

/// Whether the slot that was looked up still belongs to the receiver.
bool CMailBox::IsStillAt(const Message& message) {
    return LoadShared(m_pMailboxes[message.receiverSlot].ObjId) == message.to;
}

/// Reports a message that is too long; allocating a block for it fails.
int CMailBox::CheckParts(const Message& message) {
    const unsigned long length = message.Length();
    tessel::ReportUnless(SMALL_BLOCK_SIZE >= length, "SMALL_BLOCK_SIZE >= Len", kMessageTooLong);
    NoteLength(length);
    const bool missing = message.firstData == nullptr && message.firstLength > 0;
    return length <= SMALL_BLOCK_SIZE && missing ? ERROR_INVALID_PARAMETER : STATUS_OK; // GUARD-09
}

/// Delivers a message. If the receiver's process has ended, tries one with the same id that runs.
int CMailBox::DeliverOrRedirect(Message& message) {
    const int status = Deliver(message);
    if (status != ERROR_INVALID_WINDOW_HANDLE ||
        !tessel::HasProcessEnded(tessel::ReceiverAt(m_pMailboxes, message.receiverSlot)))
        return status;
    HWND const ended = message.receiver;
    message.receiver = LivingMailBox(message.to, ended, message.receiverSlot);
    return message.receiver == ended ? status : Deliver(message);
}

/// Sends once more after removing what ended processes have left in a full pool.
int CMailBox::SendAfterSweep(const Message& message) {
    (void)SweepDead(); // another program may have swept
    return GetFreeBlockCount() > 1 ? Deliver(message) : ERROR_BUSY;
}

int CMailBox::Deliver(const Message& message) {
    SBLOCK* block = nullptr;
    const int status = AllocateForSend(message, block);
    if (block == nullptr) return status;
    message.CopyTo(*block);
    const int posted = Post(message.receiver, *block);
    if (posted != STATUS_OK) (void)ReleaseMemory(block); // allocated just now
    return posted;
}

/// Posts the notification of a block. From then on the block belongs to the receiver.
int CMailBox::Post(HWND receiver, SBLOCK& block) {
    JOURNAL* const journal = tessel::OpenJournal();
    const unsigned short index = NumberOf(block);
    const tessel::BlockClaim claim = NotePosting(journal, index, block);
    const WPARAM again = IsPostedAgain(journal, index) ? MAILBOX_AGAIN : 0;
    if (!PostMessageW(receiver, MAILBOX_NOTIFICATION, again, index)) return static_cast<int>(GetLastError());
    NotePosted(journal, index, claim);
    return STATUS_OK;
}

int CMailBox::AllocateForSend(const Message& message, SBLOCK*& block) {
    PoolReports reports;
    const PostOfficeLock lock(m_PostOffice);
    if (!lock) return ERROR_INVALID_HANDLE;
    return AllocateUnderLock(message, block, reports);
}

/// Allocates and counts a block. The caller holds the post office's lock.
/// @param reports  receives what is to be reported
int CMailBox::AllocateUnderLock(const Message& message, SBLOCK*& block, PoolReports& reports) {
    block = nullptr;
    if (!IsMapped()) return ERROR_NOT_ENOUGH_MEMORY;
    // GUARD-206: it was looked up without the lock; the slot may now be free or belong to another receiver.
    if (!IsStillAt(message)) return ERROR_SERVICE_NOT_FOUND;
    if (IsReceiverFull(message.receiverSlot)) return kReceiverFull;
    const int status = Allocate(message.Length(), message.receiverSlot, block, reports);
    if (block == nullptr) return status;
    std::atomic_ref<std::uint32_t>(m_pHeader->FreeSmallBlks).fetch_sub(1);
    if (IsNewlyLow()) ++reports.low;
    return status;
}

bool CMailBox::IsReceiverFull(unsigned short slot) {
    const JOURNAL* const journal = tessel::OpenJournal();
    const tessel::MAILBOX_NOTE* const note = tessel::NoteOf(m_pMailboxes, slot);
    const std::uint32_t limit = note == nullptr ? 0 : LoadShared(note->limit);
    return limit != 0 && CountWaiting(*journal, m_pSmallBlocks, tessel::ReceiverAt(m_pMailboxes, slot), slot) >= limit;
}

/// Whether to report a low free count: once, and again only after it has been high.
bool CMailBox::IsNewlyLow() {
    const std::uint32_t free = LoadShared(m_pHeader->FreeSmallBlks);
    if (lowWarningArmed && free < m_usLowWater) {
        lowWarningArmed = false;
        return true;
    }
    lowWarningArmed = lowWarningArmed || free > m_usHighWater;
    return false;
}

int CMailBox::Reply(SBLOCK* block, unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
                    unsigned long secondLength, const unsigned char* secondData) {
    if (!IsBlockOfPool(block) || LoadShared(block->BlkNum) == 0 || block->Receiver != m_OwnId)
        return ERROR_INVALID_PARAMETER;
    Message answer{ORCAOBJID{block->Sender}, msgId, firstLength, firstData, secondLength, secondData};
    const int status = Address(answer);
    if (status != STATUS_OK) return status;
    if (answer.Length() > SMALL_BLOCK_SIZE) return ERROR_NOT_ENOUGH_MEMORY;
    NoteAnswer(tessel::OpenJournal(), NumberOf(*block), tessel::ReceiverAt(m_pMailboxes, answer.receiverSlot),
               answer.receiverSlot);
    if (!IsStillAt(answer)) return ERROR_SERVICE_NOT_FOUND;
    answer.CopyTo(*block);
    block->Length = answer.Length();
    block->Receiver = answer.to;
    block->Sender = m_OwnId;
    return Post(answer.receiver, *block);
}

int CMailBox::SendMany(ORCAOBJID to, const OUTGOING_MESSAGE* messages, unsigned short count, unsigned short& sent) {
    sent = 0;
    if (messages == nullptr && count > 0) return ERROR_INVALID_PARAMETER; // GUARD-09
    Message receiver{.to = to};
    if (!FindReceiver(receiver)) return ERROR_SERVICE_NOT_FOUND;
    const std::span batch(messages, count);
    for (const OUTGOING_MESSAGE& outgoing : batch) {
        const Message message = receiver.With(outgoing);
        if (message.Length() > SMALL_BLOCK_SIZE) return ERROR_NOT_ENOUGH_MEMORY;
        if (CheckParts(message) != STATUS_OK) return ERROR_INVALID_PARAMETER;
    }
    BlockNumbers blocks{};
    int status = STATUS_OK;
    const unsigned short allocated = AllocateMany(receiver, batch, blocks, status);
    const int posted = PostMany(receiver, batch.first(allocated), blocks, sent);
    return posted == STATUS_OK ? status : posted;
}

/// Allocates a block for each message, as far as there is room.
/// @param status  receives why the next one got none
/// @return how many got one
unsigned short CMailBox::AllocateMany(const Message& receiver, std::span<const OUTGOING_MESSAGE> batch,
                                      BlockNumbers& blocks, int& status) {
    PoolReports reports;
    const PostOfficeLock lock(m_PostOffice);
    if (!lock) status = ERROR_INVALID_HANDLE;
    unsigned short allocated = 0;
    while (status == STATUS_OK && allocated < batch.size()) {
        SBLOCK* block = nullptr;
        status = allocated == blocks.size() ? ERROR_BUSY
                                            : AllocateUnderLock(receiver.With(batch[allocated]), block, reports);
        if (status == STATUS_OK) blocks[allocated++] = NumberOf(*block);
    }
    if (status == kReceiverFull) status = ERROR_BUSY;
    return allocated;
}

/// Posts allocated messages in their order. After a failure, the blocks of the others are released.
int CMailBox::PostMany(const Message& receiver, std::span<const OUTGOING_MESSAGE> batch, const BlockNumbers& blocks,
                       unsigned short& sent) {
    int status = STATUS_OK;
    for (std::size_t i = 0; i < batch.size(); ++i) {
        SBLOCK& block = m_pSmallBlocks[blocks[i]];
        if (status == STATUS_OK) {
            receiver.With(batch[i]).CopyTo(block);
            status = Post(receiver.receiver, block);
        }
        if (status == STATUS_OK) {
            ++sent;
        } else {
            (void)ReleaseMemory(&block); // allocated just now
        }
    }
    return status;
}
