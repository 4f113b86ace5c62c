#pragma once

#include <tessel/messaging/postoffice.h>

/// Window message that tells a receiver of a message; lParam is the block's number, wParam 0.
inline constexpr unsigned int MAILBOX_NOTIFICATION = 0x800B;

/// One line of the directory of receivers: who is registered, and the monitor level.
struct MONITOR_LEVEL {
    std::uint32_t ObjId; ///< the receiver's ORCAOBJID
    std::uint32_t Level; ///< its LEVEL
};
static_assert(sizeof(MONITOR_LEVEL) == 8);

/// Sends messages to any receiver of the machine, and receives those to its own.
///
/// A receiver registers its window. A sender finds it by its ORCAOBJID, copies the message into a free block of
/// the shared pool, and posts MAILBOX_NOTIFICATION with the block's number to that window, whose procedure
/// reads the block in place and releases it:
/// @code
/// case MAILBOX_NOTIFICATION: { // ownId: whom the mailbox is for
///     SBLOCK* const block = mailbox.GetMessageBlock(LOWORD(lParam));
///     if (block == nullptr || block->BlkNum != LOWORD(lParam) || block->Receiver != ownId) break; // forged, or swept
///     const unsigned long length = *const_cast<const volatile std::uint32_t*>(&block->Length); // anyone can change it
///     if (length >= 1 && length <= SMALL_BLOCK_SIZE) handle(block->MsgId, block->Data, length - 1);
///     mailbox.ReleaseMemory(block);
///     break;
/// }
/// @endcode
/// Length counts an extra byte that is never written.
/// A block belongs to the receiver from the moment that its notification is posted; the sender does not touch it
/// again. Messages that were sent one after the other to one receiver arrive in that order.
///
/// Limits: 99 registrations and 499 messages under way on the machine, SMALL_BLOCK_SIZE - 1 bytes in a message.
///
/// Order: CPostOffice::CreateGlobalPostOffice() first; destroy every mailbox before DestroyGlobalPostOffice().
/// One that is used after that touches nothing and gives its failure values; should another post office be mapped
/// at the same address by then, it works on that one, with its old slot.
/// Copies share the registration by its slot, and each of them would end it: pass by pointer or reference.
/// Threads: any thread may send and release; the calls that register, unregister, copy and assign one object must
/// not overlap with others. A call waits for the lock as long as it takes.
/// Every change is made under the post office's lock, so a caller that holds it must call only
/// AllocateSmallBlock() and the operations that are said to take no lock. What is reported about the pool and the size
/// of messages is reported under it: a sink must neither send, nor release, nor wait.
class TESSEL_API CMailBox {
public:
    /// Makes an unregistered mailbox. Without a mapped post office, a message box says so and nothing can be sent.
    /// @param id  who sends and receives through it
    explicit CMailBox(ORCAOBJID id);

    /// Copies every field, the slot included: both objects then claim one registration.
    CMailBox(const CMailBox&) = default;

    /// Copies every field, the slot included; a registration held before is forgotten.
    /// @return this object
    CMailBox& operator=(const CMailBox&) = default;

    /// Unregisters the mailbox if it is registered.
    virtual ~CMailBox();

    /// Registers the mailbox in the first free slot. A second call takes a second slot and forgets the first.
    /// @param hWnd  window that gets the notifications; stays the caller's and must outlive the registration
    /// @return 0: registered; 1: no slot is free, or no post office
    int RegisterMailbox(HWND hWnd);

    /// Takes the registration back. Messages whose notifications still wait in the window's queue keep their blocks,
    /// and CleanUp() does not find them any more: take and release them before the window goes.
    /// @return 0: done; 1: it was not registered, or no post office
    int UnregisterMailbox();

    /// Finds a receiver: one of this process first, else the one in the highest slot. Takes no lock.
    /// @param id    the receiver
    /// @param slot  receives its slot, also that of a record without a window; 0 when there is none
    /// @return its window; null when there is none
    HWND GetMailBox(ORCAOBJID id, unsigned short& slot);

    /// Sends a message of two parts, which arrive as one.
    ///
    /// When the pool is full, it tries again every millisecond, 100 times in all. The first time that less than
    /// 10 % of the pool is free, that is reported, and again after more than 50 % were free in between.
    /// @param to            the receiver
    /// @param msgId         message word, which arrives unchanged
    /// @param firstLength   bytes of the first part
    /// @param firstData     first part; may be null when @p firstLength is 0
    /// @param secondLength  bytes of the second part
    /// @param secondData    second part; when it is null, its bytes are counted and their content is undefined
    /// @return STATUS_OK: posted. ERROR_SERVICE_NOT_FOUND (1243): no such receiver. ERROR_NOT_ENOUGH_MEMORY (8):
    ///         longer than 5,119 bytes. ERROR_BUSY (170): the pool stayed full. ERROR_INVALID_PARAMETER (87): a
    ///         null first part with a length. ERROR_INVALID_HANDLE (6): the lock is broken. Else the Win32 error of
    ///         posting, such as ERROR_INVALID_WINDOW_HANDLE (1400). After any failure nothing is allocated.
    int Send(ORCAOBJID to, unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
             unsigned long secondLength, const unsigned char* secondData);

