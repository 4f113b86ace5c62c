#include <foundation/SharedField.h>
#include <messaging/office/BlockNotes.h>
#include <messaging/office/LiveRegions.h>
#include <messaging/office/PostOfficeLock.h>
#include <messaging/office/WindowHandle.h>
#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <atomic>

namespace {

using tessel::Begin;
using tessel::Change;
using tessel::End;
using tessel::JOURNAL;
using tessel::LoadShared;
using tessel::PostOfficeLock;
using tessel::StoreShared;

constexpr int kLowWaterPercent = 10;
constexpr int kHighWaterPercent = 50;

/// Claims a free slot. The exchange is needed under the lock, too: creating a post office may release the lock of a
/// slow holder (ODD-17).
bool Claim(MAILBOX& mailbox) {
    std::uint16_t free = 0;
    return std::atomic_ref<std::uint16_t>(mailbox.InUse).compare_exchange_strong(free, 1);
}

unsigned short Percent(unsigned short count, int percent) {
    return static_cast<unsigned short>(count * percent / 100);
}

} // namespace

CMailBox::CMailBox(ORCAOBJID id)
    : m_pHeader(m_PostOffice.GetHeaderAddr()), m_pMailboxes(m_PostOffice.GetPostOfficeAddr()),
      m_pSmallBlocks(m_PostOffice.GetSmallBlockAddr()), m_ulThreadId(GetCurrentThreadId()),
      m_ulProcessId(GetCurrentProcessId()), m_OwnId(id), m_usMailboxCount(0), m_usBlockCount(0), m_usLowWater(0),
      m_usHighWater(0), m_ulSpare1(0), m_usSlot(0), m_ulSpare2(0) {
    if (m_pHeader == nullptr) {
        (void)MessageBoxW(nullptr, L"Post Office not found", L"System Error", MB_OK);
        return;
    }
    // GUARD-13: never trust a header that claims more than the tables contain.
    m_usMailboxCount = MailboxCount();
    m_usBlockCount = std::min(LoadShared(m_pHeader->SmallBlkCount), SMALL_BLOCK_COUNT);
    m_usLowWater = Percent(m_usBlockCount, kLowWaterPercent);
    m_usHighWater = Percent(m_usBlockCount, kHighWaterPercent);
}

CMailBox::~CMailBox() {
    if (m_usSlot != 0) (void)UnregisterMailbox(); // cannot fail: it is registered
}

/// GUARD-14: the post office may have been destroyed since the object was created.
bool CMailBox::IsMapped() {
    return tessel::IsInRegion(m_pHeader);
}

unsigned short CMailBox::MailboxCount() {
    return std::min(LoadShared(m_pHeader->MailboxCount), POST_OFFICE_MAILBOXES);
}

int CMailBox::RegisterMailbox(HWND hWnd) {
    if (!IsMapped()) return 1;
    const PostOfficeLock lock(m_PostOffice);
    if (!lock) return 1;
    JOURNAL* const journal = tessel::OpenJournal();
    for (unsigned short slot = 1; slot < m_usMailboxCount; ++slot) {
        MAILBOX& mailbox = m_pMailboxes[slot];
        if (LoadShared(mailbox.InUse) != 0) continue;
        Begin(journal, Change::REGISTER, slot, LoadShared(m_pHeader->MailboxesInUse));
        if (!Claim(mailbox)) continue;
        mailbox.ProcessId = m_ulProcessId;
        mailbox.ThreadId = m_ulThreadId;
        StoreShared(mailbox.hWnd, tessel::ToShared(hWnd));
        NoteRegistration(journal, slot, mailbox, m_OwnId);
        StoreShared<std::uint32_t>(mailbox.ObjId, m_OwnId); // after these, as look-ups use it
        std::atomic_ref<std::uint16_t>(m_pHeader->MailboxesInUse).fetch_add(1);
        m_usSlot = slot; // ODD-23: a previous slot stays registered
        return 0;
    }
    return 1;
}

int CMailBox::UnregisterMailbox() {
    if (!IsMapped()) return 1;
    const PostOfficeLock lock(m_PostOffice);
    if (!lock || m_usSlot == 0) return 1;
    const MAILBOX& mailbox = m_pMailboxes[m_usSlot];
    // GUARD-201: after a sweep, the slot may belong to another receiver.
    if (mailbox.ProcessId == m_ulProcessId && mailbox.ObjId == m_OwnId) {
        FreeSlot(m_usSlot);
    } else {
        std::atomic_ref<std::uint16_t>(m_pHeader->MailboxesInUse).fetch_sub(1);
    }
    m_usSlot = 0;
    return 0;
}

