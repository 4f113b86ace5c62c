#include "common/Arguments.h"

#include <tessel/tessel.h>

#include <cstdio>

namespace {

class Watcher : public CNtService {
public:
    explicit Watcher(const wchar_t* program)
        : CNtService(L"TesselWatcher", L"Tessel disk watcher", nullptr, program, nullptr) {}

protected:
    void OnServiceRun() override {
        constexpr unsigned long minuteMs = 60000;
        constexpr unsigned long timeOut = 0xFFFFFFFF;
        ReportStatus(SERVICE_RUNNING, NO_ERROR, 0);
        bool wasLow = false;
        do {
            unsigned long long free = 0;
            unsigned long long total = 0;
            const bool isLow = GetDriveFreeSpace(L"C:\\", &free, &total) != 0 && free < total / 20;
            if (isLow && !wasLow) AddToMessageLog(L"Less than a twentieth of drive C: is free.", false);
            wasLow = isLow;
        } while (m_stop.WaitOnEvent(minuteMs) == timeOut);
        ReportStatus(SERVICE_STOPPED, NO_ERROR, 0);
    }
    void OnServiceStop() override { m_stop.SetEvent(); }
    const wchar_t** GetStartArgs() override { return m_startArgs; }

private:
    const wchar_t* m_startArgs[1] = {L"TesselWatcher"};
    CEvent m_stop{nullptr, 1};
};

} // namespace

int main() {
    const std::wstring program = L"\"" + OwnProgram() + L"\""; // quoted, because the path may contain spaces
    const std::vector<std::wstring> arguments = Arguments();
    const std::wstring order = arguments.empty() ? L"run" : arguments[0];
    Watcher watcher(program.c_str());
    if (order == L"run") {
        watcher.Run();
    } else if (order == L"install") {
        watcher.Install();
        return CNtService::Start() ? 0 : 1;
    } else if (order == L"remove") {
        if (!CNtService::IsInstalled(nullptr)) return 1; // or we lack the rights to see it
        watcher.Remove();
        constexpr int tenths = 50; // the service manager removes it once its process has ended
        for (int tenth = 0; tenth < tenths && CNtService::IsInstalled(nullptr); ++tenth) Sleeper(100);
        return CNtService::IsInstalled(nullptr) ? 1 : 0;
    } else {
        std::puts("usage: watcher [install | remove]");
        return 2;
    }
    return 0;
}
