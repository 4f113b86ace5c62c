#include <foundation/SystemText.h>
#include <tessel/system/service.h>

#include <atomic>
#include <cstdio>
#include <cwchar>
#include <iterator>
#include <memory>
#include <type_traits>

SERVICE_STATUS CNtService::mStatus{};
bool CNtService::mSingleInstance = false;
CNtService* CNtService::mpThis = nullptr;
SERVICE_STATUS_HANDLE CNtService::mStatusHandle = nullptr;
const wchar_t* CNtService::mpServiceName = nullptr;
const wchar_t* CNtService::mpDisplayName = nullptr;
const wchar_t* CNtService::mpDeps = nullptr;
const wchar_t* CNtService::mpExePath = nullptr;
const wchar_t* CNtService::mpArgs = nullptr;
bool CNtService::mReportErrors = false;
SC_HANDLE CNtService::mhSCManager = nullptr;
SC_HANDLE CNtService::mhService = nullptr;
unsigned int CNtService::mHandleCount = 0;

namespace {

constexpr unsigned long kStartHintMs = 3000;
constexpr unsigned long kStopPollMs = 1000;
constexpr std::size_t kErrorTextLength = 1024;
constexpr std::size_t kMessageLength = 2048;

constexpr unsigned long kPathLength = 1024;
constexpr unsigned long kCommandLength = 2 * kPathLength; // path and arguments

std::atomic<unsigned long> nextCheckPoint{1};

struct CloseService {
    void operator()(SC_HANDLE handle) const { (void)CloseServiceHandle(handle); } // open until now
};
using ServiceHandle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, CloseService>;

/// Formats a message. GUARD-175: it is truncated to fit.
template <std::size_t Length, class... Text>
const wchar_t* Format(wchar_t (&message)[Length], const wchar_t* format, Text... texts) {
    (void)_snwprintf(message, Length - 1, format, texts...);
    message[Length - 1] = L'\0';
    return message;
}

} // namespace

CNtService::CNtService(const wchar_t* name, const wchar_t* displayName, const wchar_t* deps, const wchar_t* exePath,
                       const wchar_t* args) {
    mpServiceName = name;
    mpDisplayName = displayName;
    mpDeps = deps;
    mpExePath = exePath;
    mpArgs = args;
    mSingleInstance = true;
    mpThis = this;
    mStatus = {};
    mStatusHandle = nullptr;
}

CNtService::~CNtService() {
    mpThis = nullptr;
    mpServiceName = mpDisplayName = mpDeps = mpExePath = mpArgs = nullptr;
}

void CNtService::Run() {
    const SERVICE_TABLE_ENTRYW table[] = {{const_cast<wchar_t*>(mpServiceName), ServiceMain}, {nullptr, nullptr}};
    if (!StartServiceCtrlDispatcherW(table)) AddToMessageLog(L"StartServiceCtrlDispatcher failed.", true);
}

void WINAPI CNtService::ServiceMain(unsigned long, wchar_t**) {
    mStatusHandle = RegisterServiceCtrlHandlerW(mpServiceName, ServiceCtrl);
    if (mStatusHandle == nullptr) return;
    mStatus.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    mStatus.dwServiceSpecificExitCode = 0;
    if (!ReportStatus(SERVICE_START_PENDING, NO_ERROR, kStartHintMs)) return;
    if (mpThis != nullptr) mpThis->OnServiceRun(); // GUARD-170: the object may have been destroyed
}

void WINAPI CNtService::ServiceCtrl(unsigned long control) {
    if (control != SERVICE_CONTROL_STOP) {
        (void)ReportStatus(mStatus.dwCurrentState, mStatus.dwWin32ExitCode, mStatus.dwWaitHint); // logs a failure
    } else if (ReportStatus(SERVICE_STOP_PENDING, NO_ERROR, 0) && mpThis != nullptr) {
        mpThis->OnServiceStop();
    }
}

bool CNtService::ReportStatus(unsigned long state, unsigned long exitCode, unsigned long waitHint) {
    const bool settled = state == SERVICE_RUNNING || state == SERVICE_STOPPED;
    mStatus.dwControlsAccepted = state == SERVICE_START_PENDING ? 0 : SERVICE_ACCEPT_STOP;
    mStatus.dwCurrentState = state;
    mStatus.dwWin32ExitCode = exitCode;
    mStatus.dwWaitHint = waitHint;
    mStatus.dwCheckPoint = settled ? 0 : nextCheckPoint++;
    if (SetServiceStatus(mStatusHandle, &mStatus)) return true;
    AddToMessageLog(L"SetServiceStatus", true);
    return false;
}

