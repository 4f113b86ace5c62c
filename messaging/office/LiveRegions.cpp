#include <messaging/office/LiveRegions.h>

#include <atomic>
#include <cstdint>
#include <new>

namespace tessel {

namespace {

/// A view, or a place for one. No lock guards the list: look-ups of many threads go on side by side, and a thread that
/// is ended within leaves nothing locked. Places are used again and never freed.
struct Region {
    std::atomic<std::uintptr_t> base; ///< 0: no view
    std::atomic<std::size_t> size;    ///< 0 until the view has been added
    Region* next;
};

std::atomic<Region*> regions = nullptr;

std::uintptr_t Number(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address);
}

bool UseAgain(const void* base, std::size_t size) {
    for (Region* region = regions; region != nullptr; region = region->next) {
        std::uintptr_t none = 0;
        if (!region->base.compare_exchange_strong(none, Number(base))) continue;
        region->size = size;
        return true;
    }
    return false;
}

} // namespace

bool AddRegion(const void* base, std::size_t size) {
    if (UseAgain(base, size)) return true;
    auto* const added = new (std::nothrow) Region{Number(base), size, regions};
    if (added == nullptr) return false;
    while (!regions.compare_exchange_weak(added->next, added)) {
    }
    return true;
}

void RemoveRegion(const void* base) {
    if (base == nullptr) return;
    for (Region* region = regions; region != nullptr; region = region->next) {
        if (region->base != Number(base)) continue;
        region->size = 0;
        region->base = 0;
    }
}

bool IsInRegion(const void* address) {
    for (const Region* region = regions; region != nullptr; region = region->next) {
        // For a smaller address the difference wraps; a place without a view has no size.
        if (Number(address) - region->base < region->size) return true;
    }
    return false;
}

} // namespace tessel
