#pragma once

#include <tessel/foundation/platform.h>

#include <cstdint>

/// Names a manager or another receiver of messages. The programs give the values; 0 names nobody.
enum ORCAOBJID : unsigned long {};

/// Kind of a shared resource. The programs give the values; 1 is a frame window, 2 a dialog.
enum RESOURCE_TYPE : unsigned long {};

/// Which resource of its kind. The programs give the values.
enum RESOURCE_ID : unsigned long {};

/// Monitor level of a manager. The programs give the values.
enum LEVEL : unsigned long {};

/// @name The shared region
/// Every process maps the same region, at an address of its own: tables are found by the offsets in the
/// header. All numbers are little-endian and of fixed width, so 32-bit and 64-bit programs share it.
///@{

/// Name of the paging-file mapping.
inline constexpr wchar_t POST_OFFICE_REGION_NAME[] = L"SysVarda";
/// Name of the semaphore that serialises the mailbox table and the pool between processes.
inline constexpr wchar_t POST_OFFICE_LOCK_NAME[] = L"FileSafe";
/// Records in the mailbox table; the first is never used by a registration.
inline constexpr std::uint16_t POST_OFFICE_MAILBOXES = 100;
/// Records in the resource table.
inline constexpr std::uint16_t POST_OFFICE_RESOURCES = 1024;
/// Blocks in the pool; the first is never handed out.
inline constexpr std::uint16_t SMALL_BLOCK_COUNT = 500;
/// Data bytes of a block. The longest message is one byte shorter.
inline constexpr std::uint16_t SMALL_BLOCK_SIZE = 5120;

/// Head of the region: where the tables are and how many blocks are free.
struct FILE_HEADER {
    std::uint32_t FileSize;       ///< bytes of the region
    std::uint16_t MailboxSize;    ///< bytes of one MAILBOX
    std::uint16_t MailboxCount;   ///< records in the mailbox table
    std::uint16_t MailboxesInUse; ///< registrations less unregistrations
    std::uint16_t Reserved1;      ///< 0
    std::uint32_t MailboxOffset;  ///< where the mailbox table starts
    std::uint16_t ResourceSize;   ///< bytes of one RESOURCE
    std::uint16_t ResourceCount;  ///< records in the resource table
    std::uint16_t ResourcesInUse; ///< 0; written at creation only
    std::uint16_t Reserved2;      ///< 0
    std::uint32_t ResourceOffset; ///< where the resource table starts
    std::uint16_t SmallBlkSize;   ///< data bytes of one block
    std::uint16_t SmallBlkCount;  ///< blocks in the pool
    std::uint16_t SmallBlksInUse; ///< 0; written at creation only
    std::uint16_t Reserved3;      ///< 0
    std::uint32_t SmallBlkOffset; ///< where the pool starts
    std::uint32_t FreeSmallBlks;  ///< free blocks, the one that is never handed out included
    std::uint32_t RecordFlag;     ///< CMailBox::SetRecordFlag()
};

/// A registered receiver of messages.
struct MAILBOX {
    std::uint16_t InUse;     ///< 0: free; 1: registered
    std::uint16_t Reserved;  ///< 0
    std::uint32_t ObjId;     ///< the receiver's ORCAOBJID; 0 in a free record
    std::uint32_t Level;     ///< the receiver's LEVEL
    std::uint32_t ProcessId; ///< Win32 id of the process that registered it
    std::uint32_t ThreadId;  ///< Win32 id of the thread that made the CMailBox
    std::uint32_t hWnd;      ///< window that gets the notifications
};

/// A registered resource; free while ThreadId is 0.
struct RESOURCE {
    std::uint32_t Type;      ///< RESOURCE_TYPE
    std::uint32_t Owner;     ///< value that its owner chose
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
    std::uint32_t MsgId;                 ///< the sender's message word
    std::uint32_t Length;                ///< bytes of the message plus one, a byte that is never written
    std::uint32_t Receiver;              ///< ORCAOBJID that it is addressed to
    std::uint32_t Sender;                ///< ORCAOBJID that sent it
    std::uint8_t Data[SMALL_BLOCK_SIZE]; ///< first part of the message, the second directly behind it
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

/// The process's view of the post office: the shared region, its lock, and who is registered in it.
///
/// It has no state of its own: every object speaks for the one post office that CreateGlobalPostOffice()
/// opened. CMailBox sends and receives, CResource keeps the resource table; both need it first.
///
/// Create it once, before the first CMailBox, and destroy it after the last one. Without it, or when the region
/// could not be mapped, addresses are null and nobody is found. Without it the lock cannot be taken either; after
/// the message box about the region it stays taken, so that waiting for it has no end.
/// Threads: any thread may call any operation, except that nobody may be using the post office while it
/// is created or destroyed. The lock is not re-entrant: who holds it and takes it again waits for itself.
class TESSEL_API CPostOffice {
public:
    /// Opens the machine's post office, or creates it when this process is the first.
    ///
    /// Waits at most 5 s for the lock, reports when it does not get it, goes on, and frees the lock in the end: one
    /// whose holder died is usable again, and one whose holder is slow protects it no longer. When the region can be
    /// neither opened nor created, a message box says so, the call returns when it is closed, and the lock stays
    /// taken. A region whose tables do not lie inside it is left alone: nothing is mapped then, which the first
    /// CMailBox tells. A second call loses the first post office without closing it; objects made with it go on.
    static void CreateGlobalPostOffice();

    /// Closes the post office; the region disappears with the last process that has it open.
    static void DestroyGlobalPostOffice();

    /// Takes the lock that every change of the mailbox table and the pool is made under.
    /// @param timeoutMs  milliseconds; INFINITE waits for ever
    /// @return 0: taken; 1: time-out or failure
    int LockThreadSafe(unsigned long timeoutMs);

    /// Frees the lock.
    void UnlockThreadSafe();

    /// Whether a receiver is registered. Takes no lock.
    /// @param id         the receiver; 0 is found in any free record
    /// @param processId  Win32 id of the process that must have registered it; 0 for any
    /// @return 1: it is; 0: it is not
    static int IsManager(ORCAOBJID id, unsigned long processId);

    /// Copies a receiver's record, the first in the table. Takes no lock, so the record may be changing.
    /// @param id   the receiver; 0 is found in the first free record
    /// @param out  receives the record; all zero when there is none
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

    /// The post office of this process; null before CreateGlobalPostOffice() and after the destruction.
    static CPost* mpGlobalPostOffice;
};
