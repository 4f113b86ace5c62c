#pragma once

#include <tessel/foundation/platform.h>

/// A file that is read and written through the runtime library, by a descriptor.
///
/// Every operation leaves its outcome in the object (GetLastStatus()): one of STATUS. Operations on a file that is not
/// open give NOT_OPEN, unless they say otherwise, and touch nothing.
/// Copies share the open file and its position; the last of them closes it. A copy that cannot share for lack of memory
/// is not open.
/// Threads: not synchronised; only one thread at a time may use an object and its copies.
class TESSEL_API CFile {
public:
    /// How a file is opened: a set of bits. Without READ_ONLY a missing file is created.
    enum OPENTYPE : unsigned int {
        READ_WRITE = 0, ///< no bit: read and written, binary, at random
        READ_ONLY = 1,  ///< only read; the file must exist
        TEXT = 2,       ///< line ends are converted: "\r\n" in the file is "\n" in the program
        SEQUENTIAL = 4, ///< a hint: the file is read or written from start to end
        APPEND = 8,     ///< every write goes to the end; ignored with READ_ONLY or TRUNCATE
        TRUNCATE = 16   ///< the file is emptied; ignored with READ_ONLY
    };

    /// Outcomes of the operations.
    enum STATUS : unsigned long {
        SUCCESS = 0,               ///< done
        NOT_OPEN = 0x12000000,     ///< the file is not open
        WRITE_FAILED = 0x12000001, ///< nothing, or fewer bytes, were written
        READ_FAILED = 0x12000002,  ///< nothing was read
        CLOSE_FAILED = 0x12000004, ///< the runtime could not close the file
        OPEN_FAILED = 0x12000005,  ///< the file could not be opened or created
        ALREADY_OPEN = 0x12000006, ///< the object has an open file, which stays open
        SEEK_FAILED = 0x12000007,  ///< the position stays as it was
        TELL_FAILED = 0x12000008   ///< the position is not known
    };

    /// The room that the object has.
    enum : unsigned int {
        PATH_LENGTH = 260 ///< characters of the path, including the terminator
    };

    /// Opens a file; GetLastStatus() tells how that went.
    /// @param path  the file; null opens none, and the status is NOT_OPEN
    /// @param type  how to open it
    explicit CFile(const wchar_t* path = nullptr, OPENTYPE type = READ_WRITE);

    /// Shares the other object's file.
    /// @param other  object to share with
    CFile(const CFile& other);

    /// Gives up the file that was open, as CloseFile() does, and shares the other object's.
    /// @param other  object to share with
    /// @return this object
    CFile& operator=(const CFile& other);

    /// Closes the file, unless a copy still has it.
    virtual ~CFile();

    /// Opens a file, and notes its size and path. A size of 4 GB and more is reported; GetSize() gives its low 32 bits.
    /// @param path  the file; of a longer path than PATH_LENGTH has room for, GetFullPath() gives the start
    /// @param type  how to open it
    /// @return SUCCESS, ALREADY_OPEN or OPEN_FAILED
    unsigned long OpenFile(const wchar_t* path, OPENTYPE type);

    /// Closes the file and forgets its path. Where the runtime refuses, the file still counts as open. Without an open
    /// file the status stays as it is.
    /// @return SUCCESS or CLOSE_FAILED; without an open file the status from before
    unsigned long CloseFile();

    /// Reads from the position on.
    /// @param buffer  receives the bytes; null fails unless the size is 0
    /// @param size    bytes to read at most; more than 2^31 - 1 counts as that
    /// @return bytes read, fewer at the end of the file; 0 with the status SUCCESS: at its end, else READ_FAILED
    unsigned long ReadFile(void* buffer, unsigned long size);

    /// Writes at the position, or at the end of a file that is appended to.
    /// @param buffer  bytes to write; null fails unless the size is 0
    /// @param size    their number; of more than 2^31 - 1 so many are written
    /// @return bytes written; the status is SUCCESS only when it was all of them, else WRITE_FAILED
    unsigned long WriteFile(const void* buffer, unsigned long size);

