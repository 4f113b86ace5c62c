#pragma once

#include <tessel/foundation/platform.h>

class CCommMsg;
class CIpAddress;

// What the declarations below need of Winsock, so that they follow windows.h in any order; programs that fill the
// records include winsock2.h.
struct _INTERFACE_INFO;
struct _WSANETWORKEVENTS;
struct sockaddr_in;
struct timeval;
using SOCKET = UINT_PTR;
using INTERFACE_INFO = _INTERFACE_INFO;
using WSANETWORKEVENTS = _WSANETWORKEVENTS;

/// Message that a listening socket in MODE_WINDOW posts when a connection waits (WM_USER + 50). wParam is the socket,
/// lParam what WSAAsyncSelect documents.
inline constexpr unsigned int WM_SOCKET_ACCEPT = WM_USER + 50;

/// Message that a socket in MODE_WINDOW posts when data came or the peer closed (WM_USER + 51).
inline constexpr unsigned int WM_SOCKET_DATA = WM_USER + 51;

#pragma pack(push, 1)
/// Head of a typed record, as it is on the wire (little-endian, packed); the data follows it.
struct MESSAGE {
    unsigned int ulTotalLength; ///< bytes of head and data together
    unsigned int ulDataLength;  ///< bytes of data
    unsigned short usType;      ///< the sender's value

    /// The data.
    /// @return first of ulDataLength bytes, directly behind the head
    const unsigned char* GetData() const { return reinterpret_cast<const unsigned char*>(this) + sizeof(MESSAGE); }
};
#pragma pack(pop)

/// An IPv4 socket: a listening server, a stream to a peer, or a broadcast or multicast endpoint for datagrams.
///
/// An object starts without a socket, gets one from InitAsync(), InitBroadcast(), InitMulticast() or Connect(), or
/// adopts one that Accept() made, and loses it in Disconnect() or its destructor; setting up an object that still has
/// one closes that first.
///
/// Events reach the owner in one of four modes. Whoever owns a socket in MODE_WINDOW has its window procedure call
/// ProcessEvents() when a WM_SOCKET_ message comes; in MODE_EVENT a thread waits on GetEventHandle() and calls it.
/// Derive from the class and override the On... operations to be told what happened.
///
/// Results are 0 or a Winsock error code unless an operation says otherwise. A null pointer where data or a result
/// belongs gives WSAEFAULT (10014).
///
/// Copies share socket, event and extra block; the last of them closes and frees. A copy that cannot share for lack of
/// memory is without them.
/// Threads: one thread at a time uses an object and its copies. ReadMessage() and Ping() keep process-wide state:
/// neither may run on two threads at once, whatever their objects.
class TESSEL_API CSocket {
public:
    /// How events are delivered.
    enum MODE : int {
        MODE_BLOCKING = 0,    ///< not at all; calls wait
        MODE_NONBLOCKING = 1, ///< not at all; calls do not wait
        MODE_WINDOW = 2,      ///< a message is posted to the notify window; calls do not wait
        MODE_EVENT = 3        ///< an auto-reset event is signalled; calls do not wait
    };

    /// Adopts a socket.
    /// @param socket  handle, which this object closes from now on; INVALID_SOCKET for none
    /// @param mode    mode to set up with later; the socket is not touched yet
    /// @param window  notify window, or null
    CSocket(SOCKET socket, MODE mode, HWND window);

    /// Makes an object without a socket, in MODE_WINDOW.
    /// @param window  notify window
    explicit CSocket(HWND window);

    /// Makes an object without a socket.
    /// @param mode  mode to set up with
    explicit CSocket(MODE mode = MODE_BLOCKING);

    /// Shares what the other object holds.
    /// @param other  object to share with
    CSocket(const CSocket& other);

    /// Shares what the other object holds. What was held before is neither closed nor freed: Disconnect() first.
    /// @param other  object to share with
    /// @return this object
    CSocket& operator=(const CSocket& other);

