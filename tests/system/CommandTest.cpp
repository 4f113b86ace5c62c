#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/system/command.h>
#include <tessel/system/registry.h>

#include <array>
#include <cstdlib>

namespace {

using Rows = std::initializer_list<std::array<const char*, 3>>;

std::string SystemText(DWORD error) {
    char text[512] = "";
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text, 512, nullptr);
    return text;
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
    const bool inWindows = _wcsicmp(std::filesystem::current_path().c_str(), _wgetenv(L"SystemRoot")) == 0;
    return inWindows && arguments == std::vector<std::string>{"two words", "-x"} ? 42 : 1;
});

struct Command : testing::Test {
    std::string started; ///< "command line|directory" of the last start
    std::string shown;   ///< "caption|text" of the last message box
    OwnLocalMachine machine;

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
    /// The command line passed to the system.
    std::string CommandLine(CCommand command) {
        EXPECT_EQ(command.Execute(), 0UL);
        return started.substr(0, started.rfind('|'));
    }
    /// The error shown instead of a start.
    std::string Refusal(CCommand command) {
        started.clear();
        EXPECT_EQ(command.Execute(), 0UL);
        return started + shown.substr(shown.rfind('\t') + 1);
    }
    ImportPatch create{
        "CreateProcessA", &CreateProcessA,
        [this](auto, auto line, auto, auto, BOOL inherits, DWORD flags, auto, auto directory, auto startup, auto) {
            EXPECT_TRUE(inherits == FALSE && flags == NORMAL_PRIORITY_CLASS && startup->cb == sizeof *startup);
            EXPECT_TRUE(startup->lpDesktop == nullptr && startup->lpTitle == nullptr);
            EXPECT_TRUE(startup->dwFlags == STARTF_USESHOWWINDOW && startup->wShowWindow == SW_SHOW);
            started = line + std::string("|") + (directory == nullptr ? "(none)" : directory);
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        }};
    ImportPatch box{"MessageBoxA", &MessageBoxA, [this](auto, const char* text, const char* caption, auto) {
                        return shown = std::string(caption) + "|" + text, IDOK;
                    }};
};

} // namespace

TEST_F(Command, IsReadFromTheRegistryAndReturnedAsRecord) {
    Set(L"AUTOFLAG", std::wstring(L"yes\0", 4));
    Set(L"pathfilename", L"%ROOT%\\a.exe");
    Set(L"WorkDir", std::wstring(63, L'w'));
    const std::wstring open(65, L'a'); // one more than is stored: the system would use a terminator after it
    Set(L"Arguments", std::wstring_view(open).substr(0, 64));
    Set(std::wstring(127, L'n').c_str(), L"x");
    Set(L"RestartKey", L"xyz");
    CCommand command = FromRegistry();
    command.SetCmdId(1);
    command.SetBitmap1(2);
    command.SetBitmap2(3);
    EXPECT_EQ(command.Bitmap2(), 3);
    EXPECT_TRUE(command.IsStartable() && command.HasRestartKey());
    CCommand copy(command);
    const CCommand::COMMAND& record = *copy.GetBinary();
    EXPECT_EQ(record.CmdId * 1000 + record.Bitmap1 * 100 + record.Bitmap2 * 10 + record.Type, 1234);
    EXPECT_STREQ(record.PathFileName, "%ROOT%\\a.exe");
    EXPECT_EQ(record.WorkDir, std::string(63, 'w'));
    EXPECT_EQ(record.Arguments, std::string(64, 'a'));
    EXPECT_STREQ(record.RestartKey, "xyz");
    EXPECT_TRUE(CommandLine(command).ends_with(record.Arguments));
}

TEST_F(Command, LongValueEndsTheReadingOdd165) {
    Set(L"AutoFlag", L"YES", REG_EXPAND_SZ);
    Set(L"Arguments", L"before");
    Set(L"Comment", std::wstring(65, L'c'));
    Set(L"WorkDir", L"behind");
    CCommand command = FromRegistry();
    EXPECT_STREQ(command.GetBinary()->Arguments, "before");
    EXPECT_STREQ(command.GetWorkDir(), "");
    EXPECT_EQ(command.GetType(), CCommand::CMD_NONE);
    Set(L"AutoFlag", L"no");
    EXPECT_EQ(FromRegistry().GetType(), CCommand::CMD_NONE);
}

