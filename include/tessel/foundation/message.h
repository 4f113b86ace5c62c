#pragma once

#include <tessel/foundation/platform.h>

/// @name Messages
///@{

/// Waits for a message of the calling thread (GetMessageW).
/// @param message  receives it
/// @param hWnd     window whose messages to get; null: all windows
/// @param first    lowest message number; 0 with 0 for all
/// @param last     highest message number
/// @return not 0: a message; 0: WM_QUIT; -1: failure (GetLastError())
TESSEL_API int GetAMessage(MSG* message, HWND hWnd, UINT first, UINT last);

/// Dispatches a message to its window procedure (DispatchMessageW), on the calling thread.
/// @param message  the message
/// @return the window procedure's result
TESSEL_API LRESULT DispatchAMessage(MSG* message);

/// Posts a message to a thread (PostThreadMessageW). Any thread.
/// @param thread   Win32 thread id
/// @param message  message number
/// @param wParam   first parameter
/// @param lParam   second parameter
/// @return not 0: posted; 0: failure (GetLastError())
TESSEL_API int PostAThreadMessage(unsigned long thread, UINT message, WPARAM wParam, LPARAM lParam);

/// Sends a message and waits until it is handled (SendMessageW). Any thread.
/// @param hWnd     the window
/// @param message  message number
/// @param wParam   first parameter
/// @param lParam   second parameter
/// @return the window procedure's result
TESSEL_API LRESULT SendAMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

/// Dispatches the calling thread's messages, untranslated, until WM_QUIT.
/// @return 0
TESSEL_API int Dispatch_Pump();

/// Registers a message, whose number is the same in every process (RegisterWindowMessageW). Any thread.
/// @param name  name of the message
/// @return the number; 0: failure (GetLastError())
TESSEL_API UINT RegisterThisWindowMessage(const wchar_t* name);

/// Posts WM_QUIT to the calling thread (PostQuitMessage with 0), which ends a manager's loop.
TESSEL_API void QuitManager();

/// Shows a message titled "Varda Message" and waits for OK.
/// @param text  the message
TESSEL_API void MsgBox(const wchar_t* text);

/// Synthesises a key event (keybd_event) with the character as its scan code.
/// @param character  the character whose virtual key is used (VkKeyScanW)
/// @param flags      8: extended key; 16: released instead of pressed. Others have no effect
/// @return 0
TESSEL_API int SimulatedKeypress(unsigned char character, int flags);

/// Starts a timer (SetTimer), on the window's thread.
/// @param hWnd       window that gets WM_TIMER; may be null
/// @param id         number of the timer
/// @param ms         interval in milliseconds
/// @param procedure  called instead of the window's procedure; may be null
/// @return the timer's number; 0: failure (GetLastError())
TESSEL_API UINT_PTR SetATimer(HWND hWnd, UINT_PTR id, UINT ms, TIMERPROC procedure);

/// Ends a timer (KillTimer), on the window's thread.
/// @param hWnd  the window
/// @param id    number of the timer
/// @return not 0: ended; 0: failure (GetLastError())
TESSEL_API int KillATimer(HWND hWnd, UINT_PTR id);
///@}
