#pragma once

#include <messaging/office/Journal.h>

namespace tessel {

/// The note about a registration; null if it was made by a program without a journal.
/// @param mailboxes  the mailbox table
const MAILBOX_NOTE* NoteOf(const MAILBOX* mailboxes, std::uint32_t slot);

/// Notes that this process fills a slot. The caller holds the post office's lock.
/// @param mailbox  the record, which has its window
/// @param id       the id that it will get
void NoteRegistration(JOURNAL* journal, std::uint32_t slot, const MAILBOX& mailbox, std::uint32_t id);

/// The process that made a registration; only its id if that is a program without a journal.
/// @param mailboxes  the mailbox table
Identity ReceiverAt(const MAILBOX* mailboxes, std::uint32_t slot);

/// What the journal says about the blocks. Where the journal is null, nothing is noted.

/// The process that is responsible for a block, and where the block is on its way.
struct BlockOwner {
    Identity process; ///< 0 if the state is UNKNOWN
    BlockState state;
};
/// @param block  the block that the note is about; if it is free, or another program has used it again, the state is
///               UNKNOWN
BlockOwner OwnerOf(const BLOCK_NOTE& note, const SBLOCK& block);

/// Whether the receiver of a block has fetched, in the same registration, a message with a later position.
bool WasFetchedLater(const JOURNAL& journal, const BLOCK_NOTE& note, std::uint64_t sequence);

/// A claim on a block by this process, as long as the block is not allocated again.
using BlockClaim = std::uint64_t;

/// Notes that this process has allocated a block for a receiver. The caller holds the post office's lock.
/// @param receiver  ReceiverAt()
/// @param slot      of the receiver
void NoteAllocation(JOURNAL* journal, std::uint32_t index, Identity receiver, std::uint32_t slot);

/// Notes that a block is free.
void ForgetBlock(JOURNAL* journal, std::uint32_t index);

/// Notes that this process is about to post a block.
/// @return its claim, for NotePosted(); 0 without a journal
BlockClaim NotePosting(JOURNAL* journal, std::uint32_t index, const SBLOCK& block);

/// Notes that the notification has been posted, unless the receiver has already fetched or released it.
void NotePosted(JOURNAL* journal, std::uint32_t index, BlockClaim claim);

/// Notes that the receiver of a slot asks for a block, if it was posted to this process.
void NoteFetched(JOURNAL* journal, std::uint32_t index, const SBLOCK& block, std::uint32_t slot);

/// Notes that this process, which has fetched a block, writes an answer into it.
/// @param receiver  ReceiverAt()
/// @param slot      of the answer's receiver
void NoteAnswer(JOURNAL* journal, std::uint32_t index, Identity receiver, std::uint32_t slot);

/// Notes that a block which waited for an ended receiver is for this process now, which is about to post it again.
/// @param slot  of this process's registration
void NoteTakenOver(JOURNAL& journal, std::uint32_t index, std::uint32_t slot);

/// Whether an ended receiver had fetched a block that is posted again.
bool IsPostedAgain(const JOURNAL* journal, std::uint32_t index);

/// How many messages wait for the receiver of a slot.
unsigned int CountWaiting(const JOURNAL& journal, const SBLOCK* blocks, Identity receiver, std::uint32_t slot);

} // namespace tessel
