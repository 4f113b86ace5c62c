#pragma once

#include <tessel/foundation/platform.h>

/// One interface for four kinds of storage: reads and writes bytes at an offset, with a read cursor and a write cursor.
///
/// Programs use it to pass bulk data through a named mapping, and to read and write data files with the same calls. The
/// post office maps its region itself and does not use it.
///
/// Every operation that returns a status also stores it in the object (GetStatus()): 0 or a Win32 error. Ranges outside
/// storage in memory, or with an end above 2^32 - 1, return ERROR_NOT_ENOUGH_MEMORY, and so does any range of an
/// unknown kind; in a file such an end wraps. A null buffer with a count returns ERROR_INVALID_PARAMETER.
///
/// Copies share the storage: one reads what the other writes, until a heap buffer grows, which gives that copy its own
/// buffer. The last copy closes and frees the storage. If memory is short, a copy has the status
/// ERROR_NOT_ENOUGH_MEMORY.
/// Threads: not synchronised; only one thread at a time may use an object and its copies.
class TESSEL_API CMemory {
public:
    /// Offsets with a special meaning.
    enum : unsigned long {
        AT_CURSOR = 0xFFFFFFFF ///< the cursor of the operation
    };

    /// The kinds of storage.
    enum KIND : int {
        KIND_HEAP = 0,    ///< heap buffer that grows as it is read and written
        KIND_MAPPING = 1, ///< named shared mapping created by another component
        KIND_FILE = 2,    ///< file
        KIND_GLOBAL = 3   ///< fixed global memory block, allocated by GetBuffer()
    };

    /// How a file is opened: the dispositions of CreateFileW, in the same order.
    enum OPENTYPE : unsigned int {
        OPENTYPE_CREATE_NEW = 0,       ///< fails if the file exists
        OPENTYPE_CREATE_ALWAYS = 1,    ///< empties an existing file
        OPENTYPE_OPEN_EXISTING = 2,    ///< fails if the file is missing
        OPENTYPE_OPEN_ALWAYS = 3,      ///< opens the file, or creates it
        OPENTYPE_TRUNCATE_EXISTING = 4 ///< empties the file; fails if it is missing
    };

    /// Opens the storage; GetStatus() returns the result.
    ///
    /// Heap and global storage start empty and ignore the other arguments. A mapping must exist, else the status is
    /// ERROR_INVALID_PARAMETER; the caller states its size, against which reads and writes are checked. If a file may
    /// not be written, it is opened again, with the same open type, for reading only; while open for writing it can be
    /// read, written and deleted by others. Any other kind sets status 1.
    /// @param kind      one of KIND
    /// @param size      size of the mapping in bytes; unused for the other kinds
    /// @param name      name of the mapping or the file
    /// @param openType  how to open a file; an unknown value is reported and counts as OPENTYPE_OPEN_ALWAYS
    /// @param readOnly  not 0: open a file for reading only, and deny others write access
    CMemory(int kind, unsigned long size, const wchar_t* name, OPENTYPE openType, int readOnly);

    /// Shares the other object's storage.
    /// @param other  object to share with
    CMemory(const CMemory& other);

    /// Shares the other object's storage. The previous storage is neither closed nor freed: destroy the object and
    /// create another one instead.
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
    /// @return offset in bytes, after the last read
    unsigned long GetReadCursor() const { return m_ulReadCursor; }

    /// Sets the write cursor.
    /// @param offset  bytes from the start
    void SetWriteCursor(unsigned long offset) { m_ulWriteCursor = offset; }

    /// The write cursor.
    /// @return offset in bytes, after the last write
    unsigned long GetWriteCursor() const { return m_ulWriteCursor; }

    /// Name of the file or mapping, truncated to 259 characters.
    /// @return text owned by this object; empty for the other kinds and while nothing was opened
    const wchar_t* GetFileName() const { return m_szName; }

    /// Reads into the caller's buffer.
    ///
    /// A heap buffer grows to hold the range; the new part reads as zeros. A mapping refuses a read that ends exactly
    /// at its end. The read cursor moves to the end of the range, even if reading a file failed.
    /// @param dest    receives the bytes
    /// @param count   bytes to read
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0; ERROR_HANDLE_EOF (38): the file is shorter; else a Win32 error
    int ReadMemoryDirect(unsigned char* dest, unsigned long count, unsigned long offset);

    /// Reads into a buffer of this object, with a 0 byte after the data. Otherwise like ReadMemoryDirect().
    /// @param result  receives the buffer, which this object owns and the next ReadMemory() of it or a copy overwrites;
    ///                unchanged if a heap buffer or a mapping refuses the range because of its size, or if memory is
    ///                short; otherwise set, with zeros for missing data
    /// @param count   bytes to read; those beyond the end of a file are 0
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0; ERROR_HANDLE_EOF (38): the file is shorter; else a Win32 error
    int ReadMemory(unsigned char** result, unsigned long count, unsigned long offset);

    /// Writes; on success the write cursor moves to the end of the range.
    ///
    /// A heap buffer grows to hold the range; bytes between its old end and the range are undefined. A mapping accepts
    /// a write that ends exactly at its end. A partial write to a disk goes unnoticed.
    /// @param src     bytes to write
    /// @param count   number of bytes
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0 or a Win32 error
    int WriteMemory(const unsigned char* src, unsigned long count, unsigned long offset);

    /// Length of a file, or the stated size of a mapping. The status stays unchanged.
    /// @return bytes; of a file over 4 GB the low 32 bits, which is reported; 0xFFFFFFFF for a file whose length
    ///         cannot be read; 0 for the other kinds
    unsigned long GetFileLength();

    /// The storage in memory. For a global block each call allocates a new block without copying the contents. An old
    /// block that is smaller than requested is freed first; any other stays allocated for the program to free
    /// (GlobalFree), unless a copy still uses it, which then frees it. The status is 0 or the Win32 error.
    /// @param size  size of a global block in bytes; unused for the other kinds
    /// @return the buffer, owned by this object; a heap buffer moves when it grows. Null if there is none or for a
    ///         file; if a new block cannot be allocated, the old one unless it was freed
    void* GetBuffer(unsigned long size);

    /// Deletes a file (DeleteFileW).
    /// @param name  the file
    /// @return 0: deleted, or it did not exist; else the Win32 error
    static int RemoveFile(const wchar_t* name);

    /// Closes the file, also for copies, and renames the file named by GetFileName(). A name of 260 characters or more
    /// is truncated there and may name another file. The object keeps the value of the closed handle and closes it
    /// again in its destructor, when it may belong to another file: destroy the object at once.
    /// @param newName  new name, which GetFileName() returns after success; null returns -1
    /// @return 0, or the C runtime's result (see errno)
    int ReName(const wchar_t* newName);

    /// Sets the file's time of the last write.
    /// @param time  UTC
    /// @return 0; ERROR_INVALID_HANDLE (6): this is not a file; else the Win32 error
    int SetFileModificationTime(const FILETIME* time);

    /// Returns the file's time of the last write.
    /// @param time  receives it, in UTC
    /// @return 0; ERROR_INVALID_HANDLE (6): this is not a file; else the Win32 error
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

    int Fetch(unsigned char* dest, unsigned long count, unsigned long offset, unsigned long& got);
    int FetchFromFile(unsigned char* dest, unsigned long count, unsigned long offset, unsigned long& got);
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
