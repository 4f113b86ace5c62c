#include "Station.h"

namespace {

constexpr UINT_PTR kTickTimer = 1;

/// Hidden, but a top-level window: the heartbeat reaches only those.
HWND MakeHiddenWindow() {
    return CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
}

} // namespace

Station::Station(ORCAOBJID id)
    : m_id(id), m_mailbox(id), m_heartbeat(RegisterThisWindowMessage(kHeartbeatName)), m_window(MakeHiddenWindow()),
      m_open(m_window != nullptr && m_mailbox.RegisterMailbox(m_window) == 0) {
    SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WindowProc));
}

Station::~Station() {
    Leave();
    CMail::ReleaseWaiting(m_mailbox, m_id, m_window);
    DestroyWindow(m_window);
}

void Station::Run() {
    MSG message;
    while (m_open && GetAMessage(&message, nullptr, 0, 0) > 0) DispatchAMessage(&message);
    Leave();
    CMail::ReleaseWaiting(m_mailbox, m_id, m_window); // one of them may hold the last available block
    OnLeft();
}

void Station::TickEvery(unsigned int ms) {
    SetATimer(m_window, kTickTimer, ms, nullptr);
}

void Station::Leave() {
    if (m_open) (void)m_mailbox.UnregisterMailbox(); // it was registered
    m_open = false;
}

int Station::Send(ORCAOBJID to, WORK_MESSAGE message, std::span<const unsigned char> first,
                  std::span<const unsigned char> second) {
    return m_mailbox.Send(to, message, static_cast<unsigned long>(first.size()), first.data(),
                          static_cast<unsigned long>(second.size()), second.data());
}

bool Station::IsThere(ORCAOBJID id) {
    unsigned short slot = 0;
    return IsThisAWindow(m_mailbox.GetMailBox(id, slot)) != 0;
}

LRESULT CALLBACK Station::WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto& station = *reinterpret_cast<Station*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == MAILBOX_NOTIFICATION) {
        const CMail mail(station.m_mailbox, station.m_id, wParam, lParam);
        if (mail) station.OnMail(mail);
    } else if (message == WM_TIMER) {
        station.OnTick();
    } else if (message == station.m_heartbeat) {
        ++station.m_heartbeats;
    } else {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return 0;
}
