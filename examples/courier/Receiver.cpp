#include "Receiver.h"

#include "Parcel.h"

#include <common/Mail.h>

#include <cstdio>
#include <cstring>
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
        DestroyWindow(m_window); // first: a message that is being sent then fails, and the sender keeps its block
        (void)m_mailbox.UnregisterMailbox(); // may not have been registered
        if (SenderEnded(0)) ReleaseBlocksTo(m_mailbox, m_self);
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
        reinterpret_cast<Receiver*>(GetWindowLongPtrW(window, GWLP_USERDATA))->OnNotification(lParam);
        return 0;
    }

    bool SenderEnded(unsigned long timeoutMs) const {
        return WaitForSingleObject(m_senderProcess, timeoutMs) != WAIT_TIMEOUT;
    }

    /// A notification of a message that is not next in order is forged: the genuine one is still to come.
    void OnNotification(LPARAM number) {
        const std::optional<Mail> parcel = OpenMail(m_mailbox, number, m_self);
        if (!parcel || parcel->from != m_sender) return;
        if (parcel->id == m_received.messages) {
            Write(parcel->data);
            (void)m_mailbox.ReleaseMemory(parcel->block); // in use until now
        } else if (parcel->id == kEndOfFile && parcel->data.size() == sizeof m_received &&
                   std::memcmp(parcel->data.data(), &m_received, sizeof m_received) == 0) {
            (void)m_mailbox.ReleaseMemory(parcel->block); // in use until now
            Finish();
        }
    }

    void Write(std::span<const unsigned char> data) {
        m_file.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
        if (!m_file) m_problem = "cannot write the copy";
        m_received.bytes += data.size();
        m_received.messages += 1;
    }

    void Finish() {
        m_done = true;
        m_file.close();
        if (!m_file) {
            m_problem = "cannot write the copy";
            return;
        }
        int status = ERROR_BUSY;
        while (status == ERROR_BUSY && !SenderEnded(0)) {
            status = m_mailbox.Send(m_sender, kEndOfFile, sizeof m_received, BytesOf(m_received), 0, nullptr);
        }
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
