#pragma once

#include <tessel/tessel.h>

#include <filesystem>
#include <string>
#include <thread>

/// The process that receives. Should it end while the sender waits for something that only it could give, such as
/// a lock that it held, the sender's process is ended with a line that says so.
class ReceiverProcess {
public:
    /// Starts it; throws std::runtime_error when that fails.
    ReceiverProcess(const std::wstring& program, const std::filesystem::path& copy, unsigned long tag,
                    unsigned long stallMs);
    /// Ends it if it still runs, at a moment when it does not hold the post office's lock.
    ~ReceiverProcess();
    ReceiverProcess(const ReceiverProcess&) = delete;
    ReceiverProcess& operator=(const ReceiverProcess&) = delete;

    unsigned long Id() const { return m_process.dwProcessId; }
    bool Ended(unsigned long timeoutMs) const;
    /// Throws when it has ended, which it does on its own only after the receipt.
    void ThrowIfEnded(unsigned long timeoutMs) const;
    /// Waits for its end after the receipt; throws when it does not end well.
    void WaitForGoodEnd() const;

private:
    void WatchForStuckSender();

    PROCESS_INFORMATION m_process{};
    CEvent m_senderDone;
    std::thread m_watcher;
};
