#pragma once

#include <tessel/foundation/platform.h>

class CCommMsg;
class CIpAddress;

// The Winsock types used below, declared here so that this header does not depend on the order of windows.h and
// winsock2.h; programs that fill the records include winsock2.h.
struct _INTERFACE_INFO;
struct _WSANETWORKEVENTS;
struct sockaddr_in;
struct timeval;
using SOCKET = UINT_PTR;
using INTERFACE_INFO = _INTERFACE_INFO;
using WSANETWORKEVENTS = _WSANETWORKEVENTS;

/// Message that a listening socket in MODE_WINDOW posts when a connection is waiting (WM_USER + 50). wParam is the
/// socket, lParam as documented for WSAAsyncSelect.
inline constexpr unsigned int WM_SOCKET_ACCEPT = WM_USER + 50;

/// Message that a socket in MODE_WINDOW posts when data have arrived or the peer has closed (WM_USER + 51).
inline constexpr unsigned int WM_SOCKET_DATA = WM_USER + 51;

#pragma pack(push, 1)
/// Head of a typed record in its wire format (little-endian, packed); the data follow it.
struct MESSAGE {
    unsigned int ulTotalLength; ///< size of head and data in bytes
    unsigned int ulDataLength;  ///< bytes of data
    unsigned short usType;      ///< the sender's value

    /// The data.
    /// @return first of ulDataLength bytes, directly after the head
    const unsigned char* GetData() const { return reinterpret_cast<const unsigned char*>(this) + sizeof(MESSAGE); }
};
#pragma pack(pop)

/// An IPv4 socket: a listening server, a stream to a peer, or a broadcast or multicast endpoint for datagrams.
///
/// An object starts without a socket. It gets one from InitAsync(), InitBroadcast(), InitMulticast() or Connect(), or
/// adopts one created by Accept(), and gives it up in Disconnect() or its destructor. Setting up an object that still
/// has a socket closes that first.
///
/// The mode determines how events reach the owner. In MODE_WINDOW the window procedure calls ProcessEvents() on each
/// WM_SOCKET_ message; in MODE_EVENT a thread waits for GetEventHandle() and calls it. Derive from the class and
/// override the On... operations to handle the events.
///
/// Operations return 0 or a Winsock error code unless stated otherwise. A null pointer for data or a result returns
/// WSAEFAULT (10014).
///
/// There is no IPv6 and no encryption (TLS).
///
/// Copies share socket, event and extra block; the last one closes and frees them. If memory is short, a copy has none
/// of them.
/// Threads: only one thread at a time may use an object and its copies. ReadMessage() and Ping() have process-wide
/// state: only one thread at a time may call each, whatever the object.
class TESSEL_API CSocket {
public:
    /// How events are delivered.
    enum MODE : int {
        MODE_BLOCKING = 0,    ///< no events; calls wait
        MODE_NONBLOCKING = 1, ///< no events; calls do not wait
        MODE_WINDOW = 2,      ///< a message is posted to the notify window; calls do not wait
        MODE_EVENT = 3        ///< an auto-reset event is signalled; calls do not wait
    };

    /// Adopts a socket.
    /// @param socket  handle; this object owns it from now on; INVALID_SOCKET for none
    /// @param mode    mode for a later set-up; the socket is not changed yet
    /// @param window  notify window, or null
    CSocket(SOCKET socket, MODE mode, HWND window);

    /// Creates an object without a socket, in MODE_WINDOW.
    /// @param window  notify window
    explicit CSocket(HWND window);

    /// Creates an object without a socket.
    /// @param mode  mode to set up with
    explicit CSocket(MODE mode = MODE_BLOCKING);

    /// Shares the other object's socket, event and memory.
    /// @param other  object to share with
    CSocket(const CSocket& other);

    /// Shares the other object's socket, event and memory. The previous socket is not closed, nor its memory freed:
    /// Disconnect() first.
    /// @param other  object to share with
    /// @return this object
    CSocket& operator=(const CSocket& other);

    /// Closes the event and the socket and frees the extra block, unless a copy still uses them.
    virtual ~CSocket();

    /// Initialises every field and starts Winsock 2.0. The constructors call it; another call forgets what the object
    /// holds without closing it (copies keep it), and starts Winsock once more.
    /// @param socket  handle to adopt; INVALID_SOCKET for none
    /// @param mode    mode for a later set-up
    /// @param window  notify window, or null
    void Create(SOCKET socket, MODE mode, HWND window);

