#include "Usage.h"

#include "OpenObjects.h"

#include <tlhelp32.h>

#include <vector>

namespace {

long long Threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    long long count = 0;
    for (BOOL found = Thread32First(snapshot, &entry); found; found = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    }
    CloseHandle(snapshot);
    return count;
}

long long AllocatedIn(HANDLE heap) {
    long long bytes = 0;
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heap);
    while (HeapWalk(heap, &entry)) {
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) bytes += entry.cbData;
    }
    HeapUnlock(heap);
    return bytes;
}

long long HeapBytes() {
    static std::vector<HANDLE> heaps(256); // one vector for all calls, because it uses a heap itself
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    long long bytes = 0;
    for (DWORD i = 0; i < count && i < heaps.size(); ++i) bytes += AllocatedIn(heaps[i]);
    return bytes;
}

long long AddressSpace() {
    long long bytes = 0;
    MEMORY_BASIC_INFORMATION region;
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize) {
        if (region.State != MEM_FREE) bytes += static_cast<long long>(region.RegionSize);
    }
    return bytes;
}

} // namespace

Usage UsageNow() {
    const auto [gdi, user] = GuiObjects();
    return {KernelHandles(), Threads(), gdi + user, HeapBytes(), AddressSpace()};
}
