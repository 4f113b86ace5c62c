#pragma once

#include <tessel/foundation/containers.h>
#include <tessel/foundation/platform.h>

#include <cstddef>

/// Reads, writes, lists and removes values and keys of the registry.
///
/// ReadKey() reads a value and its type into buffers that the object owns; the Get operations copy it from there.
/// Operations that return `long` or `int` return the result of the registry: 0 or a Win32 error. Errors of buffers and
/// types appear only in the status (GetStatus()); nothing is reported.
///
/// The caller owns all keys and closes those that an Open operation returned with CloseKey(). Copies have their own
/// buffers and continue an enumeration independently.
/// Threads: not synchronised; only one thread at a time may use an object. Any thread may call the static operations.
class TESSEL_API CReg {
public:
    /// The types of values.
    enum KEY_TYPE : int {
        TYPE_STRING = 0,       ///< text: REG_SZ
        TYPE_MULTI_STRING = 1, ///< texts that end with an empty one: REG_MULTI_SZ
        TYPE_DWORD = 2,        ///< 32-bit number: REG_DWORD
        TYPE_BINARY = 3,       ///< bytes: REG_BINARY
        TYPE_UNKNOWN = 4       ///< read: any other type; written: REG_NONE
    };

    /// Results of GetStatus() and the operations on the buffers, other than 0.
    enum STATUS : unsigned long {
        NO_BUFFER = 1,     ///< a buffer could not be allocated
        BAD_BUFFER = 2,    ///< the caller's buffer is null or its length is 0
        TEXT_CUT = 3,      ///< the text was truncated to the caller's buffer
        WRONG_TYPE = 5,    ///< the value has another type than the operation needs
        UNKNOWN_VALUE = 6, ///< the value was read, but has none of the four types
        NOT_READ = 7       ///< reading the value failed
    };

    /// Default capacities of the buffers.
    enum : unsigned long {
        DEFAULT_NAME_LENGTH = 100, ///< characters of a name
        DEFAULT_DATA_LENGTH = 200  ///< bytes of data
    };

    /// Creates an object without a value: its type is TYPE_UNKNOWN, its status 0 or NO_BUFFER.
    /// @param ulNameLen  capacity for names in characters; 0 means DEFAULT_NAME_LENGTH
    /// @param ulDataLen  capacity for data in bytes; 0 means DEFAULT_DATA_LENGTH
    explicit CReg(unsigned long ulNameLen = 0, unsigned long ulDataLen = 0);

    /// Copies the value and the state. If memory is short, the status is NO_BUFFER.
    /// @param other  object to copy
    CReg(const CReg& other);

    /// Copies the value and the state. If memory is short, the status is NO_BUFFER.
    /// @param other  object to copy
    /// @return this object
    CReg& operator=(const CReg& other);

    /// Frees the buffers; closes no key.
    virtual ~CReg();

    /// Opens a key of the workstation: `HKEY_LOCAL_MACHINE\Software\Varda\name\subkey`.
    /// @param subkey   path below the name; null: none
    /// @param bCreate  true: create a missing key
    /// @param name     program or component that the key belongs to
    /// @return the key, to be closed with CloseKey(); null: it could not be opened, or the name is null
    static HKEY OpenVardaKey(const wchar_t* subkey, bool bCreate, const wchar_t* name);

    /// Opens or creates a key of the programs that start with the workstation:
    /// `HKEY_LOCAL_MACHINE\Software\Varda\AutoStart\name`.
    /// @param name  the program
    /// @return the key, to be closed with CloseKey(); null: it could not be opened, or the name is null
    static HKEY OpenVardaAutoStartKey(const wchar_t* name);

    /// Opens a key.
    /// @param parent   open key
    /// @param subkey   path below the parent; null or empty returns the parent itself, which must be closed only once
    /// @param bCreate  true: create a missing key
    /// @return the key, to be closed with CloseKey(); null: it could not be opened
    static HKEY OpenKey(HKEY parent, const wchar_t* subkey, bool bCreate);

    /// Closes a key.
    /// @param key  the key; null does nothing
    static void CloseKey(HKEY key);

