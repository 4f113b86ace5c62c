#pragma once

#include <tessel/messaging/resource.h>

#include <facet/palette.h>

/// The skeleton of every process of the workstation: a program derives from it, makes one object in its start-up
/// code, makes the post office and its mailboxes, and calls OS_Pump(), which returns when the program is to end.
///
/// The host owns an invisible frame window. Through it arrive the notifications of the mailboxes, the requests of
/// other threads for dialogs (LoadResourceDialog()) and notification entries (RequestNotify()), and the heartbeat's
/// timer. What is of interest goes on to OnMessage(). It also paints controls in the colours that
/// DIALOG_INTERFACE::SetColor() gave them, starts processes and threads, and loads managers: modules that run on a
/// thread of their own.
///
/// Order: CPostOffice::CreateGlobalPostOffice() first, so that the frame window is registered at once; then the host;
/// then the mailboxes, registered with GetFrameWindow(). Destroy them in the reverse order. With a post office that is
/// made between the host, which reports that there is none, and OS_Pump(), that registers the window.
/// Copies hold the same window by value and a registry of their own: pass by pointer or reference.
/// Threads: the thread that made the host runs the loop, the window procedure and the dialogs; only what is said to
/// may be called on others.
class TESSEL_API OSClass {
public:
    /// Makes the frame window and registers it.
    /// @param instance     module of the program
    /// @param name         name of the window's class, and its title
    /// @param param        value for the program's own use
    /// @param commandLine  the program's arguments; cut to 259 characters; may be null
    OSClass(HINSTANCE instance, const wchar_t* name, int param, const char* commandLine);

    /// Holds the same window, with a registry of its own.
    /// @param other  host to copy
    OSClass(const OSClass& other);

    /// Holds the same window, with a registry of its own.
    /// @param other  host to copy
    /// @return this object
    OSClass& operator=(const OSClass& other);

    /// Removes the frame window's registration and those of its thread, and empties the brush table: for all copies.
    /// The window itself stays until its thread ends, and does nothing more.
    virtual ~OSClass();

    /// Called once by OS_Pump(), before the loop.
    virtual void OnStart() = 0;

    /// Called when the frame window is to close. It is then destroyed, and the loop ends.
    virtual void OnClose() = 0;

