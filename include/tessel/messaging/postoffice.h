#pragma once

#include <tessel/foundation/platform.h>

#include <cstdint>

/// Identifies a manager or another receiver of messages. The programs define the values; 0 identifies none.
enum ORCAOBJID : unsigned long {};

/// Kind of a shared resource. The programs define the values; 1 is a frame window, 2 a dialog.
enum RESOURCE_TYPE : unsigned long {};

/// Identifies a resource of its kind. The programs define the values.
enum RESOURCE_ID : unsigned long {};

/// Monitor level of a manager. The programs define the values.
enum LEVEL : unsigned long {};

/// @name The shared region
/// Every process maps the same region at its own address and finds the tables by the offsets in the header. All
/// numbers are little-endian and of fixed width, so that 32-bit and 64-bit programs share the region.
///@{

/// Name of the paging-file mapping.
inline constexpr wchar_t POST_OFFICE_REGION_NAME[] = L"SysVarda";
/// Name of the semaphore that serialises the mailbox table and the pool between processes.
inline constexpr wchar_t POST_OFFICE_LOCK_NAME[] = L"FileSafe";
/// Records in the mailbox table; no registration uses the first.
inline constexpr std::uint16_t POST_OFFICE_MAILBOXES = 100;
/// Records in the resource table.
inline constexpr std::uint16_t POST_OFFICE_RESOURCES = 1024;
/// Blocks in the pool; the first is never allocated.
inline constexpr std::uint16_t SMALL_BLOCK_COUNT = 500;
/// Data bytes of a block. The longest message is one byte shorter.
inline constexpr std::uint16_t SMALL_BLOCK_SIZE = 5120;

/// Header of the region: where the tables are and how many blocks are free.
struct FILE_HEADER {
    std::uint32_t FileSize;       ///< bytes of the region
    std::uint16_t MailboxSize;    ///< bytes of one MAILBOX
    std::uint16_t MailboxCount;   ///< records in the mailbox table
    std::uint16_t MailboxesInUse; ///< registrations less unregistrations
    std::uint16_t Reserved1;      ///< 0
    std::uint32_t MailboxOffset;  ///< offset of the mailbox table
    std::uint16_t ResourceSize;   ///< bytes of one RESOURCE
    std::uint16_t ResourceCount;  ///< records in the resource table
    std::uint16_t ResourcesInUse; ///< 0; written at creation only
    std::uint16_t Reserved2;      ///< 0
    std::uint32_t ResourceOffset; ///< offset of the resource table
    std::uint16_t SmallBlkSize;   ///< data bytes of one block
    std::uint16_t SmallBlkCount;  ///< blocks in the pool
    std::uint16_t SmallBlksInUse; ///< 0; written at creation only
    std::uint16_t Reserved3;      ///< 0
    std::uint32_t SmallBlkOffset; ///< offset of the pool
    std::uint32_t FreeSmallBlks;  ///< free blocks, including the one that is never allocated
    std::uint32_t RecordFlag;     ///< CMailBox::SetRecordFlag()
};

/// A registered receiver of messages.
struct MAILBOX {
    std::uint16_t InUse;     ///< 0: free; 1: registered
    std::uint16_t Reserved;  ///< 0
    std::uint32_t ObjId;     ///< the receiver's ORCAOBJID; 0 in a free record
    std::uint32_t Level;     ///< the receiver's LEVEL
    std::uint32_t ProcessId; ///< Win32 id of the process that registered it
    std::uint32_t ThreadId;  ///< Win32 id of the thread that created the CMailBox
    std::uint32_t hWnd;      ///< window that receives the notifications
};

/// A registered resource; free while ThreadId is 0.
struct RESOURCE {
    std::uint32_t Type;      ///< RESOURCE_TYPE
    std::uint32_t Owner;     ///< value chosen by its owner
    std::uint32_t ThreadId;  ///< Win32 id of the thread that added it
    std::uint32_t ProcessId; ///< Win32 id of the process that added it
    std::uint32_t Id;        ///< RESOURCE_ID
    std::uint32_t hWnd;      ///< the registered window
};

/// One block of the pool, with at most one message.
struct SBLOCK {
    std::uint16_t BlkNum;                ///< 0: free; else the block's index in the pool
    std::uint16_t Reserved0;             ///< 0
    std::uint32_t RefCount;              ///< 1 while allocated
    std::uint32_t Reserved;              ///< 0
    std::uint32_t MsgId;                 ///< message word chosen by the sender
    std::uint32_t Length;                ///< bytes of the message plus one; the last byte is never written
    std::uint32_t Receiver;              ///< ORCAOBJID of the receiver
    std::uint32_t Sender;                ///< ORCAOBJID of the sender
    std::uint8_t Data[SMALL_BLOCK_SIZE]; ///< first part of the message, immediately followed by the second
};

