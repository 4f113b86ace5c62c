#include <foundation/Report.h>
#include <foundation/WindowOwner.h>
#include <messaging/host/HostRequest.h>
#include <tessel/foundation/message.h>
#include <tessel/foundation/strings.h>
#include <tessel/messaging/host.h>
#include <tessel/ui/brush.h>
#include <tessel/ui/notify.h>

#include <commctrl.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

namespace {

constexpr tessel::ReportSite kNoFrame{"COSClass", 239};

const wchar_t* const kArrowCursor = MAKEINTRESOURCEW(32512); // IDC_ARROW: its type depends on UNICODE
constexpr UINT_PTR kHeartbeatTimer = 40039;
constexpr UINT kHeartbeatMs = 2500;

/// GUARD-202: a killed process leaves its entry, and its id is reused.
void RemoveStaleFrames(CResource& table, unsigned long processId) {
    while (const HWND frame = table.GetResource(tessel::kFrameType, tessel::kFrameId, processId)) {
        if (tessel::IsWindowOfProcess(frame, processId)) return;
        if (table.DeleteResource(tessel::kFrameType, tessel::kFrameId, processId) != 0) return;
    }
}

} // namespace

OSClass* OSClass::m_pHost = nullptr;
unsigned int OSClass::OrcaUiMsg = 0;
int OSClass::PaletteFlag = 1;
int OSClass::m_iActivated = 0;

OSClass::OSClass(HINSTANCE instance, const wchar_t* name, int param, const char* commandLine)
    : m_Notify{}, m_iEntries(kEntries), m_pRegistry(nullptr), m_pHelper(nullptr), m_hInstance(instance),
      m_ulProcessId(GetCurrentProcessId()), m_hFrame(nullptr), m_iParam(param),
      m_hActiveDialog(nullptr), m_szCommandLine{}, m_iExitCode(0) {
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES | ICC_INTERNET_CLASSES};
    (void)InitCommonControlsEx(&controls); // without them, dialogs that use them cannot be created
    m_pHost = this;
    m_pHelper = new (std::nothrow) Helper{};
    m_pRegistry = new (std::nothrow) CResource;
    m_hFrame = CreateWindowFrame(instance, name);
    RegisterFrame();
    KeepCommandLine(commandLine);
}

void OSClass::RegisterFrame() {
    if (m_pRegistry == nullptr) return;
    RemoveStaleFrames(*m_pRegistry, m_ulProcessId);
    (void)m_pRegistry->AddResource(tessel::kFrameType, tessel::kFrameId, m_hFrame,
                                   m_ulProcessId); // reports a full table
}

/// Registers the frame window in a post office that was created after the host.
void OSClass::RegisterFrameLate() {
    const bool settled = m_pRegistry == nullptr || m_pRegistry->GetResourceAddress() != nullptr;
    if (settled || CPostOffice().GetResourceAddr() == nullptr) return;
    *m_pRegistry = CResource();
    RegisterFrame();
}

// GUARD-21: each copy owns a registry and a helper; shared ones would be freed twice.
OSClass::OSClass(const OSClass& other) : m_Palette(other.m_Palette), m_pRegistry(nullptr), m_pHelper(nullptr) {
    *this = other;
}

OSClass& OSClass::operator=(const OSClass& other) {
    if (this == &other) return *this;
    std::copy(std::begin(other.m_Notify), std::end(other.m_Notify), m_Notify);
    m_iEntries = other.m_iEntries;
    m_Palette = other.m_Palette;
    if (m_pRegistry == nullptr && other.m_pRegistry != nullptr) m_pRegistry = new (std::nothrow) CResource;
    if (m_pRegistry != nullptr && other.m_pRegistry != nullptr) *m_pRegistry = *other.m_pRegistry;
    if (m_pHelper == nullptr) m_pHelper = new (std::nothrow) Helper{};
    m_hInstance = other.m_hInstance;
    m_ulProcessId = other.m_ulProcessId;
    m_hFrame = other.m_hFrame;
    m_iParam = other.m_iParam;
    m_hActiveDialog = other.m_hActiveDialog;
    std::copy(std::begin(other.m_szCommandLine), std::end(other.m_szCommandLine), m_szCommandLine);
    m_iExitCode = other.m_iExitCode;
    return *this;
}

