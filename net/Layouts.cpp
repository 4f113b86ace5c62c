#include <foundation/Layout.h>
#include <net/Winsock.h>
#include <tessel/net.h>

using tessel::kOn32Bits;

struct CCommMsgLayout {
    static_assert(offsetof(CCommMsg, m_ulLength) == sizeof(void*));
    static_assert(!kOn32Bits || sizeof(CCommMsg) == 8);
};

struct CEtherAddrLayout {
    static_assert(offsetof(CEtherAddr, m_ulStatus) == sizeof(void*));
    static_assert(offsetof(CEtherAddr, m_aBinary) == sizeof(void*) + 4);
    static_assert(offsetof(CEtherAddr, m_szText) == sizeof(void*) + 10);
    static_assert(offsetof(CEtherAddr, m_szServiceName) == sizeof(void*) + 36);
    static_assert(!kOn32Bits || sizeof(CEtherAddr) == 168);
};

struct CIpAddressLayout {
    static_assert(offsetof(CIpAddress, m_ulAddress) == sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CIpAddress, m_pNarrow) == 8);
    static_assert(!kOn32Bits || offsetof(CIpAddress, m_pWide) == 12);
    static_assert(!kOn32Bits || sizeof(CIpAddress) == 16);
};

struct CMailslotLayout {
    static_assert(offsetof(CMailslot, m_hMailslot) == sizeof(void*));
    static_assert(offsetof(CMailslot, m_bReadingEnd) == 2 * sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CMailslot, m_ulLastError) == 12);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_Overlapped) == 16);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_bPending) == 36);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_szName) == 40);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_ulNameLen) == 44);
    static_assert(!kOn32Bits || sizeof(CMailslot) == 48);
};

struct CMsgSocketLayout {
    static_assert(offsetof(CMsgSocket, m_pBuffer) == sizeof(CSocket));
    static_assert(offsetof(CMsgSocket, m_uiCapacity) == sizeof(CSocket) + sizeof(void*));
    static_assert(offsetof(CMsgSocket, m_uiFilled) == sizeof(CSocket) + sizeof(void*) + 4);
};

struct CNamedPipeLayout {
    static_assert(offsetof(CClientNamedPipe, m_szName) == sizeof(void*));
    static_assert(offsetof(CClientNamedPipe, m_szPath) == sizeof(void*) + 40);
    static_assert(offsetof(CClientNamedPipe, m_ulStatus) == sizeof(void*) + 560);
    static_assert(!kOn32Bits || offsetof(CClientNamedPipe, m_hPipe) == 568);
    static_assert(!kOn32Bits || offsetof(CClientNamedPipe, m_bOverlapped) == 572);
    static_assert(!kOn32Bits || offsetof(CClientNamedPipe, m_Overlapped) == 576);
    static_assert(!kOn32Bits || offsetof(CClientNamedPipe, m_pOverlapped) == 596);
    static_assert(!kOn32Bits || offsetof(CClientNamedPipe, m_bPending) == 600);
    static_assert(sizeof(CServerNamedPipe) == sizeof(CClientNamedPipe));
};

struct CNetworkIdLayout {
    static_assert(offsetof(CNetworkId, m_szAdapterKey) == sizeof(void*));
    static_assert(offsetof(CNetworkId, m_ulDhcp) == sizeof(void*) + 1024);
    static_assert(!kOn32Bits || offsetof(CNetworkId, m_Registry) == 1032);
};

struct CNetworkShareLayout {
    static_assert(offsetof(CNetworkShare, m_szConnection) == sizeof(void*));
    static_assert(offsetof(CNetworkShare, m_bCloseOnDestruction) == 2 * sizeof(void*));
};

struct CSecurityFilterNTLayout {
    static_assert(offsetof(CSecurityFilterNT, m_pImplementation) == sizeof(void*));
    static_assert(sizeof(CSecurityFilterNT) == 2 * sizeof(void*));
};

struct CSocketLayout {
    static_assert(offsetof(CSocket, m_Mode) == sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CSocket, m_hEvent) == 8);
    static_assert(!kOn32Bits || offsetof(CSocket, m_hWindow) == 12);
    static_assert(!kOn32Bits || offsetof(CSocket, m_ulLocalAddress) == 16);
    static_assert(!kOn32Bits || offsetof(CSocket, m_Socket) == 20);
    static_assert(!kOn32Bits || offsetof(CSocket, m_bConnected) == 24);
    static_assert(!kOn32Bits || offsetof(CSocket, m_usPort) == 26);
    static_assert(!kOn32Bits || offsetof(CSocket, m_ulTimeout) == 28);
    static_assert(!kOn32Bits || offsetof(CSocket, m_pExtra) == 32);
    static_assert(!kOn32Bits || sizeof(CSocket) == 36);
};

// On the wire.
static_assert(sizeof(MESSAGE) == 10);
static_assert(offsetof(MESSAGE, ulDataLength) == 4);
static_assert(offsetof(MESSAGE, usType) == 8);

// Both bitnesses get the same entries from the system.
static_assert(sizeof(INTERFACE_INFO) == 76);
