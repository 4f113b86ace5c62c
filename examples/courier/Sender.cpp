#include "Sender.h"

#include "Parcel.h"
#include "ReceiverProcess.h"

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
constexpr auto kReceiptLimit = std::chrono::seconds(60);
constexpr unsigned long kEndingMs = 1000;

std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

class Sender {
public:
    explicit Sender(unsigned long tag)
        : m_self(SenderId(tag)), m_receiver(ReceiverId(tag)), m_mailbox(m_self), m_window(MakeMailWindow()) {
        if (m_window == nullptr || m_mailbox.RegisterMailbox(m_window) != 0) {
            DestroyWindow(m_window);
            throw std::runtime_error("no mailbox is free");
        }
    }
    /// The receiver's process has ended by now.
    ~Sender() {
        (void)m_mailbox.UnregisterMailbox(); // registered by the constructor
        CMail::ReleaseWaiting(m_mailbox, m_self, m_window);
        DestroyWindow(m_window);
        (void)m_mailbox.SweepDead(); // nothing is left if the receiver ended well
    }
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

    void SendAll(std::ifstream& file, std::uint64_t size, const ReceiverProcess& receiver) {
        while (!CPostOffice::IsManager(m_receiver, receiver.Id())) receiver.ThrowIfEnded(1);
        const auto start = Clock::now();
        m_size = size;
        std::array<unsigned char, kParcelSize> parcel;
        while (const unsigned long length = Read(file, parcel)) {
            SendOne(static_cast<unsigned long>(m_sent.messages), parcel.data(), length, receiver);
            m_sent.bytes += length;
            m_sent.messages += 1;
            ShowProgress();
        }
        SendOne(kEndOfFile, BytesOf(m_sent), sizeof m_sent, receiver);
        WaitForReceipt(receiver);
        m_time = Clock::now() - start;
    }

    void PrintResult() const {
        const double seconds = std::chrono::duration<double>(m_time).count();
        std::printf("courier: %llu bytes in %llu messages, %.2f s, %.1f MB/s\n", m_sent.bytes, m_sent.messages, seconds,
                    Megabytes(m_sent.bytes) / seconds);
        std::printf("courier: the pool was full %lu times, lowest free count %lu\n", m_poolFull, m_lowestFree);
    }

private:
    static double Megabytes(std::uint64_t bytes) { return static_cast<double>(bytes) / 1e6; }

    static unsigned long Read(std::ifstream& file, std::array<unsigned char, kParcelSize>& parcel) {
        file.read(reinterpret_cast<char*>(parcel.data()), std::streamsize{kParcelSize});
        if (file.bad()) throw std::runtime_error("the file cannot be read to its end");
        return static_cast<unsigned long>(file.gcount());
    }

    void SendOne(unsigned long number, const unsigned char* data, unsigned long length,
                 const ReceiverProcess& receiver) {
        int status = m_mailbox.Send(m_receiver, number, length, data, 0, nullptr);
        for (; status == ERROR_BUSY; status = m_mailbox.Send(m_receiver, number, length, data, 0, nullptr)) {
            m_poolFull += 1;
            ShowProgress();
            receiver.ThrowIfEnded(0);
        }
        m_lowestFree = std::min(m_lowestFree, m_mailbox.GetFreeBlockCount());
        if (status == 0) return;
        receiver.ThrowIfEnded(kEndingMs); // its window is destroyed first
        throw std::runtime_error("sending failed with error " + std::to_string(status));
    }

    void WaitForReceipt(const ReceiverProcess& receiver) {
        const auto limit = Clock::now() + kReceiptLimit;
        while (!TakeReceipt()) {
            const bool ended = receiver.Ended(1);
            if (TakeReceipt()) return; // sent just before the end
            if (ended) receiver.ThrowIfEnded(0);
            if (Clock::now() > limit) throw std::runtime_error("no receipt comes");
        }
    }

    /// Checks all notifications and ignores forged ones.
    bool TakeReceipt() {
        MSG message;
        while (PeekMessageW(&message, m_window, MAILBOX_NOTIFICATION, MAILBOX_NOTIFICATION, PM_REMOVE)) {
            const CMail parcel(m_mailbox, m_self, message.wParam, message.lParam);
            if (parcel.Sender() == m_receiver && IsReceiptFor(m_sent, parcel)) return true;
        }
        return false;
    }

    void ShowProgress() {
        if (Clock::now() < m_nextProgress) return;
        m_nextProgress = Clock::now() + kProgressInterval;
        std::printf("courier: %.1f of %.1f MB sent, %lu blocks free\n", Megabytes(m_sent.bytes), Megabytes(m_size),
                    m_mailbox.GetFreeBlockCount());
    }

    ORCAOBJID m_self;
    ORCAOBJID m_receiver;
    CMailBox m_mailbox;
    HWND m_window;
    Receipt m_sent{};
    std::uint64_t m_size = 0;
    Clock::duration m_time{};
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

/// A tag that no other current or recent run has.
unsigned long MakeTag() {
    return GetCurrentProcessId() * 4099 + GetTickCount();
}

void Carry(const std::filesystem::path& file, const std::filesystem::path& copy, const std::wstring& program,
           unsigned long stallMs) {
    std::ifstream input(file, std::ios::binary | std::ios::ate);
    if (!input) throw std::runtime_error("cannot read " + Utf8(file));
    if (std::error_code none; std::filesystem::equivalent(file, copy, none)) {
        throw std::runtime_error("the copy would overwrite the file");
    }
    const auto size = static_cast<std::uint64_t>(input.tellg());
    input.seekg(0);
    if (CPostOffice().GetHeaderAddr() == nullptr) throw std::runtime_error("there is no post office");
    const unsigned long tag = MakeTag();
    Sender sender(tag);
    const ReceiverProcess receiver(program, copy, tag, stallMs);
    sender.SendAll(input, size, receiver);
    receiver.WaitForGoodEnd();
    sender.PrintResult();
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