    /// Moves the position, which may lie behind the end.
    /// @param offset  bytes from the origin
    /// @param origin  SEEK_SET, SEEK_CUR or SEEK_END of <stdio.h>: 0, 1 or 2
    /// @param newPos  receives the new position in bytes from the start, after a success; may be null
    /// @return SUCCESS or SEEK_FAILED
    unsigned long SeekFile(long offset, int origin, unsigned long* newPos);

    /// Moves the position to the start.
    /// @return as SeekFile()
    unsigned long Rewind();

    /// Tells the position.
    /// @return bytes from the start; -1: not known, see the status
    long TellFile();

    /// Tells the size that the file had when it was opened.
    /// @param size  receives the bytes, also after the file was closed; may be null
    /// @return SUCCESS or NOT_OPEN
    unsigned long SizeFile(unsigned long* size);

    /// Size that the file had when it was opened; writing does not change it.
    /// @return bytes; 0 before the first file
    unsigned long GetSize() const { return m_ulSize; }

    /// The path, as it was given.
    /// @return text of the object's, until the file is closed; empty without an open file
    const wchar_t* GetFullPath() const { return m_szPath; }

    /// What follows the last backslash of the path.
    /// @return text of the object's; the whole path when there is no backslash
    const wchar_t* GetName() const;

    /// What follows the last dot of the path, whichever part of it that is in: give names with extensions.
    /// @return text of the object's; empty when there is no dot
    const wchar_t* GetExt() const;

    /// Outcome of the last operation.
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

/// Joins the bits of two ways to open a file.
/// @param left   some bits
/// @param right  further bits
/// @return all of them
constexpr CFile::OPENTYPE operator|(CFile::OPENTYPE left, CFile::OPENTYPE right) {
    return static_cast<CFile::OPENTYPE>(static_cast<unsigned int>(left) | static_cast<unsigned int>(right));
}

/// Walks through the entries of a directory.
///
/// The entries come in the file system's order, "." and ".." among them.
/// Copies share the search: what one passes, the others do not see, and the last of them closes it; each has an entry
/// of its own. A copy that cannot share for lack of memory has no search.
/// Threads: not synchronised; only one thread at a time may use an object and its copies.
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

    /// Closes the search and begins a new one, which stands at its first entry.
    /// @param pattern  path whose last part may have the wildcards "*" and "?"
    /// @return not 0: found; 0: nothing found, see GetLastError()
    int First(const wchar_t* pattern);

    /// Goes on to the next entry.
    /// @return not 0: found; 0: there is no further one, or no search; the entry stays
    int Next();

    /// Whether the entry is a directory.
    /// @return 1: it is; 0: it is not, or no search is open
    int IsDirectory() const;

    /// Name of the entry, without its directory.
    /// @return text of the object's, until the next First() or Next(); empty before the first entry; null
    ///         without memory
    const wchar_t* GetFileName() const;

    /// Closes the search, unless a copy still has it; the entry stays.
    void Close();

private:
    friend struct CFileFinderLayout;
    void ShareWith(const CFileFinder& other);

    WIN32_FIND_DATAW* m_pFindData;
    HANDLE m_hFind;
};

/// A mapping of a file, or of memory that processes share by its name, with one view of it.
///
/// Copies share mapping and view; the last of them unmaps and closes. A copy that cannot share for lack of memory has
/// none.
/// Threads: not synchronised; only one thread at a time may use an object and its copies.
class TESSEL_API CMemMappedFile {
public:
    /// Creates a mapping of a file, or opens the one that has the name already. GetStatus() gives the system's code
    /// also after a success: ERROR_ALREADY_EXISTS tells that the mapping existed.
    /// @param file        the file, which stays the caller's; INVALID_HANDLE_VALUE for the paging file
    /// @param name        name that processes share it by; null: none
    /// @param sizeLow     low 32 bits of its size in bytes; a file becomes as long. 0 in both: the file's size
    /// @param protect     PAGE_READWRITE or another of CreateFileMapping's
    /// @param sizeHigh    high 32 bits of its size
    /// @param attributes  who may open it and whether handles are inherited; null for the system's choice
    CMemMappedFile(HANDLE file, const wchar_t* name, unsigned long sizeLow, unsigned long protect,
                   unsigned long sizeHigh, SECURITY_ATTRIBUTES* attributes);

