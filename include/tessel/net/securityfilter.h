#pragma once

#include <tessel/foundation/platform.h>

/// The protocols whose ports are allowed or blocked, as a set of bits.
enum PROTOCOL : int {
    PROTOCOL_UDP = 1, ///< UDP
    PROTOCOL_TCP = 2  ///< TCP
};

/// The union of two sets, as in `PROTOCOL_TCP | PROTOCOL_UDP`.
/// @param one    a set
/// @param other  another set
/// @return the protocols that are in either
constexpr PROTOCOL operator|(PROTOCOL one, PROTOCOL other) {
    return static_cast<PROTOCOL>(static_cast<int>(one) | static_cast<int>(other));
}

/// Switches the system's TCP/IP port filter on and off, and maintains the lists of ports and raw IP protocols that it
/// lets through on each network adapter.
///
/// All settings are under `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services` and take effect when the system next
/// starts its network. The adapters are those bound to TCP/IP when the object is created. A list that an adapter lacks
/// is not created, and registry errors are not reported: nothing changes then. Writing requires administrator rights.
/// Threads: not synchronised; only one thread at a time may use an object, and only one may change the settings.
class TESSEL_API CSecurityFilterNT {
public:
    /// Port numbers with a special meaning.
    enum : unsigned long {
        ALL_PORTS = 0xFFFFFFFF ///< every port
    };

    /// Finds the adapters: the entries of the value "Bind" in `Tcpip\Linkage` that begin with `\Device\`.
    CSecurityFilterNT();

    /// Copies the adapters; if memory is short, the copy has none.
    /// @param other  object to copy
    CSecurityFilterNT(const CSecurityFilterNT& other);

    /// Copies the adapters; if memory is short, the copy has none.
    /// @param other  object to copy
    /// @return this object
    CSecurityFilterNT& operator=(const CSecurityFilterNT& other);

    /// Forgets the adapters; the settings stay.
    virtual ~CSecurityFilterNT();

    /// Switches the filter, if the system has the setting at all. Switching it on lets the IP protocols 1 and 255
    /// through on every adapter; switching it off empties the list of protocols.
    /// @param on  1 or 0
    /// @return not 0: the switch or a list changed; 0: nothing did
    int Enable(int on);

    /// Whether the filter is on.
    /// @return 1: on; 0: off, or the system has no such setting
    int IsEnabled();

    /// Lets a port through on every adapter, by inserting it at the front of the lists.
    /// @param port       the port
    /// @param protocols  one or both
    /// @return 1: a list changed; 0: none did
    int AllowPort(unsigned short port, PROTOCOL protocols);

    /// Blocks a port, or all ports, on every adapter.
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
