#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

/// The path of this program, and of a file in the same folder.
std::filesystem::path OwnProgram();
std::filesystem::path Beside(const std::filesystem::path& name);

/// A path in quotation marks, followed by a space: the start of a command line.
std::wstring Quoted(const std::filesystem::path& program);

/// A program that the test starts, usually the test program itself in another role. They exchange lines of text.
class ChildProcess {
public:
    /// Starts a role of this program, or of another build of it.
    explicit ChildProcess(const std::string& role, const std::vector<std::string>& arguments = {},
                          const std::filesystem::path& program = OwnProgram());
    /// Starts any program.
    explicit ChildProcess(std::wstring commandLine);
    ~ChildProcess();
    ChildProcess(ChildProcess&&) = delete;

    /// Reads the child's lines up to one that starts so.
    /// @return the rest of that line; "(ended)" if the child ended first
    std::string WaitUntil(const std::string& start);
    void Tell(const std::string& line);
    void Kill();
    /// Waits for the end. @return the exit code
    DWORD ExitCode();
    DWORD Id() const { return m_process.dwProcessId; }

private:
    PROCESS_INFORMATION m_process{};
    HANDLE m_toChild = nullptr, m_fromChild = nullptr;
    std::string m_pending;
};

/// Registers what a child does in a role; define it at namespace scope.
struct Role {
    using Function = int (*)(const std::vector<std::string>& arguments);
    Role(const char* name, Function function);
};

/// The path of this program built for the other bitness; this program where that build does not exist.
std::filesystem::path PeerProgram();

/// In a child: sends a line to the test; reads one from it.
void Say(const std::string& line);
std::string Hear();

/// Runs the role that the command line names. @return false: there is none
bool RunRole(int argc, char** argv, int& exitCode);
