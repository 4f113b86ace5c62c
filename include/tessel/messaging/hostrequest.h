#pragma once

#include <tessel/foundation/platform.h>

/// @name Requests to the host
/// Any thread may call these functions.
///@{

/// Has the host's thread create a dialog, and waits for it.
/// @param dialogId  resource number of the template
/// @param parent    parent of the dialog; null for the frame window
/// @param module    module that contains the template; null for the host's
/// @return the dialog, which belongs to the host's thread; null: no host, or no such dialog. For its entry in
///         the resource table see OSClass::ProcessOsAPIs()
TESSEL_API HWND LoadResourceDialog(int dialogId, HWND parent, HINSTANCE module);

/// Has the host's thread set which notifications a window receives, and waits for it.
/// @param hWnd  the window
/// @param mask  the kinds it receives; 0 frees its entry, which it needs before the window is destroyed
/// @return 1: handled by the host, which shows a message box if its table is full; 0: no host
TESSEL_API int RequestNotify(HWND hWnd, unsigned long mask);

/// Asks a process of the workstation to end: sends WM_DESTROY to its frame window and waits until it is handled; if the
/// process hangs, indefinitely.
/// The window is not destroyed, and OSClass ignores the message. A program that should end this way replaces the frame
/// window's procedure with one that posts WM_QUIT.
/// @param processId  Win32 id of the process; 0 for the calling one. Without a frame window nothing is sent
TESSEL_API void ShutDown(unsigned long processId);
///@}
