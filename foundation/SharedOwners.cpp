#include <foundation/SharedOwners.h>
#include <foundation/SlimLock.h>

#include <map>
#include <new>

namespace tessel {

namespace {

SRWLOCK ownersLock = SRWLOCK_INIT;
std::map<const void*, unsigned long> owners;

} // namespace

bool AddOwner(const void* resource) {
    const SlimLock lock(ownersLock);
    try {
        owners.try_emplace(resource, 1UL).first->second += 1;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool IsShared(const void* resource) {
    const SlimLock lock(ownersLock);
    return owners.contains(resource);
}

bool RemoveOwner(const void* resource) {
    const SlimLock lock(ownersLock);
    const auto entry = owners.find(resource);
    if (entry == owners.end()) return true;
    entry->second -= 1;
    if (entry->second == 1) owners.erase(entry);
    return false;
}

} // namespace tessel
