#pragma once

#include <foundation/Handle.h>
#include <messaging/office/Identity.h>
#include <tessel/foundation/semaphore.h>

#include <cstdint>

namespace tessel {

/// What recovery needs beside a semaphore: a word that names its holder, in memory that all users of the lock share,
/// and the objects by which they wake each other.
struct LockRecord {
    std::uint64_t* word; ///< 0: free; else the holder's identity with its phase; 8-byte aligned
    HANDLE turn;         ///< auto-reset event: the word has become free
    HANDLE claim;        ///< mutex, acquired together with the semaphore; null if only users of the record use that
};

/// A lock on a binary semaphore that does not stay taken when its holder ends.
///
/// The semaphore has no owner, so programs that know nothing of the record can share the lock. Those that do acquire
/// the word first, with one exchange that also names them, and the semaphore second, which then only other programs
/// contend for. Each change of the word says where its holder is, so whatever instruction is its last, another knows
/// whether the semaphore was taken with it:
///
/// | phase     | the holder                          | has the semaphore                                             |
/// |-----------|-------------------------------------|---------------------------------------------------------------|
/// | trying    | is asking for it, without waiting   | perhaps: another asks again, and decides after a grace period |
/// | blocked   | waits for it together with `claim`  | if `claim` is abandoned                                       |
/// | holding   | has it                              | yes                                                           |
/// | releasing | is releasing it                     | perhaps, as when trying                                       |
///
/// Who finds the word taken lets others run for a moment, then waits for `turn` and for the end of the thread that it
/// names. A thread that ends normally
/// while it holds the lock leaves it to its process (PassToProcess).
/// Threads: any thread may use an object; it holds no state but the addresses.
class RecoverableLock {
public:
    /// @param semaphore  the lock as all programs see it: one permit
    /// @param record     where its holder is named
    RecoverableLock(CSemaphore& semaphore, const LockRecord& record) : m_semaphore(semaphore), m_record(record) {}

    enum class Result {
        FAILED,     ///< time-out, or the semaphore is broken
        ACQUIRED,   ///< held
        TAKEN_OVER, ///< held, after a holder that ended with it: what it was changing may be incomplete
    };

    /// Acquires the lock.
    /// @param timeoutMs  milliseconds; 0 polls, INFINITE waits for ever
    Result Acquire(unsigned long timeoutMs);

    /// Releases the lock, whoever holds it; a free one stays free.
    void Release();

    /// Whether a running thread, or process, is named as its holder.
    bool IsHeldByTheLiving() const;

    /// Leaves a lock that the calling thread holds to its process, because the thread ends.
    void PassToProcess();

private:
    class Deadline;
    class Holder;
    enum class Turn { NONE, FREE, LEFT_BY_THE_DEAD };

    bool TakeSoon();
    Turn AwaitTurn(const Deadline& deadline);
    Turn Succeed(std::uint64_t word, Holder& holder);
    bool WasReleasedByAnother(std::uint64_t word) const;
    DWORD AskSemaphore(unsigned long timeoutMs) const;
    Result TakeSemaphore(const Deadline& deadline);
    Result Inherit(std::uint64_t phase, const Deadline& deadline);
    Result Block(const Deadline& deadline);
    Result Hold(Result result);
    Result HoldInherited(Result result);
    Result GiveUp();
    void Leave();

    std::uint64_t Word() const;
    bool Change(std::uint64_t& from, std::uint64_t to);
    void SetPhase(std::uint64_t phase);

    CSemaphore& m_semaphore;
    const LockRecord& m_record;
};

} // namespace tessel