void CNtService::AddToMessageLog(const wchar_t* text, bool withError) {
    wchar_t error[kErrorTextLength];
    wchar_t message[kMessageLength];
    if (withError) {
        Format(message, L"%ls error: %ls", mpServiceName, GetLastErrorText(error, kErrorTextLength));
    } else {
        Format(message, L"%ls error.", mpServiceName);
    }
    const HANDLE source = RegisterEventSourceW(nullptr, mpServiceName);
    if (source == nullptr) return;
    const wchar_t* texts[] = {message, text};
    (void)ReportEventW(source, EVENTLOG_ERROR_TYPE, 0, 0, nullptr, 2, 0, texts,
                       nullptr); // there is no other place to report to
    (void)DeregisterEventSource(source);
}

wchar_t* CNtService::GetLastErrorText(wchar_t* buffer, unsigned long size) {
    constexpr unsigned long kLineEnd = 2;
    constexpr unsigned long kRoomForNumber = 14; // " (0x", eight digits, ")" and the terminator
    const unsigned long error = GetLastError();
    tessel::SystemText text(error);
    buffer[0] = L'\0';
    if (text.Length() >= kLineEnd &&
        size >= text.Length() + kRoomForNumber) { // GUARD-176: a text may be shorter than a line end
        text.Get()[text.Length() - kLineEnd] = L'\0';
        (void)std::swprintf(buffer, size, L"%ls (0x%lx)", text.Get(), error); // it fits
    }
    return buffer;
}

void CNtService::ReportError(const wchar_t* format) {
    ReportError(format, nullptr, nullptr);
}

void CNtService::ReportError(const wchar_t* format, const wchar_t* text) {
    ReportError(format, text, nullptr);
}

void CNtService::ReportError(const wchar_t* format, const wchar_t* text, const wchar_t* text2) {
    wchar_t message[kMessageLength];
    Format(message, format, text, text2);
    if (mReportErrors) MessageBoxW(nullptr, message, mpServiceName, MB_OK);
}

void CNtService::ReportFailure(const wchar_t* format, unsigned long error) {
    wchar_t text[kErrorTextLength];
    SetLastError(error);
    ReportError(format, GetLastErrorText(text, kErrorTextLength));
}

void CNtService::EnableErrorReports(bool enable) {
    mReportErrors = enable;
}

/// Writes the path of the program and its arguments.
/// @return false: they cannot be determined or do not fit, see GetLastError()
bool CNtService::ProgramCommand(wchar_t* command, unsigned long size) {
    wchar_t ownPath[kPathLength];
    const wchar_t* path = mpExePath;
    if (path == nullptr) {
        const unsigned long length = GetModuleFileNameW(nullptr, ownPath, kPathLength);
        // GUARD-171: a path that fills the buffer may be truncated and not terminated.
        if (length >= kPathLength) SetLastError(ERROR_INSUFFICIENT_BUFFER);
        if (length == 0 || length >= kPathLength) return false;
        path = ownPath;
    }
    // ODD-183: the path has no quotation marks
    const int written = mpArgs != nullptr ? std::swprintf(command, size, L"%ls %ls", path, mpArgs)
                                          : std::swprintf(command, size, L"%ls", path);
    const bool fits = written >= 0 && static_cast<unsigned long>(written) < size;
    if (!fits) SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return fits;
}

void CNtService::Install() {
    wchar_t command[kCommandLength];
    wchar_t error[kErrorTextLength];
    if (!ProgramCommand(command, kCommandLength)) {
        return ReportError(L"Unable to install %ls - %ls\n", mpDisplayName, GetLastErrorText(error, kErrorTextLength));
    }
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    if (manager == nullptr) return ReportFailure(L"OpenSCManager failed - %ls\n", GetLastError());
    const ServiceHandle service(CreateServiceW(manager.get(), mpServiceName, mpDisplayName, SERVICE_ALL_ACCESS,
                                               SERVICE_WIN32_OWN_PROCESS | SERVICE_INTERACTIVE_PROCESS,
                                               SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, command, nullptr, nullptr,
                                               mpDeps, nullptr, nullptr));
    if (service == nullptr) return ReportFailure(L"CreateService failed - %ls\n", GetLastError());
    ReportError(L"%ls installed.\n", mpDisplayName);
}

