#include <foundation/Layout.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/identifier.h>
#include <tessel/foundation/memory.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/foundation/wait.h>
#include <tessel/foundation/window.h>

using tessel::kOn32Bits;

struct CSemaphoreLayout {
    static_assert(offsetof(CSemaphore, m_ulLastError) == sizeof(void*));
    static_assert(offsetof(CSemaphore, m_hSemaphore) == 2 * sizeof(void*));
    static_assert(sizeof(CSemaphore) == 3 * sizeof(void*));
};
static_assert(sizeof(CThreadLock) == sizeof(CSemaphore));

struct CEventLayout {
    static_assert(offsetof(CEvent, m_hEvent) == sizeof(void*));
    static_assert(sizeof(CEvent) == 2 * sizeof(void*));
};

struct CWaitLayout {
    static_assert(offsetof(CWait, m_ulSpare) == sizeof(void*));
    static_assert(offsetof(CWait, m_ulCount) == sizeof(void*) + 4);
    static_assert(!kOn32Bits || offsetof(CWait, m_pHandles) == 12);
    static_assert(!kOn32Bits || offsetof(CWait, m_Lock) == 16);
    static_assert(!kOn32Bits || sizeof(CWait) == 28);
};

struct CMemoryLayout {
    static_assert(offsetof(CMemory, m_hHandle) == sizeof(void*));
    static_assert(offsetof(CMemory, m_szName) == 3 * sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CMemory, m_pBuffer) == 532);
    static_assert(!kOn32Bits || offsetof(CMemory, m_iKind) == 540);
    static_assert(!kOn32Bits || offsetof(CMemory, m_ulReadCursor) == 548);
    static_assert(!kOn32Bits || offsetof(CMemory, m_ulRequestedSize) == 560);
    static_assert(!kOn32Bits || offsetof(CMemory, m_iNewFile) == 568);
    static_assert(!kOn32Bits || sizeof(CMemory) == 572);
};

struct COCuidLayout {
    static_assert(sizeof(OCUID) == 32);
    static_assert(offsetof(OCUID, Reserved) == 16);
    static_assert(offsetof(COCuid, m_Uid) == sizeof(void*));
    static_assert(offsetof(COCuid, m_szText) == sizeof(void*) + 32);
    static_assert(offsetof(COCuid, m_iPresent) == sizeof(void*) + 160);
};

static_assert(sizeof(ORCA_tagPOINT) == sizeof(POINT));
