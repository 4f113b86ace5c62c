#pragma once

#include <tessel/foundation/platform.h>

/// A connection of this machine to a shared resource of the network, under a local device name or without one.
///
/// One object makes one connection in its life: it stays marked as connected after Close(), so use a fresh object for
/// the next share.
/// Copies share the name, and each copy that closes on destruction cancels the connection, for all of them: pass by
/// pointer or reference.
/// Threads: one at a time. The network may take long to answer, and every operation waits for it.
class TESSEL_API CNetworkShare {
public:
    /// Makes no connection.
    /// @param closeOnDestruction  true: the destructor cancels the connection
    explicit CNetworkShare(bool closeOnDestruction = true);

    /// Shares the connection. Without memory to share its name the copy is not connected.
    /// @param other  object to copy
    CNetworkShare(const CNetworkShare& other);

    /// Shares the connection. One that was held before stays: Close() it first.
    /// @param other  object to copy
    /// @return this object
    CNetworkShare& operator=(const CNetworkShare& other);

    /// Cancels the connection if the constructor was told so; the outcome is lost.
    virtual ~CNetworkShare();

    /// Connects to a share. A local name that is connected to that very share already is a success, and so is the
    /// system's answer that the logon session does not exist, which is reported.
    /// @param remoteName  the share, as "\\server\share"; compared without regard to case
    /// @param userName    null for the user who is logged on
    /// @param password    null for that user's
    /// @param localName   device to redirect, as "Z:"; the share must then be a disk. Null for none
    /// @return 0; ERROR_ALREADY_ASSIGNED (85): this object is connected already, or the local name to another share;
    ///         ERROR_INVALID_PARAMETER (87): no remote name; else the Win32 error
    unsigned long Open(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password, wchar_t* localName);

    /// Finds out whether a share can be reached: connects without a local name and cancels at once. The object is
    /// marked as connected after a success: use a fresh one for the next test.
    /// @param remoteName  the share
    /// @param userName    null for the user who is logged on
    /// @param password    null for that user's
    /// @return as Open()
    unsigned long Test(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password);

    /// Cancels the connection, unless files on it are open. The object stays marked as connected.
    /// @return 0: cancelled, or there was none; else the Win32 error (ERROR_NOT_CONNECTED the second time)
    unsigned long Close();

private:
    friend struct CNetworkShareLayout;

    wchar_t* m_szConnection;
    bool m_bCloseOnDestruction;
};
