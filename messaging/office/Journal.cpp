#include <messaging/office/Journal.h>

#include <foundation/MappedView.h>
#include <foundation/SharedField.h>

#include <atomic>
#include <cstring>

namespace tessel {

namespace {

constexpr wchar_t kTurnName[] = L"FileSafe.Turn";
constexpr wchar_t kClaimName[] = L"FileSafe.Claim";
constexpr wchar_t kRoomName[] = L"SysVarda.Room";

JOURNAL* Map(HANDLE mapping) {
    return mapping == nullptr ? nullptr
                              : static_cast<JOURNAL*>(MapViewOfFileEx(mapping, FILE_MAP_WRITE, 0, 0, 0, nullptr));
}

/// Whether a mapped journal is one that this version of the library uses. The first to map it says so.
bool IsKnown(JOURNAL& journal) {
    std::uint32_t version = 0;
    return MappedBytes(&journal) >= sizeof journal &&
           (std::atomic_ref<std::uint32_t>(journal.version).compare_exchange_strong(version, kJournalVersion) ||
            version == kJournalVersion);
}

} // namespace

Journal::Journal()
    : m_turn(CreateEventW(nullptr, FALSE, FALSE, kTurnName)), m_claim(CreateMutexW(nullptr, FALSE, kClaimName)),
      m_room(CreateEventW(nullptr, FALSE, FALSE, kRoomName)),
      m_mapping(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(JOURNAL), kJournalName)),
      m_journal(Map(m_mapping.Get())) {
    if (m_journal == nullptr || (m_turn && m_claim && IsKnown(*m_journal)))
        return;                       // without them, nothing is recovered
    (void)UnmapViewOfFile(m_journal); // mapped just now
    m_journal = nullptr;
}

Journal::~Journal() {
    if (m_journal != nullptr) (void)UnmapViewOfFile(m_journal); // mapped until now
}

void Forget(JOURNAL& journal) {
    End(&journal);
    for (std::uint32_t slot = 0; slot < POST_OFFICE_MAILBOXES; ++slot) ForgetMailbox(&journal, slot);
    std::memset(journal.blocks, 0, sizeof journal.blocks);
    std::memset(journal.resources, 0, sizeof journal.resources);
}

void ForgetMailbox(JOURNAL* journal, std::uint32_t slot) {
    if (journal == nullptr) return;
    MAILBOX_NOTE& note = journal->mailboxes[slot];
    StoreShared<std::uint64_t>(note.owner, 0);
    StoreShared<std::uint64_t>(note.fetched, 0);
    StoreShared<std::uint32_t>(note.limit, 0);
}

void Begin(JOURNAL* journal, Change kind, std::uint32_t index, std::uint32_t count, std::uint32_t users) {
    if (journal == nullptr) return;
    CHANGE_IN_PROGRESS& change = journal->change;
    StoreShared(change.index, index);
    StoreShared(change.count, count);
    StoreShared(change.users, users);
    StoreShared(change.kind, static_cast<std::uint32_t>(kind)); // last: whoever reads it finds the others
}

void End(JOURNAL* journal) {
    if (journal != nullptr) StoreShared(journal->change.kind, static_cast<std::uint32_t>(Change::NOTHING));
}

} // namespace tessel
