#pragma once

#include <messaging/office/Journal.h>

namespace tessel {

/// The process that made a registration; only its id if that is a program without a journal.
/// @param mailboxes  the mailbox table
Identity ReceiverAt(const MAILBOX* mailboxes, std::uint32_t slot);

/// What the journal says about the blocks. Where the journal is null, nothing is noted.

/// The process that is responsible for a block, and where the block is on its way.
struct BlockOwner {
    Identity process; ///< 0 if the state is UNKNOWN
    BlockState state;
};
BlockOwner OwnerOf(const BLOCK_NOTE& note);

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
BlockClaim NotePosting(JOURNAL* journal, std::uint32_t index);

/// Notes that the notification has been posted, unless the receiver has already fetched or released it.
void NotePosted(JOURNAL* journal, std::uint32_t index, BlockClaim claim);

/// Notes that the receiver of a slot, in this process, asks for a block that was posted to it.
void NoteFetched(JOURNAL* journal, std::uint32_t index, std::uint32_t slot);

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
