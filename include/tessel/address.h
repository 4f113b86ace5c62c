#pragma once

#include <tessel/platform.h>

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

/// The Ethernet (MAC) address of the machine's first network card, found at construction.
///
/// The cards are those that the registry lists under
/// "SOFTWARE\Microsoft\Windows NT\CurrentVersion\NetworkCards"; the first of them whose "ServiceName" can be read
/// counts, and its driver is asked. That takes the right to open the driver and, where the card has no DOS device
/// name, to define one for the moment of the question.
/// The object holds values only: copies are independent. Threads: any thread may read an object that none changes.
class TESSEL_API CEtherAddr {
public:
    /// Room for texts in characters, their terminators included.
    enum : unsigned int {
        TEXT_SIZE = 13,        ///< of the address
        SERVICE_NAME_SIZE = 64 ///< of the service name at most
    };

    /// Finds the card and asks its driver. GetStatus() tells whether that went well.
    CEtherAddr();

    /// Copies the values.
    CEtherAddr(const CEtherAddr&) = default;

    /// Copies the values.
    /// @return this object
    CEtherAddr& operator=(const CEtherAddr&) = default;

    /// Has nothing to free.
    virtual ~CEtherAddr() = default;

    /// Whether there is an address.
    /// @return 0: it was read; 1: there is no card, its driver cannot be asked or did not give 6 bytes, or a device
    ///         name that was defined for the question could not be removed again
    unsigned long GetStatus() const { return m_ulStatus; }

    /// Copies the address in binary form, all zero without one.
    /// @param out  receives 6 bytes in the order of the wire; null is ignored
    void GetBinary(unsigned char* out) const;

    /// Copies the address as 12 upper-case hexadecimal digits without separators, empty without one.
    /// @param out  receives up to TEXT_SIZE characters; null is ignored
    void GetText(wchar_t* out) const;

    /// The length of the service name.
    /// @return characters without the terminator, at most 63
    unsigned int GetServiceNameLen() const;

    /// Copies the card's service name, under which the system keeps its settings and its device. It is there as soon
    /// as a card was found, also when its driver did not answer; else it is empty. A card whose name is no text, or
    /// does not fit, counts as having none.
    /// @param out  receives up to SERVICE_NAME_SIZE characters; null is ignored
    void GetServiceName(wchar_t* out) const;

private:
    friend struct CEtherAddrLayout;

    unsigned long GetEthernetAddress(unsigned char* out);

    unsigned long m_ulStatus;
    unsigned char m_aBinary[6];
    wchar_t m_szText[TEXT_SIZE];
    wchar_t m_szServiceName[SERVICE_NAME_SIZE];
};
