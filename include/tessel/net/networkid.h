#pragma once

#include <tessel/foundation/platform.h>
#include <tessel/system/registry.h>

#include <ntsecapi.h>

/// Result of CNetworkId::ValidateName().
enum VN_RET_CODE {
    VN_VALID = 0,    ///< the name is valid
    VN_EMPTY = 1,    ///< the name is empty
    VN_BAD_CHAR = 2, ///< the first invalid character is not a space
    VN_SPACE = 3     ///< the first invalid character is a space
};

/// Result of CNetworkId::ValidateIpAddr().
enum VI_RET_CODE {
    VI_VALID = 0,        ///< address and mask are valid
    VI_NO_HOST_PART = 1, ///< the address is that of the network itself
    VI_BAD_MASK = 2      ///< the mask is not a run of ones followed by a run of zeros, each at least one bit long
};

/// The machine's identity on the network: its name, its workgroup, and the IPv4 settings of its first network card,
/// the one that CEtherAddr finds.
///
/// Settings are read from and written to the system's own registry keys, and take effect when the system reads them:
/// the computer name at the next start, the addresses when the card restarts. Writing requires administrator rights and
/// validates nothing: call ValidateName() and ValidateIpAddr() first. Each copy has its own registry accessor; nothing
/// is shared. Threads: only one thread at a time may use an object; any thread may read and set the name at the next
/// start, which the objects of a process share.
class TESSEL_API CNetworkId {
public:
    /// Sizes of texts.
    enum : unsigned int {
        ADDRESS_SIZE = 16 ///< longest address in characters, including its terminator
    };

    /// Finds the first card and whether DHCP is on for it (off if that cannot be read), and stores the computer's name
    /// as the one at the next start unless one is stored already.
    CNetworkId();

    /// Copies the members.
    CNetworkId(const CNetworkId&) = default;

    /// Copies the members.
    /// @return this object
    CNetworkId& operator=(const CNetworkId&) = default;

    /// Releases the registry accessor.
    virtual ~CNetworkId() = default;

    /// Returns the computer's current name.
    /// @param out   receives the name and its terminator; may be null if @p size is 0
    /// @param size  in: buffer size in characters; out: the length without terminator or, if the buffer was too small,
    ///              the size needed
    /// @return 0 or the Win32 error (ERROR_BUFFER_OVERFLOW: buffer too small; ERROR_INVALID_PARAMETER: a null pointer)
    unsigned long GetComputerNameW(wchar_t* out, unsigned long* size);

    /// Returns the computer's name from the next start on, as far as this process knows.
    /// @param out   receives the name, truncated to the buffer and terminated; null for none
    /// @param size  in: buffer size in characters; out: the size needed, including the terminator
    /// @return 0; ERROR_BUFFER_OVERFLOW (111): buffer too small; ERROR_INVALID_PARAMETER: @p size is null
    unsigned long GetComputerNameAtNextBoot(wchar_t* out, unsigned long* size);

    /// Sets the computer's name from the next start on, and with it the TCP/IP host name and the default logon domain;
    /// failures to write these two are not reported.
    /// @param name  the name; from now on GetComputerNameAtNextBoot() returns its first 15 characters, whatever the
    ///              result
    /// @return 0 or the Win32 error of the system's refusal (ERROR_INVALID_PARAMETER also for null)
    unsigned long SetComputerNameW(const wchar_t* name);

    /// Returns the name of the workgroup or domain.
    /// @param out  receives the name and its terminator: 16 characters are enough for the names that the system allows;
    ///             unchanged after a failure
    /// @return 0 or the Win32 error (ERROR_INVALID_PARAMETER: null)
    unsigned long GetWorkgroupName(wchar_t* out);

    /// Joins the machine to a workgroup.
    /// @param name  the name; null is reported
    /// @return 0 or the Win32 error (ERROR_INVALID_PARAMETER: null, or over 32,766 characters;
    ///         ERROR_NOT_ENOUGH_MEMORY)
    unsigned long SetWorkgroupName(const wchar_t* name);

    /// Checks whether a text is valid as the name of a computer or workgroup. Its length is not checked.
    /// @param name  the name; null counts as empty
    /// @return VN_VALID: only letters, digits and !@#$%^&()-_'{}.~; else the first fault
    VN_RET_CODE ValidateName(const wchar_t* name);

