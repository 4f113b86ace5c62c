#include "Workstation.h"

#include "Bitmap.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kImageTimer = 1;
constexpr unsigned int kImageMs = 50;
constexpr int kStateTimer = 2;
constexpr unsigned int kStateMs = 250;
constexpr unsigned int kUnloadLimitMs = 5000;

const wchar_t* StateOf(bool ready, bool gone) {
    if (gone) return L"ended";
    return ready ? L"running" : L"starting";
}

} // namespace

Workstation::Workstation(const Options& options)
    : OSClass(GetModuleHandleW(nullptr), L"Tessel workstation frame", 0, ""), m_options(options),
      m_mailbox(kWorkstationId) {}

Workstation::~Workstation() {
    (void)m_mailbox.UnregisterMailbox(); // may not have been registered
    if (m_console != nullptr) CloseHandle(m_console);
}

int Workstation::Run() {
    if (m_mailbox.RegisterMailbox(GetFrameWindow()) != 0) {
        Fail("no mailbox is free");
        return 1;
    }
    const int exitCode = OS_Pump();
    return PrintResult() ? exitCode : 1;
}

void Workstation::OnStart() {
    m_screen.emplace(*this);
    if (m_screen->Window() == nullptr) return Fail("there can be no dialog");
    SetVardaMsgId(RegisterThisWindowMessage(kHeartbeatName));
    SetATimer(GetFrameWindow(), kImageTimer, kImageMs, nullptr);
    SetATimer(GetFrameWindow(), kStateTimer, kStateMs, nullptr);
    LoadManagers();
    ShowState();
    if (!m_options.hidden) m_screen->Show();
}

void Workstation::LoadManagers() {
    for (int row = 0; LoadedManager & manager : m_managers) {
        m_screen->AddManager(row++, manager.name);
        HINSTANCE module = nullptr;
        (void)CreateThreadedManager(manager.module, &module); // the module handle shows whether it was loaded
        manager.gone = module == nullptr;
    }
    m_screen->AddManager(static_cast<int>(std::size(m_managers)), L"Workstation");
    const auto isGone = [](const LoadedManager& manager) { return manager.gone; };
    if (std::any_of(std::begin(m_managers), std::end(m_managers), isGone)) Fail("a manager cannot be loaded");
}

void Workstation::OnMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    const NOTIFY* const event = m_events.NaturalizeMsg(hWnd, message, wParam, lParam);
    if (event == nullptr || !m_screen) return;
    if (hWnd == GetFrameWindow()) {
        OnFrameEvent(*event, wParam);
    } else {
        OnDialogEvent(*event, lParam);
    }
}

void Workstation::OnFrameEvent(const NOTIFY& event, WPARAM wParam) {
    if (event.Kind == NK_APP) {
        const CMail mail(m_mailbox, kWorkstationId, wParam, event.Data1);
        if (mail) OnMail(mail);
    } else if (event.Kind == NK_TIMER && event.CtrlId == kImageTimer) {
        m_screen->RefreshImage();
    } else if (event.Kind == NK_TIMER && event.CtrlId == kStateTimer) {
        ShowState();
        TellConsole();
        WatchConsole();
        if (m_leaving) EndManagers();
    }
}

