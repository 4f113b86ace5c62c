#pragma once

#include <tessel/foundation/containers.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/ui/fieldtype.h>

#include <cstdint>

#ifdef __GNUC__
/// Marks a nameless structure, which the compilers offer beyond the language.
#define TESSEL_NAMELESS __extension__
#else
#define TESSEL_NAMELESS
#endif

/// What kind of event a NOTIFY record tells of.
enum NOTIFY_KIND : std::uint32_t {
    NK_COMMAND = 1,  ///< a control or menu by WM_COMMAND
    NK_MOUSE = 2,    ///< the pointer: moved, pressed, entered, left
    NK_PAINT = 3,    ///< a window or an owner-drawn item is to be painted
    NK_CONTROL = 4,  ///< a control by WM_NOTIFY or as a scroll request
    NK_KEY = 5,      ///< a key or an accelerator
    NK_TIMER = 6,    ///< a timer
    NK_APP = 7,      ///< the application message 0x800B
    NK_ACTIVATE = 8, ///< a window is activated or deactivated
    NK_CLOSE = 9,    ///< a window is asked to close
    NK_SPOOLER = 10  ///< a print job came or went
};

/// What happened, whichever control it happened to.
enum MSG_FUNCTION : int {
    FN_NONE = 0,           ///< nothing that has a number of its own
    FN_CLICK = 1,          ///< clicked, or a key in a tree or list view
    FN_DBLCLK = 2,         ///< clicked twice
    FN_SETFOCUS = 3,       ///< focus gained; of the mouse: the pointer entered a child
    FN_KILLFOCUS = 4,      ///< focus lost; of the mouse: the pointer left a child
    FN_CHANGE = 5,         ///< selection, text or position changed; in tree and list views: about to change
    FN_UPDATE = 6,         ///< about to be shown; in tree and list views: changed
    FN_MAXTEXT = 7,        ///< more text than fits
    FN_CUSTOMDRAW = 8,     ///< a drawing stage
    FN_DROPDOWN = 9,       ///< list opened
    FN_CLOSEUP = 10,       ///< list closed
    FN_SELENDOK = 11,      ///< selection confirmed
    FN_SELCANCEL = 12,     ///< selection cancelled
    FN_EDIT = 13,          ///< text of a combo box edited, or a label is about to be
    FN_PAINT = 14,         ///< to be painted
    FN_EXPAND = 15,        ///< tree item expands or collapses
    FN_DELETEITEM = 16,    ///< item deleted
    FN_TRACK = 17,         ///< thumb or column divider dragged
    FN_MOUSEMOVE = 18,     ///< pointer moved inside a child
    FN_LBUTTONDOWN = 19,   ///< left button pressed
    FN_RBUTTONDOWN = 20,   ///< right button pressed
    FN_MBUTTONDOWN = 21,   ///< middle button pressed
    FN_LBUTTONDBLCLK = 22, ///< left button pressed twice
    FN_RBUTTONDBLCLK = 23, ///< right button pressed twice
    FN_MBUTTONDBLCLK = 24, ///< middle button pressed twice
    FN_SETCURSOR = 25,     ///< the pointer is over a window
    FN_ACCELERATOR = 26,   ///< accelerator key
    FN_KEYDOWN = 27,       ///< key pressed
    FN_COLUMNCLICK = 28,   ///< column heading clicked
    FN_GETDISPINFO = 29,   ///< a list view asks for what it shows
    FN_APP = 30            ///< application message 0x800B
};

/// One event, in the same words for every control. What a field is not used for is 0.
///
/// What the data fields hold, by kind:
/// - NK_MOUSE: Data1 the hit-test code (FN_SETCURSOR) or the key-state flags, 0 when leaving; Data2Lo and Data2Hi
///   x and y in client pixels
/// - NK_PAINT: Data1 0, or the item's action; Data2 to Data5 left, top, right, bottom
/// - NK_CONTROL: Data1 the notification code or scroll request; Data2 the NMHDR*, valid during the message, or 0 for
///   a scroll request
/// - NK_KEY: Data1 1 for a key, 0 for an accelerator; Data2 the virtual key or the command identifier
/// - NK_APP: Data1 lParam
/// - NK_ACTIVATE: Data1Lo 1 when activated; Data1Hi not 0 when minimised; Data2Lo 1 when by a click; Data3 lParam,
///   the other window
/// - NK_SPOOLER: Data1Lo wParam; Data1Hi the jobs left
///
/// hWnd is empty for keys, accelerators, timers, the application message and the spooler.
struct NOTIFY {
    std::uint32_t Kind;    ///< a NOTIFY_KIND
    MSG_FUNCTION Function; ///< what happened
    HWND hWnd;             ///< window that received the message; of a WM_PAINT: its parent
    HWND hCtrl;            ///< control concerned
    std::int32_t CtrlId;   ///< its dialog identifier; of a timer: the timer's; of NK_CLOSE always 8
    union {
        LPARAM Data1; ///< see the table
        TESSEL_NAMELESS struct {
            std::uint16_t Data1Lo; ///< low half of Data1
            std::uint16_t Data1Hi; ///< high half of its 32 bits
        };
    };
    union {
        LPARAM Data2; ///< see the table
        TESSEL_NAMELESS struct {
            std::uint16_t Data2Lo; ///< low half of Data2
            std::uint16_t Data2Hi; ///< high half of its 32 bits
        };
    };
    LPARAM Data3;       ///< top, or the other window
    std::int32_t Data4; ///< right
    std::int32_t Data5; ///< bottom
};

