#pragma once

#include <tessel/platform.h>

/// Thread priorities, as SetThreadPriority takes them.
enum PRIORITY : int {
    PRIORITY_LOWEST = -2,       ///< THREAD_PRIORITY_LOWEST
    PRIORITY_BELOW_NORMAL = -1, ///< THREAD_PRIORITY_BELOW_NORMAL
    PRIORITY_NORMAL = 0,        ///< THREAD_PRIORITY_NORMAL
    PRIORITY_ABOVE_NORMAL = 1,  ///< THREAD_PRIORITY_ABOVE_NORMAL
    PRIORITY_HIGHEST = 2        ///< THREAD_PRIORITY_HIGHEST
};

/// A point in pixels, laid out as the Win32 POINT.
struct ORCA_tagPOINT {
    long x; ///< to the right
    long y; ///< downwards
};

/// @name Processes and threads
/// Any thread may call these functions.
///@{

/// Id of the calling process (GetCurrentProcessId).
/// @return the Win32 process id
TESSEL_API unsigned long GetMyProcess();

/// Id of the calling thread (GetCurrentThreadId).
/// @return the Win32 thread id
TESSEL_API unsigned long GetMyThread();

/// Suspends the calling thread (Sleep).
/// @param ms  milliseconds
TESSEL_API void Sleeper(int ms);

/// Starts a thread of the C runtime (_beginthread) and gives up the rest of the time slice.
/// @param entry      what it runs; the runtime closes the thread's handle when it returns
/// @param stackSize  bytes of stack; 0 for the program's default
/// @param argument   handed to @p entry unchanged
/// @return the runtime's result, the low 32 bits of the handle; 0xFFFFFFFF: failure (errno)
TESSEL_API unsigned long BeginThread(void (*entry)(void*), unsigned int stackSize, void* argument);

/// Ends the calling thread, which BeginThread() started (_endthread). Destructors of its objects do not run.
TESSEL_API void EndThread();

/// Priority of the calling thread (GetThreadPriority).
/// @return the priority; THREAD_PRIORITY_ERROR_RETURN: failure
TESSEL_API int GetPriority();

/// Sets the priority of the calling thread (SetThreadPriority).
/// @param priority  the new one
/// @return 0: set; else the Win32 error
TESSEL_API int SetPriority(PRIORITY priority);

/// Priority class of a process (GetPriorityClass).
/// @param process  its handle, which stays the caller's
/// @return the class; 0: failure (GetLastError())
TESSEL_API unsigned long GetPriorityOfClass(HANDLE process);

/// Sets the priority class of the calling process (SetPriorityClass).
/// @param priority  below 0, down to -2: idle; 1: high; 2: real-time; anything else: normal
/// @return not 0: set; 0: failure (GetLastError())
TESSEL_API int SetProcess(PRIORITY priority);

/// Whether this is not the first process that uses the name. It marks the process as running until it ends, also when
/// another one is found, and keeps a handle: call it once, and do not poll with it.
/// @param name  name of a mutex
/// @return 1: another instance runs, or it cannot be told; 0: this is the first
TESSEL_API int SingleInstance(const wchar_t* name);

/// Tells a process of the workstation to end: sends its frame window WM_DESTROY, and waits until that is handled,
/// without end for a process that hangs.
/// The window is not destroyed, and OSClass does nothing on the message: a program that is to be ended so replaces
/// the frame window's procedure by one that posts WM_QUIT.
/// @param processId  Win32 id of the process; 0 for the calling one. One without a frame window is left alone
TESSEL_API void ShutDown(unsigned long processId);
///@}

/// @name Messages
///@{

/// Waits for a message of the calling thread (GetMessageW).
/// @param message  receives it
/// @param hWnd     only for this window; null for all
/// @param first    lowest message number; 0 with 0 for all
/// @param last     highest message number
/// @return not 0: a message; 0: WM_QUIT; -1: failure (GetLastError())
TESSEL_API int GetAMessage(MSG* message, HWND hWnd, UINT first, UINT last);

/// Hands a message to its window procedure (DispatchMessageW), on the calling thread.
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

/// Number of a message that is the same in every process (RegisterWindowMessageW). Any thread.
/// @param name  name of the message
/// @return the number; 0: failure (GetLastError())
TESSEL_API UINT RegisterThisWindowMessage(const wchar_t* name);

/// Posts WM_QUIT to the calling thread (PostQuitMessage with 0), which ends a manager's loop.
TESSEL_API void QuitManager();

/// Shows a message titled "Varda Message" and waits for OK.
/// @param text  the message
TESSEL_API void MsgBox(const wchar_t* text);

/// Makes a key event (keybd_event) with the character as its scan code.
/// @param character  the character whose virtual key is used (VkKeyScanW)
/// @param flags      8: extended key; 16: released instead of pressed. Others have no effect
/// @return 0
TESSEL_API int SimulatedKeypress(unsigned char character, int flags);

