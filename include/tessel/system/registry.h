#pragma once

#include <tessel/foundation/containers.h>
#include <tessel/foundation/platform.h>

#include <cstddef>

/// Reads, writes, lists and removes values and keys of the registry.
///
/// A value is read into buffers of the object's, which say its type, and then fetched with one of the Get operations.
/// Operations that return `long` or `int` give the registry's own result: 0 or a Win32 error. What happened to
/// buffers and types is told by the status (GetStatus()) alone; nothing is reported.
///
/// Keys are the caller's: what an Open operation returns is closed with CloseKey(). Copies have buffers of their
/// own and go on with an enumeration each for itself.
/// Threads: not synchronised; only one thread at a time may use an object. The static operations may be called by any.
class TESSEL_API CReg {
public:
    /// The kinds of value.
    enum KEY_TYPE : int {
        TYPE_STRING = 0,       ///< text: REG_SZ
        TYPE_MULTI_STRING = 1, ///< texts that end with an empty one: REG_MULTI_SZ
        TYPE_DWORD = 2,        ///< 32-bit number: REG_DWORD
        TYPE_BINARY = 3,       ///< bytes: REG_BINARY
        TYPE_UNKNOWN = 4       ///< read: any other type; written: REG_NONE
    };

    /// What GetStatus() and the operations on the buffers give besides 0.
    enum STATUS : unsigned long {
        NO_BUFFER = 1,     ///< a buffer is missing for lack of memory
        BAD_BUFFER = 2,    ///< the caller's buffer is null or has no room
        TEXT_CUT = 3,      ///< the text was truncated to the caller's buffer
        WRONG_TYPE = 5,    ///< the value is of another type than asked for
        UNKNOWN_VALUE = 6, ///< the value was read, but its type is none of the four
        NOT_READ = 7       ///< reading the value failed
    };

    /// The room that an object has from the start.
    enum : unsigned long {
        DEFAULT_NAME_LENGTH = 100, ///< characters of a name, unless given
        DEFAULT_DATA_LENGTH = 200  ///< bytes of data, unless given
    };

    /// Creates an object without a value: its type is TYPE_UNKNOWN, its status 0 or NO_BUFFER.
    /// @param ulNameLen  characters of a name that there is room for; 0 means DEFAULT_NAME_LENGTH
    /// @param ulDataLen  bytes of data that there is room for; 0 means DEFAULT_DATA_LENGTH
    explicit CReg(unsigned long ulNameLen = 0, unsigned long ulDataLen = 0);

    /// Copies the value that was read and the state; without memory for that the status is NO_BUFFER.
    /// @param other  object to copy
    CReg(const CReg& other);

    /// Copies the value that was read and the state; without memory for that the status is NO_BUFFER.
    /// @param other  object to copy
    /// @return this object
    CReg& operator=(const CReg& other);

    /// Frees the buffers; no key is closed.
    virtual ~CReg();

    /// Opens a key of the workstation's: `HKEY_LOCAL_MACHINE\Software\Varda\name\subkey`.
    /// @param subkey   what follows the name; null: nothing
    /// @param bCreate  whether a missing key is created
    /// @param name     program or component that the key belongs to
    /// @return the key, to be closed with CloseKey(); null: it could not be had, or the name is null
    static HKEY OpenVardaKey(const wchar_t* subkey, bool bCreate, const wchar_t* name);

    /// Opens or creates a key of the programs that start with the workstation:
    /// `HKEY_LOCAL_MACHINE\Software\Varda\AutoStart\name`.
    /// @param name  the program
    /// @return the key, to be closed with CloseKey(); null: it could not be had, or the name is null
    static HKEY OpenVardaAutoStartKey(const wchar_t* name);

    /// Opens a key.
    /// @param parent   key that it lies under
    /// @param subkey   path from there; a null or empty one gives the parent itself, which is then to be closed once
    /// @param bCreate  whether a missing key is created
    /// @return the key, to be closed with CloseKey(); null: it could not be had
    static HKEY OpenKey(HKEY parent, const wchar_t* subkey, bool bCreate);

    /// Closes a key.
    /// @param key  the key; null does nothing
    static void CloseKey(HKEY key);

