#pragma once

#include <tessel/tessel.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

/// What sender and receiver agree on.

/// Bytes of the file in one message: as many as a block takes.
inline constexpr unsigned long kParcelSize = SMALL_BLOCK_SIZE - 1;
/// Message word of the last message, whose content is a Receipt; the others are numbered from 0.
inline constexpr unsigned long kEndOfFile = 0xFFFFFFFF;

/// What was sent, and what was received.
struct Receipt {
    std::uint64_t bytes;
    std::uint64_t messages;
    bool operator==(const Receipt&) const = default;
};

/// The bytes of a record, as a message carries it.
inline const unsigned char* BytesOf(const Receipt& receipt) {
    return reinterpret_cast<const unsigned char*>(&receipt);
}

/// The two sides of one run. The tag is the run's own, so that several couriers, and what a killed one has left
/// behind, stay out of each other's way.
inline ORCAOBJID SenderId(unsigned long tag) {
    return ORCAOBJID{0x43000000UL | (tag & 0xFFFFFF)};
}

inline ORCAOBJID ReceiverId(unsigned long tag) {
    return ORCAOBJID{0x52000000UL | (tag & 0xFFFFFF)};
}

/// A message that was looked at once: what it says cannot change while it is used.
struct Parcel {
    SBLOCK* block;
    unsigned long number;
    std::span<const unsigned char> data;
};

/// The message of a notification, if it is what it claims to be: the block's number comes from a window message,
/// which anyone can post, and the block from memory that anyone can write.
inline std::optional<Parcel> OpenParcel(CMailBox& mailbox, LPARAM number, ORCAOBJID from, ORCAOBJID to) {
    if (number < 1 || number > 0xFFFF) return std::nullopt;
    SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(number));
    if (block == nullptr || block->BlkNum != number || block->Sender != from || block->Receiver != to) {
        return std::nullopt;
    }
    const unsigned long length = *const_cast<const volatile std::uint32_t*>(&block->Length);
    if (length < 1 || length > SMALL_BLOCK_SIZE) return std::nullopt;
    return Parcel{block, block->MsgId, {block->Data, length - 1}};
}

/// Gives back the blocks that nobody will fetch any more: the receiver's process has ended, and nobody sends to it.
inline void ReleaseBlocksTo(CMailBox& mailbox, ORCAOBJID receiver) {
    for (unsigned int index = 1; SBLOCK* const block = mailbox.GetMessageBlock(index); ++index) {
        if (block->BlkNum != 0 && block->Receiver == receiver) (void)mailbox.ReleaseMemory(block); // just seen in use
    }
}

/// A window that gets notifications and is not seen.
inline HWND MakeMailWindow() {
    return CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}
