#pragma once

#include <tessel/messaging/resource.h>

#include <facet/palette.h>

/// The skeleton of every process of the workstation: a program derives a class from it, creates one object at start-up,
/// creates the post office and its mailboxes, and calls OS_Pump(), which returns when the program should end.
///
/// The host owns an invisible frame window. It receives the notifications of the mailboxes, the requests of other
/// threads for dialogs (LoadResourceDialog()) and notification entries (RequestNotify()), and the heartbeat's timer,
/// and passes the messages that concern the program to OnMessage(). The host also paints controls in the colours set by
/// DIALOG_INTERFACE::SetColor(), starts processes and threads, and loads managers: modules that run on their own
/// thread.
///
/// Order: CPostOffice::CreateGlobalPostOffice() first, so that the frame window is registered at once; then the host;
/// then the mailboxes, registered with GetFrameWindow(). Destroy them in the reverse order. If the host is created
/// first, it reports the missing post office, and OS_Pump() registers the window once there is one.
/// Copies hold the same window by value and their own registry: pass by pointer or reference.
/// Threads: the thread that created the host runs the loop, the window procedure and the dialogs. Only operations
/// documented for any thread may be called on other threads.
class TESSEL_API OSClass {
public:
    /// Creates the frame window and registers it.
    /// @param instance     module of the program
    /// @param name         name of the window's class, and its title
    /// @param param        value for the program's use
    /// @param commandLine  the program's arguments; truncated to 259 characters; may be null
    OSClass(HINSTANCE instance, const wchar_t* name, int param, const char* commandLine);

    /// Holds the same window, with its own registry.
    /// @param other  host to copy
    OSClass(const OSClass& other);

    /// Holds the same window, with its own registry.
    /// @param other  host to copy
    /// @return this object
    OSClass& operator=(const OSClass& other);

    /// Removes the registrations of the frame window and of its thread, and empties the brush table: for all copies.
    /// The window stays until its thread ends and does nothing more.
    virtual ~OSClass();

    /// Called once by OS_Pump(), before the loop.
    virtual void OnStart() = 0;

    /// Called when the frame window is asked to close. It is then destroyed, and the loop ends.
    virtual void OnClose() = 0;

    /// Called for each message of the frame window and the dialogs that concerns the program, including the
    /// notifications of mailboxes (MAILBOX_NOTIFICATION).
    /// @param hWnd     window that received it
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

    /// Sets the result of OS_Pump().
    /// @param code  the exit code
    void SetExitCode(int code) { m_iExitCode = code; }

    /// Sets the heartbeat's message and, unless it is 0, broadcasts it once at once.
    /// @param id  number from RegisterThisWindowMessage(); 0 for no heartbeat
    void SetVardaMsgId(unsigned long id);

    /// The heartbeat's message.
    /// @return its number; 0: none
    static unsigned int GetVardaMsgId() { return OrcaUiMsg; }

    /// Posts the heartbeat to the top-level windows of all programs: its message, with 40039 and the frame window.
    /// @param hWnd     the frame window
    /// @param message  WM_TIMER; unused
    /// @param id       number of the timer; unused
    /// @param time     milliseconds since the system started; unused
    static void CALLBACK TimerProc(HWND hWnd, UINT message, UINT_PTR id, DWORD time);

    /// Starts a program with the command line "ConsoleApp.exe ARGUMENTS". Any thread.
    /// @param application  file name of the program
    /// @param arguments    its arguments, a wide string whatever its declared type; null for none
    /// @return the process's handle, which the caller closes; null: failure (GetLastError())
    void* StartProcess(const wchar_t* application, const unsigned char* arguments);

    /// Starts a thread of the C runtime. Any thread.
    /// @param entry  function to run, called with a null argument
    /// @return the low 32 bits of its handle, which the runtime closes; 0: failure (errno)
    unsigned long CreateThread(void (*entry)(void*));

    /// Loads a manager and runs its export "ManagerMain" on a new thread. The module is unloaded when that returns, or
    /// at once if there is no such export. If the module cannot be loaded, a message box says so. Any thread.
    /// @param moduleName  file name of the module
    /// @param module      receives the module, owned by the thread; null if it cannot be loaded
    /// @return the low 32 bits of the thread's handle, which the runtime closes; 0xFFFFFFFF: failure
    unsigned long CreateThreadedManager(const wchar_t* moduleName, HINSTANCE* module);