// ODD-38: all copies share the registration and the brushes.
OSClass::~OSClass() {
    if (m_pRegistry != nullptr) {
        (void)m_pRegistry->DeleteResource(tessel::kFrameType, tessel::kFrameId,
                                          m_ulProcessId); // another copy may have deleted it
        m_pRegistry->FreeThreadResources();
        delete m_pRegistry;
    }
    delete m_pHelper;
    CBrush().RemoveAll();
    if (m_pHost == this) m_pHost = nullptr; // GUARD-22: the window outlives the host and still receives messages
}

/// GUARD-23: ASCII_TO_UNICODE does not check the size.
void OSClass::KeepCommandLine(const char* commandLine) {
    if (commandLine == nullptr) return;
    char bounded[sizeof m_szCommandLine / sizeof m_szCommandLine[0]] = {};
    std::strncpy(bounded, commandLine, sizeof bounded - 1);
    ASCII_TO_UNICODE(m_szCommandLine, bounded);
}

HWND OSClass::CreateWindowFrame(HINSTANCE instance, const wchar_t* name) {
    WNDCLASSW frameClass{};
    frameClass.style = CS_HREDRAW | CS_VREDRAW;
    frameClass.lpfnWndProc = &WindowProc;
    frameClass.hInstance = instance;
    frameClass.hCursor = LoadCursorW(nullptr, kArrowCursor);
    frameClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    frameClass.lpszClassName = name;
    (void)RegisterClassW(&frameClass); // fails harmlessly if it is already registered
    const HWND frame = CreateWindowExW(0, name, name, WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, instance, nullptr);
    tessel::ReportUnless(frame != nullptr, "hParent", kNoFrame);
    return frame;
}

int OSClass::OS_Pump() {
    RegisterFrameLate();
    OnStart();
    (void)SetTimer(m_hFrame, kHeartbeatTimer, kHeartbeatMs, &TimerProc); // without it there is no heartbeat
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) != 0) { // an error counts as a message
        if (m_hActiveDialog != nullptr && IsDialogMessageW(m_hActiveDialog, &message)) continue;
        (void)TranslateMessage(&message);
        (void)DispatchMessageW(&message);
    }
    (void)KillTimer(m_hFrame, kHeartbeatTimer); // fails if the window is gone
    OnPumpExit(0, L"OS_Pump exiting");
    return m_iExitCode;
}

void OSClass::ExitApplication(int code) {
    if (code != 0) m_iExitCode = code;
    PostQuitMessage(m_iExitCode);
}

void OSClass::SetVardaMsgId(unsigned long id) {
    OrcaUiMsg = id;
    TimerProc(m_hFrame, 0, 0, 0);
}

void CALLBACK OSClass::TimerProc(HWND hWnd, UINT /*message*/, UINT_PTR /*id*/, DWORD /*time*/) {
    if (OrcaUiMsg == 0) return;
    (void)PostMessageW(HWND_BROADCAST, OrcaUiMsg, kHeartbeatTimer,
                       reinterpret_cast<LPARAM>(hWnd)); // the next one follows soon
}

int OSClass::RequestWndNotify(HWND hWnd, unsigned long mask) {
    NotifyEntry* free = nullptr;
    for (NotifyEntry* entry = m_Notify + 1; entry != std::end(m_Notify); ++entry) { // entry 0 is never assigned
        if (entry->hWnd == hWnd) {
            entry->Mask = mask;
            return 0;
        }
        if (free == nullptr && entry->Mask == 0) free = entry;
    }
    if (free == nullptr) {
        MsgBox(L"Unable to ADD Window Message Notification\n(Enlarge Array)");
        return 1;
    }
    *free = {hWnd, mask};
    return 0;
}

int OSClass::IsWindowNotify(HWND hWnd, UINT kind) {
    if (kind == NK_KEY || kind == NK_TIMER) return static_cast<int>(kind);
    const auto* const found = std::find_if(std::begin(m_Notify), std::end(m_Notify),
                                           [hWnd](const NotifyEntry& entry) { return entry.hWnd == hWnd; });
    return found == std::end(m_Notify) ? 0 : static_cast<int>(found->Mask & kind);
}
