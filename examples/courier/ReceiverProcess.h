#pragma once

#include <tessel/tessel.h>

#include <filesystem>
#include <string>
#include <thread>

/// The receiving process. If it ends while the sender waits for something that only it could provide, such as a lock
/// that it held, the sender's process prints a line and ends.
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
    /// Throws if it has ended, which it normally does only after the receipt.
    void ThrowIfEnded(unsigned long timeoutMs) const;
    /// Waits for its end after the receipt; throws if it fails.
    void WaitForGoodEnd() const;

private:
    void WatchForStuckSender();

    PROCESS_INFORMATION m_process{};
    CEvent m_senderDone;
    std::thread m_watcher;
};
