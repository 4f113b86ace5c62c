#include <benchmark/benchmark.h>
#include <tessel/system/registry.h>

#include <cwchar>

namespace {

constexpr wchar_t kPath[] = L"Software\\Tessel benchmark";
constexpr wchar_t kName[] = L"name of usual length";
constexpr wchar_t kText[] = L"a text of usual length";

/// A temporary key with one text.
struct TextKey {
    TextKey() : key(CReg::OpenKey(HKEY_CURRENT_USER, kPath, true)) { registry.SaveKey(key, kName, kText); }
    ~TextKey() {
        CReg::CloseKey(key);
        CReg::RemoveKey(HKEY_CURRENT_USER, kPath);
    }
    TextKey(const TextKey&) = delete;
    TextKey& operator=(const TextKey&) = delete;

    CReg registry;
    HKEY key;
};

void ReadTessel(benchmark::State& state) {
    TextKey text;
    for (auto _ : state) text.registry.ReadKey(text.key, kName, 0, nullptr);
    wchar_t read[100];
    if (text.registry.GetData(read, 100, 0) != 0 || std::wcscmp(read, kText) != 0) state.SkipWithError("not read");
}

void ReadBare(benchmark::State& state) {
    const TextKey text;
    wchar_t read[100] = {};
    for (auto _ : state) {
        DWORD size = sizeof read;
        DWORD type = REG_NONE;
        RegQueryValueExW(text.key, kName, nullptr, &type, reinterpret_cast<BYTE*>(read), &size);
    }
    if (std::wcscmp(read, kText) != 0) state.SkipWithError("not read");
}

BENCHMARK(ReadTessel)->Name("Registry, read a text/Tessel")->UseRealTime();
BENCHMARK(ReadBare)->Name("Registry, read a text/Bare")->UseRealTime();

} // namespace
