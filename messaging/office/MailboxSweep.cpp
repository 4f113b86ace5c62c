#include <foundation/SharedField.h>
#include <messaging/office/BlockNotes.h>
#include <messaging/office/Census.h>
#include <messaging/office/PoolReports.h>
#include <messaging/office/PostOfficeLock.h>
#include <messaging/office/ResourceTable.h>
#include <messaging/office/WindowHandle.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/messaging/resource.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

using tessel::BLOCK_NOTE;
using tessel::BlockOwner;
using tessel::BlockState;
using tessel::Census;
using tessel::JOURNAL;
using tessel::LoadShared;
using tessel::PoolReports;
using tessel::PostOfficeLock;
using tessel::StoreShared;

/// Whether a message whose sender ended while posting it was certainly not posted. Messages that are posted to a window
/// keep their order: if the receiver has fetched one that was sent after the sender's end, but not this one, this one
/// is not in its queue.
bool WasNeverPosted(JOURNAL& journal, BLOCK_NOTE& note) {
    const std::uint64_t orphaned = LoadShared(note.orphaned);
    if (orphaned == 0) { // seen for the first time: remember which messages are later
        StoreShared(note.orphaned, LoadShared(journal.sequence));
        return false;
    }
    return WasFetchedLater(journal, note, orphaned);
}

/// Whether nobody will fetch or release a block any more.
bool IsLost(JOURNAL& journal, BLOCK_NOTE& note, const SBLOCK& block, const Census& census) {
    const BlockOwner owner = OwnerOf(note, block);
    if (owner.state == BlockState::UNKNOWN || !census.HasEnded(owner.process)) return false;
    if (owner.state != BlockState::POSTING) return true; // the sender, or the receiver that had it, has ended
    return census.HasEnded(LoadShared(note.receiver)) || WasNeverPosted(journal, note);
}

/// Whether this process has taken over a message, but could not post it.
bool IsLeftToPost(const BLOCK_NOTE& note) {
    return (LoadShared(note.takenOver) & tessel::TAKEN_OVER_UNPOSTED) != 0 &&
           tessel::IdentityIn(LoadShared(note.receiver)) == tessel::ThisProcess();
}

} // namespace

int CMailBox::CleanUp(ORCAOBJID keep) {
    if (!IsMapped()) return 0;
    PoolReports reports;
    const PostOfficeLock lock(m_PostOffice);
    if (!lock) return 0;
    CResource resources;
    JOURNAL* const journal = tessel::OpenJournal();
    unsigned long lastProcess = 0;
    const unsigned short count = MailboxCount();
    for (unsigned short slot = 0; slot < count; ++slot) {
        MAILBOX& mailbox = m_pMailboxes[slot];
        if (mailbox.ObjId == 0 || mailbox.ObjId == keep) continue;
        if (mailbox.ProcessId != lastProcess) (void)resources.ResetProcess(mailbox.ProcessId); // always 0
        lastProcess = mailbox.ProcessId;
        FreeBlocksOf(mailbox.ObjId, reports);
        Begin(journal, tessel::Change::CLEAR, slot, 0);
        tessel::ForgetMailbox(journal, slot);
        mailbox = MAILBOX{}; // ODD-19: MailboxesInUse is not decremented
        End(journal);
    }
    return 0;
}

void CMailBox::FreeBlocksOf(unsigned long receiver, PoolReports& reports) {
    for (SBLOCK* block = m_pSmallBlocks; block != m_pSmallBlocks + m_usBlockCount; ++block) {
        if (LoadShared(block->BlkNum) != 0 && block->Receiver == receiver)
            (void)FreeBlock(*block, reports); // or another thread has freed it
    }
}

SWEPT CMailBox::SweepDead() {
    SWEPT swept{};
    JOURNAL* const journal = tessel::OpenJournal();
    if (!IsMapped() || journal == nullptr) return swept;
    swept.resources = tessel::RemoveResourcesOfEnded(m_PostOffice.GetResourceAddr(), *journal);
    Census census;
    TakeCensus(*journal, census);
    PoolReports reports;
    const PostOfficeLock lock(m_PostOffice);
    if (!lock) return swept;
    for (unsigned short index = 1; index < m_usBlockCount; ++index) {
        SBLOCK& block = m_pSmallBlocks[index];
        if (IsLost(*journal, journal->blocks[index], block, census) && FreeBlock(block, reports)) ++swept.blocks;
    }
    swept.registrations = FreeSlotsOfEnded(census, ORCAOBJID{0});
    return swept;
}

