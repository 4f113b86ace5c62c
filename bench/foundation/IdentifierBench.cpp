#include <benchmark/benchmark.h>
#include <tessel/foundation/identifier.h>

#include <rpc.h>

#include <cwchar>

namespace {

void CreateTessel(benchmark::State& state) {
    for (auto _ : state) {
        COCuid uid;
        if (uid.Create() != 0) return state.SkipWithError("not made");
        benchmark::DoNotOptimize(uid.GetString());
    }
}

void CreateBare(benchmark::State& state) {
    for (auto _ : state) {
        UUID uuid;
        RPC_WSTR text = nullptr;
        wchar_t kept[37];
        if (UuidCreate(&uuid) != RPC_S_OK || UuidToStringW(&uuid, &text) != RPC_S_OK)
            return state.SkipWithError("not made");
        std::wcscpy(kept, reinterpret_cast<const wchar_t*>(text));
        RpcStringFreeW(&text);
        benchmark::DoNotOptimize(&kept);
    }
}

BENCHMARK(CreateTessel)->Name("Identifier, make one with its text/Tessel")->UseRealTime();
BENCHMARK(CreateBare)->Name("Identifier, make one with its text/Bare")->UseRealTime();

} // namespace
