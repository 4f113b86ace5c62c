#include "ChildProcess.h"

#include <iostream>
#include <map>

namespace {

std::map<std::string, Role::Function>& Roles() {
    static std::map<std::string, Role::Function> roles;
    return roles;
}

std::wstring CommandLine(const std::filesystem::path& program, const std::string& role,
                         const std::vector<std::string>& arguments) {
    std::wstring line = Quoted(program) + L"--role " + std::wstring(role.begin(), role.end());
    for (const std::string& argument : arguments) line += L" " + std::wstring(argument.begin(), argument.end());
    return line;
}

struct Pipe {
    /// @param own  the end that the child does not inherit
    explicit Pipe(HANDLE Pipe::*own) {
        SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
        CreatePipe(&read, &write, &inheritable, 0);
        SetHandleInformation(this->*own, HANDLE_FLAG_INHERIT, 0);
    }
    HANDLE read = nullptr, write = nullptr;
};

} // namespace

ChildProcess::ChildProcess(const std::string& role, const std::vector<std::string>& arguments,
                           const std::filesystem::path& program)
    : ChildProcess(CommandLine(program, role, arguments)) {}

ChildProcess::ChildProcess(std::wstring commandLine) {
    const Pipe input(&Pipe::write);
    const Pipe output(&Pipe::read);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.read;
    startup.hStdOutput = output.write;
    startup.hStdError = output.write;
    CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &m_process);
    CloseHandle(input.read);
    CloseHandle(output.write);
    m_toChild = input.write;
    m_fromChild = output.read;
}

ChildProcess::~ChildProcess() {
    Kill();
    for (const HANDLE handle : {m_toChild, m_fromChild, m_process.hThread, m_process.hProcess}) CloseHandle(handle);
}

std::string ChildProcess::WaitUntil(const std::string& start) {
    for (;;) {
        std::size_t end = 0;
        while ((end = m_pending.find('\n')) == std::string::npos) {
            char part[256];
            DWORD got = 0;
            if (!ReadFile(m_fromChild, part, sizeof part, &got, nullptr) || got == 0) return "(ended)";
            m_pending.append(part, got);
        }
        const std::string line = m_pending.substr(0, m_pending.find_last_not_of("\r\n", end) + 1);
        m_pending.erase(0, end + 1);
        if (line.starts_with(start)) return line.substr(start.size());
        std::cout << "[child] " << line << std::endl;
    }
}

void ChildProcess::Tell(const std::string& line) {
    const std::string text = line + "\n";
    DWORD written = 0;
    WriteFile(m_toChild, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void ChildProcess::Kill() {
    TerminateProcess(m_process.hProcess, 99);
    WaitForSingleObject(m_process.hProcess, INFINITE);
}

DWORD ChildProcess::ExitCode() {
    DWORD code = 0;
    WaitForSingleObject(m_process.hProcess, INFINITE);
    GetExitCodeProcess(m_process.hProcess, &code);
    return code;
}

Role::Role(const char* name, Function function) {
    Roles()[name] = function;
}

std::filesystem::path OwnProgram() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

std::filesystem::path Beside(const std::filesystem::path& name) {
    return OwnProgram().replace_filename(name);
}

std::wstring Quoted(const std::filesystem::path& program) {
    return L"\"" + program.wstring() + L"\" ";
}

std::filesystem::path PeerProgram() {
    const std::filesystem::path own = OwnProgram(); // in PRESET/bin
    const wchar_t* const preset = sizeof(void*) == 4 ? L"win64" : L"win32";
    const auto peer = own.parent_path().parent_path().parent_path() / preset / L"bin" / own.filename();
    return std::filesystem::exists(peer) ? peer : own;
}

void Say(const std::string& line) {
    std::cout << line << std::endl;
}

std::string Hear() {
    std::string line;
    std::getline(std::cin, line);
    return line;
}

bool RunRole(int argc, char** argv, int& exitCode) {
    if (argc < 3 || std::string(argv[1]) != "--role") return false;
    const auto role = Roles().find(argv[2]);
    exitCode = role == Roles().end() ? 98 : role->second({argv + 3, argv + argc});
    return true;
}
