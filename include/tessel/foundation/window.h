#pragma once

#include <tessel/foundation/platform.h>

/// A point in pixels, laid out as the Win32 POINT.
struct ORCA_tagPOINT {
    long x; ///< to the right
    long y; ///< downwards
};

/// @name Windows
/// Call functions that create, focus or draw on the window's thread; the others on any thread.
///@{

/// Sends WM_SETFOCUS to a window; does not move the focus.
/// @param hWnd  the window
TESSEL_API void SetWindowFocus(HWND hWnd);

/// Sends WM_CLOSE.
/// @param hWnd  the dialog
/// @return the window procedure's result; 0 if it is not a window
TESSEL_API int CloseDialog(HWND hWnd);

/// Whether a window is visible (IsWindowVisible).
/// @param hWnd  the window
/// @return not 0: yes; 0: no
TESSEL_API int IsVisibleWindow(HWND hWnd);

/// Whether a window is visible (IsWindowVisible).
/// @param hWnd  the window
/// @return not 0: yes; 0: no
TESSEL_API int IsThisWindowVisible(HWND hWnd);

/// A control of a dialog (GetDlgItem).
/// @param dialog  the dialog
/// @param id      the control's identifier
/// @return the control; null: failure (GetLastError())
TESSEL_API HWND GetWindowHandle(HWND dialog, int id);

/// A window's client rectangle (GetClientRect).
/// @param hWnd       the window
/// @param rectangle  receives it, in pixels
/// @return 0: success; 1: failure (GetLastError())
TESSEL_API int GetRect(HWND hWnd, RECT& rectangle);

/// Invalidates a rectangle, including its background (InvalidateRect). It sets nothing.
/// @param hWnd       the window
/// @param rectangle  in client pixels
/// @return 0: success; 1: failure (GetLastError())
TESSEL_API int SetRect(HWND hWnd, RECT& rectangle);

/// A system metric (GetSystemMetrics).
/// @param index  SM_...
/// @return its value; 0: unknown
TESSEL_API int GetASystemMetrics(int index);

/// Changes the parent of a window (SetParent).
/// @param child   the window
/// @param parent  the new parent; null for the desktop
/// @return the previous parent; null: failure (GetLastError())
TESSEL_API HWND SetAParent(HWND child, HWND parent);

/// Moves the keyboard focus (SetFocus).
/// @param hWnd  window of the calling thread; null: removes the focus
/// @return the window that had it; null: none, or failure (GetLastError())
TESSEL_API HWND SetTheFocus(HWND hWnd);

/// The child window at a point (ChildWindowFromPoint).
/// @param parent  the window
/// @param point   in its client pixels
/// @return the child, or the window itself; null: outside
TESSEL_API HWND ChildWindowFromAPoint(HWND parent, ORCA_tagPOINT point);

/// Converts a screen position to a window's client position (ScreenToClient).
/// @param hWnd   the window
/// @param point  in screen pixels; receives client pixels
/// @return not 0: converted; 0: failure (GetLastError())
TESSEL_API int ScreenToClientConversion(HWND hWnd, ORCA_tagPOINT* point);

/// A window's device context (GetDC), to be released with ReleaseThisDC().
/// @param hWnd  the window; null for the screen
/// @return the context; null: failure
TESSEL_API HDC GetThisDC(HWND hWnd);

/// Releases a device context (ReleaseDC).
/// @param hWnd     the window
/// @param context  result of GetThisDC()
/// @return 1: released; 0: not
TESSEL_API int ReleaseThisDC(HWND hWnd, HDC context);

/// A window's rectangle on the screen (GetWindowRect).
/// @param hWnd       the window
/// @param rectangle  receives it, in screen pixels
/// @return not 0: success; 0: failure (GetLastError())
TESSEL_API int GetAWindowRect(HWND hWnd, RECT* rectangle);

/// A 32-bit value stored with a window (GetWindowLongW).
/// @param hWnd   the window
/// @param index  GWL_... or an offset in bytes
/// @return the value; 0: none, or failure (GetLastError())
TESSEL_API long GetAWindowLong(HWND hWnd, int index);

/// Sets a 32-bit value stored with a window (SetWindowLongW).
/// @param hWnd   the window
/// @param index  GWL_... or an offset in bytes
/// @param value  the new value
/// @return the previous value; 0: none, or failure (GetLastError())
TESSEL_API long SetAWindowLong(HWND hWnd, int index, long value);

/// Whether a handle identifies a window (IsWindow).
/// @param hWnd  the handle
/// @return not 0: yes; 0: no
TESSEL_API int IsThisAWindow(HWND hWnd);

/// A window's text (GetWindowTextW).
/// @param hWnd         the window
/// @param text         receives it, terminated and truncated to fit
/// @param sizeInChars  size of @p text, including the terminator
/// @return characters without the terminator; 0: none, or failure (GetLastError())
TESSEL_API int GetAWindowText(HWND hWnd, wchar_t* text, int sizeInChars);

/// Shows or hides a window (ShowWindow).
/// @param hWnd     the window
/// @param command  SW_...
/// @return not 0: it was visible before; 0: it was hidden
TESSEL_API int ShowAWindow(HWND hWnd, int command);

/// Finds a top-level window (FindWindowW) and optionally brings it to the front.
/// @param className   its class; null for any
/// @param windowName  its title; null for any
/// @param activate    true: makes it the foreground window
/// @return 1: found; 0: not
TESSEL_API int IsWindowFound(const wchar_t* className, const wchar_t* windowName, bool activate);

/// Makes a window the foreground window by attaching to the input of the current foreground thread (AttachThreadInput).
/// @param hWnd  the window
/// @return not 0: done; 0: there is no foreground window, attaching failed, or the system refused
TESSEL_API int SetForegroundWindowEx(HWND hWnd);
///@}
