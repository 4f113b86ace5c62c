#pragma once

#include <tessel/foundation/containers.h>
#include <tessel/foundation/semaphore.h>

#include <cstdint>

/// What is known of one program file: an entry of the table that all CSwVersion objects of a process share.
struct CSwFile {
    std::uint32_t major;    ///< first number of the file version
    std::uint32_t minor;    ///< second number
    std::uint32_t build;    ///< third number
    std::uint32_t revision; ///< fourth number
    std::uint64_t size;     ///< bytes
    SYSTEMTIME time;        ///< last write, UTC
    wchar_t path[100];      ///< where the file is, truncated to 99 characters and terminated
};

/// The version resource, size and time of a program file, and a list of all files that the process has looked at.
///
/// Each file that is read becomes an entry of a table of the process, also when it was read before, is missing or has
/// no version resource; what is not known stays 0. Any object lists the table by index, 0 to GetFileCount() - 1. The
/// table lives until RemoveTable() was called and no object is alive any more, whichever comes last; once
/// RemoveTable() was called, it is emptied again whenever the last object goes.
///
/// The getters take an index. With one of the table the object first takes that entry over and describes that file
/// from then on; the texts of the version resource and the object's place in the table stay those of its own file.
/// With a negative one they tell what the object describes.
///
/// Copies count as objects of their own and share the version resource.
/// Threads: one for all objects. Only the count of objects and the emptying are locked, with a lock that all processes
/// of a session share. A process that is killed while it holds that lock makes each object of the others take 5 seconds
/// to come and 5 to go, until all have ended.
class TESSEL_API CSwVersion {
public:
    /// Reads a file and enters it in the table. Without memory for that the table stays as it is.
    /// @param path  program file or DLL; null reads nothing and enters an empty path
    explicit CSwVersion(const wchar_t* path);

    /// Creates an object that reads no file.
    /// @param index  entry of the table to describe; any other number: none, and all is 0 and empty
    explicit CSwVersion(int index);

    /// Copies what the other describes and shares its version resource. Without memory to share it the copy has none.
    /// @param other  object to copy
    CSwVersion(const CSwVersion& other);

    /// Copies what the other describes and shares its version resource. Without memory to share it the copy has none.
    /// @param other  object to copy
    /// @return this object
    CSwVersion& operator=(const CSwVersion& other);

    /// Frees the version resource; the last object empties the table once RemoveTable() was called.
    virtual ~CSwVersion();

    /// Tells that the program is finished with the table: it is emptied when no object is alive any more.
    static void RemoveTable();

    /// How many entries the table has.
    /// @return number of entries
    static int GetFileCount();

    /// Where a file is.
    /// @param path   receives the path, terminated; unchanged after a failure
    /// @param index  entry of the table; negative: what the object describes
    /// @return 1; 0: there is no such entry
    int GetPath(wchar_t (&path)[100], int index);

    /// A file's version.
    /// @param major     receives the first number; all four are unchanged after a failure
    /// @param minor     receives the second number
    /// @param build     receives the third number
    /// @param revision  receives the fourth number
    /// @param index     entry of the table; negative: what the object describes
    /// @return 1; 0: there is no such entry, or a pointer is null
    int GetBinary(unsigned int* major, unsigned int* minor, unsigned int* build, unsigned int* revision, int index);

    /// When a file was written last, in UTC.
    /// @param month   receives the month, 1 to 12; 0: the file was not found; all six are unchanged after a failure
    /// @param day     receives the day, 1 to 31
    /// @param year    receives the year
    /// @param hour    receives the hour, 0 to 23
    /// @param minute  receives the minute
    /// @param second  receives the second
    /// @param index   entry of the table; negative: what the object describes
    /// @return 1; 0: there is no such entry, or a pointer is null
    int GetFileTime(unsigned short* month, unsigned short* day, unsigned short* year, unsigned short* hour,
                    unsigned short* minute, unsigned short* second, int index);

    /// A file's size.
    /// @param size   receives the bytes; unchanged after a failure
    /// @param index  entry of the table; negative: what the object describes
    /// @return 1; 0: there is no such entry, or the pointer is null
    int GetFileSize(std::uint64_t* size, int index);

    /// Version and time of the last write as one text: "1.2.3.4 12/31/2024 23:59:59" (month, day, year).
    /// @param text   receives the text, terminated; unchanged after a failure
    /// @param index  entry of the table; negative: what the object describes
    /// @return 1; 0: there is no such entry
    int GetString(wchar_t (&text)[100], int index);

    /// A text of the version resource ("FileDescription", "ProductName" and the like) in its first language, of the
    /// file that the object was made for.
    /// @param name   the text's name
    /// @param value  receives the text; terminated only when it is shorter than the room
    /// @param len    size of @p value in characters
    /// @return true: copied; false: the file has no version resource or a damaged one, there is no such text, or a
    /// pointer
    ///         is null
    bool GetVerStringInfo(const wchar_t* name, wchar_t* value, unsigned long len);

    /// Whether the versions are equal; of path, size and time nothing is compared.
    /// @param other  object to compare with
    /// @return true: all four numbers are equal
    bool operator==(const CSwVersion& other) const { return Compare(other) == 0; }

    /// Whether the versions differ.
    /// @param other  object to compare with
    /// @return true: a number differs
    bool operator!=(const CSwVersion& other) const { return Compare(other) != 0; }

    /// Whether this version is the older one.
    /// @param other  object to compare with
    /// @return true: the first number that differs is smaller
    bool operator<(const CSwVersion& other) const { return Compare(other) < 0; }

    /// Whether this version is not the newer one.
    /// @param other  object to compare with
    /// @return true: the versions are equal, or the first number that differs is smaller
    bool operator<=(const CSwVersion& other) const { return Compare(other) <= 0; }

    /// Whether this version is the newer one.
    /// @param other  object to compare with
    /// @return true: the first number that differs is greater
    bool operator>(const CSwVersion& other) const { return Compare(other) > 0; }

    /// Whether this version is not the older one.
    /// @param other  object to compare with
    /// @return true: the versions are equal, or the first number that differs is greater
    bool operator>=(const CSwVersion& other) const { return Compare(other) >= 0; }

private:
    friend struct CSwVersionLayout;

    static void CountObject();
    static void UncountObject();
    void ReadVersion(const wchar_t* path);
    void ReadFixedPart();
    void ReadAttributes(const wchar_t* path);
    bool Select(int index);
    int Compare(const CSwVersion& other) const;

    CSwFile m_File;
    unsigned char* m_pVersionInfo;

    static CArray<CSwFile, CSwFile> mSwFileTable;
    static int mRefCount;
    static CThreadLock mRefLock;
    static int mFinishedWithTable;
};
