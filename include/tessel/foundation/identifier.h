#pragma once

#include <tessel/foundation/platform.h>

/// A universally unique identifier as a record of fixed size.
struct OCUID {
    GUID Uuid;                  ///< identifier, as the system's UUID functions take it
    unsigned char Reserved[16]; ///< 0; compared along with the identifier
};

/// What COCuid::Create() gives when the system makes no identifier.
inline constexpr unsigned long OCUID_NOT_CREATED = 0x2E000000;

/// What COCuid::Create() gives when one is held already.
inline constexpr unsigned long OCUID_ALREADY_HELD = 0x2E000001;

/// Holds one universally unique identifier and its text, or none. Programs name studies, objects and files with it
/// across processes and machines.
///
/// What the assignments return differs: each says so. Nothing is reported.
/// Copies stand for themselves. Threads: one thread at a time changes an object; any may read one that stays.
class TESSEL_API COCuid {
public:
    /// Characters that the text has room for, terminator included.
    enum : unsigned long { TEXT_SIZE = 64 };

    /// Holds no identifier, or a new one.
    /// @param create  1: makes one as Create() does, and IsPresent() tells whether that worked; else: none
    COCuid(int create = 0);

    /// Copies identifier, text and presence.
    /// @param other  object to copy
    COCuid(const COCuid& other) = default;

    /// Copies identifier, text and presence, also over an identifier that is held.
    /// @param other  object to copy
    /// @return this object
    COCuid& operator=(const COCuid& other) = default;

    /// Releases nothing.
    virtual ~COCuid() = default;

    /// Makes a new identifier and its text. One that is unique on this machine only will do.
    /// @return 0: held now. OCUID_ALREADY_HELD: one was held, and is kept. OCUID_NOT_CREATED: the system failed, and
    ///         none is held
    unsigned long Create();

    /// Whether an identifier is held.
    /// @return 1: yes; 0: no
    int IsPresent() const { return m_iPresent; }

    /// The identifier.
    /// @return record of this object's; zero when none is held
    const OCUID* GetUid() const { return &m_Uid; }

    /// The text of the identifier, or what was last assigned as such.
    /// @return text of this object's, terminated
    const wchar_t* GetString() const { return m_szText; }

    /// Writes an identifier as text: 36 characters, digits in lower case.
    /// @param uid   identifier
    /// @param text  receives it; what it needs no room for is cleared. With room for 36 characters or fewer it is cut
    ///              and not terminated
    /// @param size  room in characters, terminator included
    /// @return 0: written; 1: there is no memory or a pointer is null, and nothing is written
    static int ToString(const OCUID* uid, wchar_t* text, unsigned long size);

    /// Reads an identifier from its text.
    /// @param text  36 characters, in either case; null stands for the nil identifier
    /// @param uid   receives it; zero after a failure
    /// @return 0: read; 1: the text is no identifier, or there is no record
    static int ToUid(wchar_t* text, OCUID* uid);

    /// Whether this object holds that identifier.
    /// @param other  record whose 32 bytes are all compared; null is equal to nothing
    /// @return 1: equal; 0: different, or none is held here
    int operator==(const OCUID* other) const;

    /// Whether this object's identifier is the one of another, which need not hold any: without one it counts as zero.
    /// @param other  object to compare with; null is equal to nothing
    /// @return 1: equal; 0: different, or none is held here
    int operator==(const COCuid* other) const;

    /// Whether both hold the same identifier.
    /// @param other  object to compare with
    /// @return 1: equal; 0: different, or one of them holds none
    int operator==(const COCuid& other) const;

    /// The opposite of the comparison for equality.
    /// @param other  record whose 32 bytes are all compared; null is equal to nothing
    /// @return 1: different, or none is held here; 0: equal
    int operator!=(const OCUID* other) const { return !(*this == other); }

    /// The opposite of the comparison for equality.
    /// @param other  object to compare with, which need not hold an identifier; null is equal to nothing
    /// @return 1: different, or none is held here; 0: equal
    int operator!=(const COCuid* other) const { return !(*this == other); }

    /// The opposite of the comparison for equality.
    /// @param other  object to compare with
    /// @return 1: different, or one of them holds none; 0: equal
    int operator!=(const COCuid& other) const { return !(*this == other); }

    /// Takes over an identifier and its text.
    /// @param source     object to copy from; null, or one that holds none, clears this one
    /// @param overwrite  1: also in place of one that is held; else that one is kept
    /// @return 1: set; 0: not set, as one is held and kept, or cleared
    int SetUid(const COCuid* source, int overwrite);

    /// Takes over an identifier and makes its text.
    /// @param source     record to copy, all 32 bytes; null clears this object, as does a text that cannot be made
    /// @param overwrite  1: also in place of one that is held; else that one is kept
    /// @return 1: set; 0: not set, as one is held and kept, or cleared
    int SetUid(const OCUID* source, int overwrite);

    /// Takes over an identifier unless one is held, and makes its text; one that cannot be made stays as it was.
    /// @param source  record to copy, all 32 bytes; null is refused
    /// @return 1: set; 0: refused. The other assignments give 0 for success
    int operator=(const OCUID* source);

    /// Takes over identifier and text, also over those that are held.
    /// @param source  object to copy from
    /// @return 0: set; 1: the source is null or holds none, and nothing changes
    int operator=(const COCuid* source);

    /// Reads an identifier from its text, also in place of one that is held.
    /// @param text  36 characters; kept as the text, the first 63 of them, whether they are an identifier or not.
    ///              Null counts as empty; the object's own text may be assigned
    /// @return 0: read; 1: it is no identifier, and none is held
    int operator=(const wchar_t* text);

    /// Holds no identifier any more; its text is empty.
    void Clear();

    /// Holds the nil identifier, all zero, with its text, also in place of one that is held; IsPresent() is 1 then.
    void SetToZero();

    /// Holds no identifier: the process's default. It exists from the load of the library to its end.
    static COCuid oInit;

private:
    friend struct COCuidLayout;

    OCUID m_Uid;
    wchar_t m_szText[TEXT_SIZE];
    int m_iPresent;
};
