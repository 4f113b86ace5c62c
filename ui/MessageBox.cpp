#include <foundation/Report.h>
#include <foundation/SystemText.h>
#include <tessel/ui/messagebox.h>

#include <cwchar>
#include <iterator>
#include <new>
#include <utility>

namespace {

constexpr tessel::ReportSite kUnsupportedType{"MessageBox", 289};

constexpr int kPositions = 3;
/// Buttons of each type, 0 to 5, by position.
constexpr int kButtonSets[][kPositions] = {
    {IDOK}, {IDOK, IDCANCEL}, {IDABORT, IDRETRY, IDIGNORE}, {IDYES, IDNO, IDCANCEL}, {IDYES, IDNO}, {IDRETRY, IDCANCEL},
};
constexpr int kMessageLength = 1024;
constexpr int kCaptionLength = 256;
constexpr int kButtonTextLength = 128;
constexpr const wchar_t* kFallbackTexts[kPositions] = {L"Yes", L"No", L"Cancel"};

/// The hook of this thread's box until its window has been moved.
thread_local HHOOK centringHook = nullptr;

/// @return whether there was one
bool RemoveHook() {
    const HHOOK hook = std::exchange(centringHook, nullptr);
    if (hook != nullptr) (void)UnhookWindowsHookEx(hook); // it ends with the thread in any case
    return hook != nullptr;
}

/// A text from the program's string table, or a fallback if that does not load.
template <int Size> class ProgramText {
public:
    ProgramText(const unsigned int* id, const wchar_t* fallback)
        : m_fallback(fallback),
          m_loaded(id != nullptr && LoadStringW(GetModuleHandleW(nullptr), *id, m_buffer, Size) != 0) {}
    const wchar_t* Get() const { return m_loaded ? m_buffer : m_fallback; }

private:
    wchar_t m_buffer[Size];
    const wchar_t* m_fallback;
    bool m_loaded;
};

struct MessageText : ProgramText<kMessageLength> {
    explicit MessageText(unsigned int id) : ProgramText(&id, L"Message text not found.") {}
};
struct CaptionText : ProgramText<kCaptionLength> {
    explicit CaptionText(unsigned int id) : ProgramText(&id, L"Caption text not found.") {}
};

std::size_t LengthOf(const wchar_t* text) {
    return text == nullptr ? 0 : std::wcslen(text);
}

/// Concatenates two texts.
/// @return a new array, owned by the caller; null if both are null or memory runs out
wchar_t* Join(const wchar_t* first, const wchar_t* second) {
    if (first == nullptr && second == nullptr) return nullptr;
    const std::size_t firstLength = LengthOf(first);
    const std::size_t secondLength = LengthOf(second);
    wchar_t* const joined = new (std::nothrow) wchar_t[firstLength + secondLength + 1];
    if (joined == nullptr) return nullptr;
    if (first != nullptr) std::wmemcpy(joined, first, firstLength);
    if (second != nullptr) std::wmemcpy(joined + firstLength, second, secondLength);
    joined[firstLength + secondLength] = L'\0';
    return joined;
}

} // namespace

CMessageBox::CMessageBox() : m_hOwner(nullptr), m_pText(nullptr), m_pCaption(nullptr), m_uiType(MB_OK), m_Resources{} {}

CMessageBox::CMessageBox(HWND owner, const wchar_t* text, const wchar_t* caption, unsigned int type,
                         unsigned long error)
    : CMessageBox() {
    Initialize(owner, text, caption, type, error);
}

CMessageBox::CMessageBox(HWND owner, unsigned int textId, unsigned int captionId, unsigned int type,
                         unsigned long error)
    : CMessageBox() {
    Initialize(owner, MessageText(textId).Get(), CaptionText(captionId).Get(), type, error);
}

// GUARD-51: each copy has its own texts; shared ones would be freed twice.
CMessageBox::CMessageBox(const CMessageBox& other)
    : CDialog(other), m_hOwner(other.m_hOwner), m_pText(Join(other.m_pText, nullptr)),
      m_pCaption(Join(other.m_pCaption, nullptr)), m_uiType(other.m_uiType), m_Resources(other.m_Resources) {}

CMessageBox& CMessageBox::operator=(const CMessageBox& other) {
    if (this == &other) return *this;
    CDialog::operator=(other);
    m_hOwner = other.m_hOwner;
    SetText(other.m_pText, MESSAGEBOX_NO_ERROR);
    SetCaption(other.m_pCaption);
    m_uiType = other.m_uiType;
    m_Resources = other.m_Resources;
    return *this;
}

CMessageBox::~CMessageBox() {
    delete[] m_pText;
    delete[] m_pCaption;
}

void CMessageBox::Initialize(HWND owner, const wchar_t* text, const wchar_t* caption, unsigned int type,
                             unsigned long error) {
    m_hOwner = owner;
    SetText(text, error);
    SetCaption(caption);
    m_uiType = type;
    m_Resources = RESOURCES{};
}

void CMessageBox::SetText(const wchar_t* text, unsigned long error) {
    wchar_t* errorText = nullptr;
    (void)ConvertErrorCode(error, errorText); // the length is not needed
    delete[] std::exchange(m_pText, Join(text, errorText));
    delete[] errorText;
}

void CMessageBox::SetCaption(const wchar_t* caption) {
    delete[] std::exchange(m_pCaption, Join(caption, nullptr));
}

