#pragma once

#include <tessel/foundation/platform.h>

/// An IPv4 address, with its dotted text in both widths.
///
/// The number is in network byte order, as the socket functions take it; Pack() and Unpack() work on numbers in host
/// byte order instead. Text that is no address gives INADDR_NONE (0xFFFFFFFF), and so does a null pointer.
/// A copy makes texts of its own.
/// Threads: not synchronised, conversions to text neither; one thread at a time uses an object.
class TESSEL_API CIpAddress {
public:
    /// Takes the address as it is.
    /// @param address  in network byte order
    CIpAddress(unsigned long address);

    /// Reads dotted text, with inet_addr.
    /// @param dotted  text; null gives INADDR_NONE
    CIpAddress(const char* dotted);

    /// Reads dotted text, with inet_addr.
    /// @param dotted  text, of which 15 characters count; null gives INADDR_NONE
    CIpAddress(const wchar_t* dotted);

    /// Copies the address.
    /// @param other  address to copy
    CIpAddress(const CIpAddress& other);

    /// Copies the address; text that was got before stays valid.
    /// @param other  address to copy
    /// @return this object
    CIpAddress& operator=(const CIpAddress& other);

    /// Frees the texts.
    virtual ~CIpAddress();

    /// The address.
    /// @return number in network byte order
    operator unsigned long() const { return m_ulAddress; }

    /// Dotted text.
    /// @return text in a buffer of 16 bytes, owned by this object and written anew by every call; null without memory
    operator char*() const;

    /// Dotted wide text.
    /// @return text in a buffer of 16 characters, owned by this object and written anew by every call; null without
    ///         memory
    operator unsigned short*() const;

    /// Dotted wide text, for functions that take wchar_t; the same buffer.
    /// @return text in a buffer of 16 characters, owned by this object and written anew by every call; null without
    ///         memory
    operator wchar_t*() const;

    /// Writes a number as dotted text, its highest byte first.
    /// @param value  number in host byte order
    /// @param out    receives the text and its terminator, 16 characters at most; null writes nothing
    static void Unpack(unsigned long value, wchar_t* out);

    /// Reads dotted text, its first number as the highest byte. Of each number the low 8 bits count, runs of dots
    /// count as one, and numbers that are missing are 0.
    /// @param dotted  text; null or fewer than 7 characters give 0
    /// @return number in host byte order
    static unsigned long Pack(const wchar_t* dotted);

private:
    friend struct CIpAddressLayout;

    unsigned long m_ulAddress;
    mutable char* m_pNarrow;
    mutable wchar_t* m_pWide;
};
