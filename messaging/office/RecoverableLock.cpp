#include <messaging/office/RecoverableLock.h>

#include <foundation/SharedField.h>

#include <winternl.h>

#include <algorithm>
#include <array>
#include <atomic>

extern "C" NTSTATUS NTAPI NtQueryMutant(HANDLE, int, void*, ULONG, ULONG*);
extern "C" NTSTATUS NTAPI NtQuerySemaphore(HANDLE, int, void*, ULONG, ULONG*);

namespace tessel {

namespace {

constexpr std::uint64_t kTrying = 1ULL << 32;
constexpr std::uint64_t kBlocked = 2ULL << 32;
constexpr std::uint64_t kHolding = 3ULL << 32;
constexpr std::uint64_t kReleasing = 4ULL << 32;
constexpr std::uint64_t kPhase = 7ULL << 32;
/// Somebody waits for its turn.
constexpr std::uint64_t kWanted = 8ULL << 32;
/// The identity is that of a process, not of a thread.
constexpr std::uint64_t kOfProcess = 16ULL << 32;
/// The phase is that of a dead holder, whose successor the word names: it does not have the semaphore yet.
constexpr std::uint64_t kInheriting = 32ULL << 32;

/// How long the lock is usually held, at most: two calls of the system and a short search.
constexpr long long kUsualHoldUs = 200;
constexpr long long kUsPerSecond = 1'000'000;
/// How long to wait for the turn before asking who holds the lock.
constexpr unsigned long kMomentMs = 1;
/// How long to wait before looking again. Only a waiter that ended right after it was woken makes this necessary.
constexpr unsigned long kLookAgainMs = 50;
/// How long a semaphore that nobody is known to hold may be with a program that does not use the record.
constexpr unsigned long kGraceMs = 100;

/// SEMAPHORE_BASIC_INFORMATION and MUTANT_BASIC_INFORMATION of NtQuerySemaphore and NtQueryMutant.
struct SemaphoreState {
    ULONG count;
    ULONG maximum;
};
struct MutexState {
    LONG count;
    BOOLEAN isOwn;
    BOOLEAN isAbandoned;
};

bool IsHolding(std::uint64_t word) {
    return (word & (kPhase | kInheriting)) == kHolding;
}

bool IsFree(HANDLE semaphore) {
    SemaphoreState state{};
    return NtQuerySemaphore(semaphore, 0, &state, sizeof state, nullptr) == 0 && state.count > 0;
}

/// Asks without acquiring it, so that whoever asks can end without changing the answer.
bool IsAbandoned(HANDLE mutex) {
    MutexState state{};
    return NtQueryMutant(mutex, 0, &state, sizeof state, nullptr) == 0 && state.isAbandoned != FALSE;
}

} // namespace

/// The time until which to wait.
class RecoverableLock::Deadline {
public:
    explicit Deadline(unsigned long timeoutMs)
        : m_timeoutMs(timeoutMs), m_start(timeoutMs == 0 ? 0 : GetTickCount64()) {}
    unsigned long Remaining() const {
        if (m_timeoutMs == INFINITE || m_timeoutMs == 0) return m_timeoutMs;
        const unsigned long long spent = GetTickCount64() - m_start;
        return spent >= m_timeoutMs ? 0 : m_timeoutMs - static_cast<unsigned long>(spent);
    }

private:
    unsigned long m_timeoutMs;
    unsigned long long m_start;
};

std::uint64_t RecoverableLock::Word() const {
    return LoadShared(*m_record.word);
}

/// Replaces the word if it is still what it was.
/// @param from  what it was; receives what it is
bool RecoverableLock::Change(std::uint64_t& from, std::uint64_t to) {
    return std::atomic_ref<std::uint64_t>(*m_record.word).compare_exchange_strong(from, to);
}

/// Changes the phase of the calling thread, unless another has taken the word from it.
void RecoverableLock::SetPhase(std::uint64_t phase) {
    const Identity self = ThisThread();
    std::uint64_t word = Word();
    while (IdentityIn(word) == self && (word & kOfProcess) == 0) {
        if (Change(word, (word & ~(kPhase | kInheriting)) | phase)) return;
    }
}

/// The thread or process that a word names, watched for its end.
class RecoverableLock::Holder {
public:
    /// @param word  the word as it is now; it may name another than before
    bool HasEnded(std::uint64_t word) {
        constexpr std::uint64_t kNamed = ~kRecordBits | kOfProcess;
        if (m_watched.handle && (word & kNamed) == m_named)
            return WaitForSingleObject(m_watched.handle.Get(), 0) == WAIT_OBJECT_0;
        m_named = word & kNamed;
        m_watched = (word & kOfProcess) != 0 ? WatchProcess(word) : WatchThread(word);
        return m_watched.ended;
    }
    /// Signalled at its end; null if it may not be watched.
    HANDLE End() const { return m_watched.handle.Get(); }

private:
    std::uint64_t m_named = 0;
    Watched m_watched{Handle(), false};
};

RecoverableLock::Result RecoverableLock::Acquire(unsigned long timeoutMs) {
    const Deadline deadline(timeoutMs);
    std::uint64_t word = 0;
    if (Change(word, ThisThread() | kTrying) || (timeoutMs > 0 && TakeSoon())) return TakeSemaphore(deadline);
    switch (AwaitTurn(deadline)) {
    case Turn::FREE: return TakeSemaphore(deadline);
    case Turn::LEFT_BY_THE_DEAD: return Inherit(Word() & kPhase, deadline);
    default: return Result::FAILED;
    }
}

/// Lets others run until the word is free, for as long as the lock is usually held, and takes it. To wait would take
/// longer: it costs this thread a call of the system, and the holder another one to wake it.
bool RecoverableLock::TakeSoon() {
    LARGE_INTEGER frequency;
    LARGE_INTEGER start;
    LARGE_INTEGER now;
    (void)QueryPerformanceFrequency(&frequency); // these cannot fail
    (void)QueryPerformanceCounter(&start);
    do {
        (void)SwitchToThread(); // whether another thread was ready does not matter
        std::uint64_t word = 0;
        if (Word() == 0 && Change(word, ThisThread() | kTrying)) return true;
        (void)QueryPerformanceCounter(&now);
    } while ((now.QuadPart - start.QuadPart) * kUsPerSecond < kUsualHoldUs * frequency.QuadPart);
    return false;
}

/// Waits until the word is free or its holder has ended, and takes it.
RecoverableLock::Turn RecoverableLock::AwaitTurn(const Deadline& deadline) {
    Holder holder;
    for (bool patient = true;;) { // as long as releases wake this thread
        std::uint64_t word = Word();
        if (word == 0) {
            if (Change(word, ThisThread() | kTrying | kWanted)) return Turn::FREE; // wanted: others may wait, too
            continue;
        }
        if ((word & kWanted) == 0 && !Change(word, word | kWanted)) continue;
        word |= kWanted;
        const unsigned long remaining = deadline.Remaining();
        if (patient && remaining > kMomentMs) {
            patient = WaitForSingleObject(m_record.turn, kMomentMs) == WAIT_OBJECT_0;
            continue;
        }
        const Turn turn = Succeed(word, holder);
        if (turn != Turn::NONE || remaining == 0) return turn;
        const std::array<HANDLE, 2> wakers{m_record.turn, holder.End()};
        patient = WaitForMultipleObjects(holder.End() == nullptr ? 1 : 2, wakers.data(), FALSE,
                                         std::min(remaining, kLookAgainMs)) == WAIT_OBJECT_0;
    }
}

/// Takes the word from a holder that has ended, or whose semaphore another program has released. The phase stays: if
/// this thread ends next, its successor must know what this one found.
RecoverableLock::Turn RecoverableLock::Succeed(std::uint64_t word, Holder& holder) {
    const std::uint64_t self = ThisThread() | kWanted;
    if (holder.HasEnded(word))
        return Change(word, self | (word & kPhase) | kInheriting) ? Turn::LEFT_BY_THE_DEAD : Turn::NONE;
    return WasReleasedByAnother(word) && Change(word, self | kTrying) ? Turn::FREE : Turn::NONE;
}

/// Whether a program has released the semaphore of a holder without its record: a semaphore has no owner.
bool RecoverableLock::WasReleasedByAnother(std::uint64_t word) const {
    return IsHolding(word) && IsFree(m_semaphore.GetHandle()) && Word() == word;
}

DWORD RecoverableLock::AskSemaphore(unsigned long timeoutMs) const {
    return WaitForSingleObjectEx(m_semaphore.GetHandle(), timeoutMs, FALSE);
}

/// Acquires the semaphore with the word in the phase of the dead holder.
RecoverableLock::Result RecoverableLock::Inherit(std::uint64_t phase, const Deadline& deadline) {
    const bool unknown = phase == kTrying || phase == kReleasing;
    const DWORD status = AskSemaphore(unknown ? kGraceMs : 0);
    if (status == WAIT_OBJECT_0) return HoldInherited(phase == kHolding ? Result::TAKEN_OVER : Result::ACQUIRED);
    if (status != WAIT_TIMEOUT) return GiveUp();
    const bool taken = unknown || phase == kHolding || (m_record.claim != nullptr && IsAbandoned(m_record.claim));
    return taken ? HoldInherited(Result::TAKEN_OVER) : Block(deadline);
}

/// Acquires the semaphore with the word in the phase of trying.
RecoverableLock::Result RecoverableLock::TakeSemaphore(const Deadline& deadline) {
    const DWORD status = AskSemaphore(0);
    if (status == WAIT_OBJECT_0) return Hold(Result::ACQUIRED);
    return status == WAIT_TIMEOUT ? Block(deadline) : GiveUp();
}

/// Waits for a program that holds the semaphore without a record.
RecoverableLock::Result RecoverableLock::Block(const Deadline& deadline) {
    SetPhase(kBlocked);
    const std::array<HANDLE, 2> both{m_semaphore.GetHandle(), m_record.claim};
    const DWORD result =
        WaitForMultipleObjects(m_record.claim == nullptr ? 1 : 2, both.data(), TRUE, deadline.Remaining());
    const bool acquired = result <= WAIT_OBJECT_0 + 1 || result == WAIT_ABANDONED_0 || result == WAIT_ABANDONED_0 + 1;
    if (!acquired) return GiveUp();
    SetPhase(kHolding);
    if (m_record.claim != nullptr) (void)ReleaseMutex(m_record.claim); // acquired just now
    return Result::ACQUIRED;
}

RecoverableLock::Result RecoverableLock::Hold(Result result) {
    SetPhase(kHolding);
    return result;
}

RecoverableLock::Result RecoverableLock::HoldInherited(Result result) {
    SetPhase(kHolding);
    // Whoever blocks later must find the mutex abandoned only if the last one that blocked had it.
    if (m_record.claim != nullptr && IsAbandoned(m_record.claim)) {
        if (WaitForSingleObject(m_record.claim, 0) == WAIT_ABANDONED) (void)ReleaseMutex(m_record.claim);
    }
    return result;
}

RecoverableLock::Result RecoverableLock::GiveUp() {
    Leave();
    return Result::FAILED;
}

void RecoverableLock::Release() {
    std::uint64_t word = Word();
    bool held = false;
    while (!held && IsHolding(word)) {
        held = Change(word, ThisThread() | kReleasing | (word & kWanted)); // whoever acquired it
    }
    (void)m_semaphore.ReleaseSemaphoreA(); // fails only if it was free
    if (held) Leave();
}

/// Frees the word of the calling thread and wakes one that waits for it.
void RecoverableLock::Leave() {
    const Identity self = ThisThread();
    std::uint64_t word = Word();
    while (IdentityIn(word) == self && (word & kOfProcess) == 0) {
        if (!Change(word, 0)) continue;
        if ((word & kWanted) != 0) (void)SetEvent(m_record.turn); // open as long as the lock is
        return;
    }
}

bool RecoverableLock::IsHeldByTheLiving() const {
    const std::uint64_t word = Word();
    return word != 0 && (word & kPhase) != kBlocked && !Holder().HasEnded(word);
}

void RecoverableLock::PassToProcess() {
    const Identity self = ThisThread();
    std::uint64_t word = Word();
    while (IdentityIn(word) == self && (word & (kOfProcess | kPhase)) == kHolding) {
        if (Change(word, ThisProcess() | kOfProcess | kHolding | (word & kWanted))) return;
    }
}

} // namespace tessel
