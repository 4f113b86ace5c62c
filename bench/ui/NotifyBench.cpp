#include "support/ControlWindow.h"

#include <benchmark/benchmark.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/ui/notify.h>

#include <string>

namespace {

constexpr int kButton = 1;
constexpr int kListView = 2;
constexpr int kSlider = 3;

/// A window with the sources of messages.
struct Sources {
    ControlWindow window;
    HWND button = window.Add(WC_BUTTONW, kButton, 0);
    HWND slider = window.Add(TRACKBAR_CLASSW, kSlider, 0);
    NMHDR click{window.Add(WC_LISTVIEWW, kListView, LVS_REPORT), kListView, static_cast<UINT>(NM_CLICK)};
    DRAWITEMSTRUCT item{ODT_BUTTON, kButton, 0, ODA_DRAWENTIRE, 0, button, nullptr, {0, 0, 100, 20}, 0};
};

template <class Pointer> LPARAM Param(Pointer pointer) {
    return reinterpret_cast<LPARAM>(pointer);
}

struct Case {
    const char* name;
    UINT message;
    WPARAM (*wParam)(const Sources&);
    LPARAM (*lParam)(const Sources&);
};

template <WPARAM value> WPARAM Is(const Sources&) {
    return value;
}

LPARAM Zero(const Sources&) {
    return 0;
}

LPARAM Button(const Sources& sources) {
    return Param(sources.button);
}

constexpr Case kCases[] = {
    {"WM_COMMAND of a control", WM_COMMAND, Is<MAKEWPARAM(kButton, BN_CLICKED)>, Button},
    {"WM_COMMAND of an accelerator", WM_COMMAND, Is<MAKEWPARAM(100, 1)>, Zero},
    {"WM_NOTIFY", WM_NOTIFY, Is<kListView>, [](const Sources& sources) { return Param(&sources.click); }},
    {"WM_VSCROLL", WM_VSCROLL, Is<TB_THUMBTRACK>, [](const Sources& sources) { return Param(sources.slider); }},
    {"WM_MOUSEMOVE", WM_MOUSEMOVE, Is<0>, [](const Sources&) -> LPARAM { return MAKELPARAM(50, 30); }},
    {"WM_SETCURSOR", WM_SETCURSOR, [](const Sources& sources) { return static_cast<WPARAM>(Button(sources)); },
     [](const Sources&) -> LPARAM { return MAKELPARAM(HTCLIENT, WM_MOUSEMOVE); }},
    {"WM_PAINT", WM_PAINT, Is<0>, Zero},
    {"WM_DRAWITEM", WM_DRAWITEM, Is<kButton>, [](const Sources& sources) { return Param(&sources.item); }},
    {"WM_KEYDOWN", WM_KEYDOWN, Is<VK_RETURN>, Zero},
    {"WM_TIMER", WM_TIMER, Is<7>, Zero},
    {"WM_ACTIVATE", WM_ACTIVATE, Is<WA_ACTIVE>, Zero},
    {"WM_CLOSE", WM_CLOSE, Is<0>, Zero},
    {"WM_SPOOLERSTATUS", WM_SPOOLERSTATUS, Is<0>, Zero},
    {"notification of a mailbox", MAILBOX_NOTIFICATION, Is<0>, Zero},
};

void Translate(benchmark::State& state, const Case& what) {
    const Sources sources;
    const WPARAM wParam = what.wParam(sources);
    const LPARAM lParam = what.lParam(sources);
    FormatSysMsg formatter;
    const NOTIFY* event = nullptr;
    for (auto _ : state) {
        event = formatter.NaturalizeMsg(sources.window.Handle(), what.message, wParam, lParam);
        benchmark::DoNotOptimize(event);
    }
    if (event == nullptr) state.SkipWithError("the message is not translated");
}

const bool registered = [] {
    for (const Case& what : kCases) {
        const std::string name = std::string("Translation/") + what.name;
        benchmark::RegisterBenchmark(name.c_str(), Translate, what)->UseRealTime();
    }
    return true;
}();

} // namespace