    /// Takes a block from the pool; Send() is the way to use it. The caller holds the post office's lock and counts
    /// FreeSmallBlks down. The block that this process allocated last is not looked at: while it is the only
    /// free one, the pool counts as full.
    /// @param length        bytes of the message plus one
    /// @param receiverSlot  slot of the receiver
    /// @param block         receives the block; null after a failure
    /// @return STATUS_OK; ERROR_NOT_ENOUGH_MEMORY (8): too long, or no post office; ERROR_BUSY (170): the pool is
    ///         full; ERROR_SERVICE_NOT_FOUND (1243): no such slot
    int AllocateSmallBlock(unsigned long length, unsigned short receiverSlot, SBLOCK*& block);

    /// Gives a block back to the pool.
    /// @param block  a block that was received
    /// @return 0: free; 1: null, no block of this object's pool, or free already (each reported)
    int ReleaseMemory(SBLOCK* block);

    /// The block of that number. Takes no lock.
    /// @param index  number of the block
    /// @return the block, in the pool's memory; null when there is no such block
    SBLOCK* GetMessageBlock(unsigned int index);

    /// The address where the block of that number would be, without a check: GetMessageBlock() has one.
    /// @param index  number of the block
    /// @return the address; null without a post office
    SBLOCK* GetDirectMessage(unsigned short index);

    /// The own record; slot 0's while unregistered.
    /// @return the record, in the table's memory; null without a post office
    MAILBOX* GetMailboxAddr();

    /// Clears the machine of every registration but one: its resources, the blocks addressed to it, and
    /// its record. For a process that supervises the others, when they have ended: a message that one of them is
    /// just sending or reading would be lost. MailboxesInUse is not counted down.
    /// @param keep  whose registrations stay
    /// @return 0
    int CleanUp(ORCAOBJID keep);

    /// Lists who is registered, in the order of the slots. Takes no lock.
    /// @param list  receives the entries
    /// @param max   room in @p list, in entries
    /// @return entries written
    unsigned short BuildDirectoryList(MONITOR_LEVEL* list, int max);

    /// Sets the monitor level of the first registration of the own id. Takes no lock.
    /// @param level  the new level
    /// @return 0: set; 1: the own id is not registered
    int UpdateMonitorLevel(LEVEL level);

    /// Whether less than 10 % of the pool is free. Takes no lock.
    /// @return 1 or 0
    int MsgResourcesLow();

    /// Whether more than 50 % of the pool is free. Takes no lock.
    /// @return 1 or 0
    int MsgResourcesHigh();

    /// Free blocks, the one that is never handed out included. Takes no lock.
    /// @return the count; 0 without a post office
    unsigned long GetFreeBlockCount();

    /// The machine-wide flag, to which the programs give its meaning. Takes no lock.
    /// @return the flag; 0 without a post office
    int GetRecordFlag();

    /// Sets the machine-wide flag, where there is a post office. Takes no lock.
    /// @param flag  new value
    /// @return 0
    int SetRecordFlag(int flag);

private:
    friend struct CMailBoxLayout;
    struct Message;

    bool IsMapped();
    unsigned short MailboxCount();
    int Deliver(const Message& message);
    int AllocateForSend(const Message& message, SBLOCK*& block);
    void WatchFreeBlocks();
    bool FreeUnderLock(SBLOCK& block);
    bool FreeBlock(SBLOCK& block);
    void FreeBlocksOf(unsigned long receiver);
    bool IsBlockOfPool(const SBLOCK* block);

    CPostOffice m_PostOffice;
    FILE_HEADER* m_pHeader;
    MAILBOX* m_pMailboxes;
    SBLOCK* m_pSmallBlocks;
    unsigned long m_ulThreadId;
    unsigned long m_ulProcessId;
    ORCAOBJID m_OwnId;
    unsigned short m_usMailboxCount;
    unsigned short m_usBlockCount;
    unsigned short m_usLowWater;
    unsigned short m_usHighWater;
    unsigned long m_ulSpare1;
    unsigned short m_usSlot;
    unsigned long m_ulSpare2;
};
