#pragma once

#include <tessel/foundation/platform.h>

/// Status of a pipe without a connection: closed, or not awaiting a client yet.
constexpr unsigned long PIPE_CLOSED = 0x15010000;
/// Status of a server's pipe that awaits its client.
constexpr unsigned long PIPE_LISTENING = 0x15010001;
/// Status of a pipe whose last operation succeeded while client and server are connected.
constexpr unsigned long PIPE_CONNECTED = 0x15010002;

/// The client's end of a named pipe: a two-way connection with a server of this or another machine.
///
/// Bytes are read as a stream, whatever messages the server wrote. Reads and writes do not tell how many bytes they
/// moved: both sides must know the size of what they exchange.
///
/// A pipe opened as overlapped never waits: a transfer either ends at once or goes on by itself, signals the caller's
/// event at its end, and GetStatus() then tells how it went. It works on a record inside this object and on the
/// caller's buffer: leave both where they are until then, and start nothing else before. Close(), the destructor and
/// another Open() cancel it.
/// Copies share the handle, which the last of them closes. A copy of an object with an operation under way never
/// learns of its end: ask the object that started it.
/// Threads: one at a time.
class TESSEL_API CClientNamedPipe {
public:
    /// Directions of a pipe.
    enum MODE : int {
        MODE_READ = 0,      ///< this end reads
        MODE_WRITE = 1,     ///< this end writes
        MODE_READ_WRITE = 2 ///< both
    };

    /// Names a pipe without opening it.
    /// @param name  name, copied and cut to 19 characters
    explicit CClientNamedPipe(const wchar_t* name);

    /// Shares the handle and copies everything else. Without memory to share it the copy has none.
    /// @param other  object to copy
    CClientNamedPipe(const CClientNamedPipe& other);

    /// Shares the handle and copies everything else. A pipe that was held before stays open, out of reach: Close() it
    /// first.
    /// @param other  object to copy
    /// @return this object
    CClientNamedPipe& operator=(const CClientNamedPipe& other);

    /// Closes the handle, unless a copy still uses it.
    virtual ~CClientNamedPipe();

    /// Opens the pipe of a server that awaits a client. A handle that was held before is closed.
    /// @param server      machine of the server; "." is this one. The path "\\SERVER\PIPE\NAME" is cut to 259
    /// characters
    /// @param mode        direction; the server must allow it
    /// @param overlapped  true: operations need an event and never wait
    /// @return true: open, the status is PIPE_CONNECTED; false: the status is the Win32 error (ERROR_PIPE_BUSY when no
    ///         server's end is free), or nothing changed for a null server or another mode
    bool Open(const wchar_t* server, MODE mode, bool overlapped);

    /// Reads.
    /// @param buffer  receives the bytes
    /// @param size    bytes at most
    /// @param event   a manual-reset event, for an overlapped pipe; unused otherwise
    /// @return true: read, the status is PIPE_CONNECTED; false: the status is the Win32 error, which for an overlapped
    ///         read that goes on is ERROR_IO_PENDING, and for a message longer than the buffer ERROR_MORE_DATA
    bool Read(void* buffer, unsigned int size, void* event);

    /// Writes.
    /// @param buffer  bytes to write
    /// @param size    number of bytes
    /// @param event   a manual-reset event, for an overlapped pipe; unused otherwise
    /// @return true: written, the status is PIPE_CONNECTED; false: the status is the Win32 error, which for an
    ///         overlapped write that goes on is ERROR_IO_PENDING
    bool Write(const void* buffer, unsigned int size, void* event);

    /// The status; while an overlapped operation is pending the system is asked how it goes. Never waits.
    /// @return PIPE_CLOSED, PIPE_LISTENING, PIPE_CONNECTED or a Win32 error; ERROR_IO_PENDING (997): still under way
    unsigned long GetStatus();

    /// Cancels an operation that is pending and closes the handle, which stays open for copies. The status is
    /// PIPE_CLOSED; but GetStatus() still tells of an operation that it has not reported as done, as a rule
    /// ERROR_OPERATION_ABORTED (995), until the next one starts or, on a client, it is opened anew.
    virtual void Close();

private:
    friend class CServerNamedPipe;
    friend struct CNamedPipeLayout;

    void Reset();
    OVERLAPPED* Prepare(void* event);
    bool RecordStart(bool succeeded);
    void ShareWith(const CClientNamedPipe& other);

    wchar_t m_szName[20];
    wchar_t m_szPath[260];
    unsigned long m_ulStatus;
    HANDLE m_hPipe;
    bool m_bOverlapped;
    OVERLAPPED m_Overlapped;
    OVERLAPPED* m_pOverlapped;
    bool m_bPending;
};

/// The server's end of a named pipe; it serves one client at a time, and one name may have many such ends.
///
/// Open(), AwaitConnection(), transfers, CloseInstance(), and from AwaitConnection() on again for the next client.
/// What is written in one call is one message, and one read gives one message at most.
/// Otherwise like CClientNamedPipe.
class TESSEL_API CServerNamedPipe : public CClientNamedPipe {
public:
    /// Names a pipe without creating it.
    /// @param name  name, copied and cut to 19 characters
    explicit CServerNamedPipe(const wchar_t* name);

    /// Shares the handle and copies everything else. Without memory to share it the copy has none.
    CServerNamedPipe(const CServerNamedPipe&) = default;

    /// Shares the handle and copies everything else. A pipe that was held before stays open, out of reach: Close() it
    /// first.
    /// @return this object
    CServerNamedPipe& operator=(const CServerNamedPipe&) = default;

    /// Closes the handle, unless a copy still uses it; what the client has not read yet it can still read.
    ~CServerNamedPipe() override;

    /// Creates one end of the pipe on this machine, with buffers of 4,096 bytes each way. A handle that was held before
    /// is closed.
    /// @param mode        direction
    /// @param overlapped  true: operations need an event and never wait
    /// @return true: created, the status is as it was before, or that of an operation that this cancelled; false: the
    ///         status is the Win32 error, or nothing changed for another mode
    bool Open(CClientNamedPipe::MODE mode, bool overlapped);

    /// Waits for a client or, on an overlapped pipe, starts to. The status is then PIPE_CONNECTED, ERROR_IO_PENDING
    /// (GetStatus() goes on to PIPE_CONNECTED) or the Win32 error; ERROR_PIPE_CONNECTED (535) means that the client
    /// came before the call and is connected, and stays until the next operation.
    /// @param event  a manual-reset event, for an overlapped pipe; unused otherwise
    void AwaitConnection(void* event);

    /// Takes leave of the client, then closes like CClientNamedPipe::Close(). The leave waits until the client has read
    /// everything. It is left out when the status is one of those errors that share no bit with PIPE_CONNECTED, as
    /// ERROR_BROKEN_PIPE (109).
    void Close() override;

    /// Waits until the client has read everything and disconnects it; the end can then await the next client. The
    /// status is PIPE_CLOSED; as after Close(), GetStatus() may still tell of an operation that it has not reported as
    /// done.
    void CloseInstance();
};
