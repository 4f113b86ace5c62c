#pragma once

#include <filesystem>
#include <string>

/// Converts a Windows path to the Unix path; empty if the system does not run on Unix.
std::wstring UnixPath(const std::filesystem::path& path);

/// Result of a Unix program run from Wine.
struct UnixAnswer {
    std::string output; ///< standard output and error output, byte by byte
    int exitCode;
};

/// Runs a command in a Unix shell and waits for its end. Put arguments with spaces in single quotes, not double ones.
UnixAnswer RunUnix(const std::wstring& command);
