#pragma once

#include <tessel/foundation/containers.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/ui/fieldtype.h>

#include <cstdint>

#ifdef __GNUC__
/// Marks an anonymous structure, an extension of the compilers.
#define TESSEL_NAMELESS __extension__
#else
#define TESSEL_NAMELESS
#endif

/// Kind of event in a NOTIFY record.
enum NOTIFY_KIND : std::uint32_t {
    NK_COMMAND = 1,  ///< a WM_COMMAND from a control or a menu
    NK_MOUSE = 2,    ///< the pointer moved, a button was pressed, a child was entered or left
    NK_PAINT = 3,    ///< a window or an owner-drawn item must be painted
    NK_CONTROL = 4,  ///< a WM_NOTIFY or a scroll request from a control
    NK_KEY = 5,      ///< a key or an accelerator
    NK_TIMER = 6,    ///< a timer
    NK_APP = 7,      ///< the application message 0x800B
    NK_ACTIVATE = 8, ///< a window was activated or deactivated
    NK_CLOSE = 9,    ///< a window was requested to close
    NK_SPOOLER = 10  ///< a print job was added or removed
};

/// What happened, independent of the kind of control.
enum MSG_FUNCTION : int {
    FN_NONE = 0,           ///< no function is assigned
    FN_CLICK = 1,          ///< clicked, or a key pressed in a tree or list view
    FN_DBLCLK = 2,         ///< double-clicked
    FN_SETFOCUS = 3,       ///< focus gained; for NK_MOUSE: the pointer entered a child
    FN_KILLFOCUS = 4,      ///< focus lost; for NK_MOUSE: the pointer left a child
    FN_CHANGE = 5,         ///< selection, text or position changed; in tree and list views: about to change
    FN_UPDATE = 6,         ///< about to be displayed; in tree and list views: changed
    FN_MAXTEXT = 7,        ///< text limit reached
    FN_CUSTOMDRAW = 8,     ///< custom-draw stage
    FN_DROPDOWN = 9,       ///< list opened
    FN_CLOSEUP = 10,       ///< list closed
    FN_SELENDOK = 11,      ///< selection confirmed
    FN_SELCANCEL = 12,     ///< selection cancelled
    FN_EDIT = 13,          ///< text of a combo box edited, or a label about to be edited
    FN_PAINT = 14,         ///< must be painted
    FN_EXPAND = 15,        ///< tree item expanding or collapsing
    FN_DELETEITEM = 16,    ///< item deleted
    FN_TRACK = 17,         ///< thumb or column divider dragged
    FN_MOUSEMOVE = 18,     ///< pointer moved inside a child
    FN_LBUTTONDOWN = 19,   ///< left button pressed
    FN_RBUTTONDOWN = 20,   ///< right button pressed
    FN_MBUTTONDOWN = 21,   ///< middle button pressed
    FN_LBUTTONDBLCLK = 22, ///< left button double-clicked
    FN_RBUTTONDBLCLK = 23, ///< right button double-clicked
    FN_MBUTTONDBLCLK = 24, ///< middle button double-clicked
    FN_SETCURSOR = 25,     ///< the pointer is over a window
    FN_ACCELERATOR = 26,   ///< accelerator key
    FN_KEYDOWN = 27,       ///< key pressed
    FN_COLUMNCLICK = 28,   ///< column heading clicked
    FN_GETDISPINFO = 29,   ///< a list view requests what to display
    FN_APP = 30            ///< application message 0x800B
};

/// One event, in the same form for every kind of control. Unused fields are 0.
///
/// The data fields, by kind:
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
/// hWnd is null for keys, accelerators, timers, the application message and the spooler.
struct NOTIFY {
    std::uint32_t Kind;    ///< a NOTIFY_KIND
    MSG_FUNCTION Function; ///< what happened
    HWND hWnd;             ///< window that received the message; for WM_PAINT its parent
    HWND hCtrl;            ///< control concerned
    std::int32_t CtrlId;   ///< its dialog identifier; for NK_TIMER the timer's; for NK_CLOSE always 8
    union {
        LPARAM Data1; ///< see above
        TESSEL_NAMELESS struct {
            std::uint16_t Data1Lo; ///< low half of Data1
            std::uint16_t Data1Hi; ///< high half of its 32 bits
        };
    };
    union {
        LPARAM Data2; ///< see above
        TESSEL_NAMELESS struct {
            std::uint16_t Data2Lo; ///< low half of Data2
            std::uint16_t Data2Hi; ///< high half of its 32 bits
        };
    };
    LPARAM Data3;       ///< top, or the other window
    std::int32_t Data4; ///< right
    std::int32_t Data5; ///< bottom
};

