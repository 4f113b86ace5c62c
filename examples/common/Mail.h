#pragma once

#include <tessel/tessel.h>

#include <optional>
#include <span>

/// A message that was looked at once: what it says cannot change while it is used.
struct Mail {
    SBLOCK* block;
    ORCAOBJID from;
    unsigned long id;
    std::span<const unsigned char> data;
};

/// The message of a notification, if it is what it claims to be: the block's number comes from a window message,
/// which anyone can post, and the block from memory that anyone can write.
inline std::optional<Mail> OpenMail(CMailBox& mailbox, LPARAM number, ORCAOBJID to) {
    if (number < 1 || number > 0xFFFF) return std::nullopt;
    SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(number));
    if (block == nullptr || block->BlkNum != number || block->Receiver != to) return std::nullopt;
    const unsigned long length = *const_cast<const volatile std::uint32_t*>(&block->Length);
    if (length < 1 || length > SMALL_BLOCK_SIZE) return std::nullopt;
    return Mail{block, ORCAOBJID{block->Sender}, block->MsgId, {block->Data, length - 1}};
}

/// Gives back the blocks that nobody will fetch any more: the receiver has ended, and nobody sends to it.
inline void ReleaseBlocksTo(CMailBox& mailbox, ORCAOBJID receiver) {
    for (unsigned int index = 1; SBLOCK* const block = mailbox.GetMessageBlock(index); ++index) {
        if (block->BlkNum != 0 && block->Receiver == receiver) (void)mailbox.ReleaseMemory(block); // just seen in use
    }
}
