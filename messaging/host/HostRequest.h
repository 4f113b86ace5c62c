#pragma once

#include <tessel/messaging/resource.h>

namespace tessel {

/// Key of a process's frame window in the resource table; its owner is the process id.
inline constexpr RESOURCE_TYPE kFrameType{1};
/// Which of the resources of that type.
inline constexpr RESOURCE_ID kFrameId{2};

/// WM_COMMAND request of another thread to the frame window: create a dialog.
inline constexpr unsigned long kCreateDialogRequest = 0xFFAB;
/// WM_COMMAND request of another thread to the frame window: add a window to the notification table.
inline constexpr unsigned long kNotifyRequest = 0xFFAD;

/// Record of such a request; lParam is its address.
struct HostRequest {
    unsigned long command;  ///< the request number again
    unsigned long reserved; ///< 0
    unsigned long dialogId; ///< resource number of the template; 0 for a notification
    HWND hWnd;              ///< parent of the dialog, or the window to be notified
    UINT_PTR argument;      ///< module of the template, or the notification mask
};

} // namespace tessel
