#include <foundation/MappedView.h>

#include <algorithm>

namespace tessel {

unsigned long MappedBytes(const void* view) {
    MEMORY_BASIC_INFORMATION region{};
    if (VirtualQuery(view, &region, sizeof region) == 0 || region.State != MEM_COMMIT) return 0;
    return static_cast<unsigned long>(std::min<SIZE_T>(region.RegionSize, MAXDWORD));
}

} // namespace tessel
