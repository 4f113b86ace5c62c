#pragma once

#include <tessel/tessel.h>

#include <cstdint>

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

/// Whether a message is a receipt for just this.
inline bool IsReceiptFor(const Receipt& sent, const CMail& mail) {
    Receipt receipt;
    return mail.MsgId() == kEndOfFile && mail.Read(receipt) && receipt == sent;
}

/// The two sides of one run. Each run has its own tag, so that concurrent runs, and the remains of a killed one, do not
/// interfere.
inline ORCAOBJID SenderId(unsigned long tag) {
    return ORCAOBJID{0x43000000UL | (tag & 0xFFFFFF)};
}

inline ORCAOBJID ReceiverId(unsigned long tag) {
    return ORCAOBJID{0x52000000UL | (tag & 0xFFFFFF)};
}

/// A hidden window that receives notifications.
inline HWND MakeMailWindow() {
    return CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}