    /// Closes the event and the socket and frees the extra block, unless a copy still uses them.
    virtual ~CSocket();

    /// Gives every field its initial value and starts Winsock 2.0. The constructors call it; called again it forgets
    /// what the object holds without closing it (copies keep it), and starts Winsock once more.
    /// @param socket  handle to adopt; INVALID_SOCKET for none
    /// @param mode    mode to set up with later
    /// @param window  notify window, or null
    void Create(SOCKET socket, MODE mode, HWND window);

    /// @name Set-up
    ///
    /// An address of the machine itself is chosen by GetLocalNetInterfaceAddress(). After a failure the socket is
    /// closed. In MODE_EVENT each set-up that gets as far as that makes a new event, and an earlier one stays open and
    /// is lost: use a fresh object for each connection.
    ///@{

    /// Becomes a listening server. WM_SOCKET_ACCEPT, or the event, tells of connections that wait.
    /// @param port              port in host byte order; 0 lets the system choose
    /// @param interfaceAddress  dotted address of the wanted interface; null or "0.0.0.0" for any
    /// @param mask              dotted netmask of the wanted interface
    /// @return 0, also when no socket could be made at all; else a Winsock error
    int InitAsync(unsigned short port, const wchar_t* interfaceAddress, const wchar_t* mask);

    /// Becomes an endpoint for datagrams to all, bound to the port on every interface. WM_SOCKET_DATA, or the event,
    /// tells of datagrams.
    /// @param port              own port and default destination port, in host byte order
    /// @param interfaceAddress  dotted address of the interface whose subnet Broadcast() addresses
    /// @param mask              dotted netmask of that interface
    /// @return 0 or a Winsock error
    int InitBroadcast(unsigned short port, const wchar_t* interfaceAddress, const wchar_t* mask);

    /// Becomes an endpoint for datagrams to a group, bound to the port on every interface, and joins the group.
    /// WM_SOCKET_DATA, or the event, tells of datagrams.
    /// @param port              own port and default destination port, in host byte order
    /// @param group             dotted address of the group, of which 16 characters count
    /// @param ttl               how many routers a datagram may pass, plus one
    /// @param interfaceAddress  dotted address of the interface to send and receive on
    /// @param mask              dotted netmask of that interface
    /// @return 0 or a Winsock error
    int InitMulticast(unsigned short port, const wchar_t* group, unsigned int ttl, const wchar_t* interfaceAddress,
                      const wchar_t* mask);

    /// Connects to a server; waits until that succeeded or failed. WM_SOCKET_DATA, or the event, tells of data and of
    /// the peer's close. After a failure the socket stays open, until the next attempt or the end of the object.
    /// @param address  in network byte order
    /// @param port     in host byte order
    /// @return 0 or a Winsock error
    int Connect(unsigned long address, unsigned short port);

    /// Accepts a connection. Call InitConnected() on the new object, which has this one's mode and notify window.
    /// @param out  receives the object, which is the caller's to delete; unchanged after a failure
    /// @return 0 or a Winsock error
    int Accept(CSocket** out);

    /// Marks an accepted socket as connected and requests its events, like Connect().
    /// @return 0 or a Winsock error; the socket stays open and counts as connected in either case
    int InitConnected();

    /// Changes the mode. A change to MODE_EVENT makes a new event; an earlier one stays open and is lost, so take
    /// GetEventHandle() before it.
    /// @param mode     new mode
    /// @param message  window message to be posted in MODE_WINDOW
    /// @param events   FD_ bits to be told of in MODE_WINDOW and MODE_EVENT
    /// @return 0 or a Winsock error; the mode is stored in either case
    int SetMode(MODE mode, unsigned int message, long events);

    /// Ends sending, drops what the peer sends, and closes.
    ///
    /// A blocking socket waits until the peer closes too, for ever if the peer's machine is gone. Any other drops only
    /// what has arrived and closes: if the peer is still sending, the system resets the connection, and the peer may
    /// lose the end of what was sent to it. Use DisconnectWithin() where that matters. In every mode, a peer that sends
    /// without a pause delays the return. A socket that cannot be shut down (it never was connected, it listens) stays
    /// open.
    /// @return 0, also without a socket; else a Winsock error
    virtual int Disconnect();

