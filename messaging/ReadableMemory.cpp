#include <messaging/ReadableMemory.h>

#include <tessel/platform.h>

#include <cstdint>

namespace tessel {

bool IsReadable(const void* address, std::size_t size) {
    constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                                PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    MEMORY_BASIC_INFORMATION region{};
    if (address == nullptr || VirtualQuery(address, &region, sizeof region) == 0) return false;
    if (region.State != MEM_COMMIT || (region.Protect & kReadable) == 0 || (region.Protect & PAGE_GUARD) != 0) {
        return false;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(region.BaseAddress);
    return size <= region.RegionSize - start;
}

} // namespace tessel
