#pragma once

#include <tessel/foundation/platform.h>

/// A universally unique identifier as a record of fixed size.
struct OCUID {
    GUID Uuid;                  ///< identifier, as used by the system's UUID functions
    unsigned char Reserved[16]; ///< 0; included in comparisons
};

/// Result of COCuid::Create() if the system cannot create an identifier.
inline constexpr unsigned long OCUID_NOT_CREATED = 0x2E000000;

/// Result of COCuid::Create() if the object already holds one.
inline constexpr unsigned long OCUID_ALREADY_HELD = 0x2E000001;

/// Holds one universally unique identifier and its text, or none. Programs name studies, objects and files with it
/// across processes and machines.
///
/// The assignments differ in what they return: see each one. Nothing is reported.
/// Copies are independent. Threads: only one thread at a time may change an object; any thread may read one that does
/// not change.
class TESSEL_API COCuid {
public:
    /// Size of the text in characters, including the terminator.
    enum : unsigned long { TEXT_SIZE = 64 };

    /// Holds no identifier, or a new one.
    /// @param create  1: creates one like Create(), IsPresent() returns whether that worked; else: none
    COCuid(int create = 0);

    /// Copies identifier, text and presence.
    /// @param other  object to copy
    COCuid(const COCuid& other) = default;

    /// Copies identifier, text and presence, and replaces a held identifier.
    /// @param other  object to copy
    /// @return this object
    COCuid& operator=(const COCuid& other) = default;

    /// Has nothing to free.
    virtual ~COCuid() = default;

    /// Creates a new identifier and its text. One that is unique only on this machine is accepted.
    /// @return 0: created. OCUID_ALREADY_HELD: one was already held, and is kept. OCUID_NOT_CREATED: the system failed,
    ///         and none is held
    unsigned long Create();

    /// Whether an identifier is held.
    /// @return 1: yes; 0: no
    int IsPresent() const { return m_iPresent; }

    /// The identifier.
    /// @return a record of this object; all zero if none is held
    const OCUID* GetUid() const { return &m_Uid; }

    /// The text of the identifier, or the text last assigned.
    /// @return terminated text, owned by this object
    const wchar_t* GetString() const { return m_szText; }

    /// Formats an identifier as text: 36 characters, digits in lower case.
    /// @param uid   identifier
    /// @param text  receives it; the rest of the buffer is cleared. In a buffer of 36 characters or fewer it is
    ///              truncated and not terminated
    /// @param size  buffer size in characters, including the terminator
    /// @return 0: written; 1: memory is short or a pointer is null, and nothing is written
    static int ToString(const OCUID* uid, wchar_t* text, unsigned long size);

    /// Parses an identifier.
    /// @param text  36 characters, in either case; null stands for the nil identifier
    /// @param uid   receives it; zero after a failure
    /// @return 0: parsed; 1: the text is not an identifier, or @p uid is null
    static int ToUid(wchar_t* text, OCUID* uid);

    /// Whether this object holds the given identifier.
    /// @param other  record of which all 32 bytes are compared; null is equal to nothing
    /// @return 1: equal; 0: different, or none is held here
    int operator==(const OCUID* other) const;

    /// Whether this object's identifier equals that of another, which counts as zero if it holds none.
    /// @param other  object to compare with; null is equal to nothing
    /// @return 1: equal; 0: different, or none is held here
    int operator==(const COCuid* other) const;

    /// Whether both hold the same identifier.
    /// @param other  object to compare with
    /// @return 1: equal; 0: different, or one of them holds none
    int operator==(const COCuid& other) const;

    /// The opposite of the comparison for equality.
    /// @param other  record of which all 32 bytes are compared; null is equal to nothing
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

    /// Copies an identifier and its text.
    /// @param source     object to copy from; null, or an empty one, clears this one
    /// @param overwrite  1: replaces a held identifier; else that one is kept
    /// @return 1: set; 0: not set, as one is held and kept, or cleared
    int SetUid(const COCuid* source, int overwrite);

    /// Copies an identifier and formats its text.
    /// @param source     record to copy, all 32 bytes; null clears this object, and so does a text that cannot be
    ///                   formatted
    /// @param overwrite  1: replaces a held identifier; else that one is kept
    /// @return 1: set; 0: not set, as one is held and kept, or cleared
    int SetUid(const OCUID* source, int overwrite);

    /// Copies an identifier unless one is held, and formats its text; a text that cannot be formatted stays unchanged.
    /// @param source  record to copy, all 32 bytes; null is refused
    /// @return 1: set; 0: refused. The other assignments give 0 for success
    int operator=(const OCUID* source);

    /// Copies identifier and text, and replaces those held.
    /// @param source  object to copy from
    /// @return 0: set; 1: the source is null or empty, and nothing changes
    int operator=(const COCuid* source);

    /// Parses an identifier and replaces a held one.
    /// @param text  36 characters; the first 63 are kept as the text, even if they are not an identifier. Null counts
    ///              as empty; the object's own text may be assigned
    /// @return 0: parsed; 1: it is not an identifier, and none is held
    int operator=(const wchar_t* text);

    /// Removes the identifier and its text.
    void Clear();

    /// Sets the nil identifier, all zero, with its text, and replaces a held one; IsPresent() then returns 1.
    void SetToZero();

    /// The process's default, without an identifier. It exists while the library is loaded.
    static COCuid oInit;

private:
    friend struct COCuidLayout;

    OCUID m_Uid;
    wchar_t m_szText[TEXT_SIZE];
    int m_iPresent;
};
