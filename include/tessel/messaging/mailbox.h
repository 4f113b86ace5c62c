#pragma once

#include <tessel/messaging/postoffice.h>

/// Window message that notifies a receiver of a message; lParam is the block's number, wParam 0.
inline constexpr unsigned int MAILBOX_NOTIFICATION = 0x800B;

/// One entry of the directory of receivers.
struct MONITOR_LEVEL {
    std::uint32_t ObjId; ///< the receiver's ORCAOBJID
    std::uint32_t Level; ///< its LEVEL
};
static_assert(sizeof(MONITOR_LEVEL) == 8);

/// Sends messages to any receiver in the post office, and receives the messages addressed to its own id.
///
/// A receiver registers its window. A sender finds the window by its ORCAOBJID, copies the message into a free block
/// of the shared pool, and posts MAILBOX_NOTIFICATION with the block's number to the window, whose procedure reads the
/// block in place and releases it:
/// @code
/// case MAILBOX_NOTIFICATION: { // ownId: the id of the mailbox
///     SBLOCK* const block = mailbox.GetMessageBlock(LOWORD(lParam));
///     if (block == nullptr || block->BlkNum != LOWORD(lParam) || block->Receiver != ownId) break; // forged, or swept
///     const unsigned long length = *const_cast<const volatile std::uint32_t*>(&block->Length); // anyone can change it
///     if (length >= 1 && length <= SMALL_BLOCK_SIZE) handle(block->MsgId, block->Data, length - 1);
///     mailbox.ReleaseMemory(block);
///     break;
/// }
/// @endcode
/// Length counts an extra byte that is never written.
/// Once its notification is posted, a block belongs to the receiver; the sender does not touch it again. Messages that
/// one sender sends to one receiver arrive in order.
///
/// Limits: 99 registrations and 499 messages in transit per post office, SMALL_BLOCK_SIZE - 1 bytes per message. There
/// is one post office per logon session: processes of other sessions, such as services, are not reached.
///
/// Order: CPostOffice::CreateGlobalPostOffice() first; destroy every mailbox before DestroyGlobalPostOffice(). After
/// that, a mailbox does nothing and returns its failure values; but if another post office is then mapped at the same
/// address, it works on that one, with its old slot.
/// Copies share the registration by its slot, and each copy would end it: pass by pointer or reference.
/// Threads: any thread may send and release; calls that register, unregister, copy or assign an object must not overlap
/// with others. A call waits for the lock without a time-out.
/// Every change is made under the post office's lock. A caller that holds it must call only AllocateSmallBlock() and
/// the operations documented to take no lock. Reports about the pool and the size of messages are made under the lock:
/// a sink must not send, release or wait.
class TESSEL_API CMailBox {
public:
    /// Creates an unregistered mailbox. Without a mapped post office, a message box says so and nothing can be sent.
    /// @param id  id that sends and receives through the mailbox
    explicit CMailBox(ORCAOBJID id);

    /// Copies every field, including the slot: both objects then claim one registration.
    CMailBox(const CMailBox&) = default;

    /// Copies every field, including the slot; a previous registration is abandoned.
    /// @return this object
    CMailBox& operator=(const CMailBox&) = default;

    /// Unregisters the mailbox if it is registered.
    virtual ~CMailBox();

    /// Registers the mailbox in the first free slot. A second call takes a second slot and abandons the first.
    /// @param hWnd  window that receives the notifications; owned by the caller, must outlive the registration
    /// @return 0: registered; 1: no slot is free, or no post office
    int RegisterMailbox(HWND hWnd);

    /// Ends the registration. Messages whose notifications are still in the window's queue keep their blocks, and
    /// CleanUp() no longer finds them: take and release them before the window is destroyed.
    /// @return 0: done; 1: not registered, or no post office
    int UnregisterMailbox();

    /// Finds a receiver: preferably one of this process, else the one in the highest slot. Takes no lock.
    /// @param id    the receiver
    /// @param slot  receives its slot, even if the record has no window; 0 if there is none
    /// @return its window; null if there is none
    HWND GetMailBox(ORCAOBJID id, unsigned short& slot);

