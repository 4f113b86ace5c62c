#include <foundation/ReadableMemory.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/ui/notify.h>
#include <ui/ControlMessage.h>

#include <algorithm>
#include <iterator>

namespace {

constexpr int kAcceleratorCode = 1;
/// A character position beyond the end of any text.
constexpr DWORD kBehindText = 0xFFFF0000;

} // namespace

std::int32_t FormatSysMsg::InitialTgc[6] = {-1, -1, -1, -1, -1, -1};
int FormatSysMsg::m_CommonDlgActive = 0;
HWND FormatSysMsg::LastHoverChild = nullptr;

/// The translation of one message. The record has no kind if the message is not translated.
///
/// It is a local record, because sending messages to a control may cause the translation of another message.
struct FormatSysMsg::Translation {
    FormatSysMsg& formatter;
    HWND hWnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    NOTIFY notify{};
    MSG_FUNCTION mouse = FN_NONE; ///< function of a mouse message, unless the pointer enters or leaves a child

    void Translate();

private:
    /// Fills the fields of the kinds that name a window and a control.
    void Fill(NOTIFY_KIND kind, MSG_FUNCTION function, HWND hCtrl) {
        notify.Kind = kind;
        notify.Function = function;
        notify.hWnd = hWnd;
        notify.hCtrl = hCtrl;
        notify.CtrlId = GetDlgCtrlID(hCtrl);
    }

    void FillRectangle(const RECT& rectangle) {
        notify.Data2 = rectangle.left;
        notify.Data3 = rectangle.top;
        notify.Data4 = rectangle.right;
        notify.Data5 = rectangle.bottom;
    }

    void FillKey(MSG_FUNCTION function, bool key) {
        notify.Kind = NK_KEY;
        notify.Function = function;
        notify.Data1 = key ? 1 : 0;
        notify.Data2 = LOWORD(wParam);
    }

    void Activate() {
        Fill(NK_ACTIVATE, FN_NONE, nullptr);
        notify.Data1Lo = LOWORD(wParam) != WA_INACTIVE ? 1 : 0;
        notify.Data1Hi = HIWORD(wParam);
        notify.Data2Lo = LOWORD(wParam) == WA_CLICKACTIVE ? 1 : 0;
        notify.Data3 = lParam;
    }

    // ODD-34: translating validates the window, so it cannot be painted for this message.
    void Paint() {
        PAINTSTRUCT paint{};
        (void)BeginPaint(hWnd, &paint); // without a window the rectangle remains empty
        Fill(NK_PAINT, FN_PAINT, hWnd);
        notify.hWnd = GetParent(hWnd);
        FillRectangle(paint.rcPaint);
        EndPaint(hWnd, &paint);
    }

    void Close() {
        Fill(NK_CLOSE, FN_NONE, nullptr);
        notify.CtrlId = IDCLOSE;
    }

    void SetCursor() {
        const auto pointed = reinterpret_cast<HWND>(wParam);
        const int hitTest = LOWORD(lParam);
        if (m_CommonDlgActive == 0) {
            formatter.FollowPointer(pointed);
            if (hitTest == HTCLIENT) formatter.ScrollCursor(pointed);
        }
        Fill(NK_MOUSE, FN_SETCURSOR, pointed);
        notify.Data1 = hitTest;
    }

    void SpoolerStatus() {
        notify.Kind = NK_SPOOLER;
        notify.Data1Lo = LOWORD(wParam);
        notify.Data1Hi = LOWORD(lParam);
    }

    void DrawItem() {
        DRAWITEMSTRUCT item;
        if (!tessel::ReadRecord(lParam, item)) return; // GUARD-30: no item to draw
        Fill(NK_PAINT, FN_PAINT, item.hwndItem);
        notify.CtrlId = static_cast<int>(item.CtlID);
        notify.Data1 = static_cast<int>(item.itemAction);
        FillRectangle(item.rcItem);
    }

    void Notify() {
        NMHDR header;
        if (!tessel::ReadRecord(lParam, header)) return; // GUARD-30: no notification
        const int code = static_cast<int>(header.code);
        Fill(NK_CONTROL, formatter.GetFunctionID(header.hwndFrom, code), header.hwndFrom);
        notify.CtrlId = static_cast<int>(wParam);
        notify.Data1 = code;
        notify.Data2 = lParam;
    }

    void KeyDown() { FillKey(FN_KEYDOWN, true); }

    void Command() {
        const auto control = reinterpret_cast<HWND>(lParam);
        const int code = HIWORD(wParam);
        if (code == kAcceleratorCode && control == nullptr) {
            FillKey(FN_ACCELERATOR, false);
        } else {
            Fill(NK_COMMAND, formatter.GetFunctionID(control, code), control);
        }
    }

    void Timer() {
        notify.Kind = NK_TIMER;
        notify.CtrlId = static_cast<int>(wParam);
    }

