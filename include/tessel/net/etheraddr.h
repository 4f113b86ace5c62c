#pragma once

#include <tessel/foundation/platform.h>

/// The Ethernet (MAC) address of the machine's first network card, found at construction.
///
/// The registry lists the cards under "SOFTWARE\Microsoft\Windows NT\CurrentVersion\NetworkCards". The first one whose
/// "ServiceName" can be read is used, and its driver is queried. That requires the right to open the driver and, if the
/// card has no DOS device name, to define one temporarily.
/// The object holds only values: copies are independent. Threads: any thread may read an object while none changes it.
class TESSEL_API CEtherAddr {
public:
    /// Sizes of texts in characters, including the terminators.
    enum : unsigned int {
        TEXT_SIZE = 13,        ///< of the address
        SERVICE_NAME_SIZE = 64 ///< of the service name at most
    };

    /// Finds the card and queries its driver. GetStatus() returns the result.
    CEtherAddr();

    /// Copies the values.
    CEtherAddr(const CEtherAddr&) = default;

    /// Copies the values.
    /// @return this object
    CEtherAddr& operator=(const CEtherAddr&) = default;

    /// Has nothing to free.
    virtual ~CEtherAddr() = default;

    /// Whether there is an address.
    /// @return 0: it was read; 1: there is no card, its driver cannot be queried or did not return 6 bytes, or the
    ///         temporary device name could not be removed
    unsigned long GetStatus() const { return m_ulStatus; }

    /// Copies the address in binary form; all zero if there is none.
    /// @param out  receives 6 bytes in network order; null is ignored
    void GetBinary(unsigned char* out) const;

    /// Copies the address as 12 upper-case hexadecimal digits without separators; empty if there is none.
    /// @param out  receives up to TEXT_SIZE characters; null is ignored
    void GetText(wchar_t* out) const;

    /// The length of the service name.
    /// @return characters without the terminator, at most 63
    unsigned int GetServiceNameLen() const;

    /// Copies the card's service name, under which the system keeps its settings and its device. It is set if a card
    /// was found, even if its driver did not answer; else it is empty. A card whose name is not a text, or does not
    /// fit, counts as nameless.
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