TEST_F(Command, IsWrittenAsTextAndReadBack) {
    const std::string all = "[Application - 0]\r\nAutoFlag=YES\r\nWorkDir=C:\\Tools\r\nPathFileName=a=b.exe\r\n"
                            "Arguments=-f $FILE\r\nRestartKey=key\r\n";
    CCommand command = FromText(all);
    EXPECT_EQ(AsText(command), all);
    EXPECT_EQ(command.GetSizeAsText(), all.size() + 6);
    const std::string least = "[Application - 0]\r\nWorkDir=\r\nPathFileName=\r\n";
    EXPECT_EQ(AsText(CCommand()), least);
    EXPECT_EQ(CCommand().GetSizeAsText(), least.size() + 3);
    EXPECT_FALSE(FromText("AutoFlag=YES\r\n").IsStartable());
    EXPECT_EQ(FromText("AutoFlag=yes\r\nAutoFlag=no\r\n").GetType(), CCommand::CMD_AUTOMATIC);
    command.SetType(CCommand::CMD_MANUAL);
    EXPECT_TRUE(command.IsStartable());
    EXPECT_EQ(AsText(command).find("AutoFlag"), std::string::npos);
    EXPECT_EQ(command.GetSizeAsText(), all.size() - 14 + 5);
    command.SetType(CCommand::CMD_NONE);
    EXPECT_FALSE(command.IsStartable());
}

TEST_F(Command, Odd166And167NamesCountAnywhereInALineAndTheLastLineNeedsItsEnd) {
    for (const auto& [text, directory, key] : Rows{{"PathFileName=C:\\WorkDir\\a.exe\r\n", "C:\\WorkDir\\a.exe", ""},
                                                   {"WorkDir=C:\\AutoFlag\r\n", "C:\\AutoFlag", ""},
                                                   {"Arguments=RestartKey\r\n", "", "RestartKey"},
                                                   {"RestartKey=PathFileName\r\n", "", ""},
                                                   {"WorkDir=a\r\nRestartKey=b", "a", ""},
                                                   {"WorkDir=a\r\nRestartKey=b\r", "a", "b"},
                                                   {"WorkDir=a\rxRestartKey=b\r\n\r\nWorkDir\r\n", "a", "b"},
                                                   {"workdir=a\r\n=WorkDir\r\n", "WorkDir", ""},
                                                   {"\r", "", ""}}) {
        const CCommand command = FromText(text);
        EXPECT_STREQ(command.GetWorkDir(), directory) << text;
        EXPECT_STREQ(command.GetRestartKey(), key) << text;
    }
}

TEST_F(Command, LongTextsAreTruncatedToTheirFields) {
    const std::string value = std::string(5000, 'x') + "\r\n";
    CCommand command =
        FromText("RestartKey=" + value + "Arguments=" + value + "PathFileName=" + value + "WorkDir=" + value);
    const CCommand::COMMAND& record = *command.GetBinary();
    for (const char* const text : {record.RestartKey, record.PathFileName, record.WorkDir})
        EXPECT_EQ(text, value.substr(0, 259));
    EXPECT_EQ(record.Arguments, value.substr(0, 255));
    EXPECT_EQ(AsText(command).size(), command.GetSizeAsText() - 5);
    const std::string longest = value.substr(0, 259);
    command = FromText("Arguments=" + value + "PathFileName=" + longest + "\r\nWorkDir=" + longest + "\r\n");
    EXPECT_EQ(CommandLine(command), "\"" + longest + "\\" + longest + "\" " + value.substr(0, 255));
}

TEST_F(Command, PlaceholdersAreReplacedOneByOneUntilReset) {
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
}