/// Offset of the mailbox table in a region that this library creates.
inline constexpr std::uint32_t MAILBOX_TABLE_OFFSET = sizeof(FILE_HEADER);
/// Offset of the resource table in a region that this library creates.
inline constexpr std::uint32_t RESOURCE_TABLE_OFFSET = MAILBOX_TABLE_OFFSET + POST_OFFICE_MAILBOXES * sizeof(MAILBOX);
/// Offset of the pool in a region that this library creates.
inline constexpr std::uint32_t SMALL_BLOCK_OFFSET = RESOURCE_TABLE_OFFSET + POST_OFFICE_RESOURCES * sizeof(RESOURCE);
/// Bytes of the region.
inline constexpr std::uint32_t POST_OFFICE_REGION_SIZE = SMALL_BLOCK_OFFSET + SMALL_BLOCK_COUNT * sizeof(SBLOCK);
///@}

class CPost;

/// The process's view of the post office: the shared region, its lock, and the registered receivers.
///
/// The object has no state: every object refers to the one post office that CreateGlobalPostOffice() opened. CMailBox
/// sends and receives, CResource manages the resource table; both need the post office first.
///
/// There is one post office per logon session: the names of region and lock are local to the session, so that programs
/// of different users, or a program and a service, do not share one.
///
/// Create it once, before the first CMailBox, and destroy it after the last one. Without it, or if the region could
/// not be mapped, addresses are null and no receiver is found. Without it the lock cannot be acquired either; after the
/// message box about the region the lock stays taken, and waiting for it never ends.
/// Threads: any thread may call any operation, but no thread may use the post office while it is created or destroyed.
/// The lock is not re-entrant: acquiring it twice deadlocks. It has no owner: any thread of any process may release it.
///
/// When the thread that holds the lock is ended, with its process or alone, one of those that wait takes the lock over,
/// repairs what was being changed, and reports it. A thread that ends by itself leaves the lock to its process.
class TESSEL_API CPostOffice {
public:
    /// Opens the post office of the logon session, or creates it if this process is the first.
    ///
    /// Waits at most 5 s for the lock. If that fails, it makes a report, continues, and releases the lock at the end,
    /// unless a running thread is known to hold it: a lock left by a program that does not name itself is usable again.
    /// If the region can be neither opened nor created, a message box says so; the call returns when it is closed, and
    /// the lock stays taken. A region whose tables do not lie inside it is not used: nothing is mapped, and the first
    /// CMailBox reports it in a message box. A second call abandons the first post office without closing it; objects
    /// created with it continue to work.
    static void CreateGlobalPostOffice();

    /// Closes the post office. The region is destroyed when the last process closes it.
    static void DestroyGlobalPostOffice();

    /// Acquires the lock that protects every change of the mailbox table and the pool. After the end of a holder it may
    /// take 100 ms longer than the time-out.
    /// @param timeoutMs  milliseconds; INFINITE waits indefinitely
    /// @return 0: acquired; 1: time-out or failure
    int LockThreadSafe(unsigned long timeoutMs);

    /// Releases the lock.
    void UnlockThreadSafe();

    /// Whether a receiver is registered. Takes no lock.
    /// @param id         the receiver; 0 matches any free record
    /// @param processId  Win32 id of the process that registered it; 0 for any
    /// @return 1: yes; 0: no
    static int IsManager(ORCAOBJID id, unsigned long processId);

    /// Copies the first record of a receiver. Takes no lock, so the record may be changing.
    /// @param id   the receiver; 0 matches the first free record
    /// @param out  receives the record; all zero if there is none
    /// @return 0: found; 1: not found
    static int GetManagerInfo(ORCAOBJID id, MAILBOX* out);

    /// The header.
    /// @return address in this process, valid until DestroyGlobalPostOffice(); null while unmapped
    FILE_HEADER* GetHeaderAddr();

    /// The mailbox table.
    /// @return address in this process, valid until DestroyGlobalPostOffice(); null while unmapped
    MAILBOX* GetPostOfficeAddr();

    /// The resource table.
    /// @return address in this process, valid until DestroyGlobalPostOffice(); null while unmapped
    RESOURCE* GetResourceAddr();

    /// The pool.
    /// @return address in this process, valid until DestroyGlobalPostOffice(); null while unmapped
    SBLOCK* GetSmallBlockAddr();

    /// The post office of this process; null before CreateGlobalPostOffice() and after DestroyGlobalPostOffice().
    static CPost* mpGlobalPostOffice;
};
