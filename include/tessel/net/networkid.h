#pragma once

#include <tessel/foundation/platform.h>
#include <tessel/system/registry.h>

#include <ntsecapi.h>

/// What CNetworkId::ValidateName() finds.
enum VN_RET_CODE {
    VN_VALID = 0,    ///< the name can be used
    VN_EMPTY = 1,    ///< there is no name
    VN_BAD_CHAR = 2, ///< the first character that a name must not have is no space
    VN_SPACE = 3     ///< the first character that a name must not have is a space
};

/// What CNetworkId::ValidateIpAddr() finds.
enum VI_RET_CODE {
    VI_VALID = 0,        ///< address and mask can be used
    VI_NO_HOST_PART = 1, ///< the address is that of the network itself
    VI_BAD_MASK = 2      ///< the mask is no row of ones followed by a row of zeros, or has only the one or the other
};

/// The machine's identity on the network: its name, its workgroup, and the IPv4 settings of its first network card,
/// which is the one that CEtherAddr finds.
///
/// Settings are read from and written to the system's own registry keys, and become effective when the system reads
/// them: the computer name at the next start, the addresses when the card is started anew. Writing takes an
/// administrator's rights. Nothing is checked on writing: call ValidateName() and ValidateIpAddr() first.
/// Copies have a registry accessor each and share nothing else. Threads: one thread at a time uses an object; the
/// name at the next start, which the objects of a process share, may be read and set by any thread.
class TESSEL_API CNetworkId {
public:
    /// Room for texts.
    enum : unsigned int {
        ADDRESS_SIZE = 16 ///< characters of an address at most, its terminator included
    };

    /// Finds the first card and whether DHCP is on for it (it counts as off when that cannot be read), and notes the
    /// computer's name as the one at the next start unless one is noted already.
    CNetworkId();

    /// Copies the members.
    CNetworkId(const CNetworkId&) = default;

    /// Copies the members.
    /// @return this object
    CNetworkId& operator=(const CNetworkId&) = default;

    /// Releases the registry accessor.
    virtual ~CNetworkId() = default;

    /// The computer's name as it is now.
    /// @param out   receives the name and its terminator; may be null when @p size is 0
    /// @param size  in: room in characters; out: the length without terminator or, when there was too little room,
    ///              the room needed
    /// @return 0 or the Win32 error (ERROR_BUFFER_OVERFLOW: too little room; ERROR_INVALID_PARAMETER: a null pointer)
    unsigned long GetComputerNameW(wchar_t* out, unsigned long* size);

    /// The computer's name from the next start on, as far as this process knows.
    /// @param out   receives the name, cut to the room and terminated; null for none
    /// @param size  in: room in characters; out: the room needed, terminator included
    /// @return 0; ERROR_BUFFER_OVERFLOW (111): too little room; ERROR_INVALID_PARAMETER: @p size is null
    unsigned long GetComputerNameAtNextBoot(wchar_t* out, unsigned long* size);

    /// Sets the computer's name from the next start on, also as the TCP/IP host name and the default domain for
    /// logging on; that these two could not be written is not told.
    /// @param name  the name; GetComputerNameAtNextBoot() gives it from now on, whatever the result, and knows 15
    ///              characters of it
    /// @return 0 or the Win32 error of the system's refusal (ERROR_INVALID_PARAMETER also for null)
    unsigned long SetComputerNameW(const wchar_t* name);

    /// The name of the workgroup or domain.
    /// @param out  receives the name and its terminator: room for 16 characters is enough for the names that the
    ///             system allows; untouched after a failure
    /// @return 0 or the Win32 error (ERROR_INVALID_PARAMETER: null)
    unsigned long GetWorkgroupName(wchar_t* out);

    /// Joins the machine to a workgroup.
    /// @param name  the name; null is reported
    /// @return 0 or the Win32 error (ERROR_INVALID_PARAMETER: null, or over 32,766 characters;
    ///         ERROR_NOT_ENOUGH_MEMORY)
    unsigned long SetWorkgroupName(const wchar_t* name);

    /// Whether a text can be the name of a computer or workgroup. Its length is not looked at.
    /// @param name  the name; null counts as empty
    /// @return VN_VALID: letters, digits and !@#$%^&()-_'{}.~ only; else what is wrong first
    VN_RET_CODE ValidateName(const wchar_t* name);

    /// Whether a machine can have an address. The address with all ones behind the mask is accepted.
    /// @param address  in host order
    /// @param mask     in host order: 0x80000000 to 0xFFFFFFFE, ones and then zeros
    /// @return VI_VALID, or what is wrong; the mask is looked at first
    VI_RET_CODE ValidateIpAddr(unsigned long address, unsigned long mask);

    /// Whether DHCP is on, as read at construction or set since.
    /// @return true: the setting is 1; false: it is anything else
    bool GetDhcpSetting() const { return m_ulDhcp == 1; }

    /// Switches DHCP on or off, for this object and in the registry. A failure to write is not told.
    /// @param on  true: on
    void SetDhcpSetting(bool on);

    /// The card's address: the one that DHCP assigned when DHCP is on (the setting is not 0), else the fixed one.
    /// @param out  a buffer of ADDRESS_SIZE characters: receives the text in the registry, with a 0 as the last
    ///             character however short it is; "0.0.0.0" where that is no text or does not fit. Left untouched when
    ///             nothing is there to read: preset it. Null is ignored.
    void GetIpAddress(wchar_t* out);

    /// The card's subnet mask, chosen as GetIpAddress(wchar_t*) does.
    /// @param out  as there
    void GetSubnetMask(wchar_t* out);

    /// The card's default gateway, chosen as GetIpAddress(wchar_t*) does.
    /// @param out  as there
    void GetDefGateway(wchar_t* out);

    /// The card's address as a number. Parts of the text over 255 carry into those in front of them.
    /// @return in host order; 0 when there is nothing to read
    unsigned long GetIpAddress();

    /// The card's subnet mask as a number.
    /// @return as GetIpAddress() does
    unsigned long GetSubnetMask();

    /// The card's default gateway as a number.
    /// @return as GetIpAddress() does
    unsigned long GetDefGateway();

    /// The fixed address or the one that DHCP assigned, whatever the setting, which stays as it is.
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

    /// Sets the fixed address. A value that the registry does not have yet is not made, and no failure is told.
    /// @param text  dotted text; null is ignored
    void SetIpAddress(const wchar_t* text);

    /// Sets the fixed subnet mask, as SetIpAddress() does.
    /// @param text  dotted text; null is ignored
    void SetSubnetMask(const wchar_t* text);

    /// Sets the fixed default gateway, as SetIpAddress() does.
    /// @param text  dotted text; null is ignored
    void SetDefGateway(const wchar_t* text);

    /// Gives the addresses back that DHCP assigned, by the system's configuration tool. It waits for the tool for
    /// 5 seconds at most and then ends it; the outcome is not told.
    void ReleaseDhcp();

    /// Asks DHCP for addresses anew, in the same way.
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