/// A list box to whose items the pointer snaps.
class hWndStore {
public:
    /// Starts without an item.
    /// @param hWnd  the list box, owned by the caller
    explicit hWndStore(HWND hWnd) : m_hWnd(hWnd), Cursor(-1) {}

    /// Stores the item that the pointer snapped to.
    /// @param index  index of the item
    void SetCursor(int index) { Cursor = index; }

    /// Returns the item that the pointer snapped to last.
    /// @return its index; -1: none yet
    int GetCursor() const { return Cursor; }

private:
    friend struct hWndStoreLayout;

    HWND m_hWnd;
    std::int32_t Cursor;
};

/// Translates the messages of a dialog or window procedure into records that are independent of the kind of control,
/// and supports trackball operation: the focus follows the pointer.
///
/// Call NaturalizeMsg() with every message that the procedure receives and switch on the record:
/// @code
/// const NOTIFY* const event = formatter.NaturalizeMsg(hDlg, message, wParam, lParam);
/// if (event != nullptr && event->CtrlId == IDC_LIST && event->Function == FN_CHANGE) ShowSelection(event->hCtrl);
/// @endcode
/// A WM_SETCURSOR has further effects: the focus moves to the control under the pointer; if that is an edit control,
/// its caret is placed; over a list box passed to RegisterListBoxMove(), the pointer moves to the middle of the item
/// under it, and the item is selected. SetCommonDlgActive() turns this off. A control of another process has 100 ms to
/// answer each message; after that no further messages are sent to it.
///
/// Each copy has its own record; all of them use one lock.
/// Threads: the thread that owns the windows translates all messages of the process, because all objects share the
/// state of the pointer and the list boxes. Registering and releasing list boxes lock each other out; nothing else
/// does.
class TESSEL_API FormatSysMsg {
public:
    /// Creates an object with an empty record.
    FormatSysMsg();

    /// Copies the record and the address of the lock.
    FormatSysMsg(const FormatSysMsg&) = default;

    /// Copies the record and the address of the lock.
    /// @return this object
    FormatSysMsg& operator=(const FormatSysMsg&) = default;

    /// Does not affect registered list boxes.
    virtual ~FormatSysMsg() = default;

    /// Translates a message. Translating a WM_PAINT validates the window, so it cannot be painted for that message.
    /// When the pointer has moved to another child, a mouse message reports only that the previous child was left; the
    /// next one reports that the new child was entered.
    /// @param hWnd     window that received it
    /// @param message  its number
    /// @param wParam   as received
    /// @param lParam   as received; what it points to is read during the call
    /// @return the object's record, valid until the next call, including one that a control causes during this call;
    ///         null: the message is not translated (button releases are not), or what it points to cannot be read, and
    ///         the record is all 0
    NOTIFY* NaturalizeMsg(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

    /// Returns the item that the pointer snapped to last in a list box. Takes no lock.
    /// @param hListBox  the list box
    /// @return its index; if the pointer was on no item, the result of LB_ITEMFROMPOINT; -1: none yet, or not
    ///         registered
    int GetCursor(HWND hListBox);

    /// Makes the pointer snap to the items of a list box. Waits up to 100 ms for the lock. If that fails, or memory
    /// runs out, nothing changes. Registering a list box again resets it.
    /// @param hListBox  the list box; release it before it is destroyed
    void RegisterListBoxMove(HWND hListBox);

    /// Reverses RegisterListBoxMove(). Waits up to 100 ms for the lock; if that fails, nothing changes.
    /// @param hListBox  the list box; if it is not registered, nothing changes
    void ReleaseListBoxMove(HWND hListBox);

    /// States whether a common dialog is open. While one is, neither focus nor pointer move.
    /// @param active  not 0: one is open
    static void SetCommonDlgActive(int active);

    /// Returns an initial value of the time gain compensation.
    /// @param index  0 to 5
    /// @return the element of InitialTgc; -1 for any other index
    static int GetInitialTgc(unsigned int index);

    /// The initial values, all -1. The library never changes them.
    static std::int32_t InitialTgc[6];

private:
    friend struct FormatSysMsgLayout;
    struct Translation;

    /// Ignores the low bits of window handles, which hardly differ.
    struct WindowHash {
        static constexpr int kIgnoredBits = 4;
        static constexpr std::size_t kBuckets = 17;
        std::size_t operator()(HWND hWnd) const {
            return (reinterpret_cast<std::uintptr_t>(hWnd) >> kIgnoredBits) % kBuckets;
        }
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
