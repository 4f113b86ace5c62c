#include <tessel/tessel.h>

#include <cstdio>

class Hello : public OSClass {
public:
    Hello() : OSClass(nullptr, L"hello", 0, nullptr), m_mailbox(kId) {}

private:
    static constexpr ORCAOBJID kId{1000};

    void OnStart() override {
        const auto* const text = reinterpret_cast<const unsigned char*>("hello");
        if (m_mailbox.RegisterMailbox(GetFrameWindow()) != 0 || m_mailbox.Send(kId, 7, 6, text, 0, nullptr) != 0)
            ExitApplication(1);
    }
    void OnMessage(HWND, UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message != MAILBOX_NOTIFICATION) return;
        const CMail mail(m_mailbox, kId, wParam, lParam);
        char text[6];
        if (!mail.Read(text)) return; // any program can post a notification
        std::printf("message %lu: %.6s\n", mail.MsgId(), text);
        ExitApplication(0);
    }
    void OnClose() override {}
    void OnPumpExit(int, const wchar_t*) override {}

    CMailBox m_mailbox;
};

int main() {
    CPostOffice::CreateGlobalPostOffice();
    return Hello().OS_Pump();
}
