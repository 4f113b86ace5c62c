#pragma once

#include <tessel/tessel.h>

#include <cstdint>

/// What sender and receiver agree on. Both ids carry the sender's process id, so that several couriers, and
/// what a killed one has left behind, stay out of each other's way.

/// Bytes of the file in one message: as many as a block takes.
inline constexpr unsigned long kParcelSize = SMALL_BLOCK_SIZE - 1;
/// Message word of the last message, whose content is a Receipt; the others are numbered from 0.
inline constexpr unsigned long kEndOfFile = 0xFFFFFFFF;

/// What was sent, and what was received.
struct Receipt {
    std::uint64_t bytes;
    std::uint64_t messages;
};

inline ORCAOBJID SenderId(unsigned long processId) {
    return ORCAOBJID{0x43000000UL | (processId & 0xFFFFFF)};
}

inline ORCAOBJID ReceiverId(unsigned long senderProcessId) {
    return ORCAOBJID{0x52000000UL | (senderProcessId & 0xFFFFFF)};
}

/// The block of a notification, if it is what it claims to be: the number comes from a window message, which
/// anyone can post.
inline SBLOCK* TrustedBlock(CMailBox& mailbox, LPARAM number, ORCAOBJID from, ORCAOBJID to) {
    SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(number));
    if (block == nullptr || block->BlkNum == 0 || block->BlkNum != number) return nullptr;
    if (block->Sender != from || block->Receiver != to) return nullptr;
    return block->Length >= 1 && block->Length <= SMALL_BLOCK_SIZE ? block : nullptr;
}

/// Gives back the blocks that nobody will fetch any more.
inline void ReleaseBlocksTo(CMailBox& mailbox, ORCAOBJID receiver) {
    for (unsigned int index = 1; SBLOCK* const block = mailbox.GetMessageBlock(index); ++index) {
        if (block->BlkNum != 0 && block->Receiver == receiver) (void)mailbox.ReleaseMemory(block); // just seen in use
    }
}