    /// @name Set-up
    ///
    /// GetLocalNetInterfaceAddress() chooses the machine's own address. After a failure the socket is closed. In
    /// MODE_EVENT each set-up that gets as far as creating an event leaks the previous one: use a new object for each
    /// connection.
    ///@{

    /// Becomes a listening server. WM_SOCKET_ACCEPT, or the event, signals waiting connections.
    /// @param port              port in host byte order; 0 lets the system choose
    /// @param interfaceAddress  dotted address of the wanted interface; null or "0.0.0.0" for any
    /// @param mask              dotted netmask of the wanted interface
    /// @return 0, even if no socket could be created; else a Winsock error
    int InitAsync(unsigned short port, const wchar_t* interfaceAddress, const wchar_t* mask);

    /// Becomes an endpoint for broadcast datagrams, bound to the port on every interface. WM_SOCKET_DATA, or the event,
    /// signals datagrams.
    /// @param port              own port and default destination port, in host byte order
    /// @param interfaceAddress  dotted address of the interface whose subnet Broadcast() addresses
    /// @param mask              dotted netmask of that interface
    /// @return 0 or a Winsock error
    int InitBroadcast(unsigned short port, const wchar_t* interfaceAddress, const wchar_t* mask);

    /// Becomes an endpoint for multicast datagrams, bound to the port on every interface, and joins the group.
    /// WM_SOCKET_DATA, or the event, signals datagrams.
    /// @param port              own port and default destination port, in host byte order
    /// @param group             dotted address of the group; only the first 16 characters count
    /// @param ttl               number of routers that a datagram may pass, plus one
    /// @param interfaceAddress  dotted address of the interface to send and receive on
    /// @param mask              dotted netmask of that interface
    /// @return 0 or a Winsock error
    int InitMulticast(unsigned short port, const wchar_t* group, unsigned int ttl, const wchar_t* interfaceAddress,
                      const wchar_t* mask);

    /// Connects to a server; waits for success or failure. WM_SOCKET_DATA, or the event, signals data and the peer's
    /// close. After a failure the socket stays open until the next attempt or the end of the object.
    /// @param address  in network byte order
    /// @param port     in host byte order
    /// @return 0 or a Winsock error
    int Connect(unsigned long address, unsigned short port);

    /// Accepts a connection. Call InitConnected() on the new object, which inherits mode and notify window.
    /// @param out  receives the object, which is the caller's to delete; unchanged after a failure
    /// @return 0 or a Winsock error
    int Accept(CSocket** out);

    /// Marks an accepted socket as connected and requests its events, like Connect().
    /// @return 0 or a Winsock error; in either case the socket stays open and counts as connected
    int InitConnected();

    /// Changes the mode. A change to MODE_EVENT creates a new event and leaks the previous one, so call
    /// GetEventHandle() first.
    /// @param mode     new mode
    /// @param message  window message to post in MODE_WINDOW
    /// @param events   FD_ bits to be notified of in MODE_WINDOW and MODE_EVENT
    /// @return 0 or a Winsock error; in either case the mode is stored
    int SetMode(MODE mode, unsigned int message, long events);

    /// Ends sending, drops what the peer sends, and closes.
    ///
    /// A blocking socket waits until the peer closes, too, indefinitely if the peer's machine no longer responds. Any
    /// other socket drops only what has arrived and closes: if the peer is still sending, the system resets the
    /// connection, and the peer may lose the end of what was sent to it. Use DisconnectWithin() where that matters. In
    /// every mode, a peer that sends without a pause delays the return. A socket that cannot be shut down (never
    /// connected, or listening) stays open.
    /// @return 0, also without a socket; else a Winsock error
    virtual int Disconnect();

    /// Closes a connection without losing what was sent: ends sending, drops what the peer sends, and waits until the
    /// peer has closed too, in any mode. A peer that reads up to the end of the stream and then closes has received
    /// everything.
    /// @param milliseconds  longest wait; INFINITE: no time-out
    /// @return 0: the peer has closed, or there was no socket; WSAETIMEDOUT (10060): it has not, and the socket stays
    ///         open without events: call again, or give up with Disconnect(); else a Winsock error: the socket is
    ///         closed
    int DisconnectWithin(unsigned int milliseconds);
    ///@}

    /// @name Transfer
    ///@{

