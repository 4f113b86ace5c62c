#pragma once

#include <tessel/foundation/platform.h>

/// One interface over four kinds of storage: reads and writes a run of bytes at an offset, with a cursor
/// for reading and one for writing.
///
/// Programs use it to pass bulk data through a named mapping and to read and write data files with the
/// same calls. The post office maps its region itself and does not use it.
///
/// Every operation that returns a status leaves it in the object too (GetStatus()): 0 or a Win32 error. Ranges
/// that do not lie inside storage in memory, or whose end lies beyond 2^32 - 1, give ERROR_NOT_ENOUGH_MEMORY, and so
/// does any range of an unknown kind; in a file such an end wraps. A null buffer with a count gives
/// ERROR_INVALID_PARAMETER.
///
/// Copies share the storage: what one writes, the other reads, until one of them lets a heap buffer grow,
/// which gives it a buffer of its own. The last of them closes and frees. A copy that cannot share for lack of
/// memory has the status ERROR_NOT_ENOUGH_MEMORY.
/// Threads: not synchronised; one thread at a time uses an object and its copies.
class TESSEL_API CMemory {
public:
    /// Offsets with a meaning of their own.
    enum : unsigned long {
        AT_CURSOR = 0xFFFFFFFF ///< the cursor of the operation
    };

    /// The kinds of storage.
    enum KIND : int {
        KIND_HEAP = 0,    ///< heap buffer that grows as it is read and written
        KIND_MAPPING = 1, ///< named shared mapping that another component made
        KIND_FILE = 2,    ///< file
        KIND_GLOBAL = 3   ///< fixed global memory block, made by GetBuffer()
    };

    /// How a file is opened: the dispositions of CreateFileW, in their order.
    enum OPENTYPE : unsigned int {
        OPENTYPE_CREATE_NEW = 0,       ///< fails when the file exists
        OPENTYPE_CREATE_ALWAYS = 1,    ///< empties an existing file
        OPENTYPE_OPEN_EXISTING = 2,    ///< fails when the file is missing
        OPENTYPE_OPEN_ALWAYS = 3,      ///< opens the file, or creates it
        OPENTYPE_TRUNCATE_EXISTING = 4 ///< empties the file; fails when it is missing
    };

    /// Opens the storage; GetStatus() tells how that went.
    ///
    /// Heap and global storage start empty and ignore the other arguments. A mapping must exist, else the status is
    /// ERROR_INVALID_PARAMETER; its size is what the caller says, so that reads and writes can be checked against
    /// it. A file that may not be written is opened once more, with the same open type, read-only; one that may
    /// be written can be read, written and deleted by others meanwhile. Any other kind gives status 1.
    /// @param kind      one of KIND
    /// @param size      bytes of the mapping; unused for the other kinds
    /// @param name      name of the mapping or the file
    /// @param openType  how to open a file; an unknown value is reported and counts as OPENTYPE_OPEN_ALWAYS
    /// @param readOnly  not 0: open a file for reading only, and let no one else write
    CMemory(int kind, unsigned long size, const wchar_t* name, OPENTYPE openType, int readOnly);

    /// Shares the other object's storage.
    /// @param other  object to share with
    CMemory(const CMemory& other);

    /// Shares the other object's storage. What was held before is neither closed nor freed: destroy the object and
    /// make another one instead.
    /// @param other  object to share with
    /// @return this object
    CMemory& operator=(const CMemory& other);

    /// Closes and frees the storage, unless a copy still uses it.
    virtual ~CMemory();

    /// Result of the last operation.
    /// @return 0, a Win32 error, or 1 for an unknown kind
    int GetStatus() const { return m_iStatus; }

    /// Whether the file was made by this object.
    /// @return 1: it did not exist before, or no file was opened; 0: it existed
    int IsVirginFile() const { return m_iNewFile; }

    /// Sets the read cursor.
    /// @param offset  bytes from the start
    void SetReadCursor(unsigned long offset) { m_ulReadCursor = offset; }

