#include <messaging/office/BlockNotes.h>

#include <foundation/SharedField.h>

#include <atomic>
#include <bit>

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

/// A number by which to recognise the message in a block; never 0.
std::uint32_t ContentOf(const SBLOCK& block) {
    std::uint32_t content = 0;
    for (const std::uint32_t* field : {&block.MsgId, &block.Length, &block.Receiver, &block.Sender}) {
        content = std::rotl(content, 7) * 0x9E3779B1 + LoadShared(*field); // mixes all bits
    }
    return content | 1;
}

/// Whether a note is about the message that is in the block now. While it is being written, any message is.
bool IsAbout(const BLOCK_NOTE& note, const SBLOCK& block) {
    const std::uint32_t content = LoadShared(note.content);
    return content == 0 || content == ContentOf(block);
}

void NoteReceiver(JOURNAL& journal, BLOCK_NOTE& note, Identity receiver, std::uint32_t slot) {
    StoreShared<std::uint64_t>(note.receiver, receiver);
    StoreShared(note.slot, slot);
    StoreShared(note.registration, LoadShared(journal.mailboxes[slot].registration));
    StoreShared<std::uint64_t>(note.orphaned, 0);
}

/// Notes the receiver of a message that nobody has received yet.
void NoteNewMessage(JOURNAL& journal, BLOCK_NOTE& note, Identity receiver, std::uint32_t slot) {
    NoteReceiver(journal, note, receiver, slot);
    StoreShared<std::uint32_t>(note.content, 0);
    StoreShared<std::uint32_t>(note.takenOver, 0);
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

BlockOwner OwnerOf(const BLOCK_NOTE& note, const SBLOCK& block) {
    const std::uint64_t owner = LoadShared(note.owner);
    if (LoadShared(block.BlkNum) == 0 || !IsAbout(note, block)) return {0, BlockState::UNKNOWN};
    return {IdentityIn(owner), StateIn(owner)};
}

bool WasFetchedLater(const JOURNAL& journal, const BLOCK_NOTE& note, std::uint64_t sequence) {
    const std::uint32_t slot = LoadShared(note.slot);
    if (slot >= POST_OFFICE_MAILBOXES) return false;
    const MAILBOX_NOTE& receiver = journal.mailboxes[slot];
    return LoadShared(receiver.registration) == LoadShared(note.registration) &&
           LoadShared(receiver.fetched) > sequence;
}

const MAILBOX_NOTE* NoteOf(const MAILBOX* mailboxes, std::uint32_t slot) {
    const JOURNAL* const journal = OpenJournal();
    if (journal == nullptr) return nullptr;
    const MAILBOX& mailbox = mailboxes[slot];
    const MAILBOX_NOTE& note = journal->mailboxes[slot];
    const bool isAbout = IdIn(LoadShared(note.owner)) == LoadShared(mailbox.ProcessId) &&
                         LoadShared(note.window) == LoadShared(mailbox.hWnd) &&
                         LoadShared(note.id) == LoadShared(mailbox.ObjId);
    return isAbout ? &note : nullptr;
}

Identity ReceiverAt(const MAILBOX* mailboxes, std::uint32_t slot) {
    const MAILBOX_NOTE* const note = NoteOf(mailboxes, slot);
    return note == nullptr ? WithoutStartTime(LoadShared(mailboxes[slot].ProcessId))
                           : IdentityIn(LoadShared(note->owner));
}

void NoteRegistration(JOURNAL* journal, std::uint32_t slot, const MAILBOX& mailbox, std::uint32_t id) {
    if (journal == nullptr) return;
    MAILBOX_NOTE& note = journal->mailboxes[slot];
    StoreShared(note.registration, LoadShared(note.registration) + 1);
    StoreShared(note.window, mailbox.hWnd);
    StoreShared(note.id, id);
    StoreShared<std::uint64_t>(note.owner, ThisProcess());
}

void NoteAllocation(JOURNAL* journal, std::uint32_t index, Identity receiver, std::uint32_t slot) {
    if (journal == nullptr) return;
    NoteNewMessage(*journal, journal->blocks[index], receiver, slot);
    NoteOwner(journal->blocks[index], BlockState::WRITING);
}

void ForgetBlock(JOURNAL* journal, std::uint32_t index) {
    if (journal == nullptr) return;
    std::uint64_t& owner = journal->blocks[index].owner;
    StoreShared(owner, LoadShared(owner) & kCountBits);
}

BlockClaim NotePosting(JOURNAL* journal, std::uint32_t index, const SBLOCK& block) {
    if (journal == nullptr) return 0;
    BLOCK_NOTE& note = journal->blocks[index];
    // A message that has been taken over keeps its position: its heir may end, too, and the next one needs the order.
    if (StateIn(LoadShared(note.owner)) != BlockState::POSTING)
        StoreShared(note.sequence, std::atomic_ref<std::uint64_t>(journal->sequence).fetch_add(1) + 1);
    StoreShared(note.content, ContentOf(block));
    const BlockClaim claim = (LoadShared(note.owner) & ~kStateBits) | Bits(BlockState::POSTING);
    StoreShared(note.owner, claim);
    return claim;
}

void NotePosted(JOURNAL* journal, std::uint32_t index, BlockClaim claim) {
    if (journal == nullptr) return;
    BLOCK_NOTE& note = journal->blocks[index];
    (void)std::atomic_ref<std::uint32_t>(note.takenOver).fetch_and(~TAKEN_OVER_UNPOSTED);
    const std::uint64_t receiver = LoadShared(note.receiver);
    const std::uint64_t posted = receiver | (claim & kCountBits) | Bits(BlockState::POSTED);
    (void)Replace(note.owner, claim, posted); // else it has moved on
}

void NoteFetched(JOURNAL* journal, std::uint32_t index, const SBLOCK& block, std::uint32_t slot) {
    if (journal == nullptr) return;
    BLOCK_NOTE& note = journal->blocks[index];
    std::uint64_t owner = LoadShared(note.owner);
    while (StateIn(owner) == BlockState::POSTED || StateIn(owner) == BlockState::POSTING) {
        if (IdIn(LoadShared(note.receiver)) != GetCurrentProcessId() || !IsAbout(note, block)) return;
        if (!Replace(note.owner, owner, ThisProcess() | (owner & kCountBits) | Bits(BlockState::FETCHED))) continue;
        MAILBOX_NOTE& receiver = journal->mailboxes[slot];
        // Another registration has a queue of its own.
        if (LoadShared(note.slot) == slot && LoadShared(note.registration) == LoadShared(receiver.registration))
            Raise(receiver.fetched, LoadShared(note.sequence));
        return;
    }
}

void NoteAnswer(JOURNAL* journal, std::uint32_t index, Identity receiver, std::uint32_t slot) {
    if (journal == nullptr) return;
    NoteOwner(journal->blocks[index], BlockState::WRITING); // first: it no longer waits for this process
    NoteNewMessage(*journal, journal->blocks[index], receiver, slot);
}

void NoteTakenOver(JOURNAL& journal, std::uint32_t index, std::uint32_t slot) {
    BLOCK_NOTE& note = journal.blocks[index];
    const bool fetched = StateIn(LoadShared(note.owner)) == BlockState::FETCHED; // as long as it is known
    (void)std::atomic_ref<std::uint32_t>(note.takenOver)
        .fetch_or(TAKEN_OVER_UNPOSTED | (fetched ? TAKEN_OVER_FETCHED : 0));
    NoteReceiver(journal, note, ThisProcess(), slot);
    NoteOwner(note, BlockState::POSTING);
}

bool IsPostedAgain(const JOURNAL* journal, std::uint32_t index) {
    return journal != nullptr && (LoadShared(journal->blocks[index].takenOver) & TAKEN_OVER_FETCHED) != 0;
}

unsigned int CountWaiting(const JOURNAL& journal, const SBLOCK* blocks, Identity receiver, std::uint32_t slot) {
    unsigned int waiting = 0;
    for (std::uint32_t index = 1; index < SMALL_BLOCK_COUNT; ++index) {
        const BLOCK_NOTE& note = journal.blocks[index];
        const bool isFor = LoadShared(note.slot) == slot && LoadShared(note.receiver) == receiver;
        if (isFor && OwnerOf(note, blocks[index]).state != BlockState::UNKNOWN) ++waiting;
    }
    return waiting;
}

} // namespace tessel