    /// Receives the bytes available; on a blocking socket at least one.
    /// @param buffer    receives the bytes
    /// @param size      buffer size in bytes, limited to 2^31 - 1
    /// @param received  receives the number of bytes, 0 with WSAEDISCON; null to ignore it; unchanged after an error
    /// @param flags     flags of recv
    /// @return 0; WSAEDISCON (10101): the peer closed gracefully, or @p size is 0; else a Winsock error
    int Recv(unsigned char* buffer, unsigned int size, unsigned int* received, int flags);

    /// Receives a datagram.
    /// @param buffer      receives the data
    /// @param size        buffer size in bytes, limited to 2^31 - 1
    /// @param from        receives the sender; null to ignore it
    /// @param fromLength  in: size of @p from in bytes; out: bytes used; null to ignore it
    /// @param received    receives the number of bytes, 0 with WSAEDISCON; null to ignore it; unchanged after an error
    /// @param flags       flags of recvfrom
    /// @return 0; WSAEDISCON (10101): no bytes, which includes an empty datagram; else a Winsock error
    int ReceiveFrom(unsigned char* buffer, unsigned int size, sockaddr_in* from, unsigned int* fromLength,
                    unsigned int* received, int flags);

    /// Sends on a stream with one call: a non-blocking socket may accept only a part.
    /// @param buffer  bytes to send
    /// @param size    number of bytes, limited to 2^31 - 1
    /// @param sent    receives the number of bytes accepted; null to ignore it; unchanged after a failure
    /// @param flags   flags of send
    /// @return 0 or a Winsock error
    int Send(const unsigned char* buffer, unsigned int size, unsigned int* sent, int flags);

    /// Sets the send time-out.
    /// @param milliseconds  the time-out; 0: none
    /// @return 0 or a Winsock error
    int SetSendTimeout(unsigned int milliseconds);

    /// Returns the send time-out.
    /// @param milliseconds  receives it; 0: no time-out
    /// @return 0 or a Winsock error
    int GetSendTimeout(unsigned int* milliseconds);
    ///@}

    /// @name Datagrams
    ///
    /// A datagram contains the data of a message, without its length word. Port 0 stands for the port passed to
    /// InitBroadcast() or InitMulticast().
    ///@{

    /// Sends to one address.
    /// @param message   what to send; stays the caller's
    /// @param to        destination with its family set; receives the port
    /// @param toLength  size of @p to in bytes
    /// @param port      in host byte order, or 0
    /// @param sent      receives the number of bytes; null to ignore it; unchanged after a failure
    /// @return 0 or a Winsock error
    int SendTo(const CCommMsg* message, sockaddr_in* to, unsigned int toLength, unsigned short port,
               unsigned int* sent);

    /// Sends a broadcast.
    /// @param message  what to send; stays the caller's
    /// @param port     in host byte order, or 0
    /// @param subnet   true: to the subnet of the chosen interface, if its netmask is known; else to 255.255.255.255
    /// @return 0 or a Winsock error
    int Broadcast(const CCommMsg* message, unsigned short port, bool subnet);

    /// Sends to a multicast group.
    /// @param message  what to send; stays the caller's
    /// @param group    dotted address of the group; only the first 16 characters count
    /// @param port     in host byte order, or 0
    /// @return 0 or a Winsock error
    int Multicast(const CCommMsg* message, const wchar_t* group, unsigned short port);
    ///@}

    /// @name Files
    ///@{

    /// Sends a message in its stream form, followed directly by the bytes of a file: at most 2,147,483,646 bytes in
    /// all. Waits until the peer has received everything, whatever the send time-out.
    /// @param head  message that announces the file to the peer (with its size, say); stays the caller's
    /// @param path  the file, which other programs may read and write meanwhile
    /// @return 0; the Win32 error if the file cannot be opened; else a Winsock error
    int WriteFile(const CCommMsg* head, const wchar_t* path);

    /// Receives the bytes of a file. In MODE_EVENT it waits up to 30 s for each next part; in MODE_WINDOW and
    /// MODE_NONBLOCKING it ends as soon as no data are available. It reads as long as bytes arrive, so a blocking
    /// socket returns only after the peer has closed, and bytes beyond the expected ones are written to the file, too:
    /// the peer must wait before it sends anything else.
    /// @param path          the file, which is overwritten; after a failure it contains what was received
    /// @param expectedSize  bytes to wait for; 0 reads what is available
    /// @return 0: at least that many were received; 1: the peer closed before, or nothing arrived in time; the Win32
    ///         error if the file cannot be created or written; else a Winsock error
    int ReadFile(const wchar_t* path, unsigned int expectedSize);
    ///@}

