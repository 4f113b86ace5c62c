#pragma once

#include <filesystem>
#include <string>

/// The Unix path of a Windows one; empty where there is no Unix under the system.
std::wstring UnixPath(const std::filesystem::path& path);

/// What a program of the Unix machine under Wine said.
struct UnixAnswer {
    std::string output; ///< both its outputs, byte by byte
    int exitCode;
};

/// Runs a command in a shell of the Unix machine and waits for its end. Single quotes, not double ones, go around
/// what has blanks.
UnixAnswer RunUnix(const std::wstring& command);
