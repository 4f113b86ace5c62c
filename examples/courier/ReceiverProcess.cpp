#include "ReceiverProcess.h"

#include <stdexcept>

namespace {

constexpr unsigned long kPatienceMs = 10000;

} // namespace

ReceiverProcess::ReceiverProcess(const std::wstring& program, const std::filesystem::path& copy, unsigned long tag,
                                 unsigned long stallMs) {
    std::wstring line = L"\"" + program + L"\" --receive \"" + copy.wstring() + L"\"";
    for (const unsigned long number : {GetCurrentProcessId(), tag, stallMs}) line += L" " + std::to_wstring(number);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &m_process)) {
        throw std::runtime_error("the receiver cannot be started");
    }
}

ReceiverProcess::~ReceiverProcess() {
    if (!Ended(0)) {
        TerminateProcess(m_process.hProcess, 1);
        (void)Ended(INFINITE); // its end was requested
    }
    CloseHandle(m_process.hThread);
    CloseHandle(m_process.hProcess);
}

bool ReceiverProcess::Ended(unsigned long timeoutMs) const {
    return WaitForSingleObject(m_process.hProcess, timeoutMs) == WAIT_OBJECT_0;
}

void ReceiverProcess::ThrowIfEnded(unsigned long timeoutMs) const {
    if (Ended(timeoutMs)) throw std::runtime_error("the receiver has ended before the file was complete");
}

void ReceiverProcess::WaitForGoodEnd() const {
    DWORD exitCode = 1;
    if (!Ended(kPatienceMs) || !GetExitCodeProcess(m_process.hProcess, &exitCode) || exitCode != 0) {
        throw std::runtime_error("the receiver does not end well");
    }
}
