#pragma once

#include <tessel/foundation/platform.h>

/// A file that is read and written through the low-level I/O of the runtime library.
///
/// Every operation stores its result, one of STATUS, in the object (GetLastStatus()). Unless stated otherwise,
/// operations on a file that is not open give NOT_OPEN and have no effect. Copies share the open file and its position;
/// the last of them closes it. If memory is short, a copy is not open.
///
/// Paths of files and directories are passed to the system as they are: on Windows, one of more than 259 characters
/// must start with "\\?\".
/// Threads: not synchronised; only one thread at a time may use an object and its copies.
class TESSEL_API CFile {
public:
    /// How a file is opened: a set of bits. Without READ_ONLY, a missing file is created.
    enum OPENTYPE : unsigned int {
        READ_WRITE = 0, ///< no bit: reading and writing, binary, random access
        READ_ONLY = 1,  ///< reading only; the file must exist
        TEXT = 2,       ///< line ends are converted: "\r\n" in the file is "\n" in the program
        SEQUENTIAL = 4, ///< hint: access from start to end
        APPEND = 8,     ///< every write goes to the end; ignored with READ_ONLY or TRUNCATE
        TRUNCATE = 16   ///< the file is emptied; ignored with READ_ONLY
    };

    /// Results of the operations.
    enum STATUS : unsigned long {
        SUCCESS = 0,               ///< success
        NOT_OPEN = 0x12000000,     ///< the file is not open
        WRITE_FAILED = 0x12000001, ///< no or not all bytes were written
        READ_FAILED = 0x12000002,  ///< nothing was read
        CLOSE_FAILED = 0x12000004, ///< the runtime could not close the file
        OPEN_FAILED = 0x12000005,  ///< the file could not be opened or created
        ALREADY_OPEN = 0x12000006, ///< the object has an open file, which stays open
        SEEK_FAILED = 0x12000007,  ///< the position stays as it was
        TELL_FAILED = 0x12000008   ///< the position is unknown
    };

    /// Sizes of texts.
    enum : unsigned int {
        PATH_LENGTH = 260 ///< characters of the path, including the terminator
    };

    /// Opens a file; GetLastStatus() has the result.
    /// @param path  the file; null opens none, and the status is NOT_OPEN
    /// @param type  how to open it
    explicit CFile(const wchar_t* path = nullptr, OPENTYPE type = READ_WRITE);

    /// Shares the other object's file.
    /// @param other  object to share with
    CFile(const CFile& other);

    /// Closes the file, as CloseFile() does, and shares that of the other object.
    /// @param other  object to share with
    /// @return this object
    CFile& operator=(const CFile& other);

    /// Closes the file, unless a copy still uses it.
    virtual ~CFile();

    /// Opens a file and stores its size and path. A size of 4 GB or more is reported; GetSize() returns its low 32
    /// bits.
    /// @param path  the file; GetFullPath() returns only as much as fits PATH_LENGTH
    /// @param type  how to open it
    /// @return SUCCESS, ALREADY_OPEN or OPEN_FAILED
    unsigned long OpenFile(const wchar_t* path, OPENTYPE type);

    /// Closes the file and clears its path. If the runtime fails to close it, the file stays open. Without an open file
    /// the status is unchanged.
    /// @return SUCCESS or CLOSE_FAILED; without an open file the former status
    unsigned long CloseFile();

    /// Reads at the position.
    /// @param buffer  receives the bytes; null fails unless the size is 0
    /// @param size    bytes to read; at most 2^31 - 1 are read
    /// @return bytes read, fewer at the end of the file. 0 at its end (status SUCCESS) and after a failure
    ///         (READ_FAILED)
    unsigned long ReadFile(void* buffer, unsigned long size);

    /// Writes at the position, or at the end of a file that is appended to.
    /// @param buffer  bytes to write; null fails unless the size is 0
    /// @param size    their number; at most 2^31 - 1 are written
    /// @return bytes written; the status is SUCCESS only if all of them were, else WRITE_FAILED
    unsigned long WriteFile(const void* buffer, unsigned long size);

    /// Moves the position, which may be beyond the end.
    /// @param offset  bytes from the origin
    /// @param origin  SEEK_SET, SEEK_CUR or SEEK_END of <stdio.h>: 0, 1 or 2
    /// @param newPos  receives the new position in bytes from the start, after a success; may be null
    /// @return SUCCESS or SEEK_FAILED
    unsigned long SeekFile(long offset, int origin, unsigned long* newPos);

    /// Moves the position to the start.
    /// @return as SeekFile()
    unsigned long Rewind();

