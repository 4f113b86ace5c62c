#include <foundation/SharedField.h>
#include <messaging/office/LiveRegions.h>
#include <messaging/office/PostOfficeLock.h>
#include <messaging/office/WindowHandle.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/messaging/resource.h>

#include <algorithm>
#include <atomic>

namespace {

using tessel::LoadShared;
using tessel::PostOfficeLock;
using tessel::StoreShared;

constexpr int kLowWaterPercent = 10;
constexpr int kHighWaterPercent = 50;

/// Frees a slot. InUse goes first, so that a process killed in between leaves a slot that can be reused.
void Clear(MAILBOX& mailbox) {
    StoreShared<std::uint16_t>(mailbox.InUse, 0);
    StoreShared<std::uint32_t>(mailbox.ObjId, 0);
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
    for (unsigned short slot = 1; slot < m_usMailboxCount; ++slot) {
        MAILBOX& mailbox = m_pMailboxes[slot];
        if (mailbox.InUse != 0) continue;
        mailbox.ProcessId = m_ulProcessId;
        mailbox.ThreadId = m_ulThreadId;
        StoreShared(mailbox.hWnd, tessel::ToShared(hWnd));
        StoreShared<std::uint32_t>(mailbox.ObjId, m_OwnId); // after these, as look-ups use it
        StoreShared<std::uint16_t>(mailbox.InUse, 1);       // last: a process killed before this leaves a free slot
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
    MAILBOX& mailbox = m_pMailboxes[m_usSlot];
    // GUARD-201: after a sweep, the slot may belong to another receiver.
    if (mailbox.ProcessId == m_ulProcessId && mailbox.ObjId == m_OwnId) Clear(mailbox);
    m_usSlot = 0;
    std::atomic_ref<std::uint16_t>(m_pHeader->MailboxesInUse).fetch_sub(1);
    return 0;
}

HWND CMailBox::GetMailBox(ORCAOBJID id, unsigned short& slot) {
    slot = 0;
    HWND found = nullptr;
    if (!IsMapped()) return found;
    for (unsigned short candidate = 1; candidate < m_usMailboxCount; ++candidate) {
        const MAILBOX& mailbox = m_pMailboxes[candidate];
        if (LoadShared(mailbox.ObjId) != id) continue;
        found = tessel::FromShared(LoadShared(mailbox.hWnd));
        slot = candidate;
        if (LoadShared(mailbox.ProcessId) == m_ulProcessId) break; // prefer this process
    }
    return found;
}

MAILBOX* CMailBox::GetMailboxAddr() {
    return IsMapped() ? m_pMailboxes + m_usSlot : nullptr;
}

int CMailBox::CleanUp(ORCAOBJID keep) {
    if (!IsMapped()) return 0;
    const PostOfficeLock lock(m_PostOffice);
    if (!lock) return 0;
    CResource resources;
    unsigned long lastProcess = 0;
    const unsigned short count = MailboxCount();
    for (MAILBOX* mailbox = m_pMailboxes; mailbox != m_pMailboxes + count; ++mailbox) {
        if (mailbox->ObjId == 0 || mailbox->ObjId == keep) continue;
        if (mailbox->ProcessId != lastProcess) (void)resources.ResetProcess(mailbox->ProcessId); // always 0
        lastProcess = mailbox->ProcessId;
        FreeBlocksOf(mailbox->ObjId);
        Clear(*mailbox);
        *mailbox = MAILBOX{}; // ODD-19: MailboxesInUse is not decremented
    }
    return 0;
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
