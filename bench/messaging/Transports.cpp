#include "support/Loopback.h" // Winsock, before windows.h

#include "Transports.h"

#include "BareOffice.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <tessel/messaging/mailbox.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace {

constexpr ORCAOBJID kServer{61};
constexpr ORCAOBJID kClient{62};

std::string Text(HWND window) {
    return std::to_string(HandleToULong(window));
}

HWND Window(const std::string& text) {
    return static_cast<HWND>(ULongToHandle(std::stoul(text)));
}

class MailboxTransport : public Transport {
public:
    explicit MailboxTransport(bool server) : m_mailbox(server ? kServer : kClient), m_peer(server ? kClient : kServer) {
        m_mailbox.RegisterMailbox(m_window.Get());
    }
    std::string Address() override { return {}; }
    void Connect(const std::string&) override {}
    void Send(const void* data, std::size_t size) override {
        m_mailbox.Send(m_peer, 1, static_cast<unsigned long>(size), static_cast<const unsigned char*>(data), 0,
                       nullptr);
    }
    void Receive(void* data, std::size_t size) override { m_mailbox.ReleaseMemory(Take(data, size)); }

protected:
    SBLOCK* Take(void* data, std::size_t size) {
        const LPARAM number = m_window.Wait(MAILBOX_NOTIFICATION);
        SBLOCK* const block = m_mailbox.GetMessageBlock(static_cast<unsigned int>(number));
        std::memcpy(data, block->Data, size);
        return block;
    }
    CMailBox& Mailbox() { return m_mailbox; }

private:
    OpenPostOffice m_office;
    MessageWindow m_window;
    CMailBox m_mailbox;
    ORCAOBJID m_peer;
};

/// Answers each message in its own block; the first one of a dialogue is sent.
class ReplyTransport : public MailboxTransport {
public:
    using MailboxTransport::MailboxTransport;
    ~ReplyTransport() override {
        if (m_received != nullptr) Mailbox().ReleaseMemory(m_received);
    }
    void Send(const void* data, std::size_t size) override {
        if (m_received == nullptr) return MailboxTransport::Send(data, size);
        Mailbox().Reply(std::exchange(m_received, nullptr), 1, static_cast<unsigned long>(size),
                        static_cast<const unsigned char*>(data), 0, nullptr);
    }
    void Receive(void* data, std::size_t size) override { m_received = Take(data, size); }

private:
    SBLOCK* m_received = nullptr;
};

class BareTransport : public Transport {
public:
    std::string Address() override { return Text(m_window.Get()); }
    void Connect(const std::string& peer) override { m_peer = Window(peer); }
    void Send(const void* data, std::size_t size) override { m_office.Send(m_peer, data, size); }
    void Receive(void* data, std::size_t size) override { m_office.Receive(m_window.Get(), data, size); }

private:
    BareOffice m_office;
    MessageWindow m_window;
    HWND m_peer = nullptr;
};

class CopyDataTransport : public Transport {
public:
    CopyDataTransport() {
        SetWindowLongPtrW(m_window.Get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(m_window.Get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WindowProc));
    }
    std::string Address() override { return Text(m_window.Get()); }
    void Connect(const std::string& peer) override { m_peer = Window(peer); }
    void Send(const void* data, std::size_t size) override {
        COPYDATASTRUCT copy{1, static_cast<DWORD>(size), const_cast<void*>(data)};
        SendMessageW(m_peer, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&copy));
    }
    void Receive(void* data, std::size_t size) override {
        while (!m_arrived) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT);
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); // runs the window procedure for what was sent
        }
        std::memcpy(data, m_data, size);
        m_arrived = false;
    }

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_COPYDATA) return DefWindowProcW(window, message, wParam, lParam);
        auto* const self = reinterpret_cast<CopyDataTransport*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        const auto* const copy = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        std::memcpy(self->m_data, copy->lpData, copy->cbData);
        self->m_arrived = true;
        return TRUE;
    }

    MessageWindow m_window;
    HWND m_peer = nullptr;
    bool m_arrived = false;
    unsigned char m_data[kMaximum];
};

void WriteAll(HANDLE file, const void* data, std::size_t size) {
    DWORD written = 0;
    if (!WriteFile(file, data, static_cast<DWORD>(size), &written, nullptr)) throw std::runtime_error("write failed");
}

