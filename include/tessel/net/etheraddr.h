#pragma once

#include <tessel/foundation/platform.h>

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
