#include <foundation/SharedOwners.h>
#include <net/RecordCutter.h>
#include <net/Winsock.h>
#include <tessel/net/commmsg.h>
#include <tessel/net/msgsocket.h>

#include <cstring>
#include <limits>
#include <new>

namespace {

constexpr unsigned int kLongestData = std::numeric_limits<int>::max() - tessel::kRecordHead; // of one send

struct Delivery;
thread_local const Delivery* innermost = nullptr;

/// Marks a socket as delivering on this thread.
struct Delivery {
    Delivery(const CMsgSocket* receiver, bool& more) : socket(receiver), moreCame(more), outer(innermost) {
        innermost = this;
    }
    ~Delivery() { innermost = outer; }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    const CMsgSocket* socket;
    bool& moreCame; ///< becomes true when more arrives during the delivery
    const Delivery* outer;
};

/// @return the delivery of a socket on this thread; null when there is none
const Delivery* DeliveryOf(const CMsgSocket* socket) {
    const Delivery* delivery = innermost;
    while (delivery != nullptr && delivery->socket != socket) delivery = delivery->outer;
    return delivery;
}

} // namespace

CMsgSocket::CMsgSocket(unsigned int bufferSize, CSocket::MODE mode) : CSocket(mode) {
    Initialize(bufferSize);
}

CMsgSocket::CMsgSocket(SOCKET socket, unsigned int bufferSize, CSocket::MODE mode, HWND window)
    : CSocket(socket, mode, window) {
    Initialize(bufferSize);
}

CMsgSocket::CMsgSocket(const CMsgSocket& other) : CSocket(other) {
    ShareWith(other);
}

CMsgSocket& CMsgSocket::operator=(const CMsgSocket& other) {
    if (this == &other) return *this;
    CSocket::operator=(other);
    ReleaseBuffer();
    ShareWith(other);
    return *this;
}

CMsgSocket::~CMsgSocket() {
    ReleaseBuffer();
}

void CMsgSocket::Initialize(unsigned int size) {
    m_pBuffer = new (std::nothrow) unsigned char[size];
    m_uiCapacity = m_pBuffer != nullptr ? size : 0; // GUARD-81: a missing buffer takes no byte
    m_uiFilled = 0;
}

// GUARD-82: copies hold the buffer by value; each would free it.
void CMsgSocket::ShareWith(const CMsgSocket& other) {
    m_pBuffer = tessel::Share(other.m_pBuffer);
    const bool shared = m_pBuffer != nullptr;
    m_uiCapacity = shared ? other.m_uiCapacity : 0;
    m_uiFilled = shared ? other.m_uiFilled : 0;
}

void CMsgSocket::ReleaseBuffer() {
    if (m_pBuffer != nullptr && tessel::RemoveOwner(m_pBuffer)) delete[] m_pBuffer;
}

int CMsgSocket::Write(const CCommMsg* msg, unsigned int timeout) {
    if (msg == nullptr) return WSAEFAULT;                   // GUARD-09
    if (msg->GetLength() > kLongestData) return WSAENOBUFS; // GUARD-73: the total would wrap, or exceed one send
    unsigned int previous = 0;
    int result = GetSendTimeout(&previous);
    if (result == 0) result = SetSendTimeout(timeout);
    if (result != 0) return result;
    result = SendRecord(*msg);
    (void)SetSendTimeout(previous); // the result is that of sending
    return result;
}

int CMsgSocket::SendRecord(const CCommMsg& msg) {
    unsigned int sent = 0;
    const int result = Send(msg.GetMsg(), msg.GetXmitLength(), &sent, 0);
    // GUARD-240: the next record's length would land inside an incomplete record. After a time-out the system does
    // not report how much it sent.
    const bool incomplete = result == 0 ? sent < msg.GetXmitLength() : result == WSAETIMEDOUT;
    if (incomplete) (void)StopSending();
    return result;
}

/// Whether a full buffer begins with a complete record, left there for lack of memory (GUARD-81) or by a handler that
/// disconnected (ODD-87).
bool CMsgSocket::IsFull() const {
    return m_uiFilled == m_uiCapacity && tessel::CompleteRecord(m_pBuffer, m_uiFilled);
}

/// Receives into the free part of the buffer.
int CMsgSocket::Fill() {
    if (IsFull()) return 0;
    // ODD-105: when a record is too long for the buffer, this asks for 0 bytes, and receiving 0 means closed.
    unsigned int received = 0;
    const int result = Recv(m_pBuffer + m_uiFilled, m_uiCapacity - m_uiFilled, &received, 0);
    m_uiFilled += received;
    return result;
}

/// @return a copy of the record at the front; null without memory
CCommMsg* CMsgSocket::MakeRecord(unsigned int length) const {
    auto* const record = new (length) CCommMsg;
    // GUARD-81: there may be no memory for it.
    if (record != nullptr) std::memcpy(record->GetData(), m_pBuffer + tessel::kRecordHead, length);
    return record;
}

// ODD-86: it receives first, even when a complete record is in the buffer.
int CMsgSocket::Read(CCommMsg** out) {
    if (out == nullptr) return WSAEFAULT; // GUARD-09
    for (;;) {
        const int result = Fill();
        if (result != 0) return result;
        const auto length = tessel::CompleteRecord(m_pBuffer, m_uiFilled);
        if (!length) continue;
        CCommMsg* const record = MakeRecord(*length);
        if (record == nullptr) return WSAENOBUFS;
        *out = record;
        tessel::DropRecord(m_pBuffer, m_uiFilled, *length);
        return 0;
    }
}

void CMsgSocket::OnRead() {
    if (const Delivery* const underWay = DeliveryOf(this)) {
        underWay->moreCame = true; // GUARD-210: the current record would be delivered and dropped twice
        return;
    }
    bool moreCame = false;
    const Delivery delivery(this, moreCame);
    const bool unreceived = IsFull();
    if (Fill() == 0) {
        Deliver();
    } else {
        OnClose();
    }
    if (moreCame || unreceived) RequestEvent();
}

/// Makes the system report waiting data again, which it does only after a receive.
void CMsgSocket::RequestEvent() {
    unsigned char next = 0;
    if (!IsBlockingMode()) (void)Recv(&next, sizeof next, nullptr, MSG_PEEK); // fails when no data waits
}

/// Delivers the complete records in the buffer.
void CMsgSocket::Deliver() {
    while (const auto length = tessel::CompleteRecord(m_pBuffer, m_uiFilled)) {
        CCommMsg* const record = MakeRecord(*length);
        if (record == nullptr) return;
        OnReadMsg(record);
        if (!IsConnected()) return; // ODD-87: the delivered record stays in the buffer
        tessel::DropRecord(m_pBuffer, m_uiFilled, *length);
    }
}

void CMsgSocket::OnReadMsg(CCommMsg*) {}

void CMsgSocket::OnWriteMsg() {}
