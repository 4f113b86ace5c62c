#pragma once

#include <tessel/foundation/platform.h>

/// One interface to four kinds of storage. It reads and writes bytes at an offset and keeps a read and a write cursor.
///
/// Programs use it to pass bulk data through a named mapping, and to read and write data files with the same calls.
/// The post office maps its region itself and does not use it.
///
/// Every operation that returns a status also stores it in the object (GetStatus()): 0 or a Win32 error. A range
/// outside storage in memory, one whose end exceeds 2^32 - 1, and any range of an unknown kind give
/// ERROR_NOT_ENOUGH_MEMORY; in a file such an end wraps. A null buffer with a count gives ERROR_INVALID_PARAMETER.
///
/// Copies share the storage: each reads what the other writes, until one of them makes a heap buffer grow, which
/// gives it its own buffer. The last copy closes and frees. A copy that cannot share because memory is exhausted has
/// the status ERROR_NOT_ENOUGH_MEMORY.
/// Threads: not synchronised; only one thread at a time may use an object and its copies.
class TESSEL_API CMemory {
public:
    /// Special offsets.
    enum : unsigned long {
        AT_CURSOR = 0xFFFFFFFF ///< the cursor of the operation
    };

    /// The kinds of storage.
    enum KIND : int {
        KIND_HEAP = 0,    ///< heap buffer that grows as it is read and written
        KIND_MAPPING = 1, ///< named shared mapping that another component created
        KIND_FILE = 2,    ///< file
        KIND_GLOBAL = 3   ///< fixed global memory block, allocated by GetBuffer()
    };

    /// How a file is opened: the dispositions of CreateFileW, in their order.
    enum OPENTYPE : unsigned int {
        OPENTYPE_CREATE_NEW = 0,       ///< fails when the file exists
        OPENTYPE_CREATE_ALWAYS = 1,    ///< empties an existing file
        OPENTYPE_OPEN_EXISTING = 2,    ///< fails when the file is missing
        OPENTYPE_OPEN_ALWAYS = 3,      ///< opens the file, or creates it
        OPENTYPE_TRUNCATE_EXISTING = 4 ///< empties the file; fails when it is missing
    };

    /// Opens the storage; GetStatus() returns the result.
    ///
    /// Heap and global storage start empty and ignore the other arguments. A mapping must exist, otherwise the status
    /// is ERROR_INVALID_PARAMETER; its size is what the caller passes, and reads and writes are checked against it. If
    /// write access to a file is denied, it is opened again with the same open type, read-only. While a file is open
    /// for writing, others may read, write and delete it. Any other kind gives status 1.
    /// @param kind      one of KIND
    /// @param size      bytes of the mapping; unused for the other kinds
    /// @param name      name of the mapping or the file
    /// @param openType  how to open a file; an unknown value is reported and treated as OPENTYPE_OPEN_ALWAYS
    /// @param readOnly  not 0: opens a file for reading only and denies others write access
    CMemory(int kind, unsigned long size, const wchar_t* name, OPENTYPE openType, int readOnly);

    /// Shares the other object's storage.
    /// @param other  object to share with
    CMemory(const CMemory& other);

    /// Shares the other object's storage. Neither closes nor frees the previous storage: to avoid that, destroy the
    /// object and create another one.
    /// @param other  object to share with
    /// @return this object
    CMemory& operator=(const CMemory& other);

    /// Closes and frees the storage, unless a copy still uses it.
    virtual ~CMemory();

    /// Result of the last operation.
    /// @return 0, a Win32 error, or 1 for an unknown kind
    int GetStatus() const { return m_iStatus; }

    /// Whether this object created the file.
    /// @return 1: it did not exist before, or no file was opened; 0: it existed
    int IsVirginFile() const { return m_iNewFile; }

    /// Sets the read cursor.
    /// @param offset  bytes from the start
    void SetReadCursor(unsigned long offset) { m_ulReadCursor = offset; }

    /// The read cursor.
    /// @return bytes from the start to the end of the last read
    unsigned long GetReadCursor() const { return m_ulReadCursor; }

    /// Sets the write cursor.
    /// @param offset  bytes from the start
    void SetWriteCursor(unsigned long offset) { m_ulWriteCursor = offset; }

    /// The write cursor.
    /// @return bytes from the start to the end of the last write
    unsigned long GetWriteCursor() const { return m_ulWriteCursor; }

    /// Name of the file or mapping, truncated to 259 characters.
    /// @return text owned by this object; empty for the other kinds and until something is opened
    const wchar_t* GetFileName() const { return m_szName; }

