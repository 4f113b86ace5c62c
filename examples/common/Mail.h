#pragma once

#include <tessel/tessel.h>

#include <optional>
#include <span>

/// A message whose id, sender and length were read once. Its data stay in the block, where any process can change them
/// at any time: copy them before checking them.
struct Mail {
    SBLOCK* block;
    ORCAOBJID from;
    unsigned long id;
    std::span<const unsigned char> data;
};

/// The message of a notification, if it is valid: any program can post the window message with the block's number, and
/// any process can write to the block.
inline std::optional<Mail> OpenMail(CMailBox& mailbox, LPARAM number, ORCAOBJID to) {
    if (number < 1 || number > 0xFFFF) return std::nullopt;
    SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(number));
    if (block == nullptr || block->BlkNum != number || block->Receiver != to) return std::nullopt;
    const unsigned long length = *const_cast<const volatile std::uint32_t*>(&block->Length);
    if (length < 1 || length > SMALL_BLOCK_SIZE) return std::nullopt;
    return Mail{block, ORCAOBJID{block->Sender}, block->MsgId, {block->Data, length - 1}};
}

/// Passes the message of a notification to the handler, if it is valid, and releases its block.
template <class Handler> void WithMail(CMailBox& mailbox, LPARAM number, ORCAOBJID to, Handler handle) {
    const std::optional<Mail> mail = OpenMail(mailbox, number, to);
    if (!mail) return;
    handle(*mail);
    (void)mailbox.ReleaseMemory(mail->block); // in use until now
}

/// Releases the blocks that will not be fetched: the receiver has ended, and no process sends to it.
inline void ReleaseBlocksTo(CMailBox& mailbox, ORCAOBJID receiver) {
    for (unsigned int index = 1; SBLOCK* const block = mailbox.GetMessageBlock(index); ++index) {
        if (block->BlkNum != 0 && block->Receiver == receiver) (void)mailbox.ReleaseMemory(block); // just seen in use
    }
}
