#include <messaging/ReadableMemory.h>

#include <tessel/platform.h>

#include <cstdint>

namespace {

bool CanBeRead(const MEMORY_BASIC_INFORMATION& region) {
    constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                                PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    return region.State == MEM_COMMIT && (region.Protect & kReadable) != 0 && (region.Protect & PAGE_GUARD) == 0;
}

} // namespace

bool tessel::IsReadable(const void* address, std::size_t size) {
    const auto start = reinterpret_cast<std::uintptr_t>(address);
    const auto end = start + size;
    if (start == 0 || end < start) return false;
    MEMORY_BASIC_INFORMATION region{};
    for (auto at = start; at < end; at = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize) {
        // A record may lie across pages that are protected differently, such as written and unwritten ones.
        const bool known = VirtualQuery(reinterpret_cast<const void*>(at), &region, sizeof region) != 0;
        if (!known || !CanBeRead(region)) return false;
    }
    return true;
}
