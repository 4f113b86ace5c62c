#pragma once

#include <tessel/foundation/platform.h>

/// A mailslot: a channel of datagrams with a name. One object creates it on this machine and reads, others open it,
/// from any machine of the network, and write.
///
/// In contrast to a named pipe it goes one way, has no connection, and can reach all machines of a domain at once; how
/// long a message may then be, and whether it arrives, is the system's affair.
///
/// An overlapped read works on a record inside this object and on the caller's buffer: leave both where they are until
/// GetStatus() says that it has ended, and start no second one before. Close(), the destructor and opening anew cancel
/// it.
/// Copies share the handle, which the last of them closes. A copy of an object with a read under way never learns of
/// that read's end: ask the object that started it.
/// Threads: one at a time.
class TESSEL_API CMailslot {
public:
    /// A reading end without a mailslot.
    CMailslot();

    /// Shares handle and name; everything else is copied. Without memory to share them the copy has neither.
    /// @param other  object to copy
    CMailslot(const CMailslot& other);

    /// Shares handle and name, and copies everything else. A mailslot that was held before stays open, out of reach:
    /// Close() it first.
    /// @param other  object to copy
    /// @return this object
    CMailslot& operator=(const CMailslot& other);

    /// Closes the handle and frees the name, unless a copy still uses them.
    virtual ~CMailslot();

    /// Creates a mailslot on this machine and becomes its reading end. A handle that was held before is closed.
    /// @param name            name, copied; the path "\\.\mailslot\NAME" is cut to 519 characters
    /// @param maxMessageSize  bytes that a message may have; 0 for any
    /// @param readTimeout     milliseconds that a read waits for a message; 0 not at all, MAILSLOT_WAIT_FOREVER for
    /// ever
    /// @param attributes      null for the defaults
    /// @return true: created; false: GetStatus() tells the Win32 error (ERROR_ALREADY_EXISTS for a name in use)
    bool Create(const wchar_t* name, unsigned long maxMessageSize, unsigned long readTimeout,
                SECURITY_ATTRIBUTES* attributes);

    /// Opens a mailslot for writing. A handle that was held before is closed.
    /// @param name    name of the mailslot, copied; the path "\\SERVER\mailslot\NAME" is cut to 519 characters
    /// @param server  machine or domain to write to; "." is this machine
    /// @return true: open; false: GetStatus() tells the Win32 error (ERROR_FILE_NOT_FOUND without such a mailslot)
    bool Open(const wchar_t* name, const wchar_t* server);

    /// Reads one message.
    /// @param buffer  receives the message
    /// @param size    its size in bytes; a longer message stays in the mailslot (ERROR_INSUFFICIENT_BUFFER)
    /// @param read    receives the bytes read, 0 while an overlapped read goes on; may be null
    /// @param event   null: wait for a message as long as Create() said. A manual-reset event: the read is overlapped,
    ///                the event is reset first and signalled at the end
    /// @return true: read, or an overlapped read has started (GetStatus() is then ERROR_IO_PENDING);
    ///         false: GetStatus() tells the Win32 error (ERROR_SEM_TIMEOUT when no message came)
    bool Read(unsigned char* buffer, unsigned long size, unsigned long* read, void* event);

    /// Writes one message and waits until the system has taken it.
    /// @param buffer   the message
    /// @param size     bytes
    /// @param written  receives the bytes written; may be null
    /// @return true: written; false: GetLastError() tells why, the object does not keep it
    bool Write(unsigned char* buffer, unsigned long size, unsigned long* written) const;

    /// Result of the last operation or, while a read is pending, how that goes; never waits. A read that failed is
    /// asked about again by each further call, until the next one starts or the object is opened anew.
    /// @param transferred  receives the bytes of a read that has ended; otherwise unchanged; may be null
    /// @return 0: done; ERROR_IO_PENDING (997): under way; else a Win32 error
    unsigned long GetStatus(unsigned long* transferred);

    /// Asks about the reading end's mailslot; each pointer may be null.
    /// @param maxMessageSize  receives the bytes that a message may have; 0: any number
    /// @param nextSize        receives the bytes of the next message; MAILSLOT_NO_MESSAGE: there is none
    /// @param count           receives the number of messages that wait
    /// @param readTimeout     receives the milliseconds that a read waits
    /// @return 0 or the Win32 error, which is kept too
    unsigned long GetInfo(unsigned long* maxMessageSize, unsigned long* nextSize, unsigned long* count,
                          unsigned long* readTimeout);

    /// Changes how long a read waits.
    /// @param readTimeout  milliseconds; 0 not at all, MAILSLOT_WAIT_FOREVER for ever
    /// @return 0 or the Win32 error, which is kept too
    unsigned long SetInfo(unsigned long readTimeout);

    /// Cancels a read that is pending and closes the handle, which stays open for copies. GetStatus() still tells of
    /// that read until the next one starts or the object is opened anew, as a rule ERROR_OPERATION_ABORTED (995).
    /// @return true: closed; false: the error is kept
    bool Close();

    /// The name.
    /// @return text as given to Create() or Open(), owned by this object; null before
    const wchar_t* GetName() const { return m_szName; }

    /// Length of the name.
    /// @return characters with the terminator; 0 without a name
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