    /// Reads a value by name. The buffers grow to hold the name, @p ulSize bytes and, if @p pulSize is given, the whole
    /// value. The status becomes 0, NO_BUFFER, UNKNOWN_VALUE (the data are available) or NOT_READ; after NOT_READ the
    /// type is TYPE_UNKNOWN.
    /// @param key      key that holds the value
    /// @param name     name of the value; null or empty: the key's default value
    /// @param ulSize   least capacity for data in bytes
    /// @param pulSize  receives the bytes read; unchanged after a failure. Null: a value that does not fit is a failure
    /// @return 0 or a Win32 error. Also 0 if a buffer is missing from the start: check the status.
    ///         ERROR_MORE_DATA (234): the value does not fit, or memory is short for it
    long ReadKey(HKEY key, const wchar_t* name, unsigned long ulSize, unsigned long* pulSize);

    /// Reads a value and its name by index. Both must fit the current capacities; the name needs one character more for
    /// its terminator. The status is as after reading by name.
    /// @param key    key that holds the value
    /// @param index  from 0
    /// @return 0 or a Win32 error; ERROR_NO_MORE_ITEMS (259): there is no such value. Also 0 if a buffer is missing:
    ///         check the status
    long ReadKey(HKEY key, int index);

    /// The type of the value that was read or will be written.
    /// @return one of KEY_TYPE
    KEY_TYPE GetType() const { return m_Type; }

    /// Sets the type for writing: TYPE_MULTI_STRING for a list of texts, or any type for bytes.
    /// @param type  one of KEY_TYPE; any other value is written as TYPE_UNKNOWN
    void SetType(KEY_TYPE type) { m_Type = type; }

    /// Outcome of the last operation on the buffers.
    /// @return 0, NO_BUFFER, BAD_BUFFER, TEXT_CUT, WRONG_TYPE, UNKNOWN_VALUE or NOT_READ; after FindFirstValue() and
    ///         FindNextValue() the registry's result
    unsigned long GetStatus() const { return m_ulStatus; }

    /// Copies the name of the value that was read.
    /// @param buf  receives the text, terminated; its last character is always set to 0
    /// @param len  buffer size in characters, including the terminator
    /// @return 0, NO_BUFFER, BAD_BUFFER or TEXT_CUT
    unsigned long GetName(wchar_t* buf, unsigned long len);

    /// Copies the text that was read, or one of several.
    /// @param buf    receives the text, terminated; its last character is always set to 0
    /// @param len    buffer size in characters, including the terminator
    /// @param index  texts of a multi-string to skip; after the last one the text is empty
    /// @return 0, NO_BUFFER, BAD_BUFFER, TEXT_CUT, or WRONG_TYPE: neither a text nor a multi-string
    unsigned long GetData(wchar_t* buf, unsigned long len, int index);

    /// Returns the number that was read; bytes missing from the value count as 0.
    /// @param value  receives the number; unchanged after a failure
    /// @return 0, NO_BUFFER, or WRONG_TYPE: not a number
    unsigned long GetData(unsigned long& value);

    /// Lists the texts of the multi-string that was read.
    /// @param texts  receives pointers to the texts, in order, instead of its former contents. They are valid until
    ///               this object reads again, is assigned to or is destroyed. Unchanged if the type is wrong or there
    ///               is no buffer; empty if memory is short for the list
    /// @return 0, NO_BUFFER, or WRONG_TYPE: not a multi-string
    unsigned long GetData(CList<const wchar_t*>& texts);

    /// Copies the bytes of the binary value or multi-string that was read.
    /// @param buf  receives the bytes
    /// @param len  bytes to copy; becomes the smaller of that and the object's capacity, not the length of the value
    /// @return 0, NO_BUFFER, BAD_BUFFER for a null buffer, or WRONG_TYPE
    unsigned long GetBinaryData(unsigned char* buf, unsigned long& len);

