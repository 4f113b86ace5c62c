#pragma once

#include <tessel/foundation/platform.h>

/// A universally unique identifier as a record of fixed size.
struct OCUID {
    GUID Uuid;                  ///< identifier, as the system's UUID functions take it
    unsigned char Reserved[16]; ///< 0; compared along with the identifier
};

/// Result of COCuid::Create() if the system cannot create an identifier.
inline constexpr unsigned long OCUID_NOT_CREATED = 0x2E000000;

/// Result of COCuid::Create() if the object already holds an identifier.
inline constexpr unsigned long OCUID_ALREADY_HELD = 0x2E000001;

/// Holds one universally unique identifier and its text, or none. Programs use it to name studies, objects and files
/// across processes and machines.
///
/// The assignments return different values; see each of them. No operation makes a report.
/// Copies are independent. Threads: not synchronised; several threads may read an object that no thread changes.
class TESSEL_API COCuid {
public:
    /// Size of the text in characters, including the terminator.
    enum : unsigned long { TEXT_SIZE = 64 };

    /// Holds no identifier, or a new one.
    /// @param create  1: creates one like Create(), and IsPresent() returns whether that succeeded; else: none
    COCuid(int create = 0);

    /// Copies identifier, text and presence.
    /// @param other  object to copy
    COCuid(const COCuid& other) = default;

    /// Copies identifier, text and presence, replacing an identifier that is held.
    /// @param other  object to copy
    /// @return this object
    COCuid& operator=(const COCuid& other) = default;

    /// Has nothing to release.
    virtual ~COCuid() = default;

    /// Creates an identifier and its text. An identifier that is unique only on this machine is accepted.
    /// @return 0: created. OCUID_ALREADY_HELD: one was held, and is kept. OCUID_NOT_CREATED: the system failed, and
    ///         none is held
    unsigned long Create();

    /// Whether an identifier is held.
    /// @return 1: yes; 0: no
    int IsPresent() const { return m_iPresent; }

    /// The identifier.
    /// @return record owned by this object; all zero if none is held
    const OCUID* GetUid() const { return &m_Uid; }

    /// The text of the identifier, or the text assigned last.
    /// @return terminated text, owned by this object
    const wchar_t* GetString() const { return m_szText; }

    /// Writes an identifier as text: 36 characters, digits in lower case.
    /// @param uid   identifier
    /// @param text  receives the text; the rest of the buffer is cleared. A buffer of 36 characters or fewer receives a
    ///              truncated text without terminator
    /// @param size  size of the buffer in characters, including the terminator
    /// @return 0: written; 1: out of memory or a null pointer, and nothing is written
    static int ToString(const OCUID* uid, wchar_t* text, unsigned long size);

    /// Reads an identifier from its text.
    /// @param text  36 characters, upper or lower case; null: the nil identifier
    /// @param uid   receives the identifier; all zero after a failure
    /// @return 0: read; 1: the text is not an identifier, or @p uid is null
    static int ToUid(wchar_t* text, OCUID* uid);

    /// Whether this object holds the identifier.
    /// @param other  all 32 bytes of the record are compared; null equals nothing
    /// @return 1: equal; 0: different, or none is held here
    int operator==(const OCUID* other) const;

    /// Whether this object's identifier equals that of another object; one that holds none counts as all zero.
    /// @param other  object to compare with; null equals nothing
    /// @return 1: equal; 0: different, or none is held here
    int operator==(const COCuid* other) const;

    /// Whether both hold the same identifier.
    /// @param other  object to compare with
    /// @return 1: equal; 0: different, or one of them holds none
    int operator==(const COCuid& other) const;

    /// The opposite of operator==.
    /// @param other  all 32 bytes of the record are compared; null equals nothing
    /// @return 1: different, or none is held here; 0: equal
    int operator!=(const OCUID* other) const { return !(*this == other); }

    /// The opposite of operator==.
    /// @param other  object to compare with, which need not hold an identifier; null equals nothing
    /// @return 1: different, or none is held here; 0: equal
    int operator!=(const COCuid* other) const { return !(*this == other); }

    /// The opposite of operator==.
    /// @param other  object to compare with
    /// @return 1: different, or one of them holds none; 0: equal
    int operator!=(const COCuid& other) const { return !(*this == other); }

    /// Copies an identifier and its text.
    /// @param source     object to copy from; null, or an object that holds none, clears this one
    /// @param overwrite  1: replaces an identifier that is held; else: keeps it
    /// @return 1: set; 0: one is held and kept, or this object was cleared
    int SetUid(const COCuid* source, int overwrite);

    /// Copies an identifier and generates its text.
    /// @param source     record to copy, all 32 bytes; null clears this object, as does a failure to generate the text
    /// @param overwrite  1: replaces an identifier that is held; else: keeps it
    /// @return 1: set; 0: one is held and kept, or this object was cleared
    int SetUid(const OCUID* source, int overwrite);

    /// Copies an identifier unless one is held, and generates its text; if that fails, the previous text stays.
    /// @param source  record to copy, all 32 bytes; null is rejected
    /// @return 1: set; 0: rejected. The other assignments return 0 for success
    int operator=(const OCUID* source);

    /// Copies identifier and text, replacing those that are held.
    /// @param source  object to copy from
    /// @return 0: set; 1: the source is null or holds none, and nothing changes
    int operator=(const COCuid* source);

    /// Reads an identifier from its text, replacing one that is held.
    /// @param text  36 characters. The first 63 characters are stored as the text even if it is not an identifier.
    ///              Null counts as empty; the object's own text may be assigned
    /// @return 0: read; 1: not an identifier, and none is held
    int operator=(const wchar_t* text);

    /// Releases the identifier; the text is empty.
    void Clear();

    /// Holds the nil identifier, all zero, and its text, replacing one that is held. IsPresent() then returns 1.
    void SetToZero();

    /// The process's default, which holds no identifier. It exists as long as the library is loaded.
    static COCuid oInit;

private:
    friend struct COCuidLayout;

    OCUID m_Uid;
    wchar_t m_szText[TEXT_SIZE];
    int m_iPresent;
};