    void Scroll() {
        const auto control = reinterpret_cast<HWND>(lParam);
        const int request = LOWORD(wParam);
        Fill(NK_CONTROL, formatter.GetFunctionID(control, request), control);
        notify.Data1 = request;
    }

    void Mouse() {
        // ODD-32: a position left of or above the window is taken for one far to the right or below.
        const WORD x = LOWORD(lParam);
        const WORD y = HIWORD(lParam);
        const HWND child = ChildWindowFromPoint(hWnd, POINT{x, y});
        if (LastHoverChild != nullptr && LastHoverChild != child) {
            // ODD-35: the message reports only that the child was left, even if a button was pressed.
            Fill(NK_MOUSE, FN_KILLFOCUS, LastHoverChild);
            LastHoverChild = nullptr;
        } else {
            Fill(NK_MOUSE, LastHoverChild == nullptr ? FN_SETFOCUS : mouse, child);
            notify.Data1 = static_cast<LPARAM>(wParam);
            LastHoverChild = child;
        }
        notify.Data2Lo = x;
        notify.Data2Hi = y;
    }

    void Application() {
        notify.Kind = NK_APP;
        notify.Function = FN_APP;
        notify.Data1 = lParam;
    }
};

void FormatSysMsg::Translation::Translate() {
    static constexpr struct {
        UINT message;
        void (Translation::*translate)();
        MSG_FUNCTION mouse = FN_NONE;
    } kMessages[] = {
        {WM_ACTIVATE, &Translation::Activate},
        {WM_PAINT, &Translation::Paint},
        {WM_CLOSE, &Translation::Close},
        {WM_SETCURSOR, &Translation::SetCursor},
        {WM_SPOOLERSTATUS, &Translation::SpoolerStatus},
        {WM_DRAWITEM, &Translation::DrawItem},
        {WM_NOTIFY, &Translation::Notify},
        {WM_KEYDOWN, &Translation::KeyDown},
        {WM_COMMAND, &Translation::Command},
        {WM_TIMER, &Translation::Timer},
        {WM_HSCROLL, &Translation::Scroll},
        {WM_VSCROLL, &Translation::Scroll},
        {WM_MOUSEMOVE, &Translation::Mouse, FN_MOUSEMOVE},
        {WM_LBUTTONDOWN, &Translation::Mouse, FN_LBUTTONDOWN},
        {WM_LBUTTONDBLCLK, &Translation::Mouse, FN_LBUTTONDBLCLK},
        {WM_RBUTTONDOWN, &Translation::Mouse, FN_RBUTTONDOWN},
        {WM_RBUTTONDBLCLK, &Translation::Mouse, FN_RBUTTONDBLCLK},
        {WM_MBUTTONDOWN, &Translation::Mouse, FN_MBUTTONDOWN},
        {WM_MBUTTONDBLCLK, &Translation::Mouse, FN_MBUTTONDBLCLK},
        {MAILBOX_NOTIFICATION, &Translation::Application},
    };
    const auto found = std::find_if(std::begin(kMessages), std::end(kMessages),
                                    [this](const auto& candidate) { return candidate.message == message; });
    if (found == std::end(kMessages)) return;
    mouse = found->mouse;
    (this->*found->translate)();
}

FormatSysMsg::FormatSysMsg() : m_Notify{}, m_pListBoxLock(&ListBoxLock) {}

NOTIFY* FormatSysMsg::NaturalizeMsg(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    m_Notify = {};
    Translation translation{*this, hWnd, message, wParam, lParam};
    translation.Translate();
    m_Notify = translation.notify;
    return m_Notify.Kind == 0 ? nullptr : &m_Notify;
}

void FormatSysMsg::SetCommonDlgActive(int active) {
    m_CommonDlgActive = active;
}

int FormatSysMsg::GetInitialTgc(unsigned int index) {
    return index < std::size(InitialTgc) ? InitialTgc[index] : -1;
}

/// Moves the focus to the control under the pointer and places the caret of an edit control.
void FormatSysMsg::FollowPointer(HWND pointed) {
    const HWND focus = GetFocus();
    if (focus == nullptr || focus == pointed) return;
    const FIELD_TYPE type = ControlType(pointed);
    if (ControlType(focus) != FT_BUTTON && (type == FT_UNKNOWN || type == FT_STATIC)) return;
    (void)SetFocus(pointed); // a window may refuse the focus
    if (type != FT_EDIT) return;
    // GUARD-270: an edit of another process that refused the focus may hang, and needs no caret.
    if (!tessel::IsWindowOfProcess(pointed, GetCurrentProcessId()) && GetFocus() != pointed) return;
    const std::optional<LRESULT> multiLine = tessel::QueryControl(pointed, EM_LINESCROLL);
    if (!multiLine) return;
    (void)tessel::QueryControl(pointed, EM_SETSEL, *multiLine != 0 ? kBehindText : 0, static_cast<LPARAM>(kBehindText));
}
