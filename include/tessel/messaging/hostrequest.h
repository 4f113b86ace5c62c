#pragma once

#include <tessel/foundation/platform.h>

/// @name Requests to the host
/// Any thread may call these functions.
///@{

/// Has the host's thread make a dialog; any thread may call it, and waits until the dialog is there.
/// @param dialogId  resource number of the template
/// @param parent    parent of the dialog; null for the frame window
/// @param module    module that holds the template; null for the host's
/// @return the dialog, which belongs to the host's thread; null: no host, or no such dialog. Its entry in the
///         resource table is that of OSClass::ProcessOsAPIs()
TESSEL_API HWND LoadResourceDialog(int dialogId, HWND parent, HINSTANCE module);

/// Has the host's thread note which notifications a window wants; any thread may call it, and waits for it.
/// @param hWnd  the window
/// @param mask  the kinds that it wants; 0 for none any more, which a window that goes needs before
/// @return 1: handled by the host, which tells in a message box that its table is full; 0: there is none
TESSEL_API int RequestNotify(HWND hWnd, unsigned long mask);

/// Tells a process of the workstation to end: sends its frame window WM_DESTROY, and waits until that is handled,
/// without end for a process that hangs.
/// The window is not destroyed, and OSClass does nothing on the message: a program that is to be ended so replaces
/// the frame window's procedure by one that posts WM_QUIT.
/// @param processId  Win32 id of the process; 0 for the calling one. One without a frame window is left alone
TESSEL_API void ShutDown(unsigned long processId);
///@}
