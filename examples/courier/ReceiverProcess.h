#pragma once

#include <tessel/tessel.h>

#include <filesystem>
#include <string>

/// The receiving process.
class ReceiverProcess {
public:
    /// Starts it; throws std::runtime_error when that fails.
    ReceiverProcess(const std::wstring& program, const std::filesystem::path& copy, unsigned long tag,
                    unsigned long stallMs);
    /// Ends it if it still runs; a lock that it holds is taken over.
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
    PROCESS_INFORMATION m_process{};
};
