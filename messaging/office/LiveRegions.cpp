#include <foundation/SlimLock.h>
#include <messaging/office/LiveRegions.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

namespace tessel {

namespace {

struct Region {
    std::uintptr_t base;
    std::size_t size;
};

SRWLOCK regionsLock = SRWLOCK_INIT;
std::vector<Region> regions;

std::uintptr_t Number(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address);
}

} // namespace

bool AddRegion(const void* base, std::size_t size) {
    const SlimLock lock(regionsLock);
    try {
        regions.push_back({Number(base), size});
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void RemoveRegion(const void* base) {
    const SlimLock lock(regionsLock);
    std::erase_if(regions, [base](const Region& region) { return region.base == Number(base); });
}

bool IsInRegion(const void* address) {
    const SlimLock lock(regionsLock);
    return std::any_of(regions.begin(), regions.end(), [address](const Region& region) {
        return Number(address) - region.base < region.size; // for a smaller address the difference wraps
    });
}

} // namespace tessel
