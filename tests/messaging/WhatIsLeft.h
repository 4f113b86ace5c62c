#pragma once

#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/postoffice.h>

#include <span>
#include <sstream>
#include <string>

/// What differs from a fresh post office; empty: nothing.
/// @param mailboxes  registrations of the living
inline std::string WhatIsLeft(unsigned int mailboxes) {
    std::ostringstream left;
    const FILE_HEADER* const header = CPostOffice().GetHeaderAddr();
    if (header == nullptr) return " no post office";
    if (header->FreeSmallBlks != SMALL_BLOCK_COUNT) left << " FreeSmallBlks " << header->FreeSmallBlks;
    if (header->MailboxesInUse != mailboxes) left << " MailboxesInUse " << header->MailboxesInUse;
    for (const MAILBOX& mailbox : std::span(CPostOffice().GetPostOfficeAddr(), POST_OFFICE_MAILBOXES)) {
        if (mailbox.InUse != 0 && mailboxes-- == 0) left << " slot of " << mailbox.ObjId;
    }
    for (const SBLOCK& block : std::span(CPostOffice().GetSmallBlockAddr(), SMALL_BLOCK_COUNT)) {
        if (block.BlkNum != 0 || block.RefCount != 0) left << " block " << block.BlkNum << '/' << block.RefCount;
    }
    for (const RESOURCE& resource : std::span(CPostOffice().GetResourceAddr(), POST_OFFICE_RESOURCES)) {
        if (resource.ThreadId != 0) left << " resource " << resource.Id;
    }
    if (CThreadLock(POST_OFFICE_LOCK_NAME).IsLocked() != 0) left << " locked";
    return left.str();
}
