#include "Receiver.h"

#include "Parcel.h"

#include <cstdio>
#include <cstring>
#include <fstream>

namespace {

class Receiver {
public:
    Receiver(const std::filesystem::path& copy, unsigned long senderProcessId)
        : m_sender(SenderId(senderProcessId)), m_self(ReceiverId(senderProcessId)), m_mailbox(m_self),
          m_file(copy, std::ios::binary | std::ios::trunc) {
        m_window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WindowProc));
    }

    ~Receiver() {
        (void)m_mailbox.UnregisterMailbox(); // may not have been registered
        DestroyWindow(m_window);
        ReleaseBlocksTo(m_mailbox, m_self);
    }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    /// @return null: ready; else why not
    const char* Open() {
        if (!m_file) return "cannot write the copy";
        return m_mailbox.RegisterMailbox(m_window) == 0 ? nullptr : "no mailbox is free";
    }

    /// Handles messages until the file is complete or something is wrong.
    /// @return null: complete; else what is wrong
    const char* Run(HANDLE senderProcess) {
        while (!m_done && m_problem == nullptr) {
            if (MsgWaitForMultipleObjects(1, &senderProcess, FALSE, INFINITE, QS_ALLINPUT) == WAIT_OBJECT_0) {
                return "the sender has ended";
            }
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        }
        return m_problem;
    }

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != MAILBOX_NOTIFICATION) return DefWindowProcW(window, message, wParam, lParam);
        reinterpret_cast<Receiver*>(GetWindowLongPtrW(window, GWLP_USERDATA))->OnNotification(lParam);
        return 0;
    }

    void OnNotification(LPARAM number) {
        SBLOCK* const block = TrustedBlock(m_mailbox, number, m_sender, m_self);
        if (block == nullptr) return;
        const unsigned long length = block->Length - 1;
        if (block->MsgId == kEndOfFile && length == sizeof(Receipt)) {
            Finish(*block);
        } else if (block->MsgId == m_received.messages) {
            m_file.write(reinterpret_cast<const char*>(block->Data), static_cast<std::streamsize>(length));
            m_received.bytes += length;
            m_received.messages += 1;
        } else {
            m_problem = "a message is missing or out of order";
        }
        if (!m_file) m_problem = "cannot write the copy";
        (void)m_mailbox.ReleaseMemory(block); // in use until now
    }

    void Finish(const SBLOCK& block) {
        m_file.close();
        if (std::memcmp(block.Data, &m_received, sizeof m_received) != 0) {
            m_problem = "more was sent than received";
        } else if (m_mailbox.Send(m_sender, kEndOfFile, sizeof m_received,
                                  reinterpret_cast<const unsigned char*>(&m_received), 0, nullptr) != 0) {
            m_problem = "the sender takes no receipt";
        }
        m_done = true;
    }

    ORCAOBJID m_sender;
    ORCAOBJID m_self;
    CMailBox m_mailbox;
    std::ofstream m_file;
    HWND m_window;
    Receipt m_received{};
    bool m_done = false;
    const char* m_problem = nullptr;
};

} // namespace

int Receive(const std::filesystem::path& copy, unsigned long senderId, unsigned long stallMs) {
    const HANDLE sender = OpenProcess(SYNCHRONIZE, FALSE, senderId);
    CPostOffice::CreateGlobalPostOffice();
    const char* problem = nullptr;
    {
        Receiver receiver(copy, senderId);
        problem = sender == nullptr ? "there is no such sender" : receiver.Open();
        if (problem == nullptr) {
            Sleep(stallMs);
            problem = receiver.Run(sender);
        }
    }
    CPostOffice::DestroyGlobalPostOffice();
    if (problem != nullptr) std::fprintf(stderr, "courier: receiver: %s\n", problem);
    return problem == nullptr ? 0 : 1;
}