    /// Sends a message of two parts, which arrive as one.
    ///
    /// If the pool is full, it retries every millisecond, 100 times in all. Reports when less than 10 % of the pool is
    /// free; the next such report is made only after more than 50 % were free.
    /// @param to            the receiver
    /// @param msgId         message word, delivered unchanged
    /// @param firstLength   bytes of the first part
    /// @param firstData     first part; may be null when @p firstLength is 0
    /// @param secondLength  bytes of the second part
    /// @param secondData    second part; if null, its bytes count and their content is undefined
    /// @return STATUS_OK: posted. ERROR_SERVICE_NOT_FOUND (1243): no such receiver. ERROR_NOT_ENOUGH_MEMORY (8):
    ///         longer than 5,119 bytes. ERROR_BUSY (170): the pool stayed full. ERROR_INVALID_PARAMETER (87): a
    ///         null first part with a length. ERROR_INVALID_HANDLE (6): the lock is broken. Else the Win32 error of
    ///         posting, such as ERROR_INVALID_WINDOW_HANDLE (1400). After any failure nothing is allocated.
    int Send(ORCAOBJID to, unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
             unsigned long secondLength, const unsigned char* secondData);

    /// Allocates a block; use Send() instead. The caller holds the post office's lock and decrements FreeSmallBlks. The
    /// block that this process allocated last is skipped: if it is the only free one, the pool counts as full.
    /// @param length        bytes of the message plus one
    /// @param receiverSlot  slot of the receiver
    /// @param block         receives the block; null after a failure
    /// @return STATUS_OK; ERROR_NOT_ENOUGH_MEMORY (8): too long, or no post office; ERROR_BUSY (170): the pool is
    ///         full; ERROR_SERVICE_NOT_FOUND (1243): no such slot
    int AllocateSmallBlock(unsigned long length, unsigned short receiverSlot, SBLOCK*& block);

    /// Returns a block to the pool.
    /// @param block  a received block
    /// @return 0: released; 1: null, not a block of the pool, or already free (each reported)
    int ReleaseMemory(SBLOCK* block);

    /// The block with a number. Takes no lock.
    /// @param index  number of the block
    /// @return the block, in the pool's memory; null if there is none
    SBLOCK* GetMessageBlock(unsigned int index);

    /// The address of the block with a number, unchecked; GetMessageBlock() checks it.
    /// @param index  number of the block
    /// @return the address; null without a post office
    SBLOCK* GetDirectMessage(unsigned short index);

    /// The mailbox's own record; that of slot 0 while unregistered.
    /// @return the record, in the table's memory; null without a post office
    MAILBOX* GetMailboxAddr();

    /// Removes every registration except those of one id, with the resources of its process and the blocks addressed to
    /// it. For a supervising process when all others have ended: a message that one of them is sending or reading would
    /// be lost. Does not decrement MailboxesInUse.
    /// @param keep  id whose registrations stay
    /// @return 0
    int CleanUp(ORCAOBJID keep);

    /// Lists the registered receivers in the order of their slots. Takes no lock.
    /// @param list  receives the entries
    /// @param max   size of @p list in entries
    /// @return entries written
    unsigned short BuildDirectoryList(MONITOR_LEVEL* list, int max);

    /// Sets the monitor level of the first registration of this mailbox's id. Takes no lock.
    /// @param level  the new level
    /// @return 0: set; 1: the id is not registered
    int UpdateMonitorLevel(LEVEL level);

    /// Whether less than 10 % of the pool is free. Takes no lock.
    /// @return 1 or 0
    int MsgResourcesLow();

    /// Whether more than 50 % of the pool is free. Takes no lock.
    /// @return 1 or 0
    int MsgResourcesHigh();

    /// Free blocks, including the one that is never allocated. Takes no lock.
    /// @return the count; 0 without a post office
    unsigned long GetFreeBlockCount();

    /// The flag shared by all programs, which define its meaning. Takes no lock.
    /// @return the flag; 0 without a post office
    int GetRecordFlag();

    /// Sets the flag shared by all programs, if there is a post office. Takes no lock.
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
