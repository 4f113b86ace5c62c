#include "support/ControlWindow.h"

#include <benchmark/benchmark.h>
#include <tessel/ui/dialoginterface.h>

#include <cwchar>
#include <memory>
#include <string>

// The bare side sends the messages itself, as a program would that knows which kind of control it is. For single
// operations it looks the control up by its identifier; to fill a control with many items it looks it up once.

namespace {

constexpr int kListBox = 1;
constexpr int kListView = 2;
constexpr int kComboBox = 3;
constexpr int kItems = 100;
constexpr int kManyItems = 10000;
constexpr wchar_t kText[] = L"a text of usual length";

/// The controls and what was last read from one.
struct Controls {
    Controls() {
        window.Add(WC_LISTBOXW, kListBox, 0);
        window.Add(WC_COMBOBOXW, kComboBox, CBS_DROPDOWNLIST);
        const HWND listView = window.Add(WC_LISTVIEWW, kListView, LVS_REPORT);
        LVCOLUMNW column{};
        column.mask = LVCF_WIDTH;
        column.cx = 100;
        SendMessageW(listView, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    }

    HWND Bare(int id) const { return GetDlgItem(window.Handle(), id); }

    ControlWindow window;
    DIALOG_INTERFACE dialog{window.Handle()};
    wchar_t text[100] = {};
    LPARAM data = 0;
};

LVITEMW Item(int index, UINT mask) {
    LVITEMW item{};
    item.mask = mask;
    item.iItem = index;
    return item;
}

template <int id> void Set(Controls& controls, int index) {
    controls.dialog.Set(id, index, kText, index + 1);
}

template <int id> void Get(Controls& controls, int index) {
    controls.dialog.Get(id, index, controls.text, 100, controls.data);
}

template <int id> void Add(Controls& controls, int index) {
    controls.dialog.Add(id, index, kText, index + 1);
}

void SetListBox(Controls& controls, int index) {
    const HWND listBox = controls.Bare(kListBox);
    SendMessageW(listBox, LB_SETITEMDATA, static_cast<WPARAM>(index), index + 1);
    SendMessageW(listBox, LB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

void GetListBox(Controls& controls, int index) {
    const HWND listBox = controls.Bare(kListBox);
    const auto item = static_cast<WPARAM>(index);
    controls.data = SendMessageW(listBox, LB_GETITEMDATA, item, 0);
    SendMessageW(listBox, LB_GETTEXT, item, reinterpret_cast<LPARAM>(controls.text));
}

void AddListBox(Controls& controls, int index) {
    const HWND listBox = controls.Bare(kListBox);
    const auto item = static_cast<WPARAM>(index);
    const LRESULT added =
        SendMessageW(listBox, index == 0 ? LB_ADDSTRING : LB_INSERTSTRING, item, reinterpret_cast<LPARAM>(kText));
    SendMessageW(listBox, LB_SETITEMDATA, static_cast<WPARAM>(added), index + 1);
}

void SetListView(Controls& controls, int index) {
    LVITEMW item = Item(index, LVIF_TEXT);
    item.pszText = const_cast<wchar_t*>(kText);
    SendMessageW(controls.Bare(kListView), LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void GetListView(Controls& controls, int index) {
    LVITEMW item = Item(index, LVIF_TEXT | LVIF_PARAM);
    item.pszText = controls.text;
    item.cchTextMax = 100;
    SendMessageW(controls.Bare(kListView), LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    controls.data = item.lParam;
}

void AddListView(Controls& controls, int index) {
    LVITEMW item = Item(index, LVIF_TEXT | LVIF_PARAM);
    item.pszText = const_cast<wchar_t*>(kText);
    item.lParam = index + 1;
    SendMessageW(controls.Bare(kListView), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

using Operation = void (*)(Controls&, int index);

struct Kind {
    const char* name;
    int id;
    Operation add;
    UINT clear;
};
constexpr Kind kKinds[] = {
    {"list box", kListBox, Add<kListBox>, LB_RESETCONTENT},
    {"list view", kListView, Add<kListView>, LVM_DELETEALLITEMS},
};

/// Reads the items of a filled control one after another.
void Walk(benchmark::State& state, const Kind& kind, Operation operation) {
    Controls controls;
    for (int i = 0; i < kItems; ++i) kind.add(controls, i);
    int index = 0;
    for (auto _ : state) {
        operation(controls, index);
        index = (index + 1) % kItems;
    }
    int last = kItems - 1;
    LPARAM data = 0;
    controls.dialog.Get(kind.id, last, controls.text, 100, data);
    if (std::wcscmp(controls.text, kText) != 0 || data != kItems) state.SkipWithError("the items are not as set");
}

/// Fills a control over and over; emptying it is not measured.
void Fill(benchmark::State& state, const Kind& kind, Operation add) {
    Controls controls;
    int index = 0;
    for (auto _ : state) {
        if (index == kItems) {
            state.PauseTiming();
            SendMessageW(controls.Bare(kind.id), kind.clear, 0, 0);
            index = 0;
            state.ResumeTiming();
        }
        add(controls, index);
        ++index;
    }
    int count = 0;
    controls.dialog.GetCount(kind.id, count);
    if (count != index) state.SkipWithError("the items were not added");
}

/// A kind of list and the messages that append to it.
struct List {
    const char* name;
    int id;
    UINT append;
    UINT setData;
    UINT count;
};
constexpr List kLists[] = {
    {"list box", kListBox, LB_ADDSTRING, LB_SETITEMDATA, LB_GETCOUNT},
    {"combo box", kComboBox, CB_ADDSTRING, CB_SETITEMDATA, CB_GETCOUNT},
};

void AppendByTessel(Controls& controls, const List& list) {
    for (int i = 0; i < kManyItems; ++i) controls.dialog.Add(list.id, 0, kText, i + 1);
}

void AppendBare(Controls& controls, const List& list) {
    const HWND control = controls.Bare(list.id);
    for (int i = 0; i < kManyItems; ++i) {
        const LRESULT added = SendMessageW(control, list.append, 0, reinterpret_cast<LPARAM>(kText));
        SendMessageW(control, list.setData, static_cast<WPARAM>(added), i + 1);
    }
}

/// Fills a new control with many items; making the control is not measured.
void Append(benchmark::State& state, const List& list, void (*append)(Controls&, const List&)) {
    for (auto _ : state) {
        state.PauseTiming();
        auto controls = std::make_unique<Controls>();
        state.ResumeTiming();
        append(*controls, list);
        state.PauseTiming();
        const bool isFull = SendMessageW(controls->Bare(list.id), list.count, 0, 0) == kManyItems;
        if (!isFull) state.SkipWithError("the items were not added");
        controls.reset();
        state.ResumeTiming();
    }
}

void Register(const List& list) {
    const std::string name = std::string("Dialog, ") + list.name + ": Add 10,000 items";
    benchmark::RegisterBenchmark((name + "/Tessel").c_str(), Append, list, AppendByTessel)->UseRealTime();
    benchmark::RegisterBenchmark((name + "/Bare").c_str(), Append, list, AppendBare)->UseRealTime();
}

void Register(const Kind& kind, const std::string& what, void (*run)(benchmark::State&, const Kind&, Operation),
              Operation tessel, Operation bare) {
    const std::string name = std::string("Dialog, ") + kind.name + ": " + what;
    benchmark::RegisterBenchmark((name + "/Tessel").c_str(), run, kind, tessel)->UseRealTime();
    benchmark::RegisterBenchmark((name + "/Bare").c_str(), run, kind, bare)->UseRealTime();
}

const bool registered = [] {
    Register(kKinds[0], "Set", Walk, Set<kListBox>, SetListBox);
    Register(kKinds[0], "Get", Walk, Get<kListBox>, GetListBox);
    Register(kKinds[0], "Add", Fill, Add<kListBox>, AddListBox);
    for (const List& list : kLists) Register(list);
    Register(kKinds[1], "Set", Walk, Set<kListView>, SetListView);
    Register(kKinds[1], "Get", Walk, Get<kListView>, GetListView);
    Register(kKinds[1], "Add", Fill, Add<kListView>, AddListView);
    return true;
}();

} // namespace
