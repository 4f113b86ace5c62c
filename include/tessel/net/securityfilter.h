#pragma once

#include <tessel/foundation/platform.h>

/// The protocols whose ports are allowed or blocked; a set of bits.
enum PROTOCOL : int {
    PROTOCOL_UDP = 1, ///< UDP
    PROTOCOL_TCP = 2  ///< TCP
};

/// Both sets of protocols together, as in `PROTOCOL_TCP | PROTOCOL_UDP`.
/// @param one    a set
/// @param other  another set
/// @return the protocols that are in either
constexpr PROTOCOL operator|(PROTOCOL one, PROTOCOL other) {
    return static_cast<PROTOCOL>(static_cast<int>(one) | static_cast<int>(other));
}

/// Switches the system's TCP/IP port filter on and off, and keeps for every network adapter the lists of the ports and
/// raw IP protocols that it lets through.
///
/// All settings live under `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services`, and take effect when
/// the system next starts its network. The adapters are those that are bound to TCP/IP when the object is made. A list
/// that an adapter does not have is not created, and no operation tells of an error of the registry: where one occurs,
/// nothing changes. Writing needs the rights of an administrator.
/// Threads: not synchronised; one thread at a time uses an object, and one at a time changes the settings.
class TESSEL_API CSecurityFilterNT {
public:
    /// Numbers of ports with a meaning of their own.
    enum : unsigned long {
        ALL_PORTS = 0xFFFFFFFF ///< every port
    };

    /// Finds the adapters: the entries of `Tcpip\Linkage`, "Bind", that begin with `\Device\`.
    CSecurityFilterNT();

    /// Copies the adapters; without memory for that there are none.
    /// @param other  object to copy
    CSecurityFilterNT(const CSecurityFilterNT& other);

    /// Copies the adapters; without memory for that there are none.
    /// @param other  object to copy
    /// @return this object
    CSecurityFilterNT& operator=(const CSecurityFilterNT& other);

    /// Forgets the adapters; the settings stay.
    virtual ~CSecurityFilterNT();

    /// Switches the filter, if the system has the setting at all. On every adapter the IP protocols 1 and 255 are let
    /// through as it goes on, and the list of protocols is emptied as it goes off.
    /// @param on  1 or 0
    /// @return not 0: the switch or a list changed; 0: nothing did
    int Enable(int on);

    /// Whether the filter is on.
    /// @return 1: on; 0: off, or the system has no such setting
    int IsEnabled();

    /// Lets a port through on every adapter: it comes first in the lists.
    /// @param port       the port
    /// @param protocols  one or both
    /// @return 1: a list changed; 0: none did
    int AllowPort(unsigned short port, PROTOCOL protocols);

    /// Lets a port, or no port at all, through no longer on every adapter.
    /// @param port       the port, or ALL_PORTS
    /// @param protocols  one or both
    /// @return always 0, unlike AllowPort()
    int BlockPort(unsigned long port, PROTOCOL protocols);

private:
    friend struct CSecurityFilterNTLayout;
    class Implementation;

    int IsAllowed(unsigned short port, PROTOCOL protocols);
    void CopyFrom(const CSecurityFilterNT& other);

    Implementation* m_pImplementation;
};