void Workstation::OnDialogEvent(const NOTIFY& event, LPARAM lParam) {
    if (event.Kind == NK_CLOSE) {
        EndManagers();
    } else if (event.Kind == NK_COMMAND && event.Function == FN_CLICK) {
        OnButton(event.CtrlId);
    } else if (event.Kind == NK_PAINT && event.CtrlId == IDC_IMAGE) {
        m_screen->DrawImage(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    }
}

void Workstation::OnButton(int id) {
    switch (id) {
    case IDC_START: return Start(0);
    case IDC_STOP: (void)Send(kAcquisitionId, WORK_STOP); return; // without room the user presses it again
    case IDC_EXIT: return EndManagers();
    default: return;
    }
}

void Workstation::OnMail(const CMail& mail) {
    if (const auto line = ReadLine(mail)) {
        m_lines.Count(line->head);
        m_screen->SetLine(line->head.line, line->pixels);
    } else if (mail.Sender() == kConsoleId && mail.MsgId() == WORK_EXIT) {
        EndManagers();
    } else if (mail.Sender() == kConsoleId && mail.MsgId() == WORK_STOP) {
        OnButton(IDC_STOP);
    } else if (std::uint32_t number = 0; mail.Read(number)) {
        if (mail.Sender() == kConsoleId && mail.MsgId() == WORK_START) Start(number);
        if (mail.Sender() == kArchiveId && mail.MsgId() == WORK_SAVED) OnSaved(number);
    }
    for (LoadedManager& manager : m_managers) {
        if (manager.id == mail.Sender()) OnManager(manager, mail);
    }
}

void Workstation::OnManager(LoadedManager& manager, const CMail& mail) {
    const bool isStatus = mail.MsgId() == WORK_STATUS || mail.MsgId() == WORK_GONE;
    if (!isStatus || !mail.Read(manager.status)) return;
    if (!manager.ready) {
        manager.ready = true;
        OnReady(manager);
    }
    if (mail.MsgId() == WORK_GONE) {
        manager.gone = true;
        EndManagers();
    }
}

void Workstation::OnReady(const LoadedManager& manager) {
    if (manager.id == kArchiveId) {
        TellArchive(WORK_FOLDER, m_options.folder.wstring());
        if (!m_options.movie.empty()) TellArchive(WORK_MOVIE, m_options.movie);
    }
    if (!m_managers[0].ready || !m_managers[1].ready) return;
    if (m_imagesToStart) Start(*m_imagesToStart);
    if (m_options.images > 0) StartConsole();
}

void Workstation::OnSaved(std::uint32_t image) {
    ++m_saved;
    if (LoadImageFile(ImagePath(m_options.folder, image)) != MakeImage(image)) ++m_different;
    std::printf("workstation: image %lu saved\n", static_cast<unsigned long>(image));
    m_toAnnounce.Add(image);
    TellConsole();
}

void Workstation::TellConsole() {
    (void)m_toAnnounce.Announce(
        [this](auto number) { return Send(kConsoleId, WORK_SAVED, number); }); // retried on status
}

void Workstation::StartConsole() {
    const std::wstring order = L"run " + std::to_wstring(m_options.images);
    m_console = StartProcess(m_options.console.c_str(), reinterpret_cast<const unsigned char*>(order.c_str()));
    if (m_console == nullptr) Fail("the console cannot be started");
}

/// When it has ended its last order may still be in transit, but it has arrived by the next call.
void Workstation::WatchConsole() {
    if (m_leaving || m_console == nullptr || WaitForSingleObject(m_console, 0) != WAIT_OBJECT_0) return;
    if (m_consoleEnded) Fail("the console has ended before the images were acquired");
    m_consoleEnded = true;
}

void Workstation::Start(std::uint32_t images) {
    const bool ready = m_managers[0].ready && m_managers[1].ready;
    const bool sent = ready && Send(kAcquisitionId, WORK_START, BytesOf(images)) == STATUS_OK;
    m_imagesToStart = sent || ready ? std::nullopt : std::optional(images);
    if (ready && !sent) Fail("the acquisition manager takes no order");
}

/// One after another, so that the archive gets everything acquired. Called until all have ended.
void Workstation::EndManagers() {
    m_leaving = true;
    for (LoadedManager& manager : m_managers) {
        if (manager.gone) continue;
        if (!manager.exitSent) manager.exitSent = Send(manager.id, WORK_EXIT) == STATUS_OK;
        return;
    }
    ExitApplication(0);
}

void Workstation::Fail(const char* problem) {
    std::fprintf(stderr, "workstation: %s\n", problem);
    SetExitCode(1);
    EndManagers();
}

/// Asks the remaining managers to end: the window may have been closed from outside.
void Workstation::OnPumpExit(int /*code*/, const wchar_t* /*text*/) {
    for (LoadedManager& manager : m_managers) {
        if (!manager.exitSent && !manager.gone) (void)Send(manager.id, WORK_EXIT); // a stuck one hits the limit
        const unsigned long start = GetTickCount();
        while (GetModuleHandleW(manager.module) != nullptr && GetTickCount() - start < kUnloadLimitMs) Sleeper(1);
    }
}

int Workstation::Send(ORCAOBJID to, WORK_MESSAGE message, std::span<const unsigned char> data) {
    return m_mailbox.Send(to, message, static_cast<unsigned long>(data.size()), data.data(), 0, nullptr);
}

void Workstation::TellArchive(WORK_MESSAGE message, const std::wstring& path) {
    const std::span text(reinterpret_cast<const unsigned char*>(path.data()), path.size() * sizeof(wchar_t));
    if (Send(kArchiveId, message, text) != STATUS_OK) Fail("the archive takes no path");
}

void Workstation::ShowState() {
    int row = 0;
    for (const LoadedManager& manager : m_managers) {
        m_screen->ShowManager(row++, StateOf(manager.ready, manager.gone), manager.status);
    }
    m_screen->ShowManager(row, m_leaving ? L"ending" : L"running", {0, m_lines.received, m_lines.lost, 0, 0});
    m_screen->ShowPostOffice(m_mailbox);
    const std::wstring images = L"Saved in " + m_options.folder.filename().wstring() + L": " +
                                std::to_wstring(m_saved) + L"\nDifferent from what was generated: " +
                                std::to_wstring(m_different) + L"\nHeartbeats heard by the archive: " +
                                std::to_wstring(m_managers[1].status.heartbeats);
    m_screen->ShowImages(images);
}

bool Workstation::PrintResult() const {
    const ManagerStatus& acquisition = m_managers[0].status;
    const ManagerStatus& archive = m_managers[1].status;
    const std::uint32_t lost = acquisition.sent - archive.received - m_lines.received;
    std::printf("workstation: %lu lines sent, %lu received by the archive, %lu by the screen, %lu lost\n",
                static_cast<unsigned long>(acquisition.sent), static_cast<unsigned long>(archive.received),
                static_cast<unsigned long>(m_lines.received), static_cast<unsigned long>(lost));
    std::printf("workstation: %lu images saved, %lu of them different from what was generated\n",
                static_cast<unsigned long>(m_saved), static_cast<unsigned long>(m_different));
    if (!m_options.movie.empty()) {
        std::printf("workstation: %lu images in the movie\n", static_cast<unsigned long>(archive.filmed));
    }
    const bool filmed = m_options.movie.empty() || archive.filmed == m_saved;
    return lost == 0 && m_different == 0 && filmed && (m_options.images == 0 || m_saved == m_options.images);
}
