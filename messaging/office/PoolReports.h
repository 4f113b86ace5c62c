#pragma once

#include <foundation/Report.h>

namespace tessel {

/// What is to be reported about the pool. It is collected under the post office's lock and reported when the object
/// goes out of scope, after the lock has been released: writing a report may take long.
struct PoolReports {
    PoolReports() = default;
    PoolReports(const PoolReports&) = delete;
    PoolReports& operator=(const PoolReports&) = delete;
    ~PoolReports() {
        Report(tooLong, "!\"Message size > pHeader->SmallBlkSize\"", {"CMailbox", 189});
        Report(sharedWhenAllocated, "pSmall[cnt].RefCount == 1", {"CMailbox", 182});
        Report(low, "!\"Message resources low\"", {"CMailbox", 76});
        Report(sharedWhenFreed, "pBlock->RefCount == 0", {"CMailbox", 199});
    }

    int tooLong = 0;             ///< messages that do not fit in a block
    int sharedWhenAllocated = 0; ///< free blocks with a reference count that is not 0
    int low = 0;                 ///< times that less than the low-water mark was free
    int sharedWhenFreed = 0;     ///< blocks with a reference count that was not 1

private:
    static void Report(int times, const char* expression, ReportSite site) {
        for (; times > 0; --times) ReportUnless(false, expression, site);
    }
};

} // namespace tessel