    /// Reads a value by its name. The buffers grow to the name, to @p ulSize and, when the length is asked for, to the
    /// value. The status becomes 0, NO_BUFFER, UNKNOWN_VALUE (the data are there) or NOT_READ; in the last case the
    /// type is TYPE_UNKNOWN.
    /// @param key      key that holds the value
    /// @param name     name of the value; null or empty: the key's default value
    /// @param ulSize   bytes of data to have room for
    /// @param pulSize  receives the bytes read; unchanged after a failure. Null: a value that has no room is a failure
    /// @return 0 or a Win32 error. When a buffer is missing from the start 0 too: look at the status;
    ///         ERROR_MORE_DATA (234) when memory is short for a value that has no room
    long ReadKey(HKEY key, const wchar_t* name, unsigned long ulSize, unsigned long* pulSize);

    /// Reads the value with an index and its name, neither of which may be longer than there is room for: a name must
    /// be shorter. The status is as after reading by name.
    /// @param key    key that holds the value
    /// @param index  from 0; ERROR_NO_MORE_ITEMS (259) behind the last
    /// @return 0 or a Win32 error. When a buffer is missing 0 too: look at the status
    long ReadKey(HKEY key, int index);

    /// The type of what was read or is written.
    /// @return one of KEY_TYPE
    KEY_TYPE GetType() const { return m_Type; }

    /// Sets the type: TYPE_MULTI_STRING before a list of texts, or any before bytes, are written.
    /// @param type  one of KEY_TYPE; any other counts as TYPE_UNKNOWN where it is written
    void SetType(KEY_TYPE type) { m_Type = type; }

    /// What the last operation on the buffers found.
    /// @return 0, NO_BUFFER, BAD_BUFFER, TEXT_CUT, WRONG_TYPE, UNKNOWN_VALUE or NOT_READ; after FindFirstValue() and
    ///         FindNextValue() the registry's result
    unsigned long GetStatus() const { return m_ulStatus; }

    /// Fetches the name of the value that was read.
    /// @param buf  receives the text, terminated; its last character is always set to 0
    /// @param len  buffer size in characters, including the terminator
    /// @return 0, NO_BUFFER, BAD_BUFFER or TEXT_CUT
    unsigned long GetName(wchar_t* buf, unsigned long len);

    /// Fetches the text that was read, or one of the texts.
    /// @param buf    receives the text, terminated; its last character is always set to 0
    /// @param len    buffer size in characters, including the terminator
    /// @param index  texts of a multi-string to skip; behind its last one the text is empty
    /// @return 0, NO_BUFFER, BAD_BUFFER, TEXT_CUT, or WRONG_TYPE when it is neither text nor multi-string
    unsigned long GetData(wchar_t* buf, unsigned long len, int index);

    /// Fetches the number that was read; bytes that the value does not have count as 0.
    /// @param value  receives it; unchanged after a failure
    /// @return 0, NO_BUFFER, or WRONG_TYPE when it is no number
    unsigned long GetData(unsigned long& value);

    /// Fetches the texts of the multi-string that was read.
    /// @param texts  receives pointers to them, in order, in place of what it held; they stay valid until the next
    ///               read, an assignment to this object or its end. Unchanged when the type is wrong or there is no
    ///               buffer; empty when memory is short for the list
    /// @return 0, NO_BUFFER, or WRONG_TYPE when it is no multi-string
    unsigned long GetData(CList<const wchar_t*>& texts);

    /// Fetches the bytes of the binary value or multi-string that was read.
    /// @param buf  receives the bytes
    /// @param len  bytes wanted; becomes the lesser of that and the room that the object has, not the value's length
    /// @return 0, NO_BUFFER, BAD_BUFFER for a null buffer, or WRONG_TYPE
    unsigned long GetBinaryData(unsigned char* buf, unsigned long& len);

    /// Writes a text or, when the type is TYPE_MULTI_STRING, texts that follow each other and end with an empty one.
    /// Any other type becomes TYPE_STRING. Reading a multi-string leaves that type too: SetType(TYPE_STRING) before a
    /// plain text, behind which texts would be looked for.
    /// @param key   key that holds the value
    /// @param name  name of the value; null or empty: the key's default value
    /// @param text  what to write; null gives ERROR_INVALID_PARAMETER (87)
    /// @return 0 or a Win32 error
    long SaveKey(HKEY key, const wchar_t* name, const wchar_t* text);

    /// Writes a number of 32 bits (REG_DWORD). The type stays.
    /// @param key    key that holds the value
    /// @param name   name of the value; null or empty: the key's default value
    /// @param value  what to write
    /// @return 0 or a Win32 error
    long SaveKey(HKEY key, const wchar_t* name, unsigned long value);