    /// @name Typed messages
    ///@{

    /// Receives a whole typed record into a process-wide buffer, which grows to the longest record and is never freed.
    /// A non-blocking socket without data fails at once; after the first bytes it waits up to a second for each next
    /// part. A blocking socket waits indefinitely, but only up to a second for the rest of the lengths. A record whose
    /// lengths contradict each other, or that does not fit in memory, is left unread.
    /// @param socket      handle of the socket to read from, not necessarily this object's
    /// @param message     receives the record, which the library owns and the next call overwrites; unchanged after a
    ///                    failure
    /// @param dataLength  receives the length of its data in bytes as stated in the record, even if the rest fails;
    ///                    unchanged if the lengths have not arrived
    /// @return 0: received; 1: failed
    int ReadMessage(SOCKET socket, MESSAGE** message, unsigned long& dataLength);

    /// Sends a typed record: waits without limit until the socket is writable, sends with one call, and waits up to 3 s
    /// until it is writable again. A non-blocking socket may accept only a part, which goes unnoticed: use Send() to
    /// learn how much was accepted.
    /// @param type        a value for the receiver
    /// @param data        bytes to send; may be null for none
    /// @param dataLength  number of bytes, at most 2^31 - 11
    /// @return 0; WSAENOBUFS (10055): too long, or no memory; else a Winsock error
    int WriteMessage(unsigned short type, const char* data, unsigned long dataLength);
    ///@}

    /// @name Events
    ///@{

    /// Waits until the socket is ready.
    /// @param timeout  longest wait; null: no time-out
    /// @return 0: time-out; sum of 1 (readable), 2 (writable) and 4 (exception); else a Winsock error
    int Select(timeval* timeout);

    /// Fetches the events since the last call and resets the event of MODE_EVENT.
    /// @param events  receives the FD_ bits and an error code for each; unchanged after a failure
    /// @return 0 or a Winsock error
    int GetNetworkEvents(_WSANETWORKEVENTS* events) const;

    /// Calls the On... operation of each event that occurred, in the order accept, connect, read, write, close. In
    /// MODE_WINDOW, where Windows records no events, it examines the socket instead: a waiting connection, available
    /// data, or a peer that has closed after all its data were read. A handler may disconnect but must not destroy the
    /// object.
    /// @return 0; else a Winsock error, and no handler was called
    virtual int ProcessEvents();

    /// The event of MODE_EVENT, to wait on.
    /// @return the handle, owned by this object; INVALID_HANDLE_VALUE while there is none
    HANDLE GetEventHandle() const { return m_hEvent; }
    ///@}

    /// @name Queries
    ///@{

    /// Whether the mode is MODE_BLOCKING.
    /// @return true: it is
    bool IsBlockingMode() const { return m_Mode == MODE_BLOCKING; }

    /// Whether Connect() or InitConnected() has marked the socket as connected, even if its events could then not be
    /// requested. The mark ends when Disconnect() or DisconnectWithin() closes the socket, with a new set-up or with a
    /// failed wait in WriteMessage(), but not when the peer closes.
    /// @return true: connected
    bool IsConnected() const { return m_bConnected; }

    /// Whether a handle is this object's socket.
    /// @param handle  handle, for example the wParam of a WM_SOCKET_ message
    /// @return true: it is
    bool IsSocket(SOCKET handle) const { return handle == m_Socket; }

    /// Whether an address is that of the chosen interface.
    /// @param address  address to compare
    /// @return true: it is
    bool HasIpAddress(const CIpAddress& address) const;

    /// Whether the machine no longer has the address of the chosen interface.
    /// @return true: no interface except loopback has it, none was chosen, or the interfaces cannot be listed, for
    ///         example because there are more than 10 with loopback; false: one has it
    bool AddrChanged() const;
    ///@}

    /// @name Names and interfaces
    ///@{

    /// Looks up the first address of a host.
    /// @param name       name of the host
    /// @param dottedOut  a buffer of 16 bytes: receives dotted text; unchanged after a failure
    /// @return true: found; false: unknown
    static bool GetHostAddressByName(const char* name, char* dottedOut);