    /// Closes a connection without losing what was sent: ends sending, drops what the peer sends, and waits until the
    /// peer has closed too, in any mode. A peer that reads up to the end of the stream and then closes has received
    /// everything.
    /// @param milliseconds  longest wait; INFINITE for ever
    /// @return 0: the peer has closed, or there was no socket; WSAETIMEDOUT (10060): it has not, and the socket stays
    ///         open without events: call again, or give up with Disconnect(); else a Winsock error, and the socket is
    ///         closed
    int DisconnectWithin(unsigned int milliseconds);
    ///@}

    /// @name Transfer
    ///@{

    /// Receives what is there, on a blocking socket at least one byte.
    /// @param buffer    receives the bytes
    /// @param size      room in bytes; more than 2^31 - 1 counts as that
    /// @param received  receives the number of bytes, 0 with WSAEDISCON; null to ignore it; unchanged after an error
    /// @param flags     flags of recv
    /// @return 0; WSAEDISCON (10101): the peer closed gracefully, or no byte was asked for; else a Winsock error
    int Recv(unsigned char* buffer, unsigned int size, unsigned int* received, int flags);

    /// Receives a datagram.
    /// @param buffer      receives the data
    /// @param size        room in bytes; more than 2^31 - 1 counts as that
    /// @param from        receives the sender; null to ignore it
    /// @param fromLength  size of @p from in bytes, receives what was used; null to ignore it
    /// @param received    receives the number of bytes, 0 with WSAEDISCON; null to ignore it; unchanged after an error
    /// @param flags       flags of recvfrom
    /// @return 0; WSAEDISCON (10101): no byte came, an empty datagram too; else a Winsock error
    int ReceiveFrom(unsigned char* buffer, unsigned int size, sockaddr_in* from, unsigned int* fromLength,
                    unsigned int* received, int flags);

    /// Sends on a stream, with one call: a non-blocking socket may take a part.
    /// @param buffer  bytes to send
    /// @param size    bytes; more than 2^31 - 1 counts as that
    /// @param sent    receives the number of bytes taken; null to ignore it; unchanged after a failure
    /// @param flags   flags of send
    /// @return 0 or a Winsock error
    int Send(const unsigned char* buffer, unsigned int size, unsigned int* sent, int flags);

    /// Sets how long a send may wait.
    /// @param milliseconds  0 for ever
    /// @return 0 or a Winsock error
    int SetSendTimeout(unsigned int milliseconds);

    /// Gets how long a send may wait.
    /// @param milliseconds  receives it; 0 is for ever
    /// @return 0 or a Winsock error
    int GetSendTimeout(unsigned int* milliseconds);
    ///@}

    /// @name Datagrams
    ///
    /// The data of a message is sent, without its length word. Port 0 stands for the port that InitBroadcast() or
    /// InitMulticast() was given.
    ///@{

    /// Sends to one address.
    /// @param message   what to send; stays the caller's
    /// @param to        destination with its family set; the port is written into it
    /// @param toLength  size of @p to in bytes
    /// @param port      in host byte order, or 0
    /// @param sent      receives the number of bytes; null to ignore it; unchanged after a failure
    /// @return 0 or a Winsock error
    int SendTo(const CCommMsg* message, sockaddr_in* to, unsigned int toLength, unsigned short port,
               unsigned int* sent);

    /// Sends to all.
    /// @param message  what to send; stays the caller's
    /// @param port     in host byte order, or 0
    /// @param subnet   true: to the subnet of the chosen interface, where its netmask is known; else to
    ///                 255.255.255.255
    /// @return 0 or a Winsock error
    int Broadcast(const CCommMsg* message, unsigned short port, bool subnet);

