#pragma once

#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/postoffice.h>

#include <span>

namespace tessel {

/// Serialises adding to and deleting from the resource table within this process.
extern CSemaphore resourceTableLock;

/// Keeps other threads of this process from adding and deleting entries of the resource table for a scope.
class ResourceTableLock {
public:
    ResourceTableLock();
    ~ResourceTableLock();
    ResourceTableLock(const ResourceTableLock&) = delete;
    ResourceTableLock& operator=(const ResourceTableLock&) = delete;
};

/// All records of a table.
/// @param table  its address; null without a post office
/// @return the records; none without a table
inline std::span<RESOURCE> ResourceRecords(RESOURCE* table) {
    return {table, table == nullptr ? 0U : POST_OFFICE_RESOURCES};
}

/// Takes a record over for a thread. Another process may be doing the same: the thread id is the claim.
/// @param record   the record
/// @param holder   the thread that holds it so far; 0 for a free record
/// @param claimant the thread that takes it
/// @return true: it is the claimant's; false: it changed hands meanwhile
bool ClaimResource(RESOURCE& record, std::uint32_t holder, std::uint32_t claimant);

/// Frees a record. The claim goes last, so that nobody fills the record meanwhile.
/// @param record  the record
void ClearResource(RESOURCE& record);

} // namespace tessel
