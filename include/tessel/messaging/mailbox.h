#pragma once

#include <tessel/messaging/postoffice.h>

#include <array>
#include <span>

namespace tessel {
class Census;
struct JOURNAL;
struct PoolReports;
} // namespace tessel

/// Window message that notifies a receiver of a message; lParam is the block's number, wParam 0.
inline constexpr unsigned int MAILBOX_NOTIFICATION = 0x800B;

/// wParam of a notification that CMailBox::TakeOver() posted: the message had been fetched by a receiver that ended
/// before releasing it, so it may have been handled already.
inline constexpr WPARAM MAILBOX_AGAIN = 1;

/// One message of a batch.
struct OUTGOING_MESSAGE {
    unsigned long msgId;       ///< message word, delivered unchanged
    unsigned long length;      ///< bytes, at most SMALL_BLOCK_SIZE - 1
    const unsigned char* data; ///< the message; may be null when @ref length is 0
};

/// What CMailBox::SweepDead() has removed.
struct SWEPT {
    unsigned short registrations; ///< of receivers
    unsigned short resources;     ///< entries of the resource table
    unsigned short blocks;        ///< messages that nobody will fetch or release
};

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
/// block in place and releases it, by means of CMail:
/// @code
/// case MAILBOX_NOTIFICATION: { // ownId: the id of the mailbox
///     const CMail mail(mailbox, ownId, wParam, lParam);
///     if (mail) Handle(mail.MsgId(), mail.Data());
///     break;
/// }
/// @endcode
/// Length counts an extra byte that is never written.
/// Once its notification is posted, a block belongs to the receiver; the sender does not touch it again. Messages that
/// one sender sends to one receiver arrive in order, but see TakeOver().
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
/// the operations documented to take no lock. Reports are made after the lock has been released, except by
/// AllocateSmallBlock(), during which a sink must not send, release or wait.
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
    /// CleanUp() no longer finds them: call CMail::ReleaseWaiting() before the window is destroyed.
    /// @return 0: done; 1: not registered, or no post office
    int UnregisterMailbox();

    /// Finds a receiver: preferably one of this process, else the one in the highest slot. Takes no lock.
    /// @param id    the receiver
    /// @param slot  receives its slot, even if the record has no window; 0 if there is none
    /// @return its window; null if there is none
    HWND GetMailBox(ORCAOBJID id, unsigned short& slot);

    /// Sends a message of two parts, which arrive as one.
    ///
    /// If the pool is full, it retries every millisecond, 100 times in all, and then once more after SweepDead().
    /// Reports when less than 10 % of the pool is free; the next such report is made only after more than 50 % were
    /// free.
    /// @param to            the receiver
    /// @param msgId         message word, delivered unchanged
    /// @param firstLength   bytes of the first part
    /// @param firstData     first part; may be null when @p firstLength is 0
    /// @param secondLength  bytes of the second part
    /// @param secondData    second part; if null, its bytes count and their content is undefined
    /// @return STATUS_OK: posted. ERROR_SERVICE_NOT_FOUND (1243): no such receiver. ERROR_NOT_ENOUGH_MEMORY (8):
    ///         longer than 5,119 bytes. ERROR_BUSY (170): the pool stayed full, or LimitWaiting() messages wait for
    ///         the receiver, which is returned at once. ERROR_INVALID_PARAMETER (87): a
    ///         null first part with a length. ERROR_INVALID_HANDLE (6): the lock is broken. Else the Win32 error of
    ///         posting, such as ERROR_INVALID_WINDOW_HANDLE (1400). After any failure nothing is allocated.
    int Send(ORCAOBJID to, unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
             unsigned long secondLength, const unsigned char* secondData);

    /// Sends like Send(), but retries until a time-out instead of 100 times.
    ///
    /// A release wakes it where both sides know the journal; otherwise it retries every 20 ms.
    /// @param timeoutMs     milliseconds; 0 tries once, INFINITE retries indefinitely
    /// @param to            the receiver
    /// @param msgId         message word, delivered unchanged
    /// @param firstLength   bytes of the first part
    /// @param firstData     first part; may be null when @p firstLength is 0
    /// @param secondLength  bytes of the second part
    /// @param secondData    second part; if null, its bytes count and their content is undefined
    /// @return as Send()
    int SendWithin(unsigned long timeoutMs, ORCAOBJID to, unsigned long msgId, unsigned long firstLength,
                   const unsigned char* firstData, unsigned long secondLength, const unsigned char* secondData);

    /// Sends a batch of messages to one receiver, in order, with one acquisition of the lock. Does not retry.
    /// @param to        the receiver
    /// @param messages  the messages
    /// @param count     how many
    /// @param sent      receives how many were posted; the others were not sent
    /// @return STATUS_OK: all were posted. ERROR_BUSY (170): the pool, or the receiver's limit, has room only for
    ///         @p sent. Else as Send(); nothing is sent if one message is too long or null.
    int SendMany(ORCAOBJID to, const OUTGOING_MESSAGE* messages, unsigned short count, unsigned short& sent);

    /// Answers a message in its own block, to its sender: without the lock, and without releasing and allocating a
    /// block. The receiver's limit does not apply.
    /// @param block         a received block. After success it belongs to the receiver of the answer; after a failure
    ///                      the caller releases it, and its content is lost if posting failed
    /// @param msgId         message word, delivered unchanged
    /// @param firstLength   bytes of the first part
    /// @param firstData     first part, which may lie in the block; may be null when @p firstLength is 0
    /// @param secondLength  bytes of the second part
    /// @param secondData    second part, not in the block; if null, its bytes count and their content is undefined
    /// @return as Send(); ERROR_INVALID_PARAMETER (87) also if the block was not received by this mailbox
    int Reply(SBLOCK* block, unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
              unsigned long secondLength, const unsigned char* secondData);

    /// Limits how many messages may wait for this receiver until it releases their blocks, so that it cannot fill the
    /// pool for all others. Applies to the current registration. Takes no lock.
    /// @param most  messages; 0: any number, as at the start
    /// @return 0: set; 1: not registered, or no journal
    int LimitWaiting(unsigned short most);

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

    /// Returns several blocks to the pool with one acquisition of the lock. Reports each that ReleaseMemory() would.
    /// @param blocks  received blocks
    /// @param count   how many
    /// @return how many were released
    unsigned short ReleaseMany(SBLOCK* const* blocks, unsigned short count);

    /// The block with a number. Takes no lock. Notes that the message has been fetched, if it was sent to this mailbox.
    /// @param index  number of the block
    /// @return the block, in the pool's memory; null if there is none
    SBLOCK* GetMessageBlock(unsigned int index);

    /// The address of the block with a number, unchecked; GetMessageBlock() checks it. Notes the same.
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

    /// Removes the registrations, resources and blocks of processes that have ended, while all others go on working.
    ///
    /// A message whose sender ended while posting it may or may not be in the receiver's queue. It is removed by the
    /// first sweep after that one which found the sender ended, and after the receiver has fetched a later message.
    /// Messages that programs without a journal sent stay until CleanUp(). Any process may call it, at any time.
    /// @return what it removed
    SWEPT SweepDead();

    /// Posts to this mailbox's window what waits for an ended receiver of the same id, in the order in which it was
    /// sent, and ends the registrations of such receivers. Call it right after RegisterMailbox(), before a sweep
    /// removes these messages; messages sent since the registration come before them. Those that the ended receiver had
    /// fetched and not released come with wParam MAILBOX_AGAIN.
    /// @return how many messages were posted; 0 also if not registered
    unsigned short TakeOver();

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
    using BlockNumbers = std::array<unsigned short, SMALL_BLOCK_COUNT>;

    bool IsMapped();
    unsigned short MailboxCount();
    void FreeSlot(unsigned short slot);
    HWND LivingMailBox(ORCAOBJID id, HWND found, unsigned short& slot);
    bool IsThisProcess(unsigned short slot);

    int Address(Message& message);
    bool FindReceiver(Message& message);
    bool IsStillAt(const Message& message);
    int CheckParts(const Message& message);
    int DeliverOrRedirect(Message& message);
    int Deliver(const Message& message);
    int SendAfterSweep(const Message& message);
    int Post(HWND receiver, SBLOCK& block);
    void AwaitRoom(unsigned long mostMs);

    int AllocateForSend(const Message& message, SBLOCK*& block);
    int AllocateUnderLock(const Message& message, SBLOCK*& block, tessel::PoolReports& reports);
    int Allocate(unsigned long length, unsigned short receiverSlot, SBLOCK*& block, tessel::PoolReports& reports);
    unsigned short AllocateMany(const Message& receiver, std::span<const OUTGOING_MESSAGE> batch, BlockNumbers& blocks,
                                int& status);
    int PostMany(const Message& receiver, std::span<const OUTGOING_MESSAGE> batch, const BlockNumbers& blocks,
                 unsigned short& sent);
    unsigned short ClaimBlock();
    bool IsReceiverFull(unsigned short slot);
    bool IsNewlyLow();
    unsigned short FreeUnderLock(std::span<SBLOCK* const> blocks);
    bool FreeBlock(SBLOCK& block, tessel::PoolReports& reports);
    void FreeBlocksOf(unsigned long receiver, tessel::PoolReports& reports);
    void NoteFetch(unsigned int index);
    unsigned short NumberOf(const SBLOCK& block);
    bool IsBlockOfPool(const SBLOCK* block);

    bool IsTaken(unsigned short slot);
    void TakeCensus(const tessel::JOURNAL& journal, tessel::Census& census);
    unsigned short FreeSlotsOfEnded(const tessel::Census& census, ORCAOBJID onlyId);
    unsigned short CollectLeft(tessel::JOURNAL& journal, const tessel::Census& census, BlockNumbers& blocks);

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
