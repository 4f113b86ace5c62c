#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/command.h>
#include <tessel/registry.h>

#include <array>
#include <cstdlib>
#include <initializer_list>
#include <string>

namespace {

using Rows = std::initializer_list<std::array<const char*, 3>>;

std::string started; // "command line|directory" of the last start
std::string shown;   // "caption|text" of the last message box

BOOL WINAPI RefuseStart(const char* program, char* commandLine, SECURITY_ATTRIBUTES*, SECURITY_ATTRIBUTES*,
                        BOOL inherit, DWORD flags, void* environment, const char* directory, STARTUPINFOA* startup,
                        PROCESS_INFORMATION*) {
    EXPECT_TRUE(program == nullptr && inherit == FALSE && flags == NORMAL_PRIORITY_CLASS && environment == nullptr);
    EXPECT_TRUE(startup->lpDesktop == nullptr && startup->lpTitle == nullptr);
    EXPECT_TRUE(startup->dwFlags == STARTF_USESHOWWINDOW && startup->wShowWindow == SW_SHOW);
    started = std::string(commandLine) + "|" + (directory == nullptr ? "(none)" : directory);
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

int WINAPI KeepBox(HWND owner, const char* text, const char* caption, UINT type) {
    EXPECT_TRUE(owner == nullptr && type == MB_OK);
    shown = std::string(caption) + "|" + text;
    return IDOK;
}

std::size_t refusedSize;

void* MemoryBut(std::size_t size) {
    return size == refusedSize ? nullptr : std::malloc(size);
}

CCommand FromText(std::string text) {
    CCommand command;
    command.InitializeFromText(text.data());
    return command;
}

std::string AsText(const CCommand& command) {
    std::string text(command.GetSizeAsText(), '#');
    command.FormatAsText(text.data());
    return text.c_str();
}

const Role launched("launched", [](const std::vector<std::string>& arguments) {
    char directory[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, directory);
    std::string text = std::to_string(GetCurrentProcessId()) + "|" + directory;
    for (std::size_t i = 1; i < arguments.size(); ++i) text += "|" + arguments[i];
    const HANDLE pipe = CreateFileA(arguments[0].c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD written = 0;
    WriteFile(pipe, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    CloseHandle(pipe);
    return 0;
});

class Command : public testing::Test {
protected:
    void Set(const wchar_t* name, std::wstring_view text, DWORD type = REG_SZ) {
        machine.Set(L"Software\\Varda\\AutoStart\\App", name, type, text);
    }
    CCommand FromRegistry() {
        CCommand command;
        const HKEY key = CReg::OpenVardaAutoStartKey(L"App");
        command.InitializeFromRegistry(key);
        CReg::CloseKey(key);
        return command;
    }

    /// The command line that the system gets.
    std::string CommandLine(CCommand& command) {
        EXPECT_EQ(command.Execute(), 0UL);
        return started.substr(0, started.rfind('|'));
    }

    OwnLocalMachine machine;
    ImportPatch create{L"Tessel.dll", "CreateProcessA", &RefuseStart};
    ImportPatch box{L"Tessel.dll", "MessageBoxA", &KeepBox};
};

} // namespace

TEST_F(Command, IsReadFromTheRegistryAndHandedOutAsRecord) {
    Set(L"AUTOFLAG", std::wstring(L"yes\0", 4));
    Set(L"pathfilename", L"%ROOT%\\a.exe");
    Set(L"WorkDir", std::wstring(63, L'w'));
    const std::wstring open(65, L'a'); // one more than is set, as the system would take a terminator behind it
    Set(L"Arguments", std::wstring_view(open).substr(0, 64));
    Set(L"Other", L"x");
    Set(L"RestartKey", L"xyz", REG_BINARY);
    CCommand command = FromRegistry();
    command.SetCmdId(1);
    command.SetBitmap1(2);
    command.SetBitmap2(3);
    EXPECT_EQ(command.Bitmap2(), 3);
    EXPECT_TRUE(command.IsStartable() && !command.HasRestartKey());
    CCommand copy(command);
    const CCommand::COMMAND& record = *copy.GetBinary();
    EXPECT_EQ(record.CmdId * 1000 + record.Bitmap1 * 100 + record.Bitmap2 * 10 + record.Type, 1234);
    EXPECT_STREQ(record.PathFileName, "%ROOT%\\a.exe");
    EXPECT_EQ(record.WorkDir, std::string(63, 'w'));
    EXPECT_EQ(record.Arguments, std::string(64, 'a'));
    EXPECT_TRUE(CommandLine(command).ends_with(record.Arguments));
}

TEST_F(Command, LongValueEndsTheReadingOdd165) {
    Set(L"Arguments", L"before");
    Set(L"Comment", std::wstring(65, L'c'));
    Set(L"WorkDir", L"behind");
    CCommand command = FromRegistry();
    EXPECT_STREQ(command.GetBinary()->Arguments, "before");
    EXPECT_STREQ(command.GetWorkDir(), "");
}

TEST_F(Command, IsWrittenAsTextAndReadBack) {
    const std::string all = "[Application - 0]\r\nAutoFlag=YES\r\nWorkDir=C:\\Tools\r\nPathFileName=a=b.exe\r\n"
                            "Arguments=-f $FILE\r\nRestartKey=key\r\n";
    CCommand command = FromText(all);
    EXPECT_EQ(AsText(command), all);
    EXPECT_EQ(command.GetSizeAsText(), all.size() + 6);
    EXPECT_STREQ(command.GetRestartKey(), "key");
    EXPECT_EQ(command.GetType(), CCommand::CMD_AUTOMATIC);
    const std::string least = "[Application - 0]\r\nWorkDir=\r\nPathFileName=\r\n";
    EXPECT_EQ(AsText(CCommand()), least);
    EXPECT_EQ(CCommand().GetSizeAsText(), least.size() + 3);
    EXPECT_FALSE(FromText("AutoFlag=YES\r\n").IsStartable());
    EXPECT_EQ(FromText("AutoFlag=no\r\n").GetType(), CCommand::CMD_NONE);
    command.SetType(CCommand::CMD_MANUAL);
    EXPECT_TRUE(command.IsStartable());
    command.SetType(CCommand::CMD_NONE);
    EXPECT_FALSE(command.IsStartable());
    command.InitializeFromText(nullptr);
    command.FormatAsText(nullptr);
}

TEST_F(Command, Odd166And167LinesGoByNamesAnywhereInThemAndTheLastOneNeedsItsEnd) {
    for (const auto& [text, directory, key] : Rows{
             {"PathFileName=C:\\WorkDir\\a.exe\r\n", "C:\\WorkDir\\a.exe", ""},
             {"WorkDir=a\r\nRestartKey=b", "a", ""},
             {"WorkDir=a\r\nRestartKey=b\r", "a", "b"},
             {"WorkDir=a\rxRestartKey=b\r\n\r\nWorkDir\r\n", "a", "b"},
             {"workdir=a\r\n=WorkDir\r\n", "WorkDir", ""},
             {"\r", "", ""},
         }) {
        const CCommand command = FromText(text);
        EXPECT_STREQ(command.GetWorkDir(), directory) << text;
        EXPECT_STREQ(command.GetRestartKey(), key) << text;
    }
}

TEST_F(Command, LongTextsAreCutToTheirFields) {
    const std::string value = std::string(5000, 'x') + "\r\n";
    CCommand command =
        FromText("RestartKey=" + value + "Arguments=" + value + "PathFileName=" + value + "WorkDir=" + value);
    const CCommand::COMMAND& record = *command.GetBinary();
    for (const char* const text : {record.RestartKey, record.PathFileName, record.WorkDir})
        EXPECT_EQ(text, value.substr(0, 259));
    EXPECT_EQ(record.Arguments, value.substr(0, 255));
    EXPECT_EQ(AsText(command).size(), command.GetSizeAsText() - 5);
    EXPECT_EQ(CommandLine(command),
              "\"" + value.substr(0, 259) + "\\" + value.substr(0, 259) + "\" " + value.substr(0, 255));
}

TEST_F(Command, PlaceholdersAreReplacedOneByOneUntilTakenBack) {
    CCommand command = FromText("PathFileName=a\r\nArguments=$A $B $A\r\n");
    for (const auto& [token, value, line] : Rows{{"$A", "x y", "\"a\" x y $B $A"},
                                                 {"$C", "-", "\"a\" x y $B $A"},
                                                 {nullptr, "-", "\"a\" x y $B $A"},
                                                 {"$B ", nullptr, "\"a\" x y $A"},
                                                 {"$A", "$A$A", "\"a\" x y $A$A"},
                                                 {"", "-", "\"a\" -x y $A$A"}}) {
        command.SubstituteArgument(token, value);
        EXPECT_EQ(CommandLine(command), line);
    }
    command.InitSubstituteArguments();
    const std::string longText(300, 'v');
    command.SubstituteArgument("$B", longText.c_str());
    EXPECT_EQ(CommandLine(command), "\"a\" $A " + longText.substr(0, 252));
    EXPECT_FALSE(command.HasRestartKey());
}

TEST_F(Command, ProgramIsLookedForInTheWorkingDirectoryUnlessItsPathTellsWhere) {
    SetEnvironmentVariableA("TOOLS", "C:\\To ols");
    SetEnvironmentVariableA("LONG", std::string(300, 'l').c_str());
    const std::string deep = std::string(257, 'd') + "\\a";
    const std::string deepLine = "\"" + deep + "\" -f|D:\\x";
    for (const auto& [program, directory, expected] : Rows{
             {"notepad.exe", "C:\\Tools", "\"C:\\Tools\\notepad.exe\" -f|C:\\Tools"},
             {"notepad.exe", "", "\"notepad.exe\" -f|(none)"},
             {"%TOOLS%\\a.exe", "D:\\", "\"C:\\To ols\\a.exe\" -f|D:\\"},
             {"a.exe", "%TOOLS%", "\"C:\\To ols\\a.exe\" -f|C:\\To ols"},
             {"c:a.exe", "D:\\x", "\"c:a.exe\" -f|D:\\x"},
             {"sub\\a.exe", "D:\\x", "\"sub\\a.exe\" -f|D:\\x"},
             {"/a.exe", "D:\\x", "\"/a.exe\" -f|D:\\x"},
             {deep.c_str(), "D:\\x", deepLine.c_str()},
             {"", "D:\\x", "\"D:\\x\\\" -f|D:\\x"},
         }) {
        FromText(std::string("PathFileName=") + program + "\r\nWorkDir=" + directory + "\r\nArguments=-f\r\n")
            .Execute();
        EXPECT_EQ(started, expected);
    }
    EXPECT_EQ(FromText("PathFileName=%LONG%\r\n").Execute(), 0UL);
}

TEST(Launch, FailureIsShown) {
    const ImportPatch box(L"Tessel.dll", "MessageBoxA", &KeepBox);
    CCommand command = FromText("PathFileName=no such.exe\r\nWorkDir=C:\\\r\nArguments=$A\r\n");
    command.SubstituteArgument("$A", "b");
    EXPECT_EQ(command.Execute(), 0UL);
    const std::string text = "Command Configuration Error|Unable to Start Application:\nFileName: \tno such.exe\n"
                             "WorkDir:  \tC:\\\nArguments:\t$A\nCmd Line: \"C:\\\\no such.exe\" b\nError:\t";
    EXPECT_EQ(shown.substr(0, text.size()), text);
    EXPECT_GT(shown.size(), text.size()) << "the system's text";
}

TEST(Launch, DoesNotHappenWhenMemoryIsShortWhichIsReported) {
    CCommand command = FromText("PathFileName=2.exe\r\nWorkDir=3ab\r\n");
    Reports reports;
    for (const std::size_t size : {5 + 3 + 10, 9 + 10}) {
        const ImportPatch memory(L"Tessel.dll", "malloc", &MemoryBut);
        refusedSize = size;
        EXPECT_EQ(command.Execute(), 0UL);
    }
    EXPECT_EQ(reports.Take(), (Texts{"CCommand:306 pPathName", "CCommand:317 pCmdLine"}));
}

TEST(Launch, ProgramStartsInItsDirectoryWithItsArguments) {
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    SetEnvironmentVariableA("OWN", program);
    const std::string name = "\\\\.\\pipe\\tessel-launched-" + std::to_string(GetCurrentProcessId());
    const HANDLE pipe = CreateNamedPipeA(name.c_str(), PIPE_ACCESS_INBOUND, PIPE_WAIT, 1, 0, 0, 0, nullptr);
    CCommand command = FromText("PathFileName=%OWN%\r\nWorkDir=%SystemRoot%\r\n"
                                "Arguments=--role launched $PIPE \"two words\" -x\r\n");
    command.SubstituteArgument("$PIPE", name.c_str());
    const unsigned long id = command.Execute();
    ASSERT_NE(id, 0UL);
    ConnectNamedPipe(pipe, nullptr);
    char text[1000] = "";
    DWORD length = 0;
    ReadFile(pipe, text, sizeof text - 1, &length, nullptr);
    CloseHandle(pipe);
    char directory[MAX_PATH];
    GetWindowsDirectoryA(directory, MAX_PATH);
    EXPECT_STRCASEEQ(text, (std::to_string(id) + "|" + directory + "|two words|-x").c_str());
}
