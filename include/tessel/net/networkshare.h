#pragma once

#include <tessel/foundation/platform.h>

/// A connection of this machine to a network share, with or without a local device name.
///
/// An object can connect only once: it stays marked as connected after Close(), so use a new object for the next share.
/// Copies share the name, and each copy that closes on destruction cancels the connection for all of them: pass by
/// pointer or reference.
/// Threads: one at a time. Every operation waits for the network, which may take a long time.
class TESSEL_API CNetworkShare {
public:
    /// Creates an object without a connection.
    /// @param closeOnDestruction  true: the destructor cancels the connection
    explicit CNetworkShare(bool closeOnDestruction = true);

    /// Shares the connection. If memory is short, the copy is not connected.
    /// @param other  object to copy
    CNetworkShare(const CNetworkShare& other);

    /// Shares the connection. The previous connection stays: Close() it first.
    /// @param other  object to copy
    /// @return this object
    CNetworkShare& operator=(const CNetworkShare& other);

    /// Cancels the connection if that was requested at construction; the result is discarded.
    virtual ~CNetworkShare();

    /// Connects to a share. Succeeds if the local name is already connected to that share, and also if the system
    /// answers that the logon session does not exist, which is reported.
    /// @param remoteName  the share, as "\\server\share"; compared ignoring case
    /// @param userName    null for the user who is logged on
    /// @param password    null for that user's
    /// @param localName   device to redirect, such as "Z:"; the share must then be a disk. Null for none
    /// @return 0; ERROR_ALREADY_ASSIGNED (85): this object is already connected, or the local name to another share;
    ///         ERROR_INVALID_PARAMETER (87): no remote name; else the Win32 error
    unsigned long Open(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password, wchar_t* localName);

    /// Tests whether a share can be reached: connects without a local name and disconnects at once. After a success the
    /// object is marked as connected: use a new one for the next test.
    /// @param remoteName  the share
    /// @param userName    null for the user who is logged on
    /// @param password    null for that user's
    /// @return as Open()
    unsigned long Test(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password);

    /// Cancels the connection, unless files on it are open. The object stays marked as connected.
    /// @return 0: cancelled, or there was none; else the Win32 error (ERROR_NOT_CONNECTED for a second call)
    unsigned long Close();

private:
    friend struct CNetworkShareLayout;

    wchar_t* m_szConnection;
    bool m_bCloseOnDestruction;
};