    /// The read cursor.
    /// @return offset in bytes behind the last read
    unsigned long GetReadCursor() const { return m_ulReadCursor; }

    /// Sets the write cursor.
    /// @param offset  bytes from the start
    void SetWriteCursor(unsigned long offset) { m_ulWriteCursor = offset; }

    /// The write cursor.
    /// @return offset in bytes behind the last write
    unsigned long GetWriteCursor() const { return m_ulWriteCursor; }

    /// Name of the file or mapping, cut to 259 characters.
    /// @return text owned by this object; empty for the other kinds and while nothing was opened
    const wchar_t* GetFileName() const { return m_szName; }

    /// Reads into the caller's buffer.
    ///
    /// A heap buffer grows to hold the range and gives zeros for what was not there. A mapping refuses a read
    /// that ends exactly at its end. The read cursor moves behind the range, also when reading a file failed.
    /// @param dest    receives the bytes
    /// @param count   bytes to read
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0; ERROR_HANDLE_EOF (38): the file ends before; else a Win32 error
    int ReadMemoryDirect(unsigned char* dest, unsigned long count, unsigned long offset);

    /// Reads into a buffer of this object's, with a 0 byte behind the data. Otherwise like ReadMemoryDirect().
    /// @param result  receives the buffer, which stays this object's and is overwritten by the next
    ///                ReadMemory() of it or a copy; unchanged when a heap buffer or a mapping refuses the range by its
    ///                size, or memory is short; otherwise set, with zeros for what is not there
    /// @param count   bytes to read; what a file does not hold is 0
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0; ERROR_HANDLE_EOF (38): the file ends before; else a Win32 error
    int ReadMemory(unsigned char** result, unsigned long count, unsigned long offset);

    /// Writes; on success the write cursor moves behind the range.
    ///
    /// A heap buffer grows to hold the range; what lies between its old end and the range is undefined. A
    /// mapping accepts a write that ends exactly at its end. A disk that takes only a part goes unnoticed.
    /// @param src     bytes to write
    /// @param count   bytes to write
    /// @param offset  bytes from the start, or AT_CURSOR
    /// @return 0 or a Win32 error
    int WriteMemory(const unsigned char* src, unsigned long count, unsigned long offset);

    /// Length of a file, or the size that was given for a mapping. The status stays as it is.
    /// @return bytes; of a file over 4 GB the low 32 bits, which is reported; 0xFFFFFFFF for a file whose length
    ///         cannot be read; 0 for the other kinds
    unsigned long GetFileLength();

    /// The storage in memory. For a global block this allocates, each time: a smaller block than asked for is
    /// freed first, any other stays allocated for the program to free (GlobalFree) unless a copy still uses it, which
    /// then frees it, and its content is not carried over. The status is then 0 or the Win32 error.
    /// @param size  bytes wanted of a global block; unused for the other kinds
    /// @return the buffer, owned by this object; a heap buffer moves when it grows. Null when there is none or for a
    ///         file; without memory for a new block the old one, if it was not freed
    void* GetBuffer(unsigned long size);

    /// Deletes a file (DeleteFileW).
    /// @param name  the file
    /// @return 0: gone, or it was not there; else the Win32 error
    static int RemoveFile(const wchar_t* name);

    /// Closes the file, also for copies, and renames the file that GetFileName() names: of a name of 260 characters and
    /// more that is its start, which may be another file's. The object keeps the value of the closed handle and closes
    /// it once more at its end, when it may be another file's: destroy it at once.
    /// @param newName  new name, which GetFileName() gives after success; null gives -1
    /// @return 0, or the C runtime's result (errno tells why)
    int ReName(const wchar_t* newName);

    /// Sets the file's time of the last write.
    /// @param time  UTC
    /// @return 0; ERROR_INVALID_HANDLE (6): this is no file; else the Win32 error
    int SetFileModificationTime(const FILETIME* time);

    /// Gets the file's time of the last write.
    /// @param time  receives it, in UTC
    /// @return 0; ERROR_INVALID_HANDLE (6): this is no file; else the Win32 error
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
