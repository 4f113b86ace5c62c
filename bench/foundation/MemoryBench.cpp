#include <benchmark/benchmark.h>
#include <tessel/foundation/memory.h>

#include <windows.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr wchar_t kName[] = L"Tessel bench memory";
constexpr unsigned long kSize = 65536;

/// Four bytes written and read.
void Access(benchmark::State& state, CMemory& memory) {
    unsigned char data[4] = {1, 2, 3, 4};
    for (auto _ : state) {
        memory.WriteMemory(data, sizeof data, 4096);
        memory.ReadMemoryDirect(data, sizeof data, 4096);
    }
    if (memory.GetStatus() != 0) state.SkipWithError("not read");
}

HANDLE CreateMapping() {
    return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kSize, kName);
}

void MappingTessel(benchmark::State& state) {
    HANDLE const mapping = CreateMapping();
    CMemory memory(CMemory::KIND_MAPPING, kSize, kName, CMemory::OPENTYPE_OPEN_EXISTING, 0);
    Access(state, memory);
    CloseHandle(mapping);
}

/// Bytes that are mapped from an offset on, at most those that are wanted.
SIZE_T Mapped(const unsigned char* view, SIZE_T offset, SIZE_T wanted) {
    MEMORY_BASIC_INFORMATION region;
    VirtualQuery(view, &region, sizeof region);
    return offset >= region.RegionSize ? 0 : std::min(wanted, region.RegionSize - offset);
}

void MappingBare(benchmark::State& state) {
    HANDLE const mapping = CreateMapping();
    auto* const view = static_cast<unsigned char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
    unsigned char data[4] = {1, 2, 3, 4};
    for (auto _ : state) {
        std::memcpy(view + 4096, data, Mapped(view, 4096, sizeof data));
        std::memcpy(data, view + 4096, Mapped(view, 4096, sizeof data));
        benchmark::DoNotOptimize(data);
    }
    UnmapViewOfFile(view);
    CloseHandle(mapping);
}

void Heap(benchmark::State& state) {
    CMemory memory(CMemory::KIND_HEAP, 0, nullptr, CMemory::OPENTYPE_OPEN_ALWAYS, 0);
    Access(state, memory);
}

BENCHMARK(MappingTessel)->Name("Memory, 4 bytes of a mapping written and read/Tessel")->UseRealTime();
BENCHMARK(MappingBare)->Name("Memory, 4 bytes of a mapping written and read/Bare")->UseRealTime();
BENCHMARK(Heap)->Name("Memory, 4 bytes of the heap written and read")->UseRealTime();

} // namespace