    /// Checks whether an address is valid for a machine. An address whose host part is all ones is accepted.
    /// @param address  in host order
    /// @param mask     in host order: 0x80000000 to 0xFFFFFFFE, ones and then zeros
    /// @return VI_VALID, or the fault; the mask is checked first
    VI_RET_CODE ValidateIpAddr(unsigned long address, unsigned long mask);

    /// Whether DHCP is on, as read at construction or set later.
    /// @return true: the setting is 1; false: it is anything else
    bool GetDhcpSetting() const { return m_ulDhcp == 1; }

    /// Switches DHCP on or off, in this object and in the registry. A failure to write is not reported.
    /// @param on  true: on
    void SetDhcpSetting(bool on);

    /// Returns the card's address: the one that DHCP assigned if DHCP is on (the setting is not 0), else the fixed one.
    /// @param out  a buffer of ADDRESS_SIZE characters: receives the text from the registry, and always a 0 in its last
    ///             character; "0.0.0.0" if the value is not a text or does not fit. Unchanged if there is nothing to
    ///             read: preset it. Null is ignored.
    void GetIpAddress(wchar_t* out);

    /// Returns the card's subnet mask, chosen like the address.
    /// @param out  as for GetIpAddress(wchar_t*)
    void GetSubnetMask(wchar_t* out);

    /// Returns the card's default gateway, chosen like the address.
    /// @param out  as for GetIpAddress(wchar_t*)
    void GetDefGateway(wchar_t* out);

    /// Returns the card's address as a number. Parts of the text above 255 carry into the part before them.
    /// @return in host order; 0 if there is nothing to read
    unsigned long GetIpAddress();

    /// The card's subnet mask as a number.
    /// @return as GetIpAddress() does
    unsigned long GetSubnetMask();

    /// The card's default gateway as a number.
    /// @return as GetIpAddress() does
    unsigned long GetDefGateway();

    /// Returns the fixed address or the one that DHCP assigned, whatever the setting, which stays unchanged.
    /// @param dhcp  0: the fixed one; else the assigned one
    /// @return as GetIpAddress() does
    unsigned long GetIpAddress(int dhcp);

    /// The fixed or the assigned subnet mask.
    /// @param dhcp  0: the fixed one; else the assigned one
    /// @return as GetIpAddress() does
    unsigned long GetSubnetMask(int dhcp);

    /// The fixed or the assigned default gateway.
    /// @param dhcp  0: the fixed one; else the assigned one
    /// @return as GetIpAddress() does
    unsigned long GetDefGateway(int dhcp);

    /// Sets the fixed address. A value missing from the registry is not created, and no failure is reported.
    /// @param text  dotted text; null is ignored
    void SetIpAddress(const wchar_t* text);

    /// Sets the fixed subnet mask, as SetIpAddress() does.
    /// @param text  dotted text; null is ignored
    void SetSubnetMask(const wchar_t* text);

    /// Sets the fixed default gateway, as SetIpAddress() does.
    /// @param text  dotted text; null is ignored
    void SetDefGateway(const wchar_t* text);

    /// Releases the addresses that DHCP assigned, with the system's configuration tool. It waits up to 5 seconds for
    /// the tool and then terminates it; the result is not reported.
    void ReleaseDhcp();

    /// Requests new addresses from DHCP, in the same way.
    void RenewDhcp();

private:
    friend struct CNetworkIdLayout;

    void SaveName(const wchar_t* path, const wchar_t* value, const wchar_t* name);
    void GetIpAddr(const wchar_t* name, wchar_t* out);
    unsigned long GetIpAddr(const wchar_t* name);
    unsigned long GetIpAddr(const wchar_t* name, int dhcp);
    void SetIpAddr(const wchar_t* name, const wchar_t* text);
    void RunIpConfig(const wchar_t* arguments);
    void InitLsaString(LSA_UNICODE_STRING* string, wchar_t* text, unsigned long length);

    wchar_t m_szAdapterKey[512];
    unsigned long m_ulDhcp;
    CReg m_Registry;
};
