#include "support/OpenPostOffice.h"

#include <benchmark/benchmark.h>
#include <tessel/messaging/host.h>
#include <tessel/messaging/mailbox.h>

#include <utility>

namespace {

/// The capacity of a thread's queue.
constexpr int kMessages = 10000;

/// Fills the queue while the clock is stopped.
void Post(benchmark::State& state, HWND window) {
    state.PauseTiming();
    for (int i = 0; i < kMessages; ++i) PostMessageW(window, MAILBOX_NOTIFICATION, 0, i);
    state.ResumeTiming();
}

class Program : public OSClass {
public:
    explicit Program(benchmark::State& state)
        : OSClass(GetModuleHandleW(nullptr), L"Tessel bench host", 0, nullptr), m_state(state) {}
    ~Program() override { DestroyWindow(GetFrameWindow()); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void OnStart() override { Post(m_state, GetFrameWindow()); }
    void OnClose() override {}
    void OnMessage(HWND, UINT message, WPARAM, LPARAM) override {
        if (message == MAILBOX_NOTIFICATION && ++m_seen == kMessages) ExitApplication(0);
    }
    void OnPumpExit(int, const wchar_t*) override {}
    int TakeSeen() { return std::exchange(m_seen, 0); }

private:
    benchmark::State& m_state;
    int m_seen = 0;
};

void PumpTessel(benchmark::State& state) {
    const OpenPostOffice office;
    Program program(state);
    for (auto _ : state) {
        program.OS_Pump();
        if (program.TakeSeen() != kMessages) state.SkipWithError("messages are missing");
    }
}

int seen = 0;

LRESULT CALLBACK Count(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == MAILBOX_NOTIFICATION && ++seen == kMessages) PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

void PumpBare(benchmark::State& state) {
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Count));
    for (auto _ : state) {
        Post(state, window);
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) != 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (std::exchange(seen, 0) != kMessages) state.SkipWithError("messages are missing");
    }
    DestroyWindow(window);
}

BENCHMARK(PumpTessel)->Name("Pump, 10,000 messages/Tessel")->UseRealTime();
BENCHMARK(PumpBare)->Name("Pump, 10,000 messages/Bare")->UseRealTime();

} // namespace