    /// Reads into the caller's buffer.
    ///
    /// A heap buffer grows to hold the range; new bytes are 0. A mapping rejects a read that ends exactly at its end.
    /// The read cursor moves to the end of the range, even if reading a file fails.
    /// @param dest    receives the bytes
    /// @param count   bytes to read
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0; ERROR_HANDLE_EOF (38): the file is shorter; else a Win32 error
    int ReadMemoryDirect(unsigned char* dest, unsigned long count, unsigned long offset);

    /// Reads into a buffer of this object and appends a 0 byte. Otherwise like ReadMemoryDirect().
    /// @param result  receives the buffer, owned by this object and overwritten by the next ReadMemory() of it or a
    ///                copy. Unchanged if a heap buffer or a mapping rejects the range because of its size, or memory is
    ///                exhausted; otherwise set, with zeros for missing bytes
    /// @param count   bytes to read; bytes beyond the end of a file are 0
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0; ERROR_HANDLE_EOF (38): the file is shorter; else a Win32 error
    int ReadMemory(unsigned char** result, unsigned long count, unsigned long offset);

    /// Writes. On success the write cursor moves to the end of the range.
    ///
    /// A heap buffer grows to hold the range; bytes between its old end and the range are undefined. A mapping accepts
    /// a write that ends exactly at its end. A partial write to a file is not detected.
    /// @param src     bytes to write
    /// @param count   bytes to write
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0 or a Win32 error
    int WriteMemory(const unsigned char* src, unsigned long count, unsigned long offset);

    /// Length of a file, or the size passed for a mapping. Does not change the status.
    /// @return bytes; for a file over 4 GB, which is reported, the low 32 bits; 0xFFFFFFFF if the length cannot be
    ///         read; 0 for the other kinds
    unsigned long GetFileLength();

    /// The storage in memory. Each call for a global block allocates a new one and sets the status to 0 or the Win32
    /// error. A block smaller than the new size is freed first. Any other block stays allocated for the program to free
    /// (GlobalFree), unless a copy still uses it, which then frees it. The content is not copied.
    /// @param size  bytes of the global block; unused for the other kinds
    /// @return the buffer, owned by this object; a heap buffer moves when it grows. Null if there is none, or for a
    ///         file. If the allocation fails, the old block unless it was freed
    void* GetBuffer(unsigned long size);

    /// Deletes a file (DeleteFileW).
    /// @param name  the file
    /// @return 0: deleted, or it did not exist; else the Win32 error
    static int RemoveFile(const wchar_t* name);

    /// Closes the file, also for copies, and renames the file named by GetFileName(). That name is truncated to 259
    /// characters and may then name another file. The object keeps the value of the closed handle and closes it again
    /// when it is destroyed, when the value may belong to another file: destroy the object at once.
    /// @param newName  new name, which GetFileName() returns after success; null gives -1
    /// @return 0, or the C runtime's result (see errno)
    int ReName(const wchar_t* newName);

    /// Sets the time of the file's last write.
    /// @param time  UTC
    /// @return 0; ERROR_INVALID_HANDLE (6): not a file; else the Win32 error
    int SetFileModificationTime(const FILETIME* time);

    /// Gets the time of the file's last write.
    /// @param time  receives the time, in UTC
    /// @return 0; ERROR_INVALID_HANDLE (6): not a file; else the Win32 error
    int GetFileModificationTime(FILETIME* time);

private:
    friend struct CMemoryLayout;

    int OpenFile(const wchar_t* name, unsigned int openType, bool readOnly);
    int OpenMapping(unsigned long size, const wchar_t* name);

    void KeepName(const wchar_t* name);
    void ShareWith(const CMemory& other);
    void DropOwnership();
    void ReleaseResources();

    int PrepareRead(unsigned long offset, unsigned long count);
    int PrepareWrite(unsigned long offset, unsigned long count);
    int GrowHeap(unsigned long offset, unsigned long count);
    bool EnlargeReadCopy(unsigned long count);
    unsigned long BytesInBounds(unsigned long offset, unsigned long count) const;

    int Fetch(unsigned char* dest, unsigned long count, unsigned long offset, unsigned long& read);
    int FetchFromFile(unsigned char* dest, unsigned long count, unsigned long offset, unsigned long& read);
    int Store(const unsigned char* src, unsigned long count, unsigned long offset);
    int StoreInFile(const unsigned char* src, unsigned long count, unsigned long offset);

    HANDLE m_hHandle;
    HANDLE m_hMapping;
    wchar_t m_szName[260];
    unsigned char* m_pBuffer;
    unsigned char* m_pReadCopy;
    int m_iKind;
    unsigned long m_ulSize;
    unsigned long m_ulReadCursor;
    unsigned long m_ulWriteCursor;
    unsigned long m_ulReadCopyCapacity;
    unsigned long m_ulRequestedSize;
    int m_iStatus;
    int m_iNewFile;
};