    /// Looks up the name of a host.
    /// @param dotted   dotted address
    /// @param nameOut  a buffer of NI_MAXHOST (1025) bytes: receives the name, whose length is not limited otherwise;
    ///                 unchanged after a failure
    /// @return true: found; false: unknown
    static bool GetHostNameByAddress(const char* dotted, char* nameOut);

    /// Returns the name of this machine.
    /// @param out   receives the name
    /// @param size  buffer size in characters
    /// @return 0; SOCKET_ERROR (-1): failed, see WSAGetLastError() (WSAEFAULT: buffer too small)
    static int GetLocalHostName(wchar_t* out, unsigned int size);

    /// Counts the network interfaces, without loopback.
    /// @return number; 0 after a failure, or if there are more than 20 with loopback
    static int GetNumberOfNetInterfaces();

    /// Chooses an interface of this machine, from dotted text.
    /// @param interfaceAddress  address; only the first 16 characters count; null counts as 0.0.0.0
    /// @param mask              netmask; only the first 16 characters count; null counts as 0.0.0.0
    /// @return its address in network byte order; 0 for any
    static unsigned long GetLocalNetInterfaceAddress(const wchar_t* interfaceAddress, const wchar_t* mask);

    /// Chooses an interface of this machine except loopback: the one with the address; else the first one with the
    /// netmask whose subnet contains the address; else the first.
    /// @param interfaceAddress  in network byte order; 0 for the first
    /// @param mask              in network byte order
    /// @return its address in network byte order; 0 if there is none but loopback, or more than 10 with it
    static unsigned long GetLocalNetInterfaceAddress(unsigned long interfaceAddress, unsigned long mask);

    /// Sends ICMP echo requests and waits up to 5 s for each reply; the first missing reply ends it. Requires the right
    /// to open raw sockets. Any ICMP message that this machine receives counts as a reply.
    /// @param host   name or dotted address
    /// @param count  number of requests
    /// @return number of replies; 0 also for an unknown host or without a socket
    static int Ping(const char* host, int count);
    ///@}

protected:
    /// Called by ProcessEvents() when a connection is waiting. Does nothing by default.
    virtual void OnAccept();

    /// Called by ProcessEvents() when a connection has been made; not in MODE_WINDOW. Does nothing by default.
    virtual void OnConnect();

    /// Called by ProcessEvents() when there are data to read. Does nothing by default.
    virtual void OnRead();

    /// Called by ProcessEvents() when data can be sent again; not in MODE_WINDOW. Does nothing by default.
    virtual void OnWrite();

    /// Called by ProcessEvents() when the peer has closed. It may be called twice for one close, and while data are
    /// still unread. Does nothing by default.
    virtual void OnClose();

    /// Ends sending: the peer reads what was sent and then the end of the stream. Receiving continues.
    /// @return 0 or a Winsock error
    int StopSending();

private:
    friend struct CSocketLayout;

    void ShareWith(const CSocket& other);
    void GiveUpOwnership();
    void Release();

    int OpenSocket(int type, int protocol);
    int CloseSocket();
    int BindTo(unsigned long address, unsigned short port);
    int ResultOfSetUp(int result, HANDLE earlierEvent);
    int ConfigureMode(unsigned int message, long events);
    int SelectNewEvent(long events);
    void CancelNotification();
    int SetScope(unsigned int ttl);
    int JoinGroup(const wchar_t* group);
    unsigned long SubnetBroadcast() const;
    int ReceiveFile(HANDLE file, unsigned int expectedSize);
    int WaitForMoreOfFile();
    int WaitUntilWritable(timeval* timeout) const;

    static int GetInterfaceList(_INTERFACE_INFO* list, unsigned int size);
    static void SendEchoRequest(SOCKET socket, const sockaddr_in& to);
    static unsigned long RecvEchoReply(SOCKET socket);
    static int WaitForEchoReply(SOCKET socket);
    static unsigned short in_cksum(const unsigned char* data, unsigned int size);

    MODE m_Mode;
    HANDLE m_hEvent = INVALID_HANDLE_VALUE;
    HWND m_hWindow;
    unsigned long m_ulLocalAddress;
    SOCKET m_Socket = ~SOCKET{0};
    bool m_bConnected;
    unsigned short m_usPort;
    unsigned long m_ulTimeout;

protected:
    /// A block that a derived class may attach, allocated with HeapAlloc from the process heap; initially null. It is
    /// freed with the object, or with the last of its copies.
    void* m_pExtra = nullptr;
};
