#include <foundation/SharedField.h>
#include <messaging/office/Post.h>

#include <new>
#include <span>

namespace {

using tessel::LoadShared;

/// All mailbox records; none while the region is unmapped.
std::span<const MAILBOX> Mailboxes() {
    const MAILBOX* const table = CPostOffice().GetPostOfficeAddr();
    return {table, table == nullptr ? 0U : POST_OFFICE_MAILBOXES};
}

} // namespace

CPost* CPostOffice::mpGlobalPostOffice = nullptr;

void CPostOffice::CreateGlobalPostOffice() {
    mpGlobalPostOffice = new (std::nothrow) CPost; // ODD-18: a previous one is lost
}

void CPostOffice::DestroyGlobalPostOffice() {
    delete mpGlobalPostOffice;
    mpGlobalPostOffice = nullptr;
}

// GUARD-12: every operation treats a missing post office like an unmapped one.
int CPostOffice::LockThreadSafe(unsigned long timeoutMs) {
    return mpGlobalPostOffice != nullptr && mpGlobalPostOffice->Lock(timeoutMs) ? 0 : 1;
}

void CPostOffice::UnlockThreadSafe() {
    if (mpGlobalPostOffice != nullptr) mpGlobalPostOffice->Unlock();
}

int CPostOffice::IsManager(ORCAOBJID id, unsigned long processId) {
    for (const MAILBOX& mailbox : Mailboxes()) {
        if (LoadShared(mailbox.ObjId) != id) continue; // ODD-25: the id 0 matches free records
        if (processId == 0 || LoadShared(mailbox.ProcessId) == processId) return 1;
    }
    return 0;
}

int CPostOffice::GetManagerInfo(ORCAOBJID id, MAILBOX* out) {
    if (out == nullptr) return 1; // GUARD-09
    *out = MAILBOX{};
    for (const MAILBOX& mailbox : Mailboxes()) {
        if (LoadShared(mailbox.ObjId) != id) continue;
        *out = mailbox;
        return 0;
    }
    return 1;
}

namespace tessel {

JOURNAL* OpenJournal() {
    return CPostOffice::mpGlobalPostOffice == nullptr ? nullptr : CPostOffice::mpGlobalPostOffice->GetJournal().Get();
}

HANDLE RoomEvent() {
    return CPostOffice::mpGlobalPostOffice == nullptr ? nullptr : CPostOffice::mpGlobalPostOffice->GetJournal().Room();
}

} // namespace tessel

FILE_HEADER* CPostOffice::GetHeaderAddr() {
    return mpGlobalPostOffice == nullptr ? nullptr : mpGlobalPostOffice->m_pHeader;
}

MAILBOX* CPostOffice::GetPostOfficeAddr() {
    return mpGlobalPostOffice == nullptr ? nullptr : mpGlobalPostOffice->m_pMailboxes;
}

RESOURCE* CPostOffice::GetResourceAddr() {
    return mpGlobalPostOffice == nullptr ? nullptr : mpGlobalPostOffice->m_pResources;
}

SBLOCK* CPostOffice::GetSmallBlockAddr() {
    return mpGlobalPostOffice == nullptr ? nullptr : mpGlobalPostOffice->m_pSmallBlocks;
}
