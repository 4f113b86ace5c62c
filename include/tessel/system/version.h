#pragma once

#include <tessel/foundation/containers.h>
#include <tessel/foundation/semaphore.h>

#include <cstdint>

/// A program file: an entry of the table that all CSwVersion objects of a process share.
struct CSwFile {
    std::uint32_t major;    ///< first number of the file version
    std::uint32_t minor;    ///< second number
    std::uint32_t build;    ///< third number
    std::uint32_t revision; ///< fourth number
    std::uint64_t size;     ///< bytes
    SYSTEMTIME time;        ///< last write time, UTC
    wchar_t path[100];      ///< path of the file, truncated to 99 characters and terminated
};

/// Version resource, size and time of a program file, and a list of all files that the process has read.
///
/// Each file that is read becomes an entry in a table of the process, even if it was read before, is missing or has no
/// version resource; unknown values are 0. Any object can list the table by index, from 0 to GetFileCount() - 1. The
/// table is emptied once RemoveTable() has been called and the last object has been destroyed. After RemoveTable(),
/// this happens again whenever the last object is destroyed.
///
/// The getters take an index. If it is not negative, they first copy that entry of the table into the object, which
/// describes that file from then on; the texts of the version resource remain those of the object's own file. If it is
/// negative, they describe the object's current file.
///
/// Copies count as objects and share the version resource.
/// Threads: use all objects on one thread. Only the count of objects and the emptying of the table are protected, by a
/// lock that all processes of a session share. If a process is killed while it holds that lock, constructing and
/// destroying an object takes 5 seconds each in the others, until all of them have ended.
class TESSEL_API CSwVersion {
public:
    /// Reads a file and adds it to the table. If memory is short, the table is unchanged.
    /// @param path  program file or DLL; null reads nothing and adds an empty path
    explicit CSwVersion(const wchar_t* path);

    /// Creates an object that reads no file.
    /// @param index  entry of the table to describe; any other number: none, and all values are 0 or empty
    explicit CSwVersion(int index);

    /// Copies the description and shares the version resource. If memory is short, the copy has no version resource.
    /// @param other  object to copy
    CSwVersion(const CSwVersion& other);

    /// Copies the description and shares the version resource. If memory is short, the copy has no version resource.
    /// @param other  object to copy
    /// @return this object
    CSwVersion& operator=(const CSwVersion& other);

    /// Releases the version resource. After RemoveTable(), the last object empties the table.
    virtual ~CSwVersion();

    /// Lets the table be emptied as soon as there is no object.
    static void RemoveTable();

    /// Number of entries in the table.
    /// @return number of entries
    static int GetFileCount();

    /// Path of a file.
    /// @param path   receives the path, terminated; unchanged after a failure
    /// @param index  entry of the table; negative: the object's current file
    /// @return 1; 0: there is no such entry
    int GetPath(wchar_t (&path)[100], int index);

    /// Version of a file.
    /// @param major     receives the first number; all four are unchanged after a failure
    /// @param minor     receives the second number
    /// @param build     receives the third number
    /// @param revision  receives the fourth number
    /// @param index     entry of the table; negative: the object's current file
    /// @return 1; 0: there is no such entry, or a pointer is null
    int GetBinary(unsigned int* major, unsigned int* minor, unsigned int* build, unsigned int* revision, int index);

    /// Time of the last write to a file, in UTC.
    /// @param month   receives the month, 1 to 12; 0: the file was not found; all six are unchanged after a failure
    /// @param day     receives the day, 1 to 31
    /// @param year    receives the year
    /// @param hour    receives the hour, 0 to 23
    /// @param minute  receives the minute
    /// @param second  receives the second
    /// @param index   entry of the table; negative: the object's current file
    /// @return 1; 0: there is no such entry, or a pointer is null
    int GetFileTime(unsigned short* month, unsigned short* day, unsigned short* year, unsigned short* hour,
                    unsigned short* minute, unsigned short* second, int index);

    /// Size of a file.
    /// @param size   receives the bytes; unchanged after a failure
    /// @param index  entry of the table; negative: the object's current file
    /// @return 1; 0: there is no such entry, or the pointer is null
    int GetFileSize(std::uint64_t* size, int index);

    /// Version and time of the last write as one text: "1.2.3.4 12/31/2024 23:59:59" (month, day, year).
    /// @param text   receives the text, terminated; unchanged after a failure
    /// @param index  entry of the table; negative: the object's current file
    /// @return 1; 0: there is no such entry
    int GetString(wchar_t (&text)[100], int index);

    /// A text of the version resource, such as "FileDescription" or "ProductName", in its first language, of the file
    /// that the object was constructed with.
    /// @param name   name of the text
    /// @param value  receives the text; terminated only if it is shorter than the buffer
    /// @param len    size of @p value in characters
    /// @return true: copied; false: the file has no version resource or a damaged one, there is no such text, or a
    ///         pointer is null
    bool GetVerStringInfo(const wchar_t* name, wchar_t* value, unsigned long len);

    /// Whether the versions are equal; path, size and time are not compared.
    /// @param other  object to compare with
    /// @return true: all four numbers are equal
    bool operator==(const CSwVersion& other) const { return Compare(other) == 0; }

    /// Whether the versions differ.
    /// @param other  object to compare with
    /// @return true: a number differs
    bool operator!=(const CSwVersion& other) const { return Compare(other) != 0; }

    /// Whether this version is older.
    /// @param other  object to compare with
    /// @return true: the first number that differs is smaller
    bool operator<(const CSwVersion& other) const { return Compare(other) < 0; }

    /// Whether this version is not newer.
    /// @param other  object to compare with
    /// @return true: the versions are equal, or the first number that differs is smaller
    bool operator<=(const CSwVersion& other) const { return Compare(other) <= 0; }

    /// Whether this version is newer.
    /// @param other  object to compare with
    /// @return true: the first number that differs is greater
    bool operator>(const CSwVersion& other) const { return Compare(other) > 0; }

    /// Whether this version is not older.
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