    /// Returns the position.
    /// @return bytes from the start; -1: unknown, see the status
    long TellFile();

    /// Returns the size that the file had when it was opened.
    /// @param size  receives the bytes, even after the file was closed; may be null
    /// @return SUCCESS or NOT_OPEN
    unsigned long SizeFile(unsigned long* size);

    /// Size that the file had when it was opened; writing does not change it.
    /// @return bytes; 0 before the first file
    unsigned long GetSize() const { return m_ulSize; }

    /// The path, as it was given.
    /// @return text owned by the object, valid until the file is closed; empty without an open file
    const wchar_t* GetFullPath() const { return m_szPath; }

    /// The part of the path after its last backslash.
    /// @return text owned by the object; the whole path if there is no backslash
    const wchar_t* GetName() const;

    /// The part of the path after its last dot, which may be the dot of a directory: use names with extensions.
    /// @return text owned by the object; empty if there is no dot
    const wchar_t* GetExt() const;

    /// Result of the last operation.
    /// @return one of STATUS
    unsigned long GetLastStatus() const { return m_ulStatus; }

private:
    friend struct CFileLayout;
    void ShareWith(const CFile& other);
    unsigned long SetStatus(STATUS status) { return m_ulStatus = status; }

    int m_iFile;
    unsigned long m_ulStatus;
    unsigned long m_ulSize;
    wchar_t m_szPath[PATH_LENGTH];
};

/// Combines the bits of two ways to open a file.
/// @param left   some bits
/// @param right  more bits
/// @return all of them
constexpr CFile::OPENTYPE operator|(CFile::OPENTYPE left, CFile::OPENTYPE right) {
    return static_cast<CFile::OPENTYPE>(static_cast<unsigned int>(left) | static_cast<unsigned int>(right));
}

/// Lists the entries of a directory.
///
/// The entries, including "." and "..", come in the order of the file system. Copies share the search, so that each
/// entry is returned to only one of them; each has its own current entry. The last copy closes the search. If memory is
/// short, a copy has no search. Threads: not synchronised; only one thread at a time may use an object and its copies.
class TESSEL_API CFileFinder {
public:
    /// Creates an object without a search. Without memory it finds nothing.
    CFileFinder();

    /// Shares the other object's search, and has a copy of its entry.
    /// @param other  object to share with
    CFileFinder(const CFileFinder& other);

    /// Closes the search and shares the other object's, with a copy of its entry.
    /// @param other  object to share with
    /// @return this object
    CFileFinder& operator=(const CFileFinder& other);

    /// Closes the search, unless a copy still has it.
    virtual ~CFileFinder();

    /// Closes the search and starts a new one with its first entry.
    /// @param pattern  path whose last part may contain the wildcards "*" and "?"
    /// @return not 0: found; 0: nothing found, see GetLastError()
    int First(const wchar_t* pattern);

    /// Continues with the next entry.
    /// @return not 0: found; 0: there are no more, or no search; the current entry stays
    int Next();

    /// Whether the entry is a directory.
    /// @return 1: it is; 0: it is not, or no search is open
    int IsDirectory() const;

    /// Name of the entry, without its directory.
    /// @return text owned by the object, valid until the next First() or Next(); empty before the first entry; null if
    ///         the object could not allocate its entry
    const wchar_t* GetFileName() const;

    /// Closes the search, unless a copy still uses it; the current entry stays.
    void Close();

private:
    friend struct CFileFinderLayout;
    void ShareWith(const CFileFinder& other);

    WIN32_FIND_DATAW* m_pFindData;
    HANDLE m_hFind;
};

/// A mapping of a file, or of memory that processes share by name, with one view of it.
///
/// Copies share mapping and view; the last of them unmaps and closes. If memory is short, a copy has neither.
/// Threads: not synchronised; only one thread at a time may use an object and its copies.
class TESSEL_API CMemMappedFile {
public:
    /// Creates a mapping of a file, or opens the existing one of that name. GetStatus() returns the system's code even
    /// after a success: ERROR_ALREADY_EXISTS means that the mapping existed.
    /// @param file        the file, owned by the caller; INVALID_HANDLE_VALUE: the paging file
    /// @param name        name for sharing; null: none
    /// @param sizeLow     low 32 bits of the size in bytes; a shorter file is extended. A size of 0 means that of the
    ///                    file
    /// @param protect     PAGE_READWRITE or another protection of CreateFileMapping()
    /// @param sizeHigh    high 32 bits of the size
    /// @param attributes  access rights and inheritance; null: the system's default
    CMemMappedFile(HANDLE file, const wchar_t* name, unsigned long sizeLow, unsigned long protect,
                   unsigned long sizeHigh, SECURITY_ATTRIBUTES* attributes);