    /// Sends to a group.
    /// @param message  what to send; stays the caller's
    /// @param group    dotted address of the group, of which 16 characters count
    /// @param port     in host byte order, or 0
    /// @return 0 or a Winsock error
    int Multicast(const CCommMsg* message, const wchar_t* group, unsigned short port);
    ///@}

    /// @name Files
    ///@{

    /// Sends a message in its stream form, and directly behind it the bytes of a file: at most 2,147,483,646 bytes in
    /// all. It waits until the peer took everything, whatever the send time-out.
    /// @param head  message, by which the peer knows what comes (its size, say); stays the caller's
    /// @param path  the file, which others may read and write meanwhile
    /// @return 0; the Win32 error when the file cannot be opened; else a Winsock error
    int WriteFile(const CCommMsg* head, const wchar_t* path);

    /// Receives the bytes of a file. In MODE_EVENT it waits 30 s for each next part; in MODE_WINDOW and
    /// MODE_NONBLOCKING the first moment without data ends it. It reads as long as bytes come, so a blocking socket
    /// returns only after the peer has closed, and bytes beyond the expected ones are written to the file too: let the
    /// peer wait before it sends anything else.
    /// @param path          the file, made anew; after a failure it holds what came
    /// @param expectedSize  bytes to wait for; 0 takes what is there
    /// @return 0: at least that many came; 1: the peer closed before, or nothing came in time; the Win32 error when
    ///         the file cannot be made or written; else a Winsock error
    int ReadFile(const wchar_t* path, unsigned int expectedSize);
    ///@}

    /// @name Typed messages
    ///@{

    /// Receives a whole typed record into a buffer of the process, which grows to the longest record and is never
    /// given back. A non-blocking socket that has nothing fails at once; after the first bytes it waits up to a second
    /// for each next part. A blocking one waits for ever, but up to a second only for lengths that came in part.
    /// A record whose lengths contradict each other, or that memory cannot hold, is left unread.
    /// @param socket      handle of the socket to read from, not necessarily this object's
    /// @param message     receives the record, which stays the library's and is overwritten by the next call;
    ///                    unchanged after a failure
    /// @param dataLength  receives the length of its data in bytes, as the record claims it also where that fails;
    ///                    unchanged when the lengths have not come
    /// @return 0: received; 1: failed
    int ReadMessage(SOCKET socket, MESSAGE** message, unsigned long& dataLength);

    /// Sends a typed record: waits for ever until the socket takes data, sends with one call, and waits up to 3 s until
    /// it takes data again. A non-blocking socket may take a part only, which goes unnoticed.
    /// @param type        the receiver's business
    /// @param data        bytes to send; may be null for none
    /// @param dataLength  bytes, at most 2^31 - 11
    /// @return 0; WSAENOBUFS (10055): too long, or no memory; else a Winsock error
    int WriteMessage(unsigned short type, const char* data, unsigned long dataLength);
    ///@}

    /// @name Events
    ///@{

    /// Waits until something can be done.
    /// @param timeout  longest wait; null for ever
    /// @return 0: nothing in time; sum of 1 (readable), 2 (writable) and 4 (exception); else a Winsock error
    int Select(timeval* timeout);

    /// Takes the events that came since the last call, and resets the event of MODE_EVENT.
    /// @param events  receives the FD_ bits and an error code for each; unchanged after a failure
    /// @return 0 or a Winsock error
    int GetNetworkEvents(_WSANETWORKEVENTS* events) const;

    /// Calls the On... operation of each event that came, in the order accept, connect, read, write, close. In
    /// MODE_WINDOW, where Windows keeps no events to be asked for, it looks at the socket instead: a connection that
    /// waits, data that came, or a peer that closed once all its data is read. A handler may disconnect, but must not
    /// destroy the object.
    /// @return 0; else a Winsock error, and none was called
    virtual int ProcessEvents();

    /// The event of MODE_EVENT, to wait on.
    /// @return the handle, still this object's; INVALID_HANDLE_VALUE while there is none
    HANDLE GetEventHandle() const { return m_hEvent; }
    ///@}

