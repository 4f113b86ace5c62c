#pragma once

#include <tessel/foundation/platform.h>

/// An IPv4 address, with its dotted text in both character widths.
///
/// The number is in network byte order, as the socket functions expect it; Pack() and Unpack() work on numbers in host
/// byte order instead. Text that is not an address yields INADDR_NONE (0xFFFFFFFF), and so does a null pointer.
/// Each copy has its own texts.
/// Threads: not synchronised, not even conversions to text; only one thread at a time may use an object.
class TESSEL_API CIpAddress {
public:
    /// Stores an address.
    /// @param address  in network byte order
    CIpAddress(unsigned long address);

    /// Parses dotted text with inet_addr.
    /// @param dotted  text; null yields INADDR_NONE
    CIpAddress(const char* dotted);

    /// Parses dotted text with inet_addr.
    /// @param dotted  text, of which only the first 15 characters count; null yields INADDR_NONE
    CIpAddress(const wchar_t* dotted);

    /// Copies the address.
    /// @param other  address to copy
    CIpAddress(const CIpAddress& other);

    /// Copies the address; texts obtained earlier stay valid.
    /// @param other  address to copy
    /// @return this object
    CIpAddress& operator=(const CIpAddress& other);

    /// Frees the texts.
    virtual ~CIpAddress();

    /// The address.
    /// @return number in network byte order
    operator unsigned long() const { return m_ulAddress; }

    /// Dotted text.
    /// @return text in a buffer of 16 bytes, owned by this object and overwritten by every call; null if memory is
    ///         short
    operator char*() const;

    /// Dotted wide text.
    /// @return text in a buffer of 16 characters, owned by this object and overwritten by every call; null if memory is
    ///         short
    operator unsigned short*() const;

    /// Dotted wide text, for functions that take wchar_t; the same buffer.
    /// @return text in a buffer of 16 characters, owned by this object and overwritten by every call; null if memory is
    ///         short
    operator wchar_t*() const;

    /// Formats a number as dotted text, highest byte first.
    /// @param value  number in host byte order
    /// @param out    receives the text and its terminator, 16 characters at most; null writes nothing
    static void Unpack(unsigned long value, wchar_t* out);

    /// Parses dotted text; the first number becomes the highest byte. Only the low 8 bits of each number count, several
    /// dots in a row count as one, and missing numbers are 0.
    /// @param dotted  text; null or fewer than 7 characters yield 0
    /// @return number in host byte order
    static unsigned long Pack(const wchar_t* dotted);

private:
    friend struct CIpAddressLayout;

    unsigned long m_ulAddress;
    mutable char* m_pNarrow;
    mutable wchar_t* m_pWide;
};
