#pragma once

#include <tessel/foundation/platform.h>

#include <cstddef>

/// A message of any length, laid out so that what goes on the wire is one run of bytes.
///
/// One allocation holds the object and, directly behind its length word, the data. On a stream a message is its
/// 4-byte length in the machine's byte order (little-endian) followed by the data: GetXmitLength() bytes at GetMsg().
/// A datagram carries the data alone. A message without data is legal.
///
/// Create one with its data length and fill it; release it with delete:
/// @code
///     CCommMsg* const message = new (5) CCommMsg;
///     if (message != nullptr) std::memcpy(message->GetData(), "hello", 5);
///     delete message;
/// @endcode
/// The length reaches the constructor from the allocation of the same thread, inside the library: no setting of the
/// program's compiler can lose it. An object that was made in any other way (on the stack, as a member, by copying)
/// has no room for data: nothing but its length may be used, and a default one keeps whatever its memory held there.
/// Do not derive from it either: the data would lie over the derived class's members.
/// Threads: not synchronised; one thread at a time uses a message.
class TESSEL_API CCommMsg {
public:
    /// Allocates a message; comes from the expression new (n) CCommMsg.
    /// @param size  bytes of the object itself
    /// @param n     data length in bytes
    /// @return the memory, its length word set; null without memory, and the new expression is then null too
    static void* operator new(std::size_t size, unsigned int n) noexcept;

    /// Releases a message.
    /// @param block  what the allocation returned, or null
    static void operator delete(void* block) noexcept;

    /// Releases memory whose constructor failed.
    /// @param block  what the allocation returned, or null
    /// @param n      data length, unused
    static void operator delete(void* block, unsigned int n) noexcept;

    /// Leaves the length as the allocation set it.
    CCommMsg() noexcept;

    /// Copies the length alone, never the data: the copy has no room for it.
    /// @param other  message whose length to take
    CCommMsg(const CCommMsg& other) noexcept;

    /// Copies the length alone, never the data; a greater length than the message was made with claims bytes that it
    /// does not own.
    /// @param other  message whose length to take
    /// @return this message
    CCommMsg& operator=(const CCommMsg& other) noexcept;

    virtual ~CCommMsg();

    /// Length of the data.
    /// @return bytes
    unsigned int GetLength() const { return m_ulLength; }

    /// The data, for reading and writing.
    /// @return first of GetLength() bytes, directly behind the length word; owned by the message
    unsigned char* GetData() const { return GetMsg() + sizeof m_ulLength; }

    /// What goes on a stream.
    /// @return first of GetXmitLength() bytes, the length word; owned by the message
    unsigned char* GetMsg() const { return reinterpret_cast<unsigned char*>(const_cast<unsigned int*>(&m_ulLength)); }

    /// Length of what goes on a stream.
    /// @return bytes: GetLength() + 4, modulo 2^32
    unsigned int GetXmitLength() const { return m_ulLength + static_cast<unsigned int>(sizeof m_ulLength); }

private:
    friend struct CCommMsgLayout;

    explicit CCommMsg(unsigned int n) noexcept;

    unsigned int m_ulLength;
};
