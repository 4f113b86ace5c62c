#include "Sender.h"

#include "Parcel.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kProgressInterval = std::chrono::milliseconds(200);
constexpr double kMegabyte = 1e6;

/// The receiver's process; ends it when the sender gives up.
class ReceiverProcess {
public:
    ReceiverProcess(const std::wstring& program, const std::filesystem::path& copy, unsigned long stallMs) {
        std::wstring line = L"\"" + program + L"\" --receive \"" + copy.wstring() + L"\" " +
                            std::to_wstring(GetCurrentProcessId()) + L" " + std::to_wstring(stallMs);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &m_process)) {
            throw std::runtime_error("the receiver cannot be started");
        }
    }
    ~ReceiverProcess() {
        TerminateProcess(m_process.hProcess, 1);
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }
    ReceiverProcess(const ReceiverProcess&) = delete;
    ReceiverProcess& operator=(const ReceiverProcess&) = delete;

    void ThrowIfEnded() const {
        if (WaitForSingleObject(m_process.hProcess, 0) == WAIT_OBJECT_0) {
            throw std::runtime_error("the receiver has ended before the file was complete");
        }
    }

private:
    PROCESS_INFORMATION m_process{};
};

class Sender {
public:
    Sender()
        : m_self(SenderId(GetCurrentProcessId())), m_receiver(ReceiverId(GetCurrentProcessId())), m_mailbox(m_self),
          m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
        if (m_mailbox.RegisterMailbox(m_window) != 0) throw std::runtime_error("no mailbox is free");
    }
    ~Sender() {
        (void)m_mailbox.UnregisterMailbox(); // registered by the constructor
        DestroyWindow(m_window);
        ReleaseBlocksTo(m_mailbox, m_self);
    }
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

    void SendAll(std::ifstream& file, std::uint64_t size, const ReceiverProcess& receiver) {
        WaitForReceiver(receiver);
        std::array<unsigned char, kParcelSize> parcel;
        while (const unsigned long length = Read(file, parcel)) {
            SendOne(static_cast<unsigned long>(m_sent.messages), parcel.data(), length, receiver);
            m_sent.bytes += length;
            m_sent.messages += 1;
            ShowProgress(size);
        }
        SendOne(kEndOfFile, reinterpret_cast<const unsigned char*>(&m_sent), sizeof m_sent, receiver);
        WaitForReceipt(receiver);
    }

    void GiveUp() { ReleaseBlocksTo(m_mailbox, m_receiver); }

    void PrintResult(Clock::duration time) const {
        const double seconds = std::chrono::duration<double>(time).count();
        const auto bytes = static_cast<double>(m_sent.bytes);
        std::printf("courier: %llu bytes in %llu messages, %.2f s, %.1f MB/s\n", m_sent.bytes, m_sent.messages, seconds,
                    bytes / kMegabyte / seconds);
        std::printf("courier: the pool was full %lu times, lowest free count %lu\n", m_poolFull, m_lowestFree);
    }

private:
    static unsigned long Read(std::ifstream& file, std::array<unsigned char, kParcelSize>& parcel) {
        file.read(reinterpret_cast<char*>(parcel.data()), std::streamsize{kParcelSize});
        if (file.bad()) throw std::runtime_error("the file cannot be read to its end");
        return static_cast<unsigned long>(file.gcount());
    }

    void WaitForReceiver(const ReceiverProcess& receiver) const {
        while (!CPostOffice::IsManager(m_receiver, 0)) {
            receiver.ThrowIfEnded();
            Sleep(1);
        }
    }

    void SendOne(unsigned long number, const unsigned char* data, unsigned long length,
                 const ReceiverProcess& receiver) {
        int status = m_mailbox.Send(m_receiver, number, length, data, 0, nullptr);
        for (; status == ERROR_BUSY; status = m_mailbox.Send(m_receiver, number, length, data, 0, nullptr)) {
            m_poolFull += 1;
            receiver.ThrowIfEnded();
        }
        if (status != 0) receiver.ThrowIfEnded();
        if (status != 0) throw std::runtime_error("sending failed with error " + std::to_string(status));
        m_lowestFree = std::min(m_lowestFree, m_mailbox.GetFreeBlockCount());
    }

    void WaitForReceipt(const ReceiverProcess& receiver) {
        MSG message;
        while (!PeekMessageW(&message, m_window, MAILBOX_NOTIFICATION, MAILBOX_NOTIFICATION, PM_REMOVE)) {
            receiver.ThrowIfEnded();
            Sleep(1);
        }
        SBLOCK* const block = TrustedBlock(m_mailbox, message.lParam, m_receiver, m_self);
        if (block == nullptr || std::memcmp(block->Data, &m_sent, sizeof m_sent) != 0) {
            throw std::runtime_error("the receipt is wrong");
        }
        (void)m_mailbox.ReleaseMemory(block); // in use until now
    }

    void ShowProgress(std::uint64_t size) {
        if (Clock::now() < m_nextProgress) return;
        m_nextProgress = Clock::now() + kProgressInterval;
        std::printf("courier: %.1f of %.1f MB sent, %lu blocks free\n", static_cast<double>(m_sent.bytes) / kMegabyte,
                    static_cast<double>(size) / kMegabyte, m_mailbox.GetFreeBlockCount());
    }

    ORCAOBJID m_self;
    ORCAOBJID m_receiver;
    CMailBox m_mailbox;
    HWND m_window;
    Receipt m_sent{};
    Clock::time_point m_nextProgress = Clock::now();
    unsigned long m_poolFull = 0;
    unsigned long m_lowestFree = SMALL_BLOCK_COUNT;
};

bool Identical(const std::filesystem::path& first, const std::filesystem::path& second) {
    std::ifstream a(first, std::ios::binary);
    std::ifstream b(second, std::ios::binary);
    std::array<char, 65536> partOfA;
    std::array<char, 65536> partOfB;
    while (a && b) {
        a.read(partOfA.data(), partOfA.size());
        b.read(partOfB.data(), partOfB.size());
        if (a.gcount() != b.gcount()) return false;
        if (std::memcmp(partOfA.data(), partOfB.data(), static_cast<std::size_t>(a.gcount())) != 0) return false;
    }
    return a.eof() && b.eof();
}

void Carry(const std::filesystem::path& file, const std::filesystem::path& copy, const std::wstring& program,
           unsigned long stallMs) {
    std::ifstream input(file, std::ios::binary | std::ios::ate);
    if (!input) throw std::runtime_error("cannot read " + file.string());
    const auto size = static_cast<std::uint64_t>(input.tellg());
    input.seekg(0);
    Sender sender;
    const ReceiverProcess receiver(program, copy, stallMs);
    const auto start = Clock::now();
    try {
        sender.SendAll(input, size, receiver);
    } catch (const std::exception&) {
        sender.GiveUp();
        throw;
    }
    sender.PrintResult(Clock::now() - start);
}

} // namespace

int Send(const std::filesystem::path& file, const std::filesystem::path& copy, const std::wstring& receiver,
         unsigned long stallMs) {
    CPostOffice::CreateGlobalPostOffice();
    int exitCode = 1;
    try {
        Carry(file, copy, receiver, stallMs);
        const bool identical = Identical(file, copy);
        std::printf("courier: %s\n", identical ? "identical" : "the copy differs");
        exitCode = identical ? 0 : 1;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "courier: %s\n", problem.what());
    }
    CPostOffice::DestroyGlobalPostOffice();
    return exitCode;
}