/// A list box whose items the pointer snaps to.
class hWndStore {
public:
    /// Nothing was snapped to yet.
    /// @param hWnd  the list box; stays the caller's
    explicit hWndStore(HWND hWnd) : m_hWnd(hWnd), Cursor(-1) {}

    /// Keeps the item that was snapped to.
    /// @param index  index of the item
    void SetCursor(int index) { Cursor = index; }

    /// The item that was snapped to last.
    /// @return its index; -1 when there was none
    int GetCursor() const { return Cursor; }

private:
    friend struct hWndStoreLayout;

    HWND m_hWnd;
    std::int32_t Cursor;
};

/// Turns the messages of a dialog or window procedure into records that do not depend on the kind of control, and
/// lets focus and pointer follow one another, as a trackball wants it.
///
/// Call NaturalizeMsg() with every message that the procedure gets and switch on the record:
/// @code
/// const NOTIFY* const event = formatter.NaturalizeMsg(hDlg, message, wParam, lParam);
/// if (event != nullptr && event->CtrlId == IDC_LIST && event->Function == FN_CHANGE) ShowSelection(event->hCtrl);
/// @endcode
/// What a WM_SETCURSOR does beside its record: focus follows the pointer from control to control, the caret of an
/// edit control that gets it so is placed, and over a list box given to RegisterListBoxMove() the pointer is moved
/// to the middle of the item under it, which is selected. SetCommonDlgActive() turns this off.
/// Copies are equal: each holds a record of its own and the address of the one lock.
/// Threads: one thread, the one that owns the windows, translates for a whole process, since all objects share what
/// is known of the pointer and of the list boxes; only registering and releasing list boxes lock each other out.
class TESSEL_API FormatSysMsg {
public:
    /// Starts with an empty record.
    FormatSysMsg();

    /// Copies the record and the address of the lock.
    FormatSysMsg(const FormatSysMsg&) = default;

    /// Copies the record and the address of the lock.
    /// @return this object
    FormatSysMsg& operator=(const FormatSysMsg&) = default;

    /// Leaves registered list boxes registered.
    virtual ~FormatSysMsg() = default;

    /// Translates a message. A WM_PAINT is validated by it, so nobody else can paint for that message. A mouse
    /// message that finds the pointer over another child than the one before reports only that the former was left;
    /// the next one reports that the new child was entered.
    /// @param hWnd     window that received it
    /// @param message  its number
    /// @param wParam   as received
    /// @param lParam   as received; what it points to is read during the call
    /// @return the record, this object's, which the next call overwrites, also one that a control causes during
    ///         this call; null: not a message that is translated (button releases are not), or what it points to
    ///         cannot be read; the record is all 0
    NOTIFY* NaturalizeMsg(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

    /// The item that the pointer snapped to last in a list box. Takes no lock.
    /// @param hListBox  the list box
    /// @return its index; for a pointer that was on no item, what LB_ITEMFROMPOINT answered; -1: none yet, or not
    ///         registered
    int GetCursor(HWND hListBox);

    /// Lets the pointer snap to a list box's items. Waits up to 100 ms for the lock, then gives up silently, as it
    /// does without memory. Registered again it starts anew.
    /// @param hListBox  the list box; release it before it is destroyed
    void RegisterListBoxMove(HWND hListBox);

    /// Ends that. Waits up to 100 ms for the lock, then gives up silently.
    /// @param hListBox  the list box; one that is not registered changes nothing
    void ReleaseListBoxMove(HWND hListBox);

    /// Tells whether a common dialog is open: neither focus nor pointer are moved then.
    /// @param active  not 0: one is open
    static void SetCommonDlgActive(int active);

    /// A starting value of the time gain compensation.
    /// @param index  0 to 5
    /// @return the element of InitialTgc; -1 for any other index
    static int GetInitialTgc(unsigned int index);

    /// The starting values, all -1; the library itself never changes them.
    static std::int32_t InitialTgc[6];

private:
    friend struct FormatSysMsgLayout;
    struct Translation;

    /// Spreads window handles, whose low bits hardly differ, over the table.
    struct WindowHash {
        std::size_t operator()(HWND hWnd) const { return (reinterpret_cast<std::uintptr_t>(hWnd) >> 4) % 17; }
    };

    FIELD_TYPE ControlType(HWND hWnd);
    MSG_FUNCTION GetFunctionID(HWND hCtrl, int code);
    MSG_FUNCTION GetTabFunction(int code);
    MSG_FUNCTION GetListboxFunction(int code);
    MSG_FUNCTION GetComboFunction(int code);
    MSG_FUNCTION GetButtonFunction(int code);
    MSG_FUNCTION GetEditboxFunction(int code);
    MSG_FUNCTION GetStaticFunction(int code);
    MSG_FUNCTION GetSliderFunction(int code);
    MSG_FUNCTION GetProgressBarFunction(int code);
    MSG_FUNCTION GetScrollBarFunction(int code);
    MSG_FUNCTION GetTreeFunction(int code);
    MSG_FUNCTION GetHeaderFunction(int code);
    void FollowPointer(HWND pointed);
    void ScrollCursor(HWND hListBox);

    static CMap<HWND, hWndStore*, WindowHash> ListBoxMoveMap;
    static CSemaphore ListBoxLock;
    static int m_CommonDlgActive;
    static HWND LastHoverChild;
    static int LastListBoxIndex;

    NOTIFY m_Notify;
    CSemaphore* m_pListBoxLock;
};
