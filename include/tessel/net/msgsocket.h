#pragma once

#include <tessel/net/socket.h>

/// A TCP connection that carries records (CCommMsg) instead of bytes: each is sent as its 4-byte length and its data,
/// and the receiver cuts the stream into records again.
///
/// A derived class overrides OnReadMsg(), and OnClose() to disconnect; the owner calls ProcessEvents() as CSocket says,
/// and every complete record is delivered. Read() is for a thread that waits for records one by one.
///
/// Records must be smaller than the receiver's buffer: with the default of 4,096 bytes, 4,092 bytes of data fit. Of a
/// longer one the buffer takes what it holds, and then this connection is over: the next receive asks for no byte, and
/// as soon as more have come it counts as the peer's close (WSAEDISCON), again and again: disconnect then. The length
/// word is believed in every other respect: a peer that announces more than it sends is waited for.
///
/// What was received and not delivered stays in the buffer across Disconnect(); use a fresh object for the next
/// connection.
/// Copies share socket and buffer, each with a count of its own: receive with one of them only. The last one frees
/// the buffer.
/// Threads: one at a time, and OnRead() runs on the one that calls ProcessEvents().
class TESSEL_API CMsgSocket : public CSocket {
public:
    /// Bytes of the buffer, unless the constructor is told otherwise.
    enum : unsigned int { BUFFER_SIZE = 4096 };

    /// Makes an object without a socket. Without memory for the buffer every receive fails (WSAEFAULT).
    /// @param bufferSize  bytes of the longest record with its length word
    /// @param mode        mode to set up with
    explicit CMsgSocket(unsigned int bufferSize = BUFFER_SIZE, CSocket::MODE mode = MODE_BLOCKING);

    /// Adopts a socket, as one that accept returned. Call InitConnected() then: OnRead() stops after each record
    /// while the object does not count as connected.
    /// @param socket      handle, which this object closes from now on
    /// @param bufferSize  bytes of the longest record with its length word
    /// @param mode        mode to set up with
    /// @param window      notify window, or null
    CMsgSocket(SOCKET socket, unsigned int bufferSize, CSocket::MODE mode, HWND window);

    /// Shares socket and buffer. Without memory to share the buffer the copy receives nothing.
    /// @param other  object to share with
    CMsgSocket(const CMsgSocket& other);

    /// Shares socket and buffer. The socket held before is not closed: Disconnect() first.
    /// @param other  object to share with
    /// @return this object
    CMsgSocket& operator=(const CMsgSocket& other);

    /// Frees the buffer, unless a copy still uses it, and does what CSocket does.
    ~CMsgSocket() override;

    /// Sends one record with one call.
    ///
    /// A record can be cut: a non-blocking socket takes as much as there is room for, and the result is 0; a blocking
    /// one that times out has sent an unknown part. Nothing can follow a part of a record, so sending ends there: the
    /// peer reads what was sent and then the end of the stream, and each further send fails with WSAESHUTDOWN (10058).
    /// Disconnect then, connect anew and send the record again. To send to a slow peer without waiting, use Send() with
    /// GetMsg() and GetXmitLength(), which returns how much was taken, and send the rest when Select() returns 2.
    /// @param msg      record; stays the caller's
    /// @param timeout  milliseconds that this send may wait on a blocking socket; 0 for ever. The socket's own time-out
    ///                 is restored
    /// @return 0: sent, or cut on a non-blocking socket; WSAEWOULDBLOCK (10035): a non-blocking socket took nothing;
    ///         WSAETIMEDOUT (10060): cut; WSAESHUTDOWN (10058): an earlier record was cut; WSAENOBUFS (10055): more
    ///         than 2^31 - 5 bytes of data; else a Winsock error
    int Write(const CCommMsg* msg, unsigned int timeout);

    /// Waits for one record. It always receives first: a second record that came along with one returned before is
    /// returned only after further bytes have come.
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
    void AskForEvent();
    void Deliver();
    CCommMsg* MakeRecord(unsigned int length) const;

    /// Receives once, and delivers the records that are complete by then. A failed receive, whatever the error, is
    /// told to OnClose(). A record for which there is no memory is tried again at the next FD_READ.
    void OnRead() override;

    /// Takes a record; does nothing here, so that the record is lost: override it. It may disconnect, which ends the
    /// delivery, but must neither destroy the object nor read from it. It may run a message loop, as a message box
    /// does: what comes meanwhile is delivered behind it. A close is told at once, though: a handler of it that
    /// disconnects loses what is not delivered yet.
    /// @param msg  record, whose owner is the handler: delete it
    virtual void OnReadMsg(CCommMsg* msg);

    /// For derived classes; never called here.
    virtual void OnWriteMsg();

    unsigned char* m_pBuffer;
    unsigned int m_uiCapacity;
    unsigned int m_uiFilled;
};