void CNtService::Remove() {
    if (!Stop() || !OpenHandles()) return;
    if (DeleteService(mhService)) {
        ReportError(L"%ls removed.\n", mpDisplayName);
    } else {
        ReportFailure(L"DeleteService failed - %ls\n", GetLastError());
    }
    CloseHandles();
}

bool CNtService::Stop() {
    if (!OpenHandles()) return false;
    if (ControlService(mhService, SERVICE_CONTROL_STOP, &mStatus)) {
        ReportError(L"Stopping %ls.", mpDisplayName);
        Sleep(kStopPollMs);
    }
    while (QueryServiceStatus(mhService, &mStatus) && mStatus.dwCurrentState == SERVICE_STOP_PENDING) {
        ReportError(L".");
        Sleep(kStopPollMs);
    }
    const bool stopped = mStatus.dwCurrentState == SERVICE_STOPPED;
    ReportError(stopped ? L"\n%ls stopped.\n" : L"\n%ls failed to stop.\n", mpDisplayName);
    CloseHandles();
    return stopped;
}

bool CNtService::Start() {
    if (!OpenHandles()) return false;
    const wchar_t** const arguments = mpThis != nullptr ? mpThis->GetStartArgs() : nullptr;
    // GUARD-170: the object may have been destroyed, or have no arguments.
    const bool started =
        arguments != nullptr && arguments[0] != nullptr && StartServiceW(mhService, 1, arguments) != FALSE;
    CloseHandles();
    return started;
}

bool CNtService::IsInstalled(const wchar_t* name) {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    if (manager == nullptr) return false;
    const ServiceHandle service(
        OpenServiceW(manager.get(), name != nullptr ? name : mpServiceName, SERVICE_ALL_ACCESS));
    return service != nullptr;
}

bool CNtService::IsRunning(const wchar_t* name) {
    if (!IsInstalled(name) || !OpenHandles()) return false;
    // ODD-181: the state of this service, whatever the name
    SERVICE_STATUS status{};
    const bool running = QueryServiceStatus(mhService, &status) && status.dwCurrentState == SERVICE_RUNNING;
    CloseHandles();
    return running;
}

bool CNtService::SetStartMode(START_MODE mode) {
    if (!OpenHandles()) return false;
    const unsigned long startType = mode == START_AUTO ? SERVICE_AUTO_START : SERVICE_DEMAND_START;
    const bool changed = ChangeServiceConfigW(mhService, SERVICE_NO_CHANGE, startType, SERVICE_NO_CHANGE, nullptr,
                                              nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) != FALSE;
    CloseHandles();
    return changed;
}

START_MODE CNtService::GetStartMode() {
    if (!OpenHandles()) return START_MANUAL;
    // ODD-180: without room for the record's texts the query fails, and the type stays 0
    QUERY_SERVICE_CONFIGW config{};
    unsigned long needed = 0;
    (void)QueryServiceConfigW(mhService, &config, sizeof config, &needed); // a failure leaves the type 0
    CloseHandles();
    return config.dwStartType == SERVICE_AUTO_START ? START_AUTO : START_MANUAL;
}

bool CNtService::OpenHandles() {
    (void)mHandleMutex.Lock(); // waits without limit
    const wchar_t* const failure = OpenMissingHandles();
    const unsigned long error = GetLastError();
    if (failure == nullptr) ++mHandleCount;
    (void)mHandleMutex.Unlock(); // held until now
    if (failure != nullptr) ReportFailure(failure, error);
    return failure == nullptr;
}

/// @return format of the error message; null: both handles are open
const wchar_t* CNtService::OpenMissingHandles() {
    if (mhSCManager == nullptr) mhSCManager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    if (mhSCManager == nullptr) return L"OpenSCManager failed - %ls\n";
    // ODD-182: when the service cannot be opened, the manager stays open for the next attempt
    if (mhService == nullptr) mhService = OpenServiceW(mhSCManager, mpServiceName, SERVICE_ALL_ACCESS);
    return mhService == nullptr ? L"OpenService failed - %ls\n" : nullptr;
}

void CNtService::CloseHandles() {
    (void)mHandleMutex.Lock(); // waits without limit
    if (--mHandleCount == 0) {
        CloseServiceHandle(mhService);
        CloseServiceHandle(mhSCManager);
        mhService = mhSCManager = nullptr;
    }
    (void)mHandleMutex.Unlock(); // held until now
}
