#pragma once

#include <tessel/foundation/platform.h>

/// Status of a pipe without a connection: closed, or not yet awaiting a client.
constexpr unsigned long PIPE_CLOSED = 0x15010000;
/// Status of a server's pipe that is awaiting a client.
constexpr unsigned long PIPE_LISTENING = 0x15010001;
/// Status of a pipe whose last operation succeeded while client and server are connected.
constexpr unsigned long PIPE_CONNECTED = 0x15010002;

/// The client's end of a named pipe: a two-way connection with a server on this or another machine.
///
/// Bytes are read as a stream, regardless of the server's message boundaries. Reads and writes do not report how many
/// bytes were transferred: both sides must know the size of what they exchange.
///
/// A pipe opened as overlapped never waits: a transfer either completes at once or continues in the background and
/// signals the caller's event at its end; GetStatus() then returns the result. It uses a record inside this object and
/// the caller's buffer: until then keep both in place and start no other operation. Close(), the destructor and another
/// Open() cancel it.
/// Copies share the handle; the last one closes it. If an object is copied while an operation is pending, only the
/// original learns of its end.
/// Threads: one at a time.
class TESSEL_API CClientNamedPipe {
public:
    /// Directions of a pipe.
    enum MODE : int {
        MODE_READ = 0,      ///< this end reads
        MODE_WRITE = 1,     ///< this end writes
        MODE_READ_WRITE = 2 ///< both
    };

    /// Stores the name of a pipe without opening it.
    /// @param name  name, copied and truncated to 19 characters
    explicit CClientNamedPipe(const wchar_t* name);

    /// Shares the handle and copies everything else. If memory is short, the copy has no handle.
    /// @param other  object to copy
    CClientNamedPipe(const CClientNamedPipe& other);

    /// Shares the handle and copies everything else. The previous pipe stays open and is leaked: Close() it first.
    /// @param other  object to copy
    /// @return this object
    CClientNamedPipe& operator=(const CClientNamedPipe& other);

    /// Closes the handle, unless a copy still uses it.
    virtual ~CClientNamedPipe();

    /// Opens the pipe of a server that is awaiting a client. Closes the previous handle.
    /// @param server      machine of the server; "." is this one. The path "\\SERVER\PIPE\NAME" is truncated to 259
    ///                    characters
    /// @param mode        direction; the server must allow it
    /// @param overlapped  true: operations need an event and never wait
    /// @return true: open, the status is PIPE_CONNECTED; false: the status is the Win32 error (ERROR_PIPE_BUSY: no
    ///         server's end is free), or unchanged for a null server or an invalid mode
    bool Open(const wchar_t* server, MODE mode, bool overlapped);

    /// Reads.
    /// @param buffer  receives the bytes
    /// @param size    bytes at most
    /// @param event   a manual-reset event, for an overlapped pipe; unused otherwise
    /// @return true: read, the status is PIPE_CONNECTED; false: the status is the Win32 error: ERROR_IO_PENDING for an
    ///         overlapped read in progress, ERROR_MORE_DATA for a message longer than the buffer
    bool Read(void* buffer, unsigned int size, void* event);

    /// Writes.
    /// @param buffer  bytes to write
    /// @param size    number of bytes
    /// @param event   a manual-reset event, for an overlapped pipe; unused otherwise
    /// @return true: written, the status is PIPE_CONNECTED; false: the status is the Win32 error: ERROR_IO_PENDING for
    ///         an overlapped write in progress
    bool Write(const void* buffer, unsigned int size, void* event);

    /// Returns the status; while an overlapped operation is pending it queries the system. Never waits.
    /// @return PIPE_CLOSED, PIPE_LISTENING, PIPE_CONNECTED or a Win32 error; ERROR_IO_PENDING (997): still pending
    unsigned long GetStatus();

    /// Cancels a pending operation and closes the handle, which stays open for copies. The status is PIPE_CLOSED; but
    /// if GetStatus() has not yet reported an operation as completed, it still returns that operation's result,
    /// normally ERROR_OPERATION_ABORTED (995), until the next one starts or, on a client, the pipe is reopened.
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

/// The server's end of a named pipe; it serves one client at a time, and several ends may have the same name.
///
/// Order: Open(), AwaitConnection(), transfers, CloseInstance(); then AwaitConnection() again for the next client.
/// Each write sends one message, and each read returns at most one.
/// Otherwise like CClientNamedPipe.
class TESSEL_API CServerNamedPipe : public CClientNamedPipe {
public:
    /// Stores the name of a pipe without creating it.
    /// @param name  name, copied and truncated to 19 characters
    explicit CServerNamedPipe(const wchar_t* name);

    /// Shares the handle and copies everything else. If memory is short, the copy has no handle.
    CServerNamedPipe(const CServerNamedPipe&) = default;

    /// Shares the handle and copies everything else. The previous pipe stays open and is leaked: Close() it first.
    /// @return this object
    CServerNamedPipe& operator=(const CServerNamedPipe&) = default;

    /// Closes the handle, unless a copy still uses it; the client can still read what it has not read yet.
    ~CServerNamedPipe() override;

    /// Creates one end of the pipe on this machine, with buffers of 4,096 bytes each way. Closes the previous handle.
    /// @param mode        direction
    /// @param overlapped  true: operations need an event and never wait
    /// @return true: created; the status is unchanged, or that of an operation cancelled by this call; false: the
    ///         status is the Win32 error, or unchanged for an invalid mode
    bool Open(CClientNamedPipe::MODE mode, bool overlapped);

    /// Waits for a client or, on an overlapped pipe, starts waiting. The status is then PIPE_CONNECTED,
    /// ERROR_IO_PENDING (GetStatus() changes it to PIPE_CONNECTED) or the Win32 error; ERROR_PIPE_CONNECTED (535) means
    /// that the client had connected before the call, and remains until the next operation.
    /// @param event  a manual-reset event, for an overlapped pipe; unused otherwise
    void AwaitConnection(void* event);

    /// Disconnects the client after it has read everything, then closes like CClientNamedPipe::Close(). The
    /// disconnection is skipped if the status is an error that shares no bit with PIPE_CONNECTED, such as
    /// ERROR_BROKEN_PIPE (109).
    void Close() override;

    /// Waits until the client has read everything and disconnects it; then the next client can be awaited. The status
    /// is PIPE_CLOSED; as after Close(), GetStatus() may still return the result of an operation that it has not
    /// reported as completed.
    void CloseInstance();
};
