#pragma once

#include <tessel/net/socket.h>

/// A TCP connection that carries records (CCommMsg) instead of bytes: each is sent as its 4-byte length and its data,
/// and the receiver splits the stream into records again.
///
/// Override OnReadMsg() to receive records and OnClose() to disconnect; the owner calls ProcessEvents() as described in
/// CSocket, and every complete record is delivered. Alternatively a thread waits for records one by one with Read().
///
/// A record, with its length word, must fit in the receiver's buffer: by default 4,096 bytes, so 4,092 bytes of data. A
/// longer one fills the buffer, and the connection is then unusable: the next receive asks for 0 bytes, and as soon as
/// more data arrive that counts as the peer's close (WSAEDISCON), every time: disconnect then. Otherwise the length
/// word is trusted: if a peer announces more than it sends, the receiver waits for it.
///
/// Data received but not delivered stay in the buffer across Disconnect(); use a new object for the next connection.
/// Copies share socket and buffer but count the bytes separately: receive with only one of them. The last one frees
/// the buffer.
/// Threads: one at a time; OnRead() runs on the thread that calls ProcessEvents().
class TESSEL_API CMsgSocket : public CSocket {
public:
    /// Default size of the buffer in bytes.
    enum : unsigned int { BUFFER_SIZE = 4096 };

    /// Creates an object without a socket. If memory for the buffer is short, every receive fails (WSAEFAULT).
    /// @param bufferSize  longest record in bytes, including its length word
    /// @param mode        mode to set up with
    explicit CMsgSocket(unsigned int bufferSize = BUFFER_SIZE, CSocket::MODE mode = MODE_BLOCKING);

    /// Adopts a socket, such as one returned by accept. Call InitConnected() next: until the object counts as
    /// connected, OnRead() stops after each record.
    /// @param socket      handle; this object owns it from now on
    /// @param bufferSize  longest record in bytes, including its length word
    /// @param mode        mode to set up with
    /// @param window      notify window, or null
    CMsgSocket(SOCKET socket, unsigned int bufferSize, CSocket::MODE mode, HWND window);

    /// Shares socket and buffer. If memory is short, the copy has no buffer and receives nothing.
    /// @param other  object to share with
    CMsgSocket(const CMsgSocket& other);

    /// Shares socket and buffer. The previous socket is not closed: Disconnect() first.
    /// @param other  object to share with
    /// @return this object
    CMsgSocket& operator=(const CMsgSocket& other);

    /// Frees the buffer, unless a copy still uses it; then as CSocket.
    ~CMsgSocket() override;

    /// Sends one record with one call.
    ///
    /// A record may be sent incompletely: a non-blocking socket accepts as much as there is room for, and the result is
    /// 0; a blocking one that times out has sent an unknown part. Nothing can follow an incomplete record, so sending
    /// ends there: the peer reads what was sent and then the end of the stream, and each further send fails with
    /// WSAESHUTDOWN (10058). Disconnect, reconnect and send the record again. To send to a slow peer without waiting,
    /// use Send() with GetMsg() and GetXmitLength(), which returns how much was accepted, and send the rest when
    /// Select() returns 2.
    /// @param msg      record; stays the caller's
    /// @param timeout  milliseconds that this send may wait on a blocking socket; 0: no time-out. The socket's own
    ///                 time-out is restored afterwards
    /// @return 0: sent, or sent incompletely on a non-blocking socket; WSAEWOULDBLOCK (10035): a non-blocking socket
    ///         accepted nothing; WSAETIMEDOUT (10060): sent incompletely; WSAESHUTDOWN (10058): an earlier record was
    ///         sent incompletely; WSAENOBUFS (10055): more than 2^31 - 5 bytes of data; else a Winsock error
    int Write(const CCommMsg* msg, unsigned int timeout);

    /// Waits for one record. It always receives first: a second record that arrived together with the previous one is
    /// returned only after more bytes have arrived.
    /// @param out  receives the record, the caller's to delete; unchanged after a failure
    /// @return 0; WSAEDISCON (10101): the peer closed, or sent a record larger than the buffer; WSAENOBUFS (10055):
    ///         no memory for the record, which stays in the buffer; else a Winsock error
    virtual int Read(CCommMsg** out);

private:
    friend struct CMsgSocketLayout;

    void Initialize(unsigned int size);
    void ShareWith(const CMsgSocket& other);
    void ReleaseBuffer();
    int SendRecord(const CCommMsg& msg);
    bool IsFull() const;
    int Fill();
    void RequestEvent();
    void Deliver();
    CCommMsg* MakeRecord(unsigned int length) const;

    /// Receives once and delivers the records that are then complete. A failed receive, whatever the error, calls
    /// OnClose(). A record for which memory was short is delivered at the next FD_READ.
    void OnRead() override;

    /// Called for each record. The default does nothing, so the record is leaked: override it. The handler may
    /// disconnect, which ends the delivery, but must neither destroy the object nor read from it. It may run a message
    /// loop, as a message box does: records that arrive meanwhile are delivered after it. OnClose(), however, is called
    /// at once: if it disconnects, records not yet delivered are lost.
    /// @param msg  the record; the handler owns it and must delete it
    virtual void OnReadMsg(CCommMsg* msg);

    /// For derived classes; never called here.
    virtual void OnWriteMsg();

    unsigned char* m_pBuffer;
    unsigned int m_uiCapacity;
    unsigned int m_uiFilled;
};