/// Ends a registration. The caller holds the post office's lock.
void CMailBox::FreeSlot(unsigned short slot) {
    JOURNAL* const journal = tessel::OpenJournal();
    Begin(journal, Change::UNREGISTER, slot, LoadShared(m_pHeader->MailboxesInUse) - 1);
    tessel::ForgetMailbox(journal, slot);
    StoreShared<std::uint32_t>(m_pMailboxes[slot].ObjId, 0); // first, as look-ups use it
    StoreShared<std::uint16_t>(m_pMailboxes[slot].InUse, 0);
    std::atomic_ref<std::uint16_t>(m_pHeader->MailboxesInUse).fetch_sub(1);
    End(journal);
}

HWND CMailBox::GetMailBox(ORCAOBJID id, unsigned short& slot) {
    slot = 0;
    HWND found = nullptr;
    if (!IsMapped()) return found;
    int others = 0;
    for (unsigned short candidate = 1; candidate < m_usMailboxCount; ++candidate) {
        const MAILBOX& mailbox = m_pMailboxes[candidate];
        if (LoadShared(mailbox.ObjId) != id) continue;
        const bool own = LoadShared(mailbox.ProcessId) == m_ulProcessId;
        if (own && !IsThisProcess(candidate)) continue; // GUARD-292: of an ended process that had the same process id
        found = tessel::FromShared(LoadShared(mailbox.hWnd));
        slot = candidate;
        if (own) return found; // prefer this process
        ++others;
    }
    return others > 1 ? LivingMailBox(id, found, slot) : found;
}

/// Finds the receiver in the highest slot whose process runs.
/// GUARD-292: a registration of an ended process would hide a receiver that has been restarted.
/// @param found  its window if none runs, with its @p slot
HWND CMailBox::LivingMailBox(ORCAOBJID id, HWND found, unsigned short& slot) {
    for (unsigned short candidate = m_usMailboxCount - 1; candidate > 0; --candidate) {
        const MAILBOX& mailbox = m_pMailboxes[candidate];
        if (LoadShared(mailbox.ObjId) != id || tessel::HasProcessEnded(tessel::ReceiverAt(m_pMailboxes, candidate)))
            continue;
        slot = candidate;
        return tessel::FromShared(LoadShared(mailbox.hWnd));
    }
    return found;
}

bool CMailBox::IsThisProcess(unsigned short slot) {
    const tessel::Identity process = tessel::ReceiverAt(m_pMailboxes, slot);
    return process == tessel::ThisProcess() || process == tessel::WithoutStartTime(m_ulProcessId);
}

MAILBOX* CMailBox::GetMailboxAddr() {
    return IsMapped() ? m_pMailboxes + m_usSlot : nullptr;
}

unsigned short CMailBox::BuildDirectoryList(MONITOR_LEVEL* list, int max) {
    unsigned short count = 0;
    if (!IsMapped() || list == nullptr) return count; // GUARD-09
    const unsigned short slots = MailboxCount();
    for (unsigned short slot = 0; slot < slots && count < max; ++slot) {
        const std::uint32_t id = LoadShared(m_pMailboxes[slot].ObjId);
        if (id != 0) list[count++] = {id, LoadShared(m_pMailboxes[slot].Level)};
    }
    return count;
}

int CMailBox::UpdateMonitorLevel(LEVEL level) {
    if (!IsMapped()) return 1;
    const unsigned short slots = MailboxCount();
    for (unsigned short slot = 0; slot < slots; ++slot) {
        if (LoadShared(m_pMailboxes[slot].ObjId) != m_OwnId) continue;
        StoreShared<std::uint32_t>(m_pMailboxes[slot].Level, level);
        return 0;
    }
    return 1;
}

int CMailBox::GetRecordFlag() {
    return IsMapped() ? static_cast<int>(LoadShared(m_pHeader->RecordFlag)) : 0;
}

int CMailBox::SetRecordFlag(int flag) {
    if (IsMapped()) StoreShared(m_pHeader->RecordFlag, static_cast<std::uint32_t>(flag));
    return 0;
}

int CMailBox::LimitWaiting(unsigned short most) {
    JOURNAL* const journal = tessel::OpenJournal();
    if (!IsMapped() || journal == nullptr || m_usSlot == 0) return 1;
    StoreShared<std::uint32_t>(journal->mailboxes[m_usSlot].limit, most);
    return 0;
}
