#pragma once

#include <tessel/foundation/platform.h>

#include <cstddef>

/// Describes an application that the workstation can start, and starts it: its program, working directory, argument
/// line and restart key, and the command id and bitmaps of its menu entry or button.
///
/// A description is read from the application's key of the registry (CReg::OpenVardaAutoStartKey()) or from text,
/// written as text, and handed out as a binary record. Reading never fails: what is missing stays as it was.
/// The program is neither waited for, watched nor started again; the restart key is kept for whoever does.
///
/// Program and working directory may hold references to environment variables (%NAME%), which are expanded when the
/// program starts; one whose expansion takes more than 259 bytes is not started. All text is 8-bit; what is longer than
/// its field is cut, and a program or working directory that was cut is not started. Text of the registry is converted
/// in the C runtime's locale (CopyString()), and the system reads it in its own code page: beyond ASCII the two agree
/// when the program has set that locale. Copies stand for themselves. Threads: only one thread at a time may use an
/// object.
class TESSEL_API CCommand {
public:
    /// Room for texts in bytes, including the terminator.
    enum : unsigned int {
        PATH_SIZE = 260,     ///< of a path or the restart key
        ARGUMENTS_SIZE = 256 ///< of an argument line
    };

    /// How an application comes to be started. Other values are for programs to define.
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
    /// @param type  one of CMD_TYPE or a value of the program's own
    void SetType(CMD_TYPE type) { m_Type = type; }

    /// The type.
    /// @return one of CMD_TYPE or a value of the program's own
    CMD_TYPE GetType() const { return m_Type; }

    /// Sets the command id.
    /// @param id  number of the program's own
    void SetCmdId(int id) { m_iCmdId = id; }

    /// The command id.
    /// @return number of the program's own
    int GetCmdId() const { return m_iCmdId; }

    /// Sets the first bitmap.
    /// @param index  number of the program's own
    void SetBitmap1(int index) { m_iBitmap1 = index; }

    /// The first bitmap.
    /// @return number of the program's own
    int GetBitmap1() const { return m_iBitmap1; }

    /// Sets the second bitmap.
    /// @param index  number of the program's own
    void SetBitmap2(int index) { m_iBitmap2 = index; }

    /// The second bitmap.
    /// @return number of the program's own
    int GetBitmap2() const { return m_iBitmap2; }

    /// The second bitmap, as GetBitmap2().
    /// @return number of the program's own
    int Bitmap2() const { return m_iBitmap2; }

    /// The working directory as configured.
    /// @return text of this object's; empty for none
    const char* GetWorkDir() const { return m_szWorkDir; }

    /// Whether there is a restart key.
    /// @return true: it is not empty
    bool HasRestartKey() const { return m_szRestartKey[0] != '\0'; }

    /// The restart key, for whoever watches applications.
    /// @return text of this object's; empty for none
    const char* GetRestartKey() const { return m_szRestartKey; }

    /// Whether the application can be started.
    /// @return true: the type is CMD_AUTOMATIC or CMD_MANUAL, and there is a program
    bool IsStartable() const;

    /// Reads the texts (REG_SZ) "PathFileName", "WorkDir", "RestartKey" and "Arguments" of a key, and "AutoFlag", which
    /// sets the type when it is "YES". Neither names nor "YES" depend on the case.
    /// A character without an 8-bit form ends its text.
    /// Values are read in the registry's order, up to the first one of more than 128 bytes (63 characters) or with
    /// a name of more than 127 characters, whatever its type: neither it nor those behind it are read.
    /// @param key  open key of one application; stays open
    void InitializeFromRegistry(HKEY key);

    /// Reads the text form that FormatAsText() writes. The value of a line is what follows its first "="; which one it
    /// is follows from the first of "AutoFlag" (with the value "YES"), "WorkDir", "PathFileName", "RestartKey" and
    /// "Arguments" that is found anywhere in the line. Lines end with a carriage return and one more character; what
    /// follows the last of them is not read. Names depend on the case here.
    /// @param text  changed: the ends of the lines become zeros. Null reads nothing
    void InitializeFromText(char* text);

    /// Room that FormatAsText() needs.
    /// @return bytes, including the terminator
    unsigned int GetSizeAsText() const;

    /// Writes the description as lines of text: a header, "AutoFlag=YES" for the type CMD_AUTOMATIC, working directory,
    /// program and, unless they are empty, arguments and restart key.
    /// @param text  receives it, terminated; needs the room that GetSizeAsText() tells. Null writes nothing
    void FormatAsText(char* text) const;

    /// The description as a record.
    /// @return record of this object's, filled by each call
    COMMAND* GetBinary();

    /// Takes back all substitutions: the program will get the argument line as configured.
    void InitSubstituteArguments();

    /// Replaces the first occurrence of a placeholder in the line of arguments that the program will get.
    /// @param token  placeholder, such as "$FILE"; null or one that does not occur changes nothing. An empty one stands
    ///               before the line
    /// @param value  what takes its place; null: nothing
    void SubstituteArgument(const char* token, const char* value);

    /// Starts the program in its working directory. A program without drive and directory is looked for in the working
    /// directory or, when there is none, where the system looks for programs. It inherits no handles. Whether
    /// IsStartable() is not asked.
    /// @return process id; no handle is kept, so that once the program has ended another may get it. 0: not started;
    /// the user has been told by a message box, which was waited for, unless
    ///         memory was short, which is reported
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