/// Asks which of the processes that blocks and registrations belong to have ended.
void CMailBox::TakeCensus(const JOURNAL& journal, Census& census) {
    for (unsigned short slot = 1; slot < m_usMailboxCount; ++slot) {
        if (IsTaken(slot)) census.Ask(tessel::ReceiverAt(m_pMailboxes, slot));
    }
    for (unsigned short index = 1; index < m_usBlockCount; ++index) {
        const BlockOwner owner = OwnerOf(journal.blocks[index], m_pSmallBlocks[index]);
        if (owner.state == BlockState::UNKNOWN) continue;
        census.Ask(owner.process);
        census.Ask(LoadShared(journal.blocks[index].receiver));
    }
}

/// Whether a slot has a registration; one with the id 0 is known by its note only.
bool CMailBox::IsTaken(unsigned short slot) {
    const MAILBOX& mailbox = m_pMailboxes[slot];
    if (LoadShared(mailbox.ObjId) != 0) return true;
    return LoadShared(mailbox.InUse) != 0 && tessel::NoteOf(m_pMailboxes, slot) != nullptr;
}

/// Ends registrations of ended processes. The caller holds the post office's lock.
/// @param onlyId  the only id to look at; 0: all
/// @return how many
unsigned short CMailBox::FreeSlotsOfEnded(const Census& census, ORCAOBJID onlyId) {
    unsigned short freed = 0;
    for (unsigned short slot = 1; slot < m_usMailboxCount; ++slot) {
        if (!IsTaken(slot) || (onlyId != 0 && LoadShared(m_pMailboxes[slot].ObjId) != onlyId)) continue;
        if (!census.HasEnded(tessel::ReceiverAt(m_pMailboxes, slot))) continue;
        FreeSlot(slot);
        ++freed;
    }
    return freed;
}

unsigned short CMailBox::TakeOver() {
    JOURNAL* const journal = tessel::OpenJournal();
    if (!IsMapped() || journal == nullptr || m_usSlot == 0) return 0;
    Census census;
    TakeCensus(*journal, census);
    BlockNumbers blocks{};
    unsigned short count = 0;
    {
        const PostOfficeLock lock(m_PostOffice);
        if (!lock) return 0;
        count = CollectLeft(*journal, census, blocks);
        (void)FreeSlotsOfEnded(census, m_OwnId);
    }
    HWND const window = tessel::FromShared(LoadShared(m_pMailboxes[m_usSlot].hWnd));
    unsigned short posted = 0;
    while (posted < count && Post(window, m_pSmallBlocks[blocks[posted]]) == 0) ++posted;
    return posted;
}

/// Takes the messages that wait for an ended receiver of this mailbox's id. The caller holds the post office's lock.
/// @param blocks  receives the numbers of their blocks in the order in which they were sent
/// @return how many
unsigned short CMailBox::CollectLeft(JOURNAL& journal, const Census& census, BlockNumbers& blocks) {
    std::array<std::pair<std::uint64_t, unsigned short>, SMALL_BLOCK_COUNT>
        left{}; // copies do not change while sorting
    unsigned short count = 0;
    for (unsigned short index = 1; index < m_usBlockCount; ++index) {
        const SBLOCK& block = m_pSmallBlocks[index];
        const BLOCK_NOTE& note = journal.blocks[index];
        const BlockOwner owner = OwnerOf(note, block);
        if (block.Receiver != m_OwnId || owner.state == BlockState::UNKNOWN) continue;
        if (owner.state == BlockState::WRITING) continue; // incomplete
        const bool isLeft = census.HasEnded(owner.process) && census.HasEnded(LoadShared(note.receiver));
        if (isLeft || IsLeftToPost(note)) left[count++] = {LoadShared(note.sequence), index};
    }
    std::sort(left.begin(), left.begin() + count);
    for (unsigned short i = 0; i < count; ++i) {
        blocks[i] = left[i].second;
        NoteTakenOver(journal, blocks[i], m_usSlot);
    }
    return count;
}