/// Starts a timer (SetTimer), on the window's thread.
/// @param hWnd       window that gets WM_TIMER; may be null
/// @param id         number of the timer
/// @param ms         milliseconds between two ticks
/// @param procedure  called instead of the window's procedure; may be null
/// @return the timer's number; 0: failure (GetLastError())
TESSEL_API UINT_PTR SetATimer(HWND hWnd, UINT_PTR id, UINT ms, TIMERPROC procedure);

/// Ends a timer (KillTimer), on the window's thread.
/// @param hWnd  the window
/// @param id    number of the timer
/// @return not 0: ended; 0: failure (GetLastError())
TESSEL_API int KillATimer(HWND hWnd, UINT_PTR id);
///@}

/// @name Windows
/// What creates, focuses or draws belongs to the window's thread; the others may be called on any.
///@{

/// Tells a window that it has the focus: sends WM_SETFOCUS, and moves nothing.
/// @param hWnd  the window
TESSEL_API void SetWindowFocus(HWND hWnd);

/// Sends WM_CLOSE.
/// @param hWnd  the dialog
/// @return the window procedure's result; 0 when it is no window
TESSEL_API int CloseDialog(HWND hWnd);

/// Whether a window is visible (IsWindowVisible).
/// @param hWnd  the window
/// @return not 0: it is; 0: it is not
TESSEL_API int IsVisibleWindow(HWND hWnd);

/// Whether a window is visible (IsWindowVisible).
/// @param hWnd  the window
/// @return not 0: it is; 0: it is not
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

/// Marks a rectangle for painting, background included (InvalidateRect). It sets nothing.
/// @param hWnd       the window
/// @param rectangle  in client pixels
/// @return 0: success; 1: failure (GetLastError())
TESSEL_API int SetRect(HWND hWnd, RECT& rectangle);

/// A measure of the system (GetSystemMetrics).
/// @param index  which, SM_...
/// @return its value; 0: unknown
TESSEL_API int GetASystemMetrics(int index);

/// Gives a window another parent (SetParent).
/// @param child   the window
/// @param parent  the new parent; null for the desktop
/// @return the parent before; null: failure (GetLastError())
TESSEL_API HWND SetAParent(HWND child, HWND parent);

/// Moves the keyboard focus (SetFocus).
/// @param hWnd  window of the calling thread; null takes the focus away
/// @return the window that had it; null: none, or failure (GetLastError())
TESSEL_API HWND SetTheFocus(HWND hWnd);

/// The child at a point (ChildWindowFromPoint).
/// @param parent  the window
/// @param point   in its client pixels
/// @return the child, or the window itself; null: outside
TESSEL_API HWND ChildWindowFromAPoint(HWND parent, ORCA_tagPOINT point);

/// Converts a screen position to a window's client position (ScreenToClient).
/// @param hWnd   the window
/// @param point  in screen pixels; receives client pixels
/// @return not 0: converted; 0: failure (GetLastError())
TESSEL_API int ScreenToClientConversion(HWND hWnd, ORCA_tagPOINT* point);

/// A window's device context (GetDC), to be given back with ReleaseThisDC().
/// @param hWnd  the window; null for the screen
/// @return the context; null: failure
TESSEL_API HDC GetThisDC(HWND hWnd);

/// Gives a device context back (ReleaseDC).
/// @param hWnd     the window
/// @param context  what GetThisDC() gave
/// @return 1: released; 0: not
TESSEL_API int ReleaseThisDC(HWND hWnd, HDC context);

/// A window's rectangle on the screen (GetWindowRect).
/// @param hWnd       the window
/// @param rectangle  receives it, in screen pixels
/// @return not 0: success; 0: failure (GetLastError())
TESSEL_API int GetAWindowRect(HWND hWnd, RECT* rectangle);

/// A 32-bit value kept with a window (GetWindowLongW).
/// @param hWnd   the window
/// @param index  which, GWL_... or an offset in bytes
/// @return the value; 0: none, or failure (GetLastError())
TESSEL_API long GetAWindowLong(HWND hWnd, int index);

/// Sets a 32-bit value kept with a window (SetWindowLongW).
/// @param hWnd   the window
/// @param index  which, GWL_... or an offset in bytes
/// @param value  the new value
/// @return the value before; 0: none, or failure (GetLastError())
TESSEL_API long SetAWindowLong(HWND hWnd, int index, long value);

/// Whether a handle is a window's (IsWindow).
/// @param hWnd  the handle
/// @return not 0: it is; 0: it is not
TESSEL_API int IsThisAWindow(HWND hWnd);

/// A window's text (GetWindowTextW).
/// @param hWnd         the window
/// @param text         receives it, terminated and cut to fit
/// @param sizeInChars  room in @p text, terminator included
/// @return characters without the terminator; 0: none, or failure (GetLastError())
TESSEL_API int GetAWindowText(HWND hWnd, wchar_t* text, int sizeInChars);

/// Shows or hides a window (ShowWindow).
/// @param hWnd     the window
/// @param command  how, SW_...
/// @return not 0: it was visible before; 0: it was hidden
TESSEL_API int ShowAWindow(HWND hWnd, int command);

