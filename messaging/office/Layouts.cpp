#include <foundation/Layout.h>
#include <messaging/office/Post.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/messaging/resource.h>

using tessel::kOn32Bits;

// The region is shared by 32-bit and 64-bit programs: its layout is the same for both.
static_assert(offsetof(FILE_HEADER, MailboxSize) == 4);
static_assert(offsetof(FILE_HEADER, MailboxCount) == 6);
static_assert(offsetof(FILE_HEADER, MailboxesInUse) == 8);
static_assert(offsetof(FILE_HEADER, MailboxOffset) == 12);
static_assert(offsetof(FILE_HEADER, ResourceSize) == 16);
static_assert(offsetof(FILE_HEADER, ResourceCount) == 18);
static_assert(offsetof(FILE_HEADER, ResourcesInUse) == 20);
static_assert(offsetof(FILE_HEADER, ResourceOffset) == 24);
static_assert(offsetof(FILE_HEADER, SmallBlkSize) == 28);
static_assert(offsetof(FILE_HEADER, SmallBlkCount) == 30);
static_assert(offsetof(FILE_HEADER, SmallBlksInUse) == 32);
static_assert(offsetof(FILE_HEADER, SmallBlkOffset) == 36);
static_assert(offsetof(FILE_HEADER, FreeSmallBlks) == 40);
static_assert(offsetof(FILE_HEADER, RecordFlag) == 44);
static_assert(sizeof(FILE_HEADER) == 48);

static_assert(offsetof(MAILBOX, ObjId) == 4);
static_assert(offsetof(MAILBOX, Level) == 8);
static_assert(offsetof(MAILBOX, ProcessId) == 12);
static_assert(offsetof(MAILBOX, ThreadId) == 16);
static_assert(offsetof(MAILBOX, hWnd) == 20);
static_assert(sizeof(MAILBOX) == 24);

static_assert(offsetof(RESOURCE, Owner) == 4);
static_assert(offsetof(RESOURCE, ThreadId) == 8);
static_assert(offsetof(RESOURCE, ProcessId) == 12);
static_assert(offsetof(RESOURCE, Id) == 16);
static_assert(offsetof(RESOURCE, hWnd) == 20);
static_assert(sizeof(RESOURCE) == 24);

static_assert(offsetof(SBLOCK, RefCount) == 4);
static_assert(offsetof(SBLOCK, Reserved) == 8);
static_assert(offsetof(SBLOCK, MsgId) == 12);
static_assert(offsetof(SBLOCK, Length) == 16);
static_assert(offsetof(SBLOCK, Receiver) == 20);
static_assert(offsetof(SBLOCK, Sender) == 24);
static_assert(offsetof(SBLOCK, Data) == 28);
static_assert(sizeof(SBLOCK) == 5148);

static_assert(RESOURCE_TABLE_OFFSET == 2448);
static_assert(SMALL_BLOCK_OFFSET == 27024);
static_assert(POST_OFFICE_REGION_SIZE == 2601024);

// So is that of the journal.
static_assert(offsetof(tessel::JOURNAL, roomWanted) == 4);
static_assert(offsetof(tessel::JOURNAL, lock) == 8);
static_assert(offsetof(tessel::JOURNAL, change) == 16);
static_assert(offsetof(tessel::JOURNAL, sequence) == 32);
static_assert(offsetof(tessel::JOURNAL, mailboxes) == 40);
static_assert(sizeof(tessel::MAILBOX_NOTE) == 32);
static_assert(offsetof(tessel::JOURNAL, blocks) == 3240);
static_assert(sizeof(tessel::BLOCK_NOTE) == 48);
static_assert(offsetof(tessel::JOURNAL, resources) == 27240);
static_assert(sizeof(tessel::JOURNAL) == 35432);

struct CPostLayout {
    static_assert(offsetof(CPost, m_pLock) == 0);
    static_assert(offsetof(CPost, m_hMapping) == sizeof(void*));
    static_assert(offsetof(CPost, m_pBase) == 2 * sizeof(void*));
    static_assert(offsetof(CPost, m_pHeader) == 3 * sizeof(void*));
    static_assert(offsetof(CPost, m_pMailboxes) == 4 * sizeof(void*));
    static_assert(offsetof(CPost, m_pResources) == 5 * sizeof(void*));
    static_assert(offsetof(CPost, m_pSmallBlocks) == 6 * sizeof(void*));
};

struct CMailBoxLayout {
    static_assert(!kOn32Bits || offsetof(CMailBox, m_PostOffice) == 4);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_pHeader) == 8);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_pMailboxes) == 12);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_pSmallBlocks) == 16);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_ulThreadId) == 20);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_ulProcessId) == 24);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_OwnId) == 28);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_usMailboxCount) == 32);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_usBlockCount) == 34);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_usLowWater) == 36);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_usHighWater) == 38);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_ulSpare1) == 40);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_usSlot) == 44);
    static_assert(!kOn32Bits || offsetof(CMailBox, m_ulSpare2) == 48);
    static_assert(!kOn32Bits || sizeof(CMailBox) == 52);
};

struct CResourceLayout {
    static_assert(offsetof(CResource, m_ulThreadId) == sizeof(void*));
    static_assert(offsetof(CResource, m_ulProcessId) == sizeof(void*) + 4);
    static_assert(offsetof(CResource, m_pResources) == sizeof(void*) + 8);
    static_assert(sizeof(CResource) == 2 * sizeof(void*) + 8);
};
