#pragma once

#include <tessel/foundation/platform.h>

/// A mailslot: a named one-way channel for datagrams. One object creates it on this machine and reads; others open it,
/// from any machine on the network, and write.
///
/// Unlike a named pipe it works in one direction, has no connection, and can reach all machines of a domain at once;
/// the system then limits the length of messages and does not guarantee their delivery.
///
/// An overlapped read uses a record inside this object and the caller's buffer: keep both in place until GetStatus()
/// reports its end, and do not start a second read before that. Close(), the destructor and reopening cancel it.
/// Copies share the handle; the last one closes it. If an object is copied while a read is pending, only the original
/// learns of the read's end.
/// Threads: one at a time.
class TESSEL_API CMailslot {
public:
    /// Creates a reading end without a mailslot.
    CMailslot();

    /// Shares handle and name and copies everything else. If memory is short, the copy has neither handle nor name.
    /// @param other  object to copy
    CMailslot(const CMailslot& other);

    /// Shares handle and name and copies everything else. The previous mailslot stays open and is leaked: Close() it
    /// first.
    /// @param other  object to copy
    /// @return this object
    CMailslot& operator=(const CMailslot& other);

    /// Closes the handle and frees the name, unless a copy still uses them.
    virtual ~CMailslot();

    /// Creates a mailslot on this machine and becomes its reading end. Closes the previous handle.
    /// @param name            name, copied; the path "\\.\mailslot\NAME" is truncated to 519 characters
    /// @param maxMessageSize  longest message in bytes; 0 for any
    /// @param readTimeout     milliseconds that a read waits for a message; 0 polls, MAILSLOT_WAIT_FOREVER waits
    ///                        indefinitely
    /// @param attributes      null for the defaults
    /// @return true: created; false: GetStatus() returns the Win32 error (ERROR_ALREADY_EXISTS: the name is in use)
    bool Create(const wchar_t* name, unsigned long maxMessageSize, unsigned long readTimeout,
                SECURITY_ATTRIBUTES* attributes);

    /// Opens a mailslot for writing. Closes the previous handle.
    /// @param name    name of the mailslot, copied; the path "\\SERVER\mailslot\NAME" is truncated to 519 characters
    /// @param server  machine or domain to write to; "." is this machine
    /// @return true: open; false: GetStatus() returns the Win32 error (ERROR_FILE_NOT_FOUND: no such mailslot)
    bool Open(const wchar_t* name, const wchar_t* server);

    /// Reads one message.
    /// @param buffer  receives the message
    /// @param size    its size in bytes; a longer message stays in the mailslot (ERROR_INSUFFICIENT_BUFFER)
    /// @param read    receives the bytes read, 0 while an overlapped read is pending; may be null
    /// @param event   null: wait for a message up to the time-out given to Create(). A manual-reset event: the read is
    ///                overlapped; the event is reset first and signalled at the end
    /// @return true: read, or an overlapped read has started (GetStatus() then returns ERROR_IO_PENDING);
    ///         false: GetStatus() returns the Win32 error (ERROR_SEM_TIMEOUT: no message arrived)
    bool Read(unsigned char* buffer, unsigned long size, unsigned long* read, void* event);

    /// Writes one message and waits until the system has accepted it.
    /// @param buffer   the message
    /// @param size     bytes
    /// @param written  receives the bytes written; may be null
    /// @return true: written; false: see GetLastError(), the object does not keep the error
    bool Write(unsigned char* buffer, unsigned long size, unsigned long* written) const;

    /// Returns the result of the last operation or, while a read is pending, the state of that read; never waits. After
    /// a failed read each further call queries it again, until the next read starts or the object is reopened.
    /// @param transferred  receives the bytes of a completed read; otherwise unchanged; may be null
    /// @return 0: done; ERROR_IO_PENDING (997): still pending; else a Win32 error
    unsigned long GetStatus(unsigned long* transferred);

    /// Queries the reading end's mailslot; each pointer may be null.
    /// @param maxMessageSize  receives the longest message in bytes; 0: any
    /// @param nextSize        receives the size of the next message in bytes; MAILSLOT_NO_MESSAGE: there is none
    /// @param count           receives the number of waiting messages
    /// @param readTimeout     receives the read time-out in milliseconds
    /// @return 0 or the Win32 error, which is also kept
    unsigned long GetInfo(unsigned long* maxMessageSize, unsigned long* nextSize, unsigned long* count,
                          unsigned long* readTimeout);

    /// Sets the read time-out.
    /// @param readTimeout  milliseconds; 0 polls, MAILSLOT_WAIT_FOREVER waits indefinitely
    /// @return 0 or the Win32 error, which is also kept
    unsigned long SetInfo(unsigned long readTimeout);

    /// Cancels a pending read and closes the handle, which stays open for copies. GetStatus() still returns the result
    /// of that read, normally ERROR_OPERATION_ABORTED (995), until the next one starts or the object is reopened.
    /// @return true: closed; false: the error is kept
    bool Close();

    /// The name.
    /// @return text as passed to Create() or Open(), owned by this object; null before that
    const wchar_t* GetName() const { return m_szName; }

    /// Length of the name.
    /// @return characters including the terminator; 0 without a name
    unsigned long GetNameLen() const { return m_ulNameLen; }

private:
    friend struct CMailslotLayout;

    bool StoreName(const wchar_t* name);
    void ReleaseName();
    void Reset();
    bool TakeHandle(HANDLE handle);
    unsigned long StoreError(bool succeeded);
    void ShareWith(const CMailslot& other);

    HANDLE m_hMailslot;
    BOOL m_bReadingEnd;
    unsigned long m_ulLastError;
    OVERLAPPED m_Overlapped;
    BOOL m_bPending;
    wchar_t* m_szName;
    unsigned long m_ulNameLen;
};
