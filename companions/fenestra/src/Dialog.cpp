#include <fenestra/dialog.h>

#include <utility>

namespace {

/// The object whose dialog this thread is creating, until WM_INITDIALOG has arrived.
thread_local CDialog* creating = nullptr;

/// Identifies the object while its dialog is being created; a hook may create another dialog in the meantime.
class Creating {
public:
    explicit Creating(CDialog* dialog) : m_outer(std::exchange(creating, dialog)) {}
    ~Creating() { creating = m_outer; }
    Creating(const Creating&) = delete;
    Creating& operator=(const Creating&) = delete;

private:
    CDialog* m_outer;
};

CDialog* ObjectOf(HWND window) {
    return reinterpret_cast<CDialog*>(GetWindowLongPtrW(window, DWLP_USER));
}

} // namespace

CDialog& CDialog::operator=(const CDialog& other) {
    if (HasDialog()) return *this; // otherwise it would get the messages of a window that it no longer refers to
    CWnd::operator=(other);
    m_iModal = other.m_iModal;
    return *this;
}

CDialog::~CDialog() {
    if (!HasDialog()) return;
    (void)SetWindowLongPtrW(m_hWnd, DWLP_USER, 0); // the object gets no more messages
    if (m_iModal != 0) {
        (void)EndDialog(m_hWnd, -1); // its loop destroys the window
    } else {
        (void)DestroyWindow(m_hWnd); // on another thread this fails, and the window remains without an object
    }
}

INT_PTR CDialog::RunModal(HINSTANCE module, unsigned int templateId, HWND owner) {
    m_iModal = 1;
    const Creating scope(this);
    return DialogBoxParamW(module, MAKEINTRESOURCEW(templateId), owner, &DialogProcedure,
                           reinterpret_cast<LPARAM>(this));
}

HWND CDialog::RunModeless(HINSTANCE module, unsigned int templateId, HWND owner) {
    m_iModal = 0;
    const Creating scope(this);
    return CreateDialogParamW(module, MAKEINTRESOURCEW(templateId), owner, &DialogProcedure,
                              reinterpret_cast<LPARAM>(this));
}

bool CDialog::End(int result) {
    if (m_hWnd == nullptr) return false;
    return (m_iModal != 0 ? EndDialog(m_hWnd, result) : DestroyWindow(m_hWnd)) != 0;
}

bool CDialog::HasDialog() const {
    return m_hWnd != nullptr && ObjectOf(m_hWnd) == this;
}

bool CDialog::OnInitDialog(HWND /*focus*/) {
    return true;
}

bool CDialog::OnCommand(unsigned int /*code*/, int /*id*/, HWND /*control*/) {
    return false;
}

bool CDialog::OnNotify(int /*id*/, NMHDR* /*header*/, unsigned long& /*result*/) {
    return false;
}

INT_PTR CALLBACK CDialog::DialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    // Any program can send WM_INITDIALOG with any value, so only the expected object is accepted, and once.
    if (message == WM_INITDIALOG && creating != nullptr && lParam == reinterpret_cast<LPARAM>(creating)) {
        (void)SetWindowLongPtrW(window, DWLP_USER, lParam); // returns 0, the previous value
        std::exchange(creating, nullptr)->m_hWnd = window;
        return ObjectOf(window)->OnInitDialog(reinterpret_cast<HWND>(wParam));
    }
    CDialog* const dialog = ObjectOf(window); // none before WM_INITDIALOG
    return dialog == nullptr ? FALSE : dialog->Handle(window, message, wParam, lParam);
}

INT_PTR CDialog::Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_COMMAND: return OnCommand(HIWORD(wParam), LOWORD(wParam), reinterpret_cast<HWND>(lParam));
    case WM_NOTIFY: {
        unsigned long result = 0;
        if (!OnNotify(static_cast<int>(wParam), reinterpret_cast<NMHDR*>(lParam), result)) return FALSE;
        (void)SetWindowLongPtrW(window, DWLP_MSGRESULT,
                                static_cast<LONG_PTR>(result)); // the window may no longer exist
        return TRUE;
    }
    case WM_NCDESTROY: // may be forged, too: the window must not refer to the object any longer
        (void)SetWindowLongPtrW(window, DWLP_USER, 0);
        if (m_hWnd == window) m_hWnd = nullptr;
        return FALSE;
    default: return FALSE;
    }
}