    /// Creates a mapping in the paging file, or opens the one that has the name already, as the other form does.
    /// @param name        name that processes share it by; null: none
    /// @param sizeLow     low 32 bits of its size in bytes. With 0 in both the system decides, and may refuse: give the
    ///                    handle of OpenFileMapping() to the other constructor instead
    /// @param protect     PAGE_READWRITE or another of CreateFileMapping's
    /// @param sizeHigh    high 32 bits of its size
    /// @param attributes  who may open it and whether handles are inherited; null for the system's choice
    CMemMappedFile(const wchar_t* name, unsigned long sizeLow, unsigned long protect, unsigned long sizeHigh,
                   SECURITY_ATTRIBUTES* attributes);

    /// Takes over a mapping; the status is 0.
    /// @param mapping  handle of the mapping, which the object closes
    explicit CMemMappedFile(HANDLE mapping);

    /// Shares the other object's mapping and view.
    /// @param other  object to share with
    CMemMappedFile(const CMemMappedFile& other);

    /// Gives up mapping and view, and shares the other object's.
    /// @param other  object to share with
    /// @return this object
    CMemMappedFile& operator=(const CMemMappedFile& other);

    /// Unmaps the view and closes the mapping, unless a copy still has them.
    virtual ~CMemMappedFile();

    /// Unmaps the view, unless a copy still has it, and maps another one.
    /// @param access      FILE_MAP_READ, FILE_MAP_WRITE or another of MapViewOfFile's
    /// @param offsetHigh  high 32 bits of the view's start in bytes
    /// @param offsetLow   low 32 bits of it; both together a multiple of the system's granularity (64 KB)
    /// @param size        bytes of the view; 0: up to the end of the mapping
    /// @return the view, until the next one or the end of the object; null: failed, see GetStatus()
    void* MapView(unsigned long access, unsigned long offsetHigh, unsigned long offsetLow, unsigned long size);

    /// The mapping, which stays the object's.
    /// @return its handle; null: there is none
    HANDLE GetHandle() const { return m_hMapping; }

    /// The system's code of creating the mapping, or of a view that failed since.
    /// @return 0, ERROR_ALREADY_EXISTS or another Win32 error; a view that was mapped leaves it as it is
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

/// Creates the missing directories of a path. Every part that a backslash follows is one; what follows the last
/// backslash counts as the name of a file and is not created. Of a path "\\server\share\..." the directories of the
/// share are created.
/// @param path  the path, normally of a file; a directory's ends with a backslash
/// @return 0: they exist; 0xFFFFFFFF: null path; ERROR_PATH_NOT_FOUND (3): a network path without a backslash behind
///         its share, or a directory below a file; ERROR_DIRECTORY (267): the last directory exists as a file;
///         ERROR_NOT_ENOUGH_MEMORY (8); else the Win32 error of the first directory that could not be created
TESSEL_API unsigned long CreateDir(const wchar_t* path);

/// Removes an empty directory.
/// @param path  the directory
/// @return 0: removed; 0xFFFFFFFF: null path; else the Win32 error
TESSEL_API unsigned long RemoveDir(const wchar_t* path);

/// Removes a directory with its files. The first entry that cannot be removed ends it; what was removed until then is
/// gone. Links and mount points among its entries are removed themselves and never followed; when the path itself is
/// one, what it leads to is emptied and the link removed. Under Wine, links to Unix directories stay, and the result is
/// ERROR_DIR_NOT_EMPTY; a link to a Unix file counts as the file that it leads to, which is deleted.
/// @param path        the directory; backslashes at its end play no part. An empty text names none, a backslash alone
///                    the root of the current drive
/// @param bRecursive  true: the directories in it are removed too, with all that is in them; false: they are left
///                    alone, and the directory itself then cannot be removed
/// @return 0: removed; 1: null path; ERROR_PATH_NOT_FOUND (3): an empty one; ERROR_NOT_ENOUGH_MEMORY (8); else the
///         Win32 error of the entry that could not be removed: ERROR_ACCESS_DENIED
///         (5) for a read-only file, ERROR_SHARING_VIOLATION (32) for one in use, ERROR_DIR_NOT_EMPTY (145) for a
///         directory in which something was left
TESSEL_API unsigned long RemoveDirAndFiles(const wchar_t* path, bool bRecursive);
///@}