void ReadAll(HANDLE file, void* data, std::size_t size) {
    DWORD got = 0;
    if (!ReadFile(file, data, static_cast<DWORD>(size), &got, nullptr)) throw std::runtime_error("read failed");
}

class PipeTransport : public Transport {
public:
    explicit PipeTransport(bool server) {
        constexpr wchar_t kName[] = L"\\\\.\\pipe\\Tessel bench";
        if (server) {
            m_pipe = CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 65536,
                                      65536, 0, nullptr);
            return;
        }
        m_pipe = CreateFileW(kName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        DWORD mode = PIPE_READMODE_MESSAGE;
        SetNamedPipeHandleState(m_pipe, &mode, nullptr, nullptr);
    }
    ~PipeTransport() override { CloseHandle(m_pipe); }
    std::string Address() override { return {}; }
    void Connect(const std::string&) override {}
    void Send(const void* data, std::size_t size) override { WriteAll(m_pipe, data, size); }
    void Receive(void* data, std::size_t size) override { ReadAll(m_pipe, data, size); }

private:
    HANDLE m_pipe;
};

class MailslotTransport : public Transport {
public:
    explicit MailslotTransport(bool server)
        : m_in(CreateMailslotW(Name(server).c_str(), kMaximum, MAILSLOT_WAIT_FOREVER, nullptr)), m_server(server) {}
    ~MailslotTransport() override {
        CloseHandle(m_in);
        CloseHandle(m_out);
    }
    std::string Address() override { return {}; }
    void Connect(const std::string&) override {
        m_out =
            CreateFileW(Name(!m_server).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    }
    void Send(const void* data, std::size_t size) override { WriteAll(m_out, data, size); }
    void Receive(void* data, std::size_t size) override { ReadAll(m_in, data, size); }

private:
    static std::wstring Name(bool server) {
        return std::wstring(L"\\\\.\\mailslot\\Tessel bench ") + (server ? L"server" : L"client");
    }
    HANDLE m_in;
    HANDLE m_out = INVALID_HANDLE_VALUE;
    bool m_server;
};

class TcpTransport : public Transport {
public:
    explicit TcpTransport(bool server) : m_server(server) {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        if (!server) return;
        sockaddr_in address = Endpoint(0);
        (void)bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address); // else the peer cannot connect
        listen(m_socket, 1);
    }
    ~TcpTransport() override { closesocket(m_socket); }
    std::string Address() override {
        sockaddr_in address{};
        int size = sizeof address;
        getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size);
        return std::to_string(ntohs(address.sin_port));
    }
    void Connect(const std::string& peer) override {
        if (m_server) {
            const SOCKET listener = m_socket;
            m_socket = accept(listener, nullptr, nullptr);
            closesocket(listener);
        } else {
            sockaddr_in address = Endpoint(static_cast<u_short>(std::stoul(peer)));
            (void)connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address); // else the first send fails
        }
        const int noDelay = 1;
        setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
    }
    void Send(const void* data, std::size_t size) override {
        send(m_socket, static_cast<const char*>(data), static_cast<int>(size), 0);
    }
    void Receive(void* data, std::size_t size) override {
        for (auto* at = static_cast<char*>(data); size > 0;) {
            const int got = recv(m_socket, at, static_cast<int>(size), 0);
            if (got <= 0) throw std::runtime_error("receive failed");
            at += got;
            size -= static_cast<std::size_t>(got);
        }
    }

private:
    SOCKET m_socket;
    bool m_server;
};

} // namespace

std::unique_ptr<Transport> MakeTransport(const std::string& kind, bool server) {
    if (kind == "Dialogue" || (kind == "Reply" && !server)) return std::make_unique<ReplyTransport>(server);
    if (kind == "Tessel" || kind == "Reply") return std::make_unique<MailboxTransport>(server);
    if (kind == "Bare") return std::make_unique<BareTransport>();
    if (kind == "WM_COPYDATA") return std::make_unique<CopyDataTransport>();
    if (kind == "Pipe") return std::make_unique<PipeTransport>(server);
    if (kind == "Mailslot") return std::make_unique<MailslotTransport>(server);
    return std::make_unique<TcpTransport>(server);
}
