#pragma once

#include <messaging/office/Journal.h>

namespace tessel {

/// The tables of a mapped region.
struct OfficeTables {
    FILE_HEADER* header;
    MAILBOX* mailboxes;
    SBLOCK* blocks;
};

/// Finishes or undoes what a holder of the lock was changing when it ended. The caller holds the lock; if it ends
/// within, the next one does it again.
/// @return whether anything was under way
bool Repair(JOURNAL& journal, const OfficeTables& tables);

} // namespace tessel
