#include <foundation/SharedOwners.h>
#include <net/RecordCutter.h>
#include <net/Winsock.h>
#include <tessel/net/commmsg.h>
#include <tessel/net/msgsocket.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

struct CMsgSocketLayout {
    static_assert(offsetof(CMsgSocket, m_pBuffer) == sizeof(CSocket));
    static_assert(offsetof(CMsgSocket, m_uiCapacity) == sizeof(CSocket) + sizeof(void*));
    static_assert(offsetof(CMsgSocket, m_uiFilled) == sizeof(CSocket) + sizeof(void*) + 4);
};

namespace {

constexpr unsigned int kLongestData = std::numeric_limits<int>::max() - tessel::kRecordHead; // of one send

struct Delivery;
thread_local const Delivery* innermost = nullptr;

/// A socket that receives and delivers on this thread, for as long as the object lives.
struct Delivery {
    Delivery(const CMsgSocket* receiver, bool& more) : socket(receiver), moreCame(more), outer(innermost) {
        innermost = this;
    }
    ~Delivery() { innermost = outer; }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    const CMsgSocket* socket;
    bool& moreCame; ///< becomes true when there is more to receive then
    const Delivery* outer;
};

/// @return the socket's own, when it is delivering on this thread; else null
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
    m_uiCapacity = m_pBuffer != nullptr ? size : 0; // GUARD-81: a buffer that is not there takes no byte
    m_uiFilled = 0;
}

// GUARD-82: copies hold the buffer by value, where each freeing it would do so twice.
void CMsgSocket::ShareWith(const CMsgSocket& other) {
    const bool shared = other.m_pBuffer != nullptr && tessel::AddOwner(other.m_pBuffer);
    m_pBuffer = shared ? other.m_pBuffer : nullptr;
    m_uiCapacity = shared ? other.m_uiCapacity : 0;
    m_uiFilled = shared ? other.m_uiFilled : 0;
}

void CMsgSocket::ReleaseBuffer() {
    if (m_pBuffer != nullptr && tessel::RemoveOwner(m_pBuffer)) delete[] m_pBuffer;
}

int CMsgSocket::Write(const CCommMsg* msg, unsigned int timeout) {
    if (msg == nullptr) return WSAEFAULT;                   // GUARD-09
    if (msg->GetLength() > kLongestData) return WSAENOBUFS; // GUARD-73: it would be cut, or wrap with its length word
    unsigned int previous = 0;
    int result = GetSendTimeout(&previous);
    if (result == 0) result = SetSendTimeout(timeout);
    if (result != 0) return result;
    result = SendRecord(*msg);
    (void)SetSendTimeout(previous); // what counts is whether the record went out
    return result;
}

int CMsgSocket::SendRecord(const CCommMsg& msg) {
    unsigned int sent = 0;
    const int result = Send(msg.GetMsg(), msg.GetXmitLength(), &sent, 0);
    // GUARD-240: the next record's length would land inside a record that was cut. After a time-out the system does
    // not say how much it took.
    const bool cut = result == 0 ? sent < msg.GetXmitLength() : result == WSAETIMEDOUT;
    if (cut) (void)StopSending();
    return result;
}

/// Whether the buffer has room for no byte, but a whole record that was left there: there was no memory for it
/// (GUARD-81), or its handler disconnected (ODD-87).
bool CMsgSocket::IsFull() const {
    return m_uiFilled == m_uiCapacity && tessel::WholeRecord(m_pBuffer, m_uiFilled);
}

/// Receives into the free part of the buffer.
int CMsgSocket::Fill() {
    if (IsFull()) return 0;
    // ODD-105: in front of a record that is too long for the buffer no byte is asked for, and getting none is an end.
    unsigned int received = 0;
    const int result = Recv(m_pBuffer + m_uiFilled, m_uiCapacity - m_uiFilled, &received, 0);
    m_uiFilled += received;
    return result;
}

/// @return a copy of the record at the front; null without memory
CCommMsg* CMsgSocket::MakeRecord(unsigned int length) const {
    auto* const record = new (length) CCommMsg;
    // GUARD-81: without memory there is nothing to copy to.
    if (record != nullptr) std::memcpy(record->GetData(), m_pBuffer + tessel::kRecordHead, length);
    return record;
}

// ODD-86: it receives first, even when a whole record is there already.
int CMsgSocket::Read(CCommMsg** out) {
    if (out == nullptr) return WSAEFAULT; // GUARD-09
    for (;;) {
        const int result = Fill();
        if (result != 0) return result;
        const auto length = tessel::WholeRecord(m_pBuffer, m_uiFilled);
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
        underWay->moreCame = true; // GUARD-210: the record under way would be delivered, and taken off, a second time
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
    if (moreCame || unreceived) AskForEvent();
}

/// Has what waits to be received be told again: only a receive does, and there was none.
void CMsgSocket::AskForEvent() {
    unsigned char next = 0;
    if (!IsBlockingMode()) (void)Recv(&next, sizeof next, nullptr, MSG_PEEK); // also when nothing is there
}

/// Delivers the whole records in the buffer.
void CMsgSocket::Deliver() {
    while (const auto length = tessel::WholeRecord(m_pBuffer, m_uiFilled)) {
        CCommMsg* const record = MakeRecord(*length);
        if (record == nullptr) return;
        OnReadMsg(record);
        if (!IsConnected()) return; // ODD-87: the record that was delivered stays in the buffer
        tessel::DropRecord(m_pBuffer, m_uiFilled, *length);
    }
}

void CMsgSocket::OnReadMsg(CCommMsg*) {}

void CMsgSocket::OnWriteMsg() {}