    /// The body of a manager's thread: calls `extern "C" void ManagerMain(HINSTANCE)`, then unloads the module.
    /// @param module  the manager's module
    static void CreateManager(void* module);

    /// Loads a module for its resources. If that fails, a message box says so. Any thread.
    /// @param moduleName  file name of the module
    /// @return the module, to be released with CloseResourceFile(); null: failure
    HINSTANCE OpenResourceFile(const wchar_t* moduleName);

    /// Unloads a module. Any thread.
    /// @param module  result of OpenResourceFile()
    void CloseResourceFile(HINSTANCE module);

    /// Registers a window class and creates an invisible frame window of it. Reports a failure.
    /// @param instance  module of the program
    /// @param name      name of the class and title of the window
    /// @return the window; null: failure
    HWND CreateWindowFrame(HINSTANCE instance, const wchar_t* name);

    /// Creates a modeless dialog whose messages go through the host. Its keys, such as Tab, work once the pointer has
    /// been over it.
    /// @param module    module that contains the template
    /// @param parent    its parent; may be null
    /// @param dialogId  resource number of the template
    /// @return the dialog; null: failure (GetLastError())
    HWND CreateDialogWindow(HINSTANCE module, HWND parent, int dialogId);

    /// The frame window's procedure.
    /// @param hWnd     the window
    /// @param message  message number
    /// @param wParam   first parameter
    /// @param lParam   second parameter
    /// @return the message's result
    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

    /// The procedure of every dialog created by CreateDialogWindow().
    /// @param hDlg     the dialog
    /// @param message  message number
    /// @param wParam   first parameter
    /// @param lParam   second parameter
    /// @return TRUE: handled; FALSE: not handled; a brush if the message asks for one
    static INT_PTR CALLBACK DlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam);

    /// Handles the requests of other threads and passes everything else to WmCommand(). The result of a request without
    /// a readable record is 0. A requested dialog has an entry in the resource table (type 2, id 0, owner its resource
    /// number) until it is destroyed; one that could not be created, until the next request.
    /// @param hWnd     window that received the message
    /// @param message  message number
    /// @param wParam   the request, or the message's first parameter
    /// @param lParam   the record's address; receives the result: the dialog, or 1 for a notification request
    /// @return 1: a request was handled; 0: it was not a request, or there is no host
    static int ProcessOsAPIs(HWND hWnd, UINT message, WPARAM wParam, LPARAM& lParam);

    /// Paints controls that have a colour tag, then calls OnMessage().
    /// @param hWnd     window that received the message
    /// @param message  message number
    /// @param wParam   first parameter
    /// @param lParam   second parameter
    /// @return 0
    static int WmCommand(HWND hWnd, UINT message, WPARAM wParam, LPARAM& lParam);

    /// Adds a window to the notification table, or changes its mask.
    /// @param hWnd  the window
    /// @param mask  the kinds of NOTIFY_KIND it receives; 0 frees its entry. Free the entry before the window is
    ///              destroyed: otherwise the 1,999 entries fill up, and a new window with the same handle gets the mask
    /// @return 0: done; 1: the table is full, and a message box says so
    int RequestWndNotify(HWND hWnd, unsigned long mask);

    /// Filters kinds of notification by a window's mask.
    /// @param hWnd  the window
    /// @param kind  the kinds; NK_KEY (5) and NK_TIMER (6) always pass
    /// @return those of @p kind that the window receives; 0: none
    int IsWindowNotify(HWND hWnd, UINT kind);

    /// Paints a control in the colours of its tag: its background, and its text in the centre. Does nothing without a
    /// tag.
    /// @param drawItem  address of a DRAWITEMSTRUCT
    static void PaintWithOwnerBrush(LPARAM drawItem);

    /// The frame window.
    /// @return the window; null if it could not be created
    HWND GetFrameWindow() const { return m_hFrame; }

    /// The program's arguments, widened byte by byte.
    /// @return text owned by this object
    const wchar_t* GetCommandLineText() const { return m_szCommandLine; }

    /// The palette of all control colours.
    /// @return the palette, owned by this object
    COrcaPalette& GetPalette() { return m_Palette; }

    /// Set when another program changes the palette, cleared when a dialog realises it again.
    static int PaletteFlag;

private:
    friend struct OSClassLayout;

    /// One window in the notification table.
    struct NotifyEntry {
        HWND hWnd;
        unsigned long Mask;
    };
    /// Has no state. Programs may count the object's allocations.
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
