#include <foundation/ReadableMemory.h>

#include <tessel/foundation/platform.h>

#include <cstdint>

namespace {

bool CanBeRead(const MEMORY_BASIC_INFORMATION& region) {
    constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                                PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    return region.State == MEM_COMMIT && (region.Protect & kReadable) != 0 && (region.Protect & PAGE_GUARD) == 0;
}

#ifdef __GNUC__
#pragma GCC diagnostic ignored                                                                                         \
    "-Warray-bounds" // reads the thread's block through a segment register, at small addresses
#endif

/// Whether memory lies on the calling thread's stack, as records of sent messages do. Querying the system takes longer
/// than handling most messages.
bool IsOnStack(std::uintptr_t start, std::uintptr_t end) {
    const auto* const block = reinterpret_cast<const NT_TIB*>(NtCurrentTeb());
    return start >= reinterpret_cast<std::uintptr_t>(block->StackLimit) &&
           end <= reinterpret_cast<std::uintptr_t>(block->StackBase);
}

} // namespace

bool tessel::IsReadable(const void* address, std::size_t size) {
    const auto start = reinterpret_cast<std::uintptr_t>(address);
    const auto end = start + size;
    if (start == 0 || end < start) return false;
    if (IsOnStack(start, end)) return true;
    MEMORY_BASIC_INFORMATION region{};
    for (auto at = start; at < end; at = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize) {
        // A record may span pages with different protection, such as written and unwritten ones.
        const bool known = VirtualQuery(reinterpret_cast<const void*>(at), &region, sizeof region) != 0;
        if (!known || !CanBeRead(region)) return false;
    }
    return true;
}