/// Looks for a top-level window (FindWindowW) and may bring it to the front.
/// @param className   its class; null for any
/// @param windowName  its title; null for any
/// @param activate    whether to make it the foreground window
/// @return 1: found; 0: not
TESSEL_API int IsWindowFound(const wchar_t* className, const wchar_t* windowName, bool activate);

/// Makes a window the foreground window, borrowing the input of the thread that is there now (AttachThreadInput).
/// @param hWnd  the window
/// @return not 0: done; 0: there is no foreground window, its input cannot be borrowed, or the system refuses
TESSEL_API int SetForegroundWindowEx(HWND hWnd);

/// Has the host's thread make a dialog; any thread may call it, and waits until the dialog is there.
/// @param dialogId  resource number of the template
/// @param parent    parent of the dialog; null for the frame window
/// @param module    module that holds the template; null for the host's
/// @return the dialog, which belongs to the host's thread; null: no host, or no such dialog. Either way an entry in
///         the resource table stays (OSClass::ProcessOsAPIs())
TESSEL_API HWND LoadResourceDialog(int dialogId, HWND parent, HINSTANCE module);

/// Has the host's thread note which notifications a window wants; any thread may call it, and waits for it.
/// @param hWnd  the window
/// @param mask  the kinds that it wants; 0 for none any more, which a window that goes needs before
/// @return 1: handled by the host, which tells in a message box that its table is full; 0: there is none
TESSEL_API int RequestNotify(HWND hWnd, unsigned long mask);
///@}

/// @name Modules, files and drives
/// Any thread may call these functions.
///@{

/// Loads a module (LoadLibraryW); it has nothing to do with images.
/// @param name  file name of the module
/// @return the module, to be given back with UnLoadImage(); null: failure (GetLastError())
TESSEL_API HINSTANCE LoadImageW(const wchar_t* name);

/// Gives a module back (FreeLibrary).
/// @param module  what LoadImageW() gave
/// @return not 0: given back; 0: failure (GetLastError())
TESSEL_API UINT UnLoadImage(HINSTANCE module);

/// Loads the module that brings the rich edit control ("Riched20.dll").
/// @return the module, to be given back with ReleaseRichEditControls(); null: failure (GetLastError())
TESSEL_API HINSTANCE InitRichEditControls();

/// Gives the rich edit module back (FreeLibrary).
/// @param module  what InitRichEditControls() gave
/// @return not 0: given back; 0: failure (GetLastError())
TESSEL_API int ReleaseRichEditControls(HINSTANCE module);

/// The low 16 bits of a word.
/// @param word  32 bits
/// @return the low half
TESSEL_API unsigned short LOFROMWORD(unsigned long word);

/// Deletes a file (DeleteFileW).
/// @param name  the file
/// @return not 0: deleted; 0: failure (GetLastError())
TESSEL_API int FileDelete(const wchar_t* name);

/// Writes to a file whose handle comes as a window's (WriteFile).
/// @param target  a file handle, whatever its declared type
/// @param buffer  what to write
/// @param count   bytes, not characters
/// @return 0: all were written; 1: not, or failure (GetLastError())
TESSEL_API int WriteTarget(HWND target, const wchar_t* buffer, unsigned long count);

/// Serial number of the volume that a path is on.
/// @param path  a path that starts with a drive letter
/// @return the number; 0: failure (GetLastError())
TESSEL_API unsigned long GetVolumeSerialNumber(const wchar_t* path);

/// Space on a drive (GetDiskFreeSpaceExW); an empty removable drive gives no system dialog.
/// @param path          a folder on the drive
/// @param freeToCaller  receives the bytes that the caller may use; unchanged after a failure
/// @param total         receives the bytes of the drive; unchanged after a failure
/// @return not 0: success; 0: failure (GetLastError())
TESSEL_API int GetDriveFreeSpace(const wchar_t* path, unsigned long long* freeToCaller, unsigned long long* total);
///@}

/// @name Clock
/// Any thread may call these functions.
///@{

/// Sets the machine's local clock (SetLocalTime). A date that does not exist is ignored, and so is 29 February.
/// @param day     1 to 31
/// @param month   1 to 12
/// @param year    four digits
/// @param hour    0 to 23
/// @param minute  0 to 59
/// @param second  0 to 59
TESSEL_API void SetDateTime(unsigned short day, unsigned short month, unsigned short year, unsigned short hour,
                            unsigned short minute, unsigned short second);

/// Reads the machine's local clock (GetLocalTime).
/// @param day     receives 1 to 31
/// @param month   receives 1 to 12
/// @param year    receives four digits
/// @param hour    receives 0 to 23
/// @param minute  receives 0 to 59
/// @param second  receives 0 to 59
TESSEL_API void GetDateTime(unsigned short& day, unsigned short& month, unsigned short& year, unsigned short& hour,
                            unsigned short& minute, unsigned short& second);
///@}
