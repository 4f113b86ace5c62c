#include <messaging/office/BlockNotes.h>

#include <foundation/SharedField.h>

#include <algorithm>
#include <atomic>

namespace tessel {

namespace {

// The bits of an owner between id and start time: the state, then a count of the allocations.
constexpr int kStateShift = 32;
constexpr std::uint64_t kStateBits = 0xFULL << kStateShift;
constexpr std::uint64_t kCountBits = kRecordBits & ~kStateBits;
constexpr std::uint64_t kOneAllocation = kStateBits + (1ULL << kStateShift);

constexpr std::uint64_t Bits(BlockState state) {
    return static_cast<std::uint64_t>(state) << kStateShift;
}

constexpr BlockState StateIn(std::uint64_t owner) {
    return static_cast<BlockState>((owner & kStateBits) >> kStateShift);
}

/// @param from  what it must be; receives what it is
bool Replace(std::uint64_t& owner, std::uint64_t& from, std::uint64_t to) {
    return std::atomic_ref<std::uint64_t>(owner).compare_exchange_strong(from, to);
}

void NoteReceiver(BLOCK_NOTE& note, Identity receiver, std::uint32_t slot) {
    StoreShared<std::uint64_t>(note.receiver, receiver);
    StoreShared(note.slot, slot);
    StoreShared<std::uint64_t>(note.orphaned, 0);
}

/// Notes the receiver of a message that nobody has received yet.
void NoteNewMessage(BLOCK_NOTE& note, Identity receiver, std::uint32_t slot) {
    NoteReceiver(note, receiver, slot);
    StoreShared<std::uint32_t>(note.again, 0);
}

/// Makes this process responsible for a block.
void NoteOwner(BLOCK_NOTE& note, BlockState state) {
    const std::uint64_t count = (LoadShared(note.owner) + kOneAllocation) & kCountBits;
    StoreShared(note.owner, ThisProcess() | Bits(state) | count);
}

/// Raises a field that several threads raise.
void Raise(std::uint64_t& field, std::uint64_t value) {
    std::uint64_t seen = LoadShared(field);
    while (seen < value && !std::atomic_ref<std::uint64_t>(field).compare_exchange_weak(seen, value)) {
    }
}

} // namespace

BlockOwner OwnerOf(const BLOCK_NOTE& note) {
    const std::uint64_t owner = LoadShared(note.owner);
    return {IdentityIn(owner), StateIn(owner)};
}

Identity ReceiverAt(const MAILBOX* mailboxes, std::uint32_t slot) {
    const std::uint32_t processId = LoadShared(mailboxes[slot].ProcessId);
    const JOURNAL* const journal = OpenJournal();
    const std::uint64_t owner = journal == nullptr ? 0 : LoadShared(journal->mailboxes[slot].owner);
    return IdIn(owner) == processId ? IdentityIn(owner) : WithoutStartTime(processId);
}

void NoteAllocation(JOURNAL* journal, std::uint32_t index, Identity receiver, std::uint32_t slot) {
    if (journal == nullptr) return;
    NoteNewMessage(journal->blocks[index], receiver, slot);
    NoteOwner(journal->blocks[index], BlockState::WRITING);
}

void ForgetBlock(JOURNAL* journal, std::uint32_t index) {
    if (journal == nullptr) return;
    std::uint64_t& owner = journal->blocks[index].owner;
    StoreShared(owner, LoadShared(owner) & kCountBits);
}

BlockClaim NotePosting(JOURNAL* journal, std::uint32_t index) {
    if (journal == nullptr) return 0;
    BLOCK_NOTE& note = journal->blocks[index];
    // A message that has been taken over keeps its position: its heir may end, too, and the next one needs the order.
    if (OwnerOf(note).state != BlockState::POSTING)
        StoreShared(note.sequence, std::atomic_ref<std::uint64_t>(journal->sequence).fetch_add(1) + 1);
    const BlockClaim claim = (LoadShared(note.owner) & ~kStateBits) | Bits(BlockState::POSTING);
    StoreShared(note.owner, claim);
    return claim;
}

void NotePosted(JOURNAL* journal, std::uint32_t index, BlockClaim claim) {
    if (journal == nullptr) return;
    BLOCK_NOTE& note = journal->blocks[index];
    const std::uint64_t receiver = LoadShared(note.receiver);
    (void)Replace(note.owner, claim,
                  receiver | (claim & kCountBits) | Bits(BlockState::POSTED)); // else it has moved on
}

void NoteFetched(JOURNAL* journal, std::uint32_t index, std::uint32_t slot) {
    if (journal == nullptr || index >= SMALL_BLOCK_COUNT) return;
    BLOCK_NOTE& note = journal->blocks[index];
    std::uint64_t owner = LoadShared(note.owner);
    while (StateIn(owner) == BlockState::POSTED || StateIn(owner) == BlockState::POSTING) {
        if (LoadShared(note.slot) != slot || IdIn(LoadShared(note.receiver)) != GetCurrentProcessId()) return;
        if (!Replace(note.owner, owner, ThisProcess() | (owner & kCountBits) | Bits(BlockState::FETCHED))) continue;
        Raise(journal->mailboxes[slot].fetched, LoadShared(note.sequence));
        return;
    }
}

void NoteAnswer(JOURNAL* journal, std::uint32_t index, Identity receiver, std::uint32_t slot) {
    if (journal == nullptr) return;
    NoteOwner(journal->blocks[index], BlockState::WRITING); // first: it no longer waits for this process
    NoteNewMessage(journal->blocks[index], receiver, slot);
}

void NoteTakenOver(JOURNAL& journal, std::uint32_t index, std::uint32_t slot) {
    BLOCK_NOTE& note = journal.blocks[index];
    if (OwnerOf(note).state == BlockState::FETCHED) StoreShared<std::uint32_t>(note.again, 1); // as long as it is known
    NoteReceiver(note, ThisProcess(), slot);
    NoteOwner(note, BlockState::POSTING);
}

bool IsPostedAgain(const JOURNAL* journal, std::uint32_t index) {
    return journal != nullptr && LoadShared(journal->blocks[index].again) != 0;
}

unsigned int CountWaiting(const JOURNAL& journal, const SBLOCK* blocks, Identity receiver, std::uint32_t slot) {
    unsigned int waiting = 0;
    for (std::uint32_t index = 1; index < SMALL_BLOCK_COUNT; ++index) {
        const BLOCK_NOTE& note = journal.blocks[index];
        const bool isFor = LoadShared(note.slot) == slot && LoadShared(note.receiver) == receiver;
        if (isFor && LoadShared(blocks[index].BlkNum) != 0 && OwnerOf(note).state != BlockState::UNKNOWN) ++waiting;
    }
    return waiting;
}

} // namespace tessel
