#include <messaging/office/Repair.h>

#include <foundation/SharedField.h>
#include <messaging/office/BlockNotes.h>

namespace tessel {

namespace {

/// Frees a block. Its number is cleared last, so that nobody claims it before.
void FreeBlock(JOURNAL& journal, const OfficeTables& tables, const CHANGE_IN_PROGRESS& change) {
    SBLOCK& block = tables.blocks[change.index];
    ForgetBlock(&journal, change.index);
    StoreShared(block.RefCount, change.users);
    StoreShared(tables.header->FreeSmallBlks, change.count);
    StoreShared<std::uint16_t>(block.BlkNum, 0);
}

/// A block that was not yet claimed stays as it is.
void UndoAllocation(JOURNAL& journal, const OfficeTables& tables, const CHANGE_IN_PROGRESS& change) {
    if (LoadShared(tables.blocks[change.index].BlkNum) == change.index) FreeBlock(journal, tables, change);
}

void FreeSlot(JOURNAL& journal, const OfficeTables& tables, const CHANGE_IN_PROGRESS& change) {
    MAILBOX& mailbox = tables.mailboxes[change.index];
    ForgetMailbox(&journal, change.index);
    StoreShared<std::uint32_t>(mailbox.ObjId, 0);
    StoreShared<std::uint16_t>(mailbox.InUse, 0);
    StoreShared(tables.header->MailboxesInUse, static_cast<std::uint16_t>(change.count));
}

void ClearSlot(JOURNAL& journal, const OfficeTables& tables, const CHANGE_IN_PROGRESS& change) {
    ForgetMailbox(&journal, change.index);
    tables.mailboxes[change.index] = MAILBOX{};
}

struct Mending {
    Change kind;
    std::uint32_t records; ///< indexes are below this
    void (*mend)(JOURNAL&, const OfficeTables&, const CHANGE_IN_PROGRESS&);
};
constexpr Mending kMendings[] = {
    {Change::ALLOCATE, SMALL_BLOCK_COUNT, UndoAllocation}, {Change::FREE, SMALL_BLOCK_COUNT, FreeBlock},
    {Change::REGISTER, POST_OFFICE_MAILBOXES, FreeSlot},   {Change::UNREGISTER, POST_OFFICE_MAILBOXES, FreeSlot},
    {Change::CLEAR, POST_OFFICE_MAILBOXES, ClearSlot},
};

} // namespace

bool Repair(JOURNAL& journal, const OfficeTables& tables) {
    // A copy cannot change after the check.
    const CHANGE_IN_PROGRESS change{LoadShared(journal.change.kind), LoadShared(journal.change.index),
                                    LoadShared(journal.change.count), LoadShared(journal.change.users)};
    for (const Mending& mending : kMendings) {
        if (change.kind != static_cast<std::uint32_t>(mending.kind) || change.index >= mending.records) continue;
        mending.mend(journal, tables, change);
        End(&journal);
        return true;
    }
    return false;
}

} // namespace tessel
