#pragma once

#include <tessel/foundation/platform.h>

#include <cstddef>

/// Describes an application that the workstation can start, and starts it: program, working directory, argument line
/// and restart key, and the command id and bitmaps of its menu entry or button.
///
/// A description is read from the application's registry key (CReg::OpenVardaAutoStartKey()) or from text, and written
/// as text or as a binary record. Reading never fails: missing values leave the description unchanged.
/// The class does not wait for the program, watch it or restart it; the restart key is only stored.
///
/// Program and working directory may contain references to environment variables (%NAME%), which are expanded when the
/// program is started. All text is 8-bit; text longer than its field is truncated. Execute() refuses a program or
/// working directory that was truncated, contains a character without an 8-bit form, or exceeds 259 bytes when
/// expanded. Text of the registry is converted in the C runtime's locale (CopyString()), while the system uses its own
/// code page: for characters beyond ASCII the program must set that locale.
///
/// Copies are independent. Threads: only one thread at a time may use an object.
class TESSEL_API CCommand {
public:
    /// Sizes of texts in bytes, including the terminator.
    enum : unsigned int {
        PATH_SIZE = 260,     ///< paths and restart key
        ARGUMENTS_SIZE = 256 ///< argument line
    };

    /// How an application is started. Programs may define other values.
    enum CMD_TYPE : int {
        CMD_NONE = 0,      ///< not at all
        CMD_AUTOMATIC = 4, ///< with the workstation ("AutoFlag=YES")
        CMD_MANUAL = 5     ///< by its menu entry or button
    };

    /// The description as one record of 1052 bytes.
    struct COMMAND {
        int CmdId;                      ///< command id
        int Bitmap1;                    ///< index of the first bitmap
        int Bitmap2;                    ///< index of the second bitmap
        CMD_TYPE Type;                  ///< type
        char PathFileName[PATH_SIZE];   ///< program
        char WorkDir[PATH_SIZE];        ///< working directory
        char Arguments[ARGUMENTS_SIZE]; ///< argument line as configured
        char RestartKey[PATH_SIZE];     ///< restart key
    };

    /// Describes nothing: numbers are 0 and texts empty.
    CCommand();

    /// Copies the description.
    /// @param other  object to copy
    CCommand(const CCommand& other) = default;

    /// Copies the description.
    /// @param other  object to copy
    /// @return this object
    CCommand& operator=(const CCommand& other) = default;

    /// Releases nothing.
    virtual ~CCommand() = default;

    /// Sets the type.
    /// @param type  one of CMD_TYPE or a value that the program defines
    void SetType(CMD_TYPE type) { m_Type = type; }

    /// The type.
    /// @return one of CMD_TYPE or a value that the program defines
    CMD_TYPE GetType() const { return m_Type; }

    /// Sets the command id.
    /// @param id  any number
    void SetCmdId(int id) { m_iCmdId = id; }

    /// The command id.
    /// @return any number
    int GetCmdId() const { return m_iCmdId; }

    /// Sets the first bitmap.
    /// @param index  any number
    void SetBitmap1(int index) { m_iBitmap1 = index; }

    /// The first bitmap.
    /// @return any number
    int GetBitmap1() const { return m_iBitmap1; }

    /// Sets the second bitmap.
    /// @param index  any number
    void SetBitmap2(int index) { m_iBitmap2 = index; }

    /// The second bitmap.
    /// @return any number
    int GetBitmap2() const { return m_iBitmap2; }

    /// The second bitmap, as GetBitmap2().
    /// @return any number
    int Bitmap2() const { return m_iBitmap2; }

    /// The working directory as configured.
    /// @return text owned by this object; empty: none
    const char* GetWorkDir() const { return m_szWorkDir; }

    /// Whether there is a restart key.
    /// @return true: it is not empty
    bool HasRestartKey() const { return m_szRestartKey[0] != '\0'; }

    /// The restart key, for programs that watch applications.
    /// @return text owned by this object; empty: none
    const char* GetRestartKey() const { return m_szRestartKey; }

    /// Whether the application can be started.
    /// @return true: the type is CMD_AUTOMATIC or CMD_MANUAL, and there is a program
    bool IsStartable() const;

    /// Reads the texts (REG_SZ) "PathFileName", "WorkDir", "RestartKey" and "Arguments" of a key, and "AutoFlag", which
    /// sets the type to CMD_AUTOMATIC if it is "YES". Names and "YES" are not case-sensitive.
    /// A character without an 8-bit form ends its text.
    /// Reading stops at the first value, of any type, with more than 128 bytes (63 characters) or a name of more than
    /// 127 characters: that value and those after it, in the order of the registry, are not read.
    /// @param key  open key of the application; stays open
    void InitializeFromRegistry(HKEY key);

    /// Reads the text form that FormatAsText() writes. The value of a line starts after its first "=". Its name is the
    /// first of "AutoFlag" (only with the value "YES"), "WorkDir", "PathFileName", "RestartKey" and "Arguments" that
    /// occurs anywhere in the line; names are case-sensitive here. Each line ends with a carriage return and one more
    /// character; text after the last of them is not read.
    /// @param text  changed: the line ends become zeros. Null reads nothing
    void InitializeFromText(char* text);

    /// Buffer size that FormatAsText() needs.
    /// @return bytes, including the terminator
    unsigned int GetSizeAsText() const;

    /// Writes the description as lines of text: a header, "AutoFlag=YES" for the type CMD_AUTOMATIC, working directory,
    /// program and, unless they are empty, arguments and restart key.
    /// @param text  receives the text, terminated; buffer of at least GetSizeAsText() bytes. Null writes nothing
    void FormatAsText(char* text) const;

    /// The description as a record.
    /// @return record owned by this object, filled by each call
    COMMAND* GetBinary();

    /// Reverts all substitutions: the program will receive the argument line as configured.
    void InitSubstituteArguments();

    /// Replaces the first occurrence of a placeholder in the argument line that the program will receive.
    /// @param token  placeholder, such as "$FILE"; null or one that does not occur changes nothing. An empty one
    ///               inserts the value at the start
    /// @param value  replacement; null: an empty text
    void SubstituteArgument(const char* token, const char* value);

    /// Starts the program in its working directory. A program without drive and directory is searched for in the
    /// working directory or, without one, where the system looks for programs. It inherits no handles. IsStartable() is
    /// not checked.
    /// @return process id; as no handle is kept, another process may get the id once the program has ended. 0: not
    ///         started; a message box showed the reason, and the call waited until it was closed. If memory was short,
    ///         that is reported instead
    unsigned long Execute();

private:
    friend struct CCommandLayout;

    static bool IsAbsoluteFilePath(char* path);
    template <class Character> void SetText(std::size_t which, const Character* value);
    void ReadValue(const wchar_t* name, const wchar_t* value);
    void ReadLine(const char* line);
    void ShowFailure(unsigned long error, const char* program, const char* directory, const char* commandLine) const;

    int m_iCmdId;
    int m_iBitmap1;
    int m_iBitmap2;
    CMD_TYPE m_Type;
    char m_szPathFileName[PATH_SIZE];
    char m_szWorkDir[PATH_SIZE];
    char m_szArguments[ARGUMENTS_SIZE];
    char m_szSubstituted[ARGUMENTS_SIZE];
    char m_szRestartKey[PATH_SIZE];
    COMMAND m_Command;
    unsigned long m_ulPathError;
    unsigned long m_ulWorkDirError;
};
