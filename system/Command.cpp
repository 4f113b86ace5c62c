#include <foundation/Handle.h>
#include <foundation/Launcher.h>
#include <foundation/Report.h>
#include <tessel/foundation/strings.h>
#include <tessel/system/command.h>
#include <tessel/system/registry.h>

#include <mbstring.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>

namespace {

using Buffer = std::unique_ptr<char[]>;

constexpr char kHeader[] = "[Application - 0]";
constexpr char kAutoFlag[] = "AutoFlag=YES";
constexpr unsigned char kSeparators[] = "\\/";

constexpr tessel::ReportSite kNoMemoryForPath{"CCommand", 306};
constexpr tessel::ReportSite kNoMemoryForCommandLine{"CCommand", 317};

/// The texts of a description, in the order in which they are searched for in a line.
enum : std::size_t { WORK_DIR, PATH_FILE_NAME, RESTART_KEY, ARGUMENTS, TEXT_COUNT };

constexpr struct {
    const char* narrow;
    const wchar_t* wide;
} kNames[] = {
    {"WorkDir", L"WorkDir"},
    {"PathFileName", L"PathFileName"},
    {"RestartKey", L"RestartKey"},
    {"Arguments", L"Arguments"},
};
static_assert(std::size(kNames) == TEXT_COUNT);

unsigned int SizeOfLine(std::size_t which, const char* value) {
    constexpr std::size_t kEqualsSignLineEndAndSpare = 1 + 2 + 1;
    return static_cast<unsigned int>(std::strlen(kNames[which].narrow) + std::strlen(value) +
                                     kEqualsSignLineEndAndSpare);
}

/// @return where the next line starts
char* WriteLine(char* text, std::size_t which, const char* value) {
    return text + std::sprintf(text, "%s=%s\r\n", kNames[which].narrow, value);
}

/// @return 0: the text fits its field; else the error of its truncation
unsigned long TruncationError(const char* value) {
    return std::strlen(value) < CCommand::PATH_SIZE ? 0 : ERROR_FILENAME_EXCED_RANGE;
}

unsigned long TruncationError(const wchar_t* value) {
    char converted[CCommand::PATH_SIZE];
    const std::size_t length = std::wcstombs(converted, value, sizeof converted);
    if (length == static_cast<std::size_t>(-1)) return ERROR_NO_UNICODE_TRANSLATION;
    return length < sizeof converted ? 0 : ERROR_FILENAME_EXCED_RANGE;
}

/// @return buffer for two texts, their separator, quotation marks and terminator; null without memory, which is
///         reported
Buffer BufferFor(const char* first, const char* second, const char* name, tessel::ReportSite site) {
    constexpr std::size_t kQuotesSpaceAndTerminator = 2 + 1 + 1;
    Buffer buffer(new (std::nothrow) char[std::strlen(first) + std::strlen(second) + kQuotesSpaceAndTerminator]);
    tessel::ReportUnless(buffer != nullptr, name, site);
    return buffer;
}

/// @return 0; else an error: the expansion does not fit
unsigned long Expand(const char* path, char (&expanded)[CCommand::PATH_SIZE]) {
    std::memset(expanded, 0, sizeof expanded);
    const DWORD length = ExpandEnvironmentStringsA(path, expanded, sizeof expanded);
    expanded[sizeof expanded - 1] = '\0'; // GUARD-153: one that does not fit is not terminated
    return length != 0 && length <= sizeof expanded ? 0 : ERROR_FILENAME_EXCED_RANGE;
}

/// @return id of the process; 0: it could not be started (GetLastError())
DWORD Start(char* commandLine, const char* directory) {
    PROCESS_INFORMATION process{};
    if (!tessel::StartShown(commandLine, directory, process)) return 0;
    const tessel::Handle own(process.hProcess);
    const tessel::Handle thread(process.hThread);
    return process.dwProcessId;
}

} // namespace

CCommand::CCommand()
    : m_iCmdId(0), m_iBitmap1(0), m_iBitmap2(0), m_Type(CMD_NONE), m_szPathFileName{}, m_szWorkDir{}, m_szArguments{},
      m_szSubstituted{}, m_szRestartKey{}, m_Command{}, m_ulPathError(0), m_ulWorkDirError(0) {}