void CMessageBox::SetResources(const RESOURCES* resources) {
    m_Resources = resources == nullptr ? RESOURCES{} : *resources;
}

unsigned long CMessageBox::ConvertErrorCode(unsigned long error, wchar_t*& text) {
    text = nullptr;
    if (error == MESSAGEBOX_NO_ERROR) return 0;
    tessel::SystemText systemText(error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT)); // GUARD-52: inserts stay
    if (systemText.Length() == 0) return 0;
    wchar_t code[16];
    (void)std::swprintf(code, std::size(code), L"%08lX: ", error); // always 10 characters
    text = Join(code, systemText.Get());
    return static_cast<unsigned long>(LengthOf(text));
}

int CMessageBox::Run(const wchar_t* text, const wchar_t* caption, unsigned int type, unsigned long error) {
    if (text != nullptr) SetText(text, error);
    if (caption != nullptr) SetCaption(caption);
    if (type != MESSAGEBOX_SAME_TYPE) m_uiType = type;
    return Run();
}

int CMessageBox::Run(unsigned int textId, unsigned int captionId, unsigned int type, unsigned long error) {
    return Run(MessageText(textId).Get(), CaptionText(captionId).Get(), type, error);
}

int CMessageBox::Run() {
    return m_Resources.TemplateId == 0 ? RunSystemBox() : RunOwnBox();
}

int CMessageBox::RunOwnBox() {
    const HWND outer = m_hWnd; // the box that this object runs already, if any
    const auto button = static_cast<int>(RunModal(GetModuleHandleW(nullptr), m_Resources.TemplateId, m_hOwner));
    if (outer == nullptr) return button;
    const DWORD error = GetLastError();
    if (IsWindow(outer)) m_hWnd = outer; // otherwise the object may no longer exist
    SetLastError(error);
    return button;
}

int CMessageBox::RunSystemBox() {
    // This box may open while another one is being created, whose hook would move the windows of this one.
    const bool hadHook = RemoveHook();
    InstallHook();
    const int button = MessageBoxW(m_hOwner, m_pText, m_pCaption, m_uiType);
    const DWORD error = GetLastError();
    (void)RemoveHook(); // if the box was never activated
    if (hadHook) InstallHook();
    SetLastError(error); // why the box could not be shown
    return button;
}

void CMessageBox::InstallHook() {
    centringHook =
        SetWindowsHookExW(WH_CBT, &SetInCenter, nullptr, GetCurrentThreadId()); // on failure the box is not centred
}

void CMessageBox::ComputeCenterCoords(const RECT& window, int& x, int& y) {
    x = (GetSystemMetrics(SM_CXSCREEN) - static_cast<int>(window.right - window.left)) / 2;
    y = (GetSystemMetrics(SM_CYSCREEN) - static_cast<int>(window.bottom - window.top)) / 2;
}

void CMessageBox::MoveToCenter(HWND window) {
    RECT rectangle{};
    int x = 0;
    int y = 0;
    if (!GetWindowRect(window, &rectangle)) return;
    ComputeCenterCoords(rectangle, x, y);
    (void)SetWindowPos(window, nullptr, x, y, 0, 0,
                       SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE); // on failure it stays where it is
}

LRESULT CALLBACK CMessageBox::SetInCenter(int code, WPARAM wParam, LPARAM lParam) {
    if (code != HCBT_ACTIVATE) return 0; // ODD-54: other hooks of the thread are not called
    MoveToCenter(reinterpret_cast<HWND>(wParam));
    const LRESULT result = CallNextHookEx(centringHook, code, wParam, lParam);
    (void)RemoveHook(); // the hook is needed once only
    return result;
}

bool CMessageBox::OnInitDialog(HWND /*focus*/) {
    PositionInCenter();
    // After a failure the template's texts remain; null clears them.
    (void)SetWindowTextW(m_hWnd, m_pCaption);
    (void)SetDlgItemTextW(m_hWnd, static_cast<int>(m_Resources.TextId), m_pText);
    InitButtons();
    return true;
}

void CMessageBox::PositionInCenter() {
    MoveToCenter(m_hWnd);
}

void CMessageBox::InitButtons() {
    // ODD-53: flags are not masked out, so a type with an icon is unsupported.
    const bool supported = m_uiType < std::size(kButtonSets);
    tessel::ReportUnless(supported, "Unsupported MessageBox type!", kUnsupportedType);
    if (!supported) return;
    for (int position = 0; position < kPositions; ++position) {
        const int button = kButtonSets[m_uiType][position];
        if (button == 0) break;
        // GUARD-53: without an array there is no resource id to read.
        const unsigned int* const id = m_Resources.ButtonIds == nullptr ? nullptr : m_Resources.ButtonIds + position;
        // ODD-52: fallback texts go by position, so an OK button reads "Yes".
        const ProgramText<kButtonTextLength> text(id, kFallbackTexts[position]);
        (void)SetDlgItemTextW(m_hWnd, button, text.Get()); // the template may not have the button
    }
}

bool CMessageBox::OnCommand(unsigned int /*code*/, int id, HWND /*control*/) {
    if (id < IDOK || id > IDNO) return false; // ODD-56: Escape sends IDCANCEL for every set
    (void)End(id);                            // the command is handled in any case
    return true;
}
