#include <foundation/Handle.h>
#include <foundation/MappedView.h>
#include <foundation/Report.h>
#include <foundation/SharedField.h>
#include <messaging/office/LiveRegions.h>
#include <messaging/office/Post.h>
#include <messaging/office/Repair.h>

#include <atomic>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr tessel::ReportSite kLockTimedOut{"CPost", 50};

constexpr unsigned long kConstructionTimeoutMs = 5000;

constexpr FILE_HEADER kNewHeader{.FileSize = POST_OFFICE_REGION_SIZE,
                                 .MailboxSize = sizeof(MAILBOX),
                                 .MailboxCount = POST_OFFICE_MAILBOXES,
                                 .MailboxesInUse = 0,
                                 .Reserved1 = 0,
                                 .MailboxOffset = MAILBOX_TABLE_OFFSET,
                                 .ResourceSize = sizeof(RESOURCE),
                                 .ResourceCount = POST_OFFICE_RESOURCES,
                                 .ResourcesInUse = 0,
                                 .Reserved2 = 0,
                                 .ResourceOffset = RESOURCE_TABLE_OFFSET,
                                 .SmallBlkSize = SMALL_BLOCK_SIZE,
                                 .SmallBlkCount = SMALL_BLOCK_COUNT,
                                 .SmallBlksInUse = 0,
                                 .Reserved3 = 0,
                                 .SmallBlkOffset = SMALL_BLOCK_OFFSET,
                                 // ODD-15: one more than can be allocated, as the first block never is
                                 .FreeSmallBlks = SMALL_BLOCK_COUNT,
                                 .RecordFlag = 0};

bool TableFits(std::uint32_t offset, std::size_t tableSize, std::size_t regionSize) {
    // After the header, and aligned because fields are accessed atomically.
    return offset >= sizeof(FILE_HEADER) && offset % alignof(std::uint32_t) == 0 && offset <= regionSize &&
           tableSize <= regionSize - offset;
}

/// Whether the tables that a header describes lie inside the region.
/// GUARD-11: another process may have created the region, with any offsets.
bool TablesFit(const FILE_HEADER& header, std::size_t regionSize) {
    return TableFits(header.MailboxOffset, POST_OFFICE_MAILBOXES * sizeof(MAILBOX), regionSize) &&
           TableFits(header.ResourceOffset, POST_OFFICE_RESOURCES * sizeof(RESOURCE), regionSize) &&
           TableFits(header.SmallBlkOffset, SMALL_BLOCK_COUNT * sizeof(SBLOCK), regionSize);
}

/// The thread of this process that holds the lock; 0: none.
std::atomic<DWORD> holdingThread = 0;

} // namespace

int CPost::m_iConstructing = 0;

CPost::CPost()
    : m_pLock(nullptr), m_hMapping(nullptr), m_pBase(nullptr), m_pHeader(nullptr), m_pMailboxes(nullptr),
      m_pResources(nullptr), m_pSmallBlocks(nullptr) {
    m_iConstructing = 1;
    m_pLock = new (std::nothrow) CSemaphore(POST_OFFICE_LOCK_NAME, 1, 1);
    if (m_journal.IsComplete()) m_record = {&m_journal.Get()->lock, m_journal.Turn(), m_journal.Claim()};
    const bool locked = Lock(kConstructionTimeoutMs);
    tessel::ReportUnless(locked, "!LockTimeout && _T(\"Failed to get semaphore named:\") SEMAPHORE_NAME",
                         kLockTimedOut);
    if (!OpenRegion() && !CreateRegion()) {
        (void)MessageBoxW(nullptr, L"Unable to Create Memory Map.", L"System Error", MB_OK);
        return; // ODD-16: with the lock still taken
    }
    if (locked && IsUnfinished()) Initialize();
    FindTables();
    if (locked) {
        RepairTables();
        Unlock();
    } else {
        ReleaseUnacquired();
    }
}

CPost::~CPost() {
    Unmap();
    delete m_pLock;
}

bool CPost::Lock(unsigned long timeoutMs) {
    if (m_pLock == nullptr) return false;
    if (!IsRecoverable()) return m_pLock->WaitOnSemaphore(timeoutMs) == 0;
    const auto result = RecoverableLock().Acquire(timeoutMs);
    if (result == tessel::RecoverableLock::Result::FAILED) return false;
    holdingThread = GetCurrentThreadId();
    // GUARD-290: the lock of a holder that has ended would stop all programs.
    m_takenOver = result == tessel::RecoverableLock::Result::TAKEN_OVER;
    if (m_takenOver) RepairTables();
    return true;
}