    /// Creates a mapping in the paging file, or opens the existing one of that name, as the other form does.
    /// @param name        name for sharing; null: none
    /// @param sizeLow     low 32 bits of the size in bytes. The system may refuse a size of 0 even for an existing
    ///                    mapping: pass the handle of OpenFileMapping() to the constructor below instead
    /// @param protect     PAGE_READWRITE or another protection of CreateFileMapping()
    /// @param sizeHigh    high 32 bits of the size
    /// @param attributes  access rights and inheritance; null: the system's default
    CMemMappedFile(const wchar_t* name, unsigned long sizeLow, unsigned long protect, unsigned long sizeHigh,
                   SECURITY_ATTRIBUTES* attributes);

    /// Takes ownership of a mapping; the status is 0.
    /// @param mapping  handle of the mapping
    explicit CMemMappedFile(HANDLE mapping);

    /// Shares the other object's mapping and view.
    /// @param other  object to share with
    CMemMappedFile(const CMemMappedFile& other);

    /// Releases mapping and view, and shares those of the other object.
    /// @param other  object to share with
    /// @return this object
    CMemMappedFile& operator=(const CMemMappedFile& other);

    /// Unmaps the view and closes the mapping, unless a copy still uses them.
    virtual ~CMemMappedFile();

    /// Unmaps the view, unless a copy still uses it, and maps another one.
    /// @param access      FILE_MAP_READ, FILE_MAP_WRITE or another access of MapViewOfFile()
    /// @param offsetHigh  high 32 bits of the offset in bytes
    /// @param offsetLow   low 32 bits; the offset is a multiple of the system's granularity (64 KB)
    /// @param size        bytes of the view; 0: up to the end of the mapping
    /// @return the view, valid until the next one or until the object is destroyed; null: failed, see GetStatus()
    void* MapView(unsigned long access, unsigned long offsetHigh, unsigned long offsetLow, unsigned long size);

    /// The handle of the mapping, owned by the object.
    /// @return null: there is none
    HANDLE GetHandle() const { return m_hMapping; }

    /// The system's code of creating the mapping, or of the last view that failed. Mapping a view does not reset it.
    /// @return 0, ERROR_ALREADY_EXISTS or another Win32 error
    unsigned long GetStatus() const { return m_ulLastError; }

private:
    friend struct CMemMappedFileLayout;
    void Release();

    HANDLE m_hMapping;
    void* m_pView;
    unsigned long m_ulLastError;
};

/// @name Directories
/// Any thread may call these functions.
///@{

/// Creates the missing directories of a path. Every part before a backslash is a directory; the part after the last
/// backslash counts as the name of a file and is not created. In a network path (two backslashes, server, share) the
/// directories start after the share.
/// @param path  path of a file, or of a directory with a backslash at its end
/// @return 0: they exist; 0xFFFFFFFF: null path; ERROR_PATH_NOT_FOUND (3): a network path without a backslash after
///         its share, or a directory below a file; ERROR_DIRECTORY (267): the last directory exists as a file;
///         ERROR_NOT_ENOUGH_MEMORY (8); else the Win32 error of the first directory that could not be created
TESSEL_API unsigned long CreateDir(const wchar_t* path);

/// Removes an empty directory.
/// @param path  the directory
/// @return 0: removed; 0xFFFFFFFF: null path; else the Win32 error
TESSEL_API unsigned long RemoveDir(const wchar_t* path);

/// Removes a directory with its files. Stops at the first entry that cannot be removed. Links and mount points among
/// the entries are removed, never followed; if the path itself is one, its target is emptied and the link removed.
///
/// Under Wine, a link to a Unix directory stays, so that the result is ERROR_DIR_NOT_EMPTY. For a link to a Unix file,
/// Wine deletes the file itself.
/// @param path        the directory; backslashes at its end are ignored. A backslash alone is the root of the current
///                    drive
/// @param bRecursive  true: subdirectories and their contents are removed, too; false: they are kept, and the
///                    directory itself cannot be removed then
/// @return 0: removed; 1: null path; ERROR_PATH_NOT_FOUND (3): empty path; ERROR_NOT_ENOUGH_MEMORY (8); else the Win32
///         error of the entry that could not be removed: ERROR_ACCESS_DENIED (5) for a read-only file,
///         ERROR_SHARING_VIOLATION (32) for a file in use, ERROR_DIR_NOT_EMPTY (145) for a directory that is not empty
TESSEL_API unsigned long RemoveDirAndFiles(const wchar_t* path, bool bRecursive);
///@}