bool CCommand::IsStartable() const {
    return (m_Type == CMD_AUTOMATIC || m_Type == CMD_MANUAL) && m_szPathFileName[0] != '\0';
}

void CCommand::InitializeFromRegistry(HKEY key) {
    constexpr unsigned long kNameLength = 128;
    constexpr unsigned long kDataSize = 128;
    wchar_t name[kNameLength];
    wchar_t value[kDataSize / sizeof(wchar_t) + 2];
    auto* const data = reinterpret_cast<unsigned char*>(value);
    CReg registry;
    CReg::KEY_TYPE type = CReg::TYPE_UNKNOWN;
    unsigned long length = kDataSize;
    int result = registry.FindFirstValue(key, name, kNameLength, type, data, length);
    while (result == 0) { // ODD-165: a value that does not fit ends the reading, too
        std::memset(data + length, 0, sizeof value - length); // GUARD-151: a text without terminator ends with its data
        if (type == CReg::TYPE_STRING) ReadValue(name, value);
        result = registry.FindNextValue(name, kNameLength, type, data, length);
    }
}

void CCommand::ReadValue(const wchar_t* name, const wchar_t* value) {
    if (_wcsicmp(name, L"AutoFlag") == 0 && _wcsicmp(value, L"YES") == 0) m_Type = CMD_AUTOMATIC;
    for (std::size_t which = 0; which < TEXT_COUNT; ++which) {
        if (_wcsicmp(name, kNames[which].wide) == 0) SetText(which, value);
    }
}

/// GUARD-152: a value longer than its field is truncated; it would overwrite the next fields.
template <class Character> void CCommand::SetText(std::size_t which, const Character* value) {
    switch (which) {
    case WORK_DIR:
        (void)CopyString(m_szWorkDir, value, PATH_SIZE);
        m_ulWorkDirError = TruncationError(value);
        break;
    case PATH_FILE_NAME:
        (void)CopyString(m_szPathFileName, value, PATH_SIZE);
        m_ulPathError = TruncationError(value);
        break;
    case RESTART_KEY: (void)CopyString(m_szRestartKey, value, PATH_SIZE); break;
    default: (void)CopyString(m_szArguments, value, ARGUMENTS_SIZE); InitSubstituteArguments();
    }
}

void CCommand::InitializeFromText(char* text) {
    if (text == nullptr) return; // GUARD-09
    // ODD-167: a last line without a line end is not read.
    for (char* end = std::strchr(text, '\r'); end != nullptr; end = std::strchr(text, '\r')) {
        const bool last = end[1] == '\0';
        end[0] = '\0';
        end[1] = '\0';
        ReadLine(text);
        if (last) return; // GUARD-154: the next line would start after the text
        text = end + 2;
    }
}

void CCommand::ReadLine(const char* line) {
    const char* const equals = std::strchr(line, '=');
    if (equals == nullptr) return; // GUARD-155
    const char* const value = equals + 1;
    if (std::strstr(line, "AutoFlag") != nullptr && _stricmp(value, "YES") == 0) {
        m_Type = CMD_AUTOMATIC;
        return;
    }
    // ODD-166: a name counts in the value, too.
    for (std::size_t which = 0; which < TEXT_COUNT; ++which) {
        if (std::strstr(line, kNames[which].narrow) != nullptr) return SetText(which, value);
    }
}

unsigned int CCommand::GetSizeAsText() const {
    constexpr unsigned int kHeaderSize = 20;
    constexpr unsigned int kHeaderSizeWithFlag = 35;
    unsigned int size = m_Type == CMD_AUTOMATIC ? kHeaderSizeWithFlag : kHeaderSize;
    size += SizeOfLine(WORK_DIR, m_szWorkDir) + SizeOfLine(PATH_FILE_NAME, m_szPathFileName);
    if (m_szArguments[0] != '\0') size += SizeOfLine(ARGUMENTS, m_szArguments);
    if (m_szRestartKey[0] != '\0') size += SizeOfLine(RESTART_KEY, m_szRestartKey);
    return size;
}

void CCommand::FormatAsText(char* text) const {
    if (text == nullptr) return; // GUARD-09
    text += std::sprintf(text, "%s\r\n", kHeader);
    if (m_Type == CMD_AUTOMATIC) text += std::sprintf(text, "%s\r\n", kAutoFlag);
    text = WriteLine(text, WORK_DIR, m_szWorkDir);
    text = WriteLine(text, PATH_FILE_NAME, m_szPathFileName);
    if (m_szArguments[0] != '\0') text = WriteLine(text, ARGUMENTS, m_szArguments);
    if (m_szRestartKey[0] != '\0') WriteLine(text, RESTART_KEY, m_szRestartKey);
}