void CPost::Unlock() {
    if (m_pLock == nullptr) return;
    if (!IsRecoverable()) return (void)m_pLock->ReleaseSemaphoreA(); // fails only if it was not held
    const bool takenOver = std::exchange(m_takenOver, false);
    if (m_pHeader != nullptr) tessel::End(m_journal.Get()); // of an allocation, whose block its caller has counted
    holdingThread = 0;
    RecoverableLock().Release();
    tessel::ReportUnless(!takenOver, "!\"Lock of an ended thread taken over\"", {"CPost", __LINE__});
}

void CPost::OnThreadEnd() {
    CPost* const post = CPostOffice::mpGlobalPostOffice;
    if (holdingThread == GetCurrentThreadId() && post != nullptr && post->IsRecoverable())
        post->RecoverableLock().PassToProcess();
}

void CPost::RepairTables() {
    if (m_pHeader != nullptr && m_journal.Get() != nullptr)
        (void)tessel::Repair(*m_journal.Get(), {m_pHeader, m_pMailboxes, m_pSmallBlocks}); // often nothing to repair
}

/// ODD-17: the semaphore is released without having been acquired, which frees a lock that nobody is known to hold.
/// GUARD-291: a holder that is known and runs keeps it.
void CPost::ReleaseUnacquired() {
    if (m_pLock == nullptr || (IsRecoverable() && RecoverableLock().IsHeldByTheLiving())) return;
    (void)m_pLock->ReleaseSemaphoreA(); // fails if it has been released meanwhile
}

bool CPost::OpenRegion() {
    return MapRegion(OpenFileMappingW(FILE_MAP_WRITE, FALSE, POST_OFFICE_REGION_NAME), 0);
}

bool CPost::CreateRegion() {
    HANDLE const mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, POST_OFFICE_REGION_SIZE,
                                              POST_OFFICE_REGION_NAME);
    const bool created = GetLastError() != ERROR_ALREADY_EXISTS;
    if (!MapRegion(mapping, POST_OFFICE_REGION_SIZE)) return false;
    // GUARD-18: without the lock, another process may have created the region meanwhile and be using it.
    if (created) Initialize();
    return true;
}

/// Fills the region. Its size is written last, so that a region whose creator ended within is not taken for complete.
void CPost::Initialize() {
    std::memset(m_pBase, 0, POST_OFFICE_REGION_SIZE);
    if (m_journal.Get() != nullptr) tessel::Forget(*m_journal.Get()); // it may have outlived an earlier region
    FILE_HEADER header = kNewHeader;
    header.FileSize = 0;
    std::memcpy(m_pBase, &header, sizeof header);
    tessel::StoreShared(reinterpret_cast<FILE_HEADER*>(m_pBase)->FileSize, kNewHeader.FileSize);
}

/// Whether the creator of the region ended before it had filled it. The caller holds the lock.
/// GUARD-294: nobody else would fill it as long as a program has it open.
bool CPost::IsUnfinished() const {
    return tessel::MappedBytes(m_pBase) >= POST_OFFICE_REGION_SIZE &&
           tessel::LoadShared(reinterpret_cast<const FILE_HEADER*>(m_pBase)->FileSize) == 0;
}

// A mapping that cannot be viewed is closed, so that no process finds a region that was never initialised.
bool CPost::MapRegion(HANDLE mapping, std::size_t size) {
    tessel::Handle owned(mapping);
    if (!owned) return false;
    m_pBase = static_cast<unsigned char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, size));
    if (m_pBase == nullptr) return false;
    m_hMapping = owned.Release();
    return true;
}

void CPost::FindTables() {
    const std::size_t size = tessel::MappedBytes(m_pBase);
    FILE_HEADER header{}; // a copy cannot change after the check
    if (size >= sizeof header) std::memcpy(&header, m_pBase, sizeof header);
    if (!TablesFit(header, size) || !tessel::AddRegion(m_pBase, size)) return Unmap();
    m_pHeader = reinterpret_cast<FILE_HEADER*>(m_pBase);
    m_pMailboxes = reinterpret_cast<MAILBOX*>(m_pBase + header.MailboxOffset);
    m_pResources = reinterpret_cast<RESOURCE*>(m_pBase + header.ResourceOffset);
    m_pSmallBlocks = reinterpret_cast<SBLOCK*>(m_pBase + header.SmallBlkOffset);
}

void CPost::Unmap() {
    tessel::RemoveRegion(m_pBase);
    if (UnmapViewOfFile(m_pBase)) (void)CloseHandle(m_hMapping); // mapped, hence open
    m_pBase = nullptr;
}
