#pragma once

#include <messaging/office/Journal.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/postoffice.h>

#include <span>

namespace tessel {

/// Serialises adding to and deleting from the resource table within this process.
extern CSemaphore resourceTableLock;

/// Prevents other threads of this process from adding and deleting entries of the resource table for a scope.
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

/// Claims a record for a thread by its thread id, as another process may be doing at the same time.
/// @param record   the record
/// @param holder   the thread that holds it; 0 for a free record
/// @param claimant the thread that claims it
/// @return true: claimed; false: another thread claimed it
bool ClaimResource(RESOURCE& record, std::uint32_t holder, std::uint32_t claimant);

/// Notes which process fills a record. Call it before the record bears the process id.
/// @param index      number of the record
/// @param processId  of the object that adds it
void NoteResourceOwner(std::size_t index, std::uint32_t processId);

/// Removes the records of processes that have ended, and those that such a process had begun to fill or clear.
/// @param table  the resource table
/// @return how many
unsigned short RemoveResourcesOfEnded(RESOURCE* table, const JOURNAL& journal);

/// Frees a record. The thread id is cleared last, so that no other thread claims the record before.
/// @param record  the record
void ClearResource(RESOURCE& record);

} // namespace tessel