    /// Writes bytes under the type that SetType(), or the last read or write, left; TYPE_UNKNOWN becomes TYPE_BINARY.
    /// @param key   key that holds the value
    /// @param name  name of the value; null or empty: the key's default value
    /// @param data  what to write; a null pointer with a length gives ERROR_INVALID_PARAMETER (87)
    /// @param len   bytes; a negative length gives ERROR_INVALID_PARAMETER (87)
    /// @return 0 or a Win32 error
    long SaveKey(HKEY key, const wchar_t* name, unsigned char* data, short len);

    /// Writes a multi-string. The type stays.
    /// @param key    key that holds the value
    /// @param name   name of the value; null or empty: the key's default value
    /// @param texts  what to write, in order; null pointers are left out. An empty text ends the list for its readers
    /// @return 0 or a Win32 error
    unsigned long SaveKey(HKEY key, const wchar_t* name, CList<const wchar_t*>& texts);

    /// Removes a value.
    /// @param key   key that holds it
    /// @param name  name of the value; null or empty: the key's default value
    /// @return 0 or a Win32 error
    static long RemoveValue(HKEY key, const wchar_t* name);

    /// Removes a key that has no keys under it, with its values.
    /// @param key     key that it lies under
    /// @param subkey  path from there
    /// @return 0 or a Win32 error
    static long RemoveKey(HKEY key, const wchar_t* subkey);

    /// Starts walking through the values of a key. The status becomes the result; the buffers stay as they are.
    /// @param key      key that holds the values; stays open until the walk's end
    /// @param name     receives the name, terminated
    /// @param nameLen  room for it in characters, including the terminator
    /// @param type     receives the type
    /// @param data     receives the data; may be null
    /// @param dataLen  room for them in bytes; becomes their length
    /// @return 0; ERROR_NO_MORE_ITEMS (259): there are none; ERROR_MORE_DATA (234): no room, the walk can go on;
    ///         else a Win32 error
    int FindFirstValue(HKEY key, wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data,
                       unsigned long& dataLen);

    /// Goes on to the next value. The status becomes the result.
    /// @param name     receives the name, terminated
    /// @param nameLen  room for it in characters, including the terminator
    /// @param type     receives the type
    /// @param data     receives the data, for which there is as much room as FindFirstValue() was told; may be null
    /// @param dataLen  becomes their length; what it holds before does not count
    /// @return as from FindFirstValue()
    int FindNextValue(wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data,
                      unsigned long& dataLen);

    /// Starts walking through the keys under a key. The status stays.
    /// @param key   key that they lie under; stays open until the walk's end
    /// @param name  receives the name, terminated; null gives ERROR_INVALID_PARAMETER (87)
    /// @param len   room for it in characters, including the terminator
    /// @return 0; ERROR_NO_MORE_ITEMS (259): there are none; ERROR_MORE_DATA (234): no room, the walk can go on;
    ///         else a Win32 error
    int FindFirstKey(HKEY key, wchar_t* name, unsigned long len);

    /// Goes on to the next key. The status stays.
    /// @param name  receives the name, terminated, for which there is as much room as FindFirstKey() was told
    /// @return as from FindFirstKey()
    int FindNextKey(wchar_t* name);

private:
    friend struct CRegLayout;

    /// Zeros that follow what was read: half a character and two terminators.
    static constexpr std::size_t ZEROS_BEHIND_DATA = 3 * sizeof(wchar_t);

    static unsigned long ConvertType(KEY_TYPE type);
    static KEY_TYPE ConvertType(unsigned long registryType);
    static KEY_TYPE MapType(unsigned long registryType);
    unsigned long CopyText(wchar_t* dst, const wchar_t* src, unsigned long len);

    void AllocateName(std::size_t characters);
    void AllocateData(std::size_t bytes);
    void CopyFrom(const CReg& other);
    unsigned long Check(bool hasRightType) const;
    const wchar_t* FirstText() const;
    bool Prepare(const wchar_t* name, unsigned long dataLength);
    long Query(HKEY key, unsigned long& registryType, unsigned long& length);
    long Finish(long result, unsigned long registryType, unsigned long length);
    int EnumValue(wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data, unsigned long& dataLen);
    int EnumKey(wchar_t* name) const;

    KEY_TYPE m_Type;
    wchar_t* m_pName;
    unsigned char* m_pData;
    unsigned long m_ulNameLen;
    unsigned long m_ulDataLen;
    unsigned long m_ulStatus;
    unsigned long m_ulKeyIndex;
    unsigned long m_ulValueIndex;
    HKEY m_hKeyEnum;
    HKEY m_hValueEnum;
    unsigned long m_ulFindNameLen;
    unsigned long m_ulFindDataLen;
};
