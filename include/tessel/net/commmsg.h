#pragma once

#include <tessel/foundation/platform.h>

#include <cstddef>

/// A message of any length whose wire form is one contiguous run of bytes.
///
/// One allocation holds the object and, directly after its length word, the data. On a stream a message is its
/// 4-byte length in the machine's byte order (little-endian) followed by the data: GetXmitLength() bytes at GetMsg().
/// A datagram carries the data alone. A message may be empty.
///
/// Create one with its data length and fill it; release it with delete:
/// @code
///     CCommMsg* const message = new (5) CCommMsg;
///     if (message != nullptr) std::memcpy(message->GetData(), "hello", 5);
///     delete message;
/// @endcode
/// Inside the library the allocation passes the length to the constructor on the same thread, so no compiler setting of
/// the program can lose it. An object created in any other way (on the stack, as a member, by copying) has no room for
/// data: only its length may be used, which is indeterminate after default construction. Do not derive from the class:
/// the data would overlap the derived class's members.
/// Threads: not synchronised; only one thread at a time may use a message.
class TESSEL_API CCommMsg {
public:
    /// Allocates a message, for the expression new (n) CCommMsg.
    /// @param size  bytes of the object itself
    /// @param n     data length in bytes
    /// @return the memory, with its length word set; null if memory is short: the new expression is then null, too
    static void* operator new(std::size_t size, unsigned int n) noexcept;

    /// Frees a message.
    /// @param block  the memory that the allocation returned, or null
    static void operator delete(void* block) noexcept;

    /// Frees the memory after the constructor failed.
    /// @param block  the memory that the allocation returned, or null
    /// @param n      data length, unused
    static void operator delete(void* block, unsigned int n) noexcept;

    /// Keeps the length that the allocation set.
    CCommMsg() noexcept;

    /// Copies only the length: the copy has no room for data.
    /// @param other  message whose length to copy
    CCommMsg(const CCommMsg& other) noexcept;

    /// Copies only the length. A length greater than the message was created with claims bytes that it does not own.
    /// @param other  message whose length to copy
    /// @return this message
    CCommMsg& operator=(const CCommMsg& other) noexcept;

    virtual ~CCommMsg();

    /// Length of the data.
    /// @return bytes
    unsigned int GetLength() const { return m_ulLength; }

    /// The data, for reading and writing.
    /// @return first of GetLength() bytes, directly after the length word; owned by the message
    unsigned char* GetData() const { return GetMsg() + sizeof m_ulLength; }

    /// The message in its stream form.
    /// @return first of GetXmitLength() bytes, the length word; owned by the message
    unsigned char* GetMsg() const { return reinterpret_cast<unsigned char*>(const_cast<unsigned int*>(&m_ulLength)); }

    /// Length of the stream form.
    /// @return bytes: GetLength() + 4, modulo 2^32
    unsigned int GetXmitLength() const { return m_ulLength + static_cast<unsigned int>(sizeof m_ulLength); }

private:
    friend struct CCommMsgLayout;

    explicit CCommMsg(unsigned int n) noexcept;

    unsigned int m_ulLength;
};