CCommand::COMMAND* CCommand::GetBinary() {
    m_Command.CmdId = m_iCmdId;
    m_Command.Bitmap1 = m_iBitmap1;
    m_Command.Bitmap2 = m_iBitmap2;
    m_Command.Type = m_Type;
    std::memcpy(m_Command.PathFileName, m_szPathFileName, sizeof m_szPathFileName);
    std::memcpy(m_Command.WorkDir, m_szWorkDir, sizeof m_szWorkDir);
    std::memcpy(m_Command.Arguments, m_szArguments, sizeof m_szArguments);
    std::memcpy(m_Command.RestartKey, m_szRestartKey, sizeof m_szRestartKey);
    return &m_Command;
}

void CCommand::InitSubstituteArguments() {
    std::memcpy(m_szSubstituted, m_szArguments, sizeof m_szSubstituted);
}

void CCommand::SubstituteArgument(const char* token, const char* value) {
    char* const found = token == nullptr ? nullptr : std::strstr(m_szSubstituted, token);
    if (found == nullptr) return;
    const std::size_t before = static_cast<std::size_t>(found - m_szSubstituted);
    char rest[ARGUMENTS_SIZE];
    std::memcpy(rest, m_szSubstituted, sizeof rest);
    // GUARD-156: a line that outgrows its field is truncated; it would overwrite the restart key.
    (void)std::snprintf(found, sizeof m_szSubstituted - before, "%s%s", value == nullptr ? "" : value,
                        rest + before + std::strlen(token));
}

/// As _splitpath decides, which fails for a directory of more than 255 bytes.
bool CCommand::IsAbsoluteFilePath(char* path) {
    const bool hasDrive = path[0] != '\0' && path[1] == ':';
    return hasDrive || _mbspbrk(reinterpret_cast<unsigned char*>(path), kSeparators) != nullptr;
}

unsigned long CCommand::Execute() {
    char directory[PATH_SIZE];
    char program[PATH_SIZE];
    // GUARD-262: the start of a path may be the path of another program.
    unsigned long error = m_ulPathError != 0 ? m_ulPathError : m_ulWorkDirError;
    for (const unsigned long result : {Expand(m_szWorkDir, directory), Expand(m_szPathFileName, program)}) {
        if (error == 0) error = result;
    }
    const Buffer path = BufferFor(directory, program, "pPathName", kNoMemoryForPath);
    if (path == nullptr) return 0; // GUARD-157
    const bool joined = directory[0] != '\0' && !IsAbsoluteFilePath(program);
    std::sprintf(path.get(), "%s%s%s", joined ? directory : "", joined ? "\\" : "", program);
    const Buffer commandLine = BufferFor(path.get(), m_szSubstituted, "pCmdLine", kNoMemoryForCommandLine);
    if (commandLine == nullptr) return 0; // GUARD-157
    std::sprintf(commandLine.get(), "\"%s\" %s", path.get(), m_szSubstituted);
    const unsigned long processId = error == 0 ? Start(commandLine.get(), directory) : 0;
    if (processId != 0) return processId;
    ShowFailure(error == 0 ? GetLastError() : error, program, directory, commandLine.get());
    return 0;
}

void CCommand::ShowFailure(unsigned long error, const char* program, const char* directory,
                           const char* commandLine) const {
    constexpr std::size_t kSystemTextSize = 512;
    constexpr std::size_t kTextSize = 4 * kSystemTextSize + PATH_SIZE;
    char systemText[kSystemTextSize] = "";
    (void)FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, systemText,
                         kSystemTextSize, nullptr); // an error without a text leaves it empty
    char text[kTextSize];
    (void)std::snprintf(text, kTextSize,
                        "Unable to Start Application:\nFileName: \t%s\nWorkDir:  \t%s\nArguments:\t%s\n"
                        "Cmd Line: %s\nError:\t%s",
                        program, directory, m_szArguments, commandLine, systemText);
    (void)MessageBoxA(nullptr, text, "Command Configuration Error", MB_OK);
}
