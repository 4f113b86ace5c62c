#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

/// A program that the test starts, as a rule the test program itself in another role. The two talk by lines.
class ChildProcess {
public:
    /// Starts a role of this program.
    explicit ChildProcess(const std::string& role, const std::vector<std::string>& arguments = {});
    /// Starts a role of another build of this program.
    ChildProcess(const std::wstring& program, const std::string& role, const std::vector<std::string>& arguments);
    /// Starts any program.
    explicit ChildProcess(std::wstring commandLine);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Reads the child's lines up to one that starts so.
    /// @return the rest of that line; "(ended)" when the child ended first
    std::string WaitUntil(const std::string& start);
    void Tell(const std::string& line);
    void Kill();
    /// Waits for the end. @return the exit code
    DWORD ExitCode();
    DWORD Id() const { return m_process.dwProcessId; }

private:
    PROCESS_INFORMATION m_process{};
    HANDLE m_toChild = nullptr;
    HANDLE m_fromChild = nullptr;
    std::string m_pending;
};

/// What a child does: one of these for each role, at namespace scope.
struct Role {
    using Function = int (*)(const std::vector<std::string>& arguments);
    Role(const char* name, Function function);
};

/// Where this program is, and a file of that name in the same folder.
std::filesystem::path OwnProgram();
std::filesystem::path Beside(const std::filesystem::path& name);

/// A path in quotation marks and a blank, as a command line starts.
std::wstring Quoted(const std::filesystem::path& program);

/// The other build's program of the same name (32-bit for a 64-bit one and the reverse); empty when it is not there.
std::wstring PeerProgram();

/// In a child: sends a line to the test, and reads one from it.
void Say(const std::string& line);
std::string Hear();

/// Runs the role that the command line names. @return false: it names none
bool RunRole(int argc, char** argv, int& exitCode);