    /// Called for each message of the frame window and the dialogs that is of interest, the notification of a
    /// mailbox (MAILBOX_NOTIFICATION) among them.
    /// @param hWnd     window that got it
    /// @param message  message number
    /// @param wParam   first parameter
    /// @param lParam   second parameter
    virtual void OnMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) = 0;

    /// Called once when the loop has ended.
    /// @param code  0
    /// @param text  "OS_Pump exiting"
    virtual void OnPumpExit(int code, const wchar_t* text) = 0;

    /// Runs the program: OnStart(), the heartbeat every 2.5 s, messages until WM_QUIT, OnPumpExit().
    /// @return the exit code
    int OS_Pump();

    /// Ends the loop.
    /// @param code  becomes the exit code unless it is 0
    void ExitApplication(int code);

    /// Sets what OS_Pump() returns.
    /// @param code  the exit code
    void SetExitCode(int code) { m_iExitCode = code; }

    /// Sets the heartbeat's message and, unless it is 0, sends it to all programs at once.
    /// @param id  number from RegisterThisWindowMessage(); 0 for no heartbeat
    void SetVardaMsgId(unsigned long id);

    /// The heartbeat's message.
    /// @return its number; 0: none
    static unsigned int GetVardaMsgId() { return OrcaUiMsg; }

    /// Sends the heartbeat to the top-level windows of all programs: its message, with 40039 and the frame window.
    /// @param hWnd     the frame window
    /// @param message  WM_TIMER; unused
    /// @param id       number of the timer; unused
    /// @param time     milliseconds since the system's start; unused
    static void CALLBACK TimerProc(HWND hWnd, UINT message, UINT_PTR id, DWORD time);

    /// Starts a program with the command line "ConsoleApp.exe ARGUMENTS". Any thread.
    /// @param application  file name of the program
    /// @param arguments    its arguments, a wide string whatever its declared type; null for none
    /// @return the process's handle, which is the caller's to close; null: failure (GetLastError())
    void* StartProcess(const wchar_t* application, const unsigned char* arguments);

    /// Starts a thread of the C runtime. Any thread.
    /// @param entry  what it runs, with a null argument
    /// @return the low 32 bits of its handle, which the runtime closes; 0: failure (errno)
    unsigned long CreateThread(void (*entry)(void*));

    /// Loads a manager and runs its export "ManagerMain" on a thread of its own; the module is unloaded when that
    /// returns, or at once when there is none. A module that cannot be loaded is told in a message box. Any thread.
    /// @param moduleName  file name of the module
    /// @param module      receives the module, which is the thread's; null when it cannot be loaded
    /// @return the low 32 bits of the thread's handle, which the runtime closes; 0xFFFFFFFF: failure
    unsigned long CreateThreadedManager(const wchar_t* moduleName, HINSTANCE* module);

    /// What a manager's thread runs: `extern "C" void ManagerMain(HINSTANCE)`, then the unloading.
    /// @param module  the manager's module
    static void CreateManager(void* module);

    /// Loads a module for its resources; a failure is told in a message box. Any thread.
    /// @param moduleName  file name of the module
    /// @return the module, to be given to CloseResourceFile(); null: failure
    HINSTANCE OpenResourceFile(const wchar_t* moduleName);

    /// Unloads a module. Any thread.
    /// @param module  what OpenResourceFile() gave
    void CloseResourceFile(HINSTANCE module);

    /// Registers a window class and makes an invisible frame window of it; a failure is reported.
    /// @param instance  module of the program
    /// @param name      name of the class and title of the window
    /// @return the window; null: failure
    HWND CreateWindowFrame(HINSTANCE instance, const wchar_t* name);

    /// Makes a modeless dialog whose messages go through the host. Its keys, such as Tab, work once the pointer has been
    /// over it.
    /// @param module    module that holds the template
    /// @param parent    its parent; may be null
    /// @param dialogId  resource number of the template
    /// @return the dialog; null: failure (GetLastError())
    HWND CreateDialogWindow(HINSTANCE module, HWND parent, int dialogId);

    /// The frame window's procedure.
    /// @param hWnd     the window
    /// @param message  message number
    /// @param wParam   first parameter
    /// @param lParam   second parameter
    /// @return what the message asks for
    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

    /// The procedure of every dialog made by CreateDialogWindow().
    /// @param hDlg     the dialog
    /// @param message  message number
    /// @param wParam   first parameter
    /// @param lParam   second parameter
    /// @return TRUE: handled; FALSE: not; a brush where the message asks for one
    static INT_PTR CALLBACK DlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

    /// Answers the requests of other threads, and hands everything else to WmCommand(). A request without a
    /// readable record is answered with 0. A dialog is entered in the resource table (type 2, id 0, owner its
    /// number) until it is destroyed; one that could not be made, until the next request.
    /// @param hWnd     window that got the message
    /// @param message  message number
    /// @param wParam   the request, or the message's first parameter
    /// @param lParam   the record's address; receives the answer: the dialog, or 1 for a notification request
    /// @return 1: a request was answered; 0: not, or there is no host
    static int ProcessOsAPIs(HWND hWnd, UINT message, WPARAM wParam, LPARAM& lParam);

    /// Paints what has an owner's colour, then calls OnMessage().
    /// @param hWnd     window that got the message
    /// @param message  message number
    /// @param wParam   first parameter
    /// @param lParam   second parameter
    /// @return 0
    static int WmCommand(HWND hWnd, UINT message, WPARAM wParam, LPARAM& lParam);

    /// Enters a window in the notification table, or changes its mask.
    /// @param hWnd  the window
    /// @param mask  the kinds of NOTIFY_KIND that it wants; 0 frees its entry. A window that goes keeps its entry:
    ///              free it first, or the 1,999 entries fill up and a new window may inherit the mask with the handle
    /// @return 0: entered; 1: the table is full, which a message box tells
    int RequestWndNotify(HWND hWnd, unsigned long mask);

    /// Which of some kinds of notification a window wants.
    /// @param hWnd  the window
    /// @param kind  the kinds; 5 and 6 are always wanted
    /// @return those of @p kind that it wants; 0: none
    int IsWindowNotify(HWND hWnd, UINT kind);

    /// Paints a control in the colours of its tag: its brush, and its text in the middle. Without a tag it does
    /// nothing.
    /// @param drawItem  address of a DRAWITEMSTRUCT
    static void PaintWithOwnerBrush(LPARAM drawItem);

    /// The frame window.
    /// @return the window; null when it could not be made
    HWND GetFrameWindow() const { return m_hFrame; }

    /// The program's arguments, widened byte by byte.
    /// @return text owned by this object
    const wchar_t* GetCommandLineText() const { return m_szCommandLine; }

    /// The palette of all control colours.
    /// @return the palette, owned by this object
    COrcaPalette& GetPalette() { return m_Palette; }

    /// Set when another program has changed the palette, cleared when a dialog has realised it again.
    static int PaletteFlag;

private:
    friend struct OSClassLayout;

    /// One window in the notification table.
    struct NotifyEntry {
        HWND hWnd;
        unsigned long Mask;
    };
    /// Kept for programs that count the object's allocations; it has no state.
    struct Helper {
        unsigned char unused;
    };
    static constexpr int kEntries = 2000;

    static LRESULT ControlColorMsg(LPARAM control, WPARAM dc);
    static void ControlPaletteChanged(HWND hWnd);
    static INT_PTR OnPaletteMessage(HWND hDlg, UINT message, WPARAM wParam);
    static INT_PTR OnDialogCursor(HWND hDlg, WPARAM wParam, LPARAM lParam);
    static void PaintText(const DRAWITEMSTRUCT& item, COLORREF color);
    HWND MakeRequestedDialog(int dialogId, HWND parent, HINSTANCE module);
    void KeepCommandLine(const char* commandLine);
    void RegisterFrame();
    void RegisterFrameLate();

    static OSClass* m_pHost;
    static unsigned int OrcaUiMsg;
    static int m_iActivated;

    NotifyEntry m_Notify[kEntries];
    int m_iEntries;
    COrcaPalette m_Palette;
    CResource* m_pRegistry;
    Helper* m_pHelper;
    HINSTANCE m_hInstance;
    unsigned long m_ulProcessId;
    HWND m_hFrame;
    int m_iParam;
    HWND m_hActiveDialog;
    wchar_t m_szCommandLine[260];
    int m_iExitCode;
};
