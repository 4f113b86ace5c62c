#pragma once

#include <foundation/Handle.h>
#include <messaging/office/Identity.h>
#include <tessel/messaging/postoffice.h>

#include <cstdint>

namespace tessel {

/// What the post office's region does not say: who holds the lock and what it is changing, and to which process each
/// block and registration belongs. With it, others can finish or undo what a process had begun when it ended.
///
/// It is a mapping of its own beside the region, with the same layout for 32-bit and 64-bit programs. All zeros is its
/// first state. It holds hints and evidence only: programs that do not know it share the post office as well, and if
/// it cannot be mapped, nothing is recovered. Like the region, anyone can write to it, so nothing in it is trusted to
/// be in range.

inline constexpr char kJournalName[] = "SysVarda.Journal";
inline constexpr std::uint32_t kJournalVersion = 1;

/// What the holder of the lock is changing; written before the change, and set to NOTHING after it.
enum class Change : std::uint32_t {
    NOTHING,
    ALLOCATE,   ///< block `index`; undone: it becomes free, with `users` as before, and `count` blocks are free
    FREE,       ///< block `index`; finished: it is free with `users`, and `count` blocks are free
    REGISTER,   ///< slot `index`; undone: it becomes free, and `count` slots are in use
    UNREGISTER, ///< slot `index`; finished: it is free, and `count` slots are in use
    CLEAR,      ///< slot `index`; finished: all of it is zero
};
struct CHANGE_IN_PROGRESS {
    std::uint32_t kind; ///< Change
    std::uint32_t index;
    std::uint32_t count;
    std::uint32_t users;
};

/// Where a block is on its way.
enum class BlockState : std::uint64_t {
    UNKNOWN, ///< free, or in the hands of a program without a journal
    WRITING, ///< with its sender
    POSTING, ///< its sender is posting the notification
    POSTED,  ///< in the receiver's queue
    FETCHED, ///< the receiver has asked for it by its number
};
/// A receiver that has ended had fetched the message.
inline constexpr std::uint32_t TAKEN_OVER_FETCHED = 1;
/// The message has been taken over and is still to be posted again.
inline constexpr std::uint32_t TAKEN_OVER_UNPOSTED = 2;

struct BLOCK_NOTE {
    std::uint64_t owner;        ///< the process that is responsible, the state and a count of the allocations
    std::uint64_t receiver;     ///< the receiver's process
    std::uint64_t sequence;     ///< position among all posted messages
    std::uint64_t orphaned;     ///< position of the last message when the sender was found dead; 0: not found so
    std::uint32_t slot;         ///< of the receiver
    std::uint32_t registration; ///< of the receiver: MAILBOX_NOTE::registration
    std::uint32_t content;   ///< of the block, by which it is recognised: a program without a journal may use it again
    std::uint32_t takenOver; ///< TAKEN_OVER_...
};

struct MAILBOX_NOTE {
    std::uint64_t owner;        ///< the process that registered it; 0: a program without a journal
    std::uint64_t fetched;      ///< greatest position of a message that it has fetched
    std::uint32_t limit;        ///< how many messages may wait for it; 0: any number
    std::uint32_t registration; ///< counts the registrations in the slot
    std::uint32_t window;       ///< the registered window
    std::uint32_t id;           ///< the registered id
};

struct JOURNAL {
    std::uint32_t version;     ///< kJournalVersion
    std::uint32_t roomWanted;  ///< 1: a sender waits for a free block
    std::uint64_t lock;        ///< word of the RecoverableLock
    CHANGE_IN_PROGRESS change; ///< protected by the lock
    std::uint64_t sequence;    ///< position of the last message that was posted
    MAILBOX_NOTE mailboxes[POST_OFFICE_MAILBOXES];
    BLOCK_NOTE blocks[SMALL_BLOCK_COUNT];
    std::uint64_t resources[POST_OFFICE_RESOURCES]; ///< the process that filled the record
};

/// The journal as this process has it mapped, and the objects that go with it. Any thread may use it.
class Journal {
public:
    /// Opens or creates it. Anything may be missing afterwards.
    Journal();
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Whether the lock can be recovered: journal, event and mutex are there.
    bool IsComplete() const { return m_journal != nullptr; }

    /// The mapped journal; null if it could not be mapped, has another version, or lacks its event or mutex.
    JOURNAL* Get() const { return m_journal; }
    /// Signalled when the lock's word becomes free.
    HANDLE Turn() const { return m_turn.Get(); }
    /// Acquired together with the lock's semaphore.
    HANDLE Claim() const { return m_claim.Get(); }
    /// Signalled when a block becomes free while a sender waits for one.
    HANDLE Room() const { return m_room.Get(); }

private:
    Handle m_turn;
    Handle m_claim;
    Handle m_room;
    Handle m_mapping;
    JOURNAL* m_journal;
};

/// The journal of this process's post office; null without one.
JOURNAL* OpenJournal();

/// Signalled when a block becomes free while a sender waits for one; null without a post office.
HANDLE RoomEvent();

/// Forgets all blocks, registrations and resources. The caller holds the lock of a region that has just been created.
void Forget(JOURNAL& journal);

/// Forgets a registration.
void ForgetMailbox(JOURNAL* journal, std::uint32_t slot);

/// Notes a change before it is made. The caller holds the post office's lock.
/// @param journal  the journal, or null
void Begin(JOURNAL* journal, Change kind, std::uint32_t index, std::uint32_t count, std::uint32_t users = 0);

/// Notes that the change is complete.
/// @param journal  the journal, or null
void End(JOURNAL* journal);

} // namespace tessel