TEST_F(Command, ProgramIsSearchedForInTheWorkingDirectoryUnlessItNamesADriveOrDirectory) {
    SetEnvironmentVariableA("TOOLS", "C:\\To ols");
    const std::string deep = std::string(257, 'd') + "\\a";
    const std::string deepLine = "\"" + deep + "\" -f|D:\\x";
    for (const auto& [program, directory, expected] :
         Rows{{"notepad.exe", "C:\\Tools", "\"C:\\Tools\\notepad.exe\" -f|C:\\Tools"},
              {"notepad.exe", "", "\"notepad.exe\" -f|(none)"},
              {"%TOOLS%\\a.exe", "%TOOLS%", "\"C:\\To ols\\a.exe\" -f|C:\\To ols"},
              {"c:a.exe", "D:\\x", "\"c:a.exe\" -f|D:\\x"},
              {"sub\\a.exe", "D:\\x", "\"sub\\a.exe\" -f|D:\\x"},
              {"/a.exe", "D:\\x", "\"/a.exe\" -f|D:\\x"},
              {deep.c_str(), "D:\\x", deepLine.c_str()}}) {
        FromText(std::string("PathFileName=") + program + "\r\nWorkDir=" + directory + "\r\nArguments=-f\r\n")
            .Execute();
        EXPECT_EQ(started, expected);
    }
}

TEST_F(Command, ProgramWithATruncatedPathIsNotStarted) {
    SetEnvironmentVariableA("LONG", std::string(300, 'l').c_str());
    const std::string truncated = std::string(250, 'd') + "\\other.exe.disabled\r\n";
    for (const std::string& text :
         {std::string("PathFileName=%LONG%\r\n"), "PathFileName=" + truncated,
          std::string("WorkDir=%LONG%\r\nPathFileName=a.exe\r\n"), "WorkDir=" + truncated + "PathFileName=a.exe\r\n"}) {
        EXPECT_EQ(Refusal(FromText(text)), SystemText(ERROR_FILENAME_EXCED_RANGE)) << text;
    }
    Set(L"PathFileName", L"other.exe\u4e00.disabled");
    CCommand command = FromRegistry();
    EXPECT_EQ(Refusal(command), SystemText(ERROR_NO_UNICODE_TRANSLATION));
    command.InitializeFromText(std::string("PathFileName=a.exe\r\n").data());
    EXPECT_EQ(CommandLine(command), "\"a.exe\" ");
}

TEST_F(Command, FailureIsShown) {
    SetEnvironmentVariableA("TOOLS", "C:\\Tools");
    CCommand command = FromText("PathFileName=%TOOLS%\\a.exe\r\nWorkDir=%TOOLS%\r\nArguments=$A\r\n");
    command.SubstituteArgument("$A", "b");
    EXPECT_EQ(command.Execute(), 0UL);
    EXPECT_EQ(shown, "Command Configuration Error|Unable to Start Application:\nFileName: \tC:\\Tools\\a.exe\n"
                     "WorkDir:  \tC:\\Tools\nArguments:\t$A\nCmd Line: \"C:\\Tools\\a.exe\" b\nError:\t" +
                         SystemText(ERROR_ACCESS_DENIED));
}

TEST_F(Command, IsNotStartedWhenMemoryIsShortWhichIsReported) {
    CCommand command = FromText("PathFileName=2.exe\r\nWorkDir=3-of-an-unusual-length\r\n");
    Reports reports;
    for (const std::size_t refused : {5u + 22 + 4, 28u + 4}) {
        const ImportPatch memory("malloc", &std::malloc,
                                 [=](std::size_t size) { return size == refused ? nullptr : std::malloc(size); });
        EXPECT_EQ(command.Execute(), 0UL);
    }
    EXPECT_EQ(reports.Take(), (Texts{"CCommand:306 pPathName", "CCommand:317 pCmdLine"}));
    EXPECT_EQ(started, "");
}

TEST(Launch, ProgramStartsInItsDirectoryWithItsArguments) {
    SetEnvironmentVariableW(L"OWN", OwnProgram().c_str());
    CCommand command = FromText("PathFileName=%OWN%\r\nWorkDir=%SystemRoot%\r\nArguments=--role launched $A -x\r\n");
    command.SubstituteArgument("$A", "\"two words\"");
    std::vector<HANDLE> closed;
    const ImportPatch close("CloseHandle", &CloseHandle, [&](HANDLE handle) { return closed.push_back(handle), TRUE; });
    const unsigned long id = command.Execute();
    ASSERT_EQ(closed.size(), 2U) << "of its thread and of the process";
    EXPECT_EQ(GetProcessId(closed[1]), id);
    WaitForSingleObject(closed[1], 10'000);
    DWORD code = 0;
    GetExitCodeProcess(closed[1], &code);
    EXPECT_EQ(code, 42UL);
    for (const HANDLE handle : closed) CloseHandle(handle);
}