    /// @name Queries
    ///@{

    /// Whether the mode is MODE_BLOCKING.
    /// @return true: it is
    bool IsBlockingMode() const { return m_Mode == MODE_BLOCKING; }

    /// Whether Connect() made a connection or InitConnected() marked one, even if its events could then not be
    /// requested. It ends when Disconnect() or DisconnectWithin() closes the socket, with a new set-up or a failed
    /// wait in WriteMessage(), but not when the peer closes.
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

    /// Whether the address of the chosen interface is gone from the machine.
    /// @return true: no interface but loopback has it, none was chosen, or the interfaces cannot be listed, as more
    ///         than 10 with loopback; false: one has it
    bool AddrChanged() const;
    ///@}

    /// @name Names and interfaces
    ///@{

    /// Looks up the first address of a host.
    /// @param name       name of the host
    /// @param dottedOut  receives dotted text; room for 16 bytes; unchanged after a failure
    /// @return true: found; false: unknown
    static bool GetHostAddressByName(const char* name, char* dottedOut);

    /// Looks up the name of a host.
    /// @param dotted   dotted address
    /// @param nameOut  receives the whole name, whose length nothing limits here: give it room for NI_MAXHOST (1025)
    ///                 bytes; unchanged after a failure
    /// @return true: found; false: unknown
    static bool GetHostNameByAddress(const char* dotted, char* nameOut);

    /// Gets the name of this machine.
    /// @param out   receives the name
    /// @param size  room in characters
    /// @return 0; SOCKET_ERROR (-1): failed, WSAGetLastError() tells why (WSAEFAULT: too little room)
    static int GetLocalHostName(wchar_t* out, unsigned int size);

    /// Counts the network interfaces, without loopback.
    /// @return number; 0 after a failure, or when there are more than 20 with loopback
    static int GetNumberOfNetInterfaces();

    /// Chooses an interface of this machine, from dotted text.
    /// @param interfaceAddress  address, of which 16 characters count; null counts as 0.0.0.0
    /// @param mask              netmask, of which 16 characters count; null counts as 0.0.0.0
    /// @return its address in network byte order; 0 for any
    static unsigned long GetLocalNetInterfaceAddress(const wchar_t* interfaceAddress, const wchar_t* mask);

    /// Chooses an interface of this machine, loopback left out: the one with the address; else the first one with the
    /// netmask in whose subnet the address lies; else the first.
    /// @param interfaceAddress  in network byte order; 0 for the first
    /// @param mask              in network byte order
    /// @return its address in network byte order; 0 when there is none but loopback, or more than 10 with it
    static unsigned long GetLocalNetInterfaceAddress(unsigned long interfaceAddress, unsigned long mask);

    /// Sends ICMP echo requests and waits up to 5 s for each answer; the first that stays out ends it. Needs the
    /// right to open raw sockets. Any ICMP message that comes to this machine counts as an answer.
    /// @param host   name or dotted address
    /// @param count  requests
    /// @return answers; 0 also for an unknown host or without a socket
    static int Ping(const char* host, int count);
    ///@}

protected:
    /// Called by ProcessEvents() when a connection waits. Does nothing here.
    virtual void OnAccept();

    /// Called by ProcessEvents() when a connection is made; not in MODE_WINDOW. Does nothing here.
    virtual void OnConnect();

    /// Called by ProcessEvents() when there is data to read. Does nothing here.
    virtual void OnRead();

    /// Called by ProcessEvents() when data can be sent again; not in MODE_WINDOW. Does nothing here.
    virtual void OnWrite();

    /// Called by ProcessEvents() when the peer has closed. It may be called twice for one close, and while data is
    /// still there to be read. Does nothing here.
    virtual void OnClose();

    /// Ends sending: the peer reads what was sent and then the end of the stream. Receiving goes on.
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
    /// A block that a derived class may leave here, made with HeapAlloc from the process heap; null at first. It is
    /// freed with the object, or with the last of its copies.
    void* m_pExtra = nullptr;
};
