#include <messaging/SharedOwners.h>

#include <tessel/platform.h>

#include <map>
#include <new>

namespace tessel {

namespace {

SRWLOCK ownersLock = SRWLOCK_INIT; // unlike a std::mutex it cannot throw
std::map<const void*, unsigned long> owners;

class LockGuard {
public:
    LockGuard() { AcquireSRWLockExclusive(&ownersLock); }
    ~LockGuard() { ReleaseSRWLockExclusive(&ownersLock); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
};

} // namespace

bool AddOwner(const void* resource) {
    const LockGuard guard;
    try {
        owners.try_emplace(resource, 1UL).first->second += 1;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool IsShared(const void* resource) {
    const LockGuard guard;
    return owners.contains(resource);
}

bool RemoveOwner(const void* resource) {
    const LockGuard guard;
    const auto entry = owners.find(resource);
    if (entry == owners.end()) return true;
    entry->second -= 1;
    if (entry->second == 1) owners.erase(entry);
    return false;
}

} // namespace tessel