    /// Writes a text or, if the type is TYPE_MULTI_STRING, consecutive texts that end with an empty one. Any other type
    /// becomes TYPE_STRING. The type may still be TYPE_MULTI_STRING after a read: call SetType(TYPE_STRING) before
    /// writing a plain text.
    /// @param key   key that holds the value
    /// @param name  name of the value; null or empty: the key's default value
    /// @param text  text to write; null gives ERROR_INVALID_PARAMETER (87)
    /// @return 0 or a Win32 error
    long SaveKey(HKEY key, const wchar_t* name, const wchar_t* text);

    /// Writes a 32-bit number (REG_DWORD). The type stays.
    /// @param key    key that holds the value
    /// @param name   name of the value; null or empty: the key's default value
    /// @param value  number to write
    /// @return 0 or a Win32 error
    long SaveKey(HKEY key, const wchar_t* name, unsigned long value);

    /// Writes bytes with the type of SetType() or of the last read or write; TYPE_UNKNOWN becomes TYPE_BINARY.
    /// @param key   key that holds the value
    /// @param name  name of the value; null or empty: the key's default value
    /// @param data  bytes to write; null with a length above 0 gives ERROR_INVALID_PARAMETER (87)
    /// @param len   bytes; a negative length gives ERROR_INVALID_PARAMETER (87)
    /// @return 0 or a Win32 error
    long SaveKey(HKEY key, const wchar_t* name, unsigned char* data, short len);

    /// Writes a multi-string. The type stays.
    /// @param key    key that holds the value
    /// @param name   name of the value; null or empty: the key's default value
    /// @param texts  texts to write, in order; null pointers are skipped. Readers interpret an empty text as the end
    /// @return 0 or a Win32 error
    unsigned long SaveKey(HKEY key, const wchar_t* name, CList<const wchar_t*>& texts);

    /// Removes a value.
    /// @param key   key that holds it
    /// @param name  name of the value; null or empty: the key's default value
    /// @return 0 or a Win32 error
    static long RemoveValue(HKEY key, const wchar_t* name);

    /// Removes a key without subkeys, with its values.
    /// @param key     open key
    /// @param subkey  path below it
    /// @return 0 or a Win32 error
    static long RemoveKey(HKEY key, const wchar_t* subkey);

    /// Starts to enumerate the values of a key. The status becomes the result; the object's buffers are not used.
    /// @param key      key that holds the values; must stay open during the enumeration
    /// @param name     receives the name, terminated
    /// @param nameLen  size of @p name in characters, including the terminator
    /// @param type     receives the type
    /// @param data     receives the data; may be null
    /// @param dataLen  size of @p data in bytes; becomes the length of the data
    /// @return 0; ERROR_NO_MORE_ITEMS (259): there are none; ERROR_MORE_DATA (234): this value does not fit, the
    ///         enumeration can continue; else a Win32 error
    int FindFirstValue(HKEY key, wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data,
                       unsigned long& dataLen);

    /// Continues with the next value. The status becomes the result.
    /// @param name     receives the name, terminated
    /// @param nameLen  size of @p name in characters, including the terminator
    /// @param type     receives the type
    /// @param data     receives the data; as large as the size given to FindFirstValue(); may be null
    /// @param dataLen  receives the length of the data; its former value is ignored
    /// @return as from FindFirstValue()
    int FindNextValue(wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data,
                      unsigned long& dataLen);

    /// Starts to enumerate the subkeys of a key. The status stays.
    /// @param key   open key; must stay open during the enumeration
    /// @param name  receives the name, terminated; null gives ERROR_INVALID_PARAMETER (87)
    /// @param len   size of @p name in characters, including the terminator
    /// @return 0; ERROR_NO_MORE_ITEMS (259): there are none; ERROR_MORE_DATA (234): this name does not fit, the
    ///         enumeration can continue; else a Win32 error
    int FindFirstKey(HKEY key, wchar_t* name, unsigned long len);

    /// Continues with the next subkey. The status stays.
    /// @param name  receives the name, terminated; as large as the size given to FindFirstKey()
    /// @return as from FindFirstKey()
    int FindNextKey(wchar_t* name);

private:
    friend struct CRegLayout;

    /// Zeros after the data: the rest of half a character and two terminators.
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
