#include "Receiver.h"

#include "Parcel.h"

#include <cstdio>
#include <fstream>

namespace {

class Receiver {
public:
    Receiver(const std::filesystem::path& copy, HANDLE senderProcess, unsigned long tag)
        : m_senderProcess(senderProcess), m_sender(SenderId(tag)), m_self(ReceiverId(tag)), m_mailbox(m_self),
          m_file(copy, std::ios::binary | std::ios::trunc), m_window(MakeMailWindow()) {
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WindowProc));
    }

    ~Receiver() {
        (void)m_mailbox.UnregisterMailbox();                // may not have been registered
        CMail::ReleaseWaiting(m_mailbox, m_self, m_window); // any later one, the sender sweeps
        DestroyWindow(m_window);
        if (SenderEnded(0)) (void)m_mailbox.SweepDead(); // nothing is left if it ended well
    }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    /// @return null: ready; else why not
    const char* Open() {
        if (!m_file) return "cannot write the copy";
        if (m_window == nullptr) return "there can be no window";
        return m_mailbox.RegisterMailbox(m_window) == 0 ? nullptr : "no mailbox is free";
    }

    /// Handles messages until the file is complete or something is wrong.
    /// @return null: complete; else what is wrong
    const char* Run(unsigned long stallMs) {
        if (SenderEnded(stallMs)) return "the sender has ended";
        while (!m_done && m_problem == nullptr) {
            const DWORD wake = MsgWaitForMultipleObjects(1, &m_senderProcess, FALSE, INFINITE, QS_ALLINPUT);
            if (wake != WAIT_OBJECT_0 + 1) return "the sender has ended";
            MSG message;
            while (!m_done && m_problem == nullptr && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                DispatchMessageW(&message);
            }
        }
        return m_problem;
    }

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != MAILBOX_NOTIFICATION) return DefWindowProcW(window, message, wParam, lParam);
        reinterpret_cast<Receiver*>(GetWindowLongPtrW(window, GWLP_USERDATA))->OnNotification(wParam, lParam);
        return 0;
    }

    bool SenderEnded(unsigned long timeoutMs) const {
        return WaitForSingleObject(m_senderProcess, timeoutMs) != WAIT_TIMEOUT;
    }

    /// A notification of a message that is not next in order is forged: the genuine one is still to come.
    void OnNotification(WPARAM wParam, LPARAM lParam) {
        CMail parcel(m_mailbox, m_self, wParam, lParam);
        if (parcel.Sender() == m_sender && parcel.MsgId() == m_received.messages) {
            Write(parcel.Data());
        } else if (parcel.Sender() == m_sender && IsReceiptFor(m_received, parcel)) {
            Finish(parcel);
        } else {
            (void)parcel.Keep(); // until the genuine notification comes
        }
    }

    void Write(std::span<const unsigned char> data) {
        m_file.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
        if (!m_file) m_problem = "cannot write the copy";
        m_received.bytes += data.size();
        m_received.messages += 1;
    }

    void Finish(CMail& parcel) {
        m_done = true;
        m_file.close();
        if (!m_file) {
            m_problem = "cannot write the copy";
            return;
        }
        const int status = parcel.Reply(kEndOfFile, sizeof m_received, BytesOf(m_received));
        if (status != 0) m_problem = "the sender takes no receipt";
    }

    HANDLE m_senderProcess;
    ORCAOBJID m_sender;
    ORCAOBJID m_self;
    CMailBox m_mailbox;
    std::ofstream m_file;
    HWND m_window;
    Receipt m_received{};
    bool m_done = false;
    const char* m_problem = nullptr;
};

const char* ReceiveFrom(HANDLE sender, const std::filesystem::path& copy, unsigned long tag, unsigned long stallMs) {
    if (sender == nullptr) return "there is no such sender";
    if (CPostOffice().GetHeaderAddr() == nullptr) return "there is no post office";
    Receiver receiver(copy, sender, tag);
    const char* const problem = receiver.Open();
    return problem != nullptr ? problem : receiver.Run(stallMs);
}

} // namespace

int Receive(const std::filesystem::path& copy, unsigned long senderId, unsigned long tag, unsigned long stallMs) {
    const HANDLE sender = OpenProcess(SYNCHRONIZE, FALSE, senderId);
    CPostOffice::CreateGlobalPostOffice();
    const char* const problem = ReceiveFrom(sender, copy, tag, stallMs);
    CPostOffice::DestroyGlobalPostOffice();
    if (sender != nullptr) CloseHandle(sender);
    if (problem != nullptr) std::fprintf(stderr, "courier: receiver: %s\n", problem);
    return problem == nullptr ? 0 : 1;
}
