#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A folder that exists as long as the object, with a space in its path.
///
///     TemporaryFolder folder;
///     std::ofstream(folder / L"file") << "text";
class TemporaryFolder : public std::filesystem::path {
public:
    TemporaryFolder()
        : path(std::filesystem::temp_directory_path() / (L"tessel test " + std::to_wstring(GetCurrentProcessId()))) {
        std::filesystem::create_directories(*this);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(*this, ignored);
    }
    TemporaryFolder(TemporaryFolder&&) = delete;
};

/// All bytes of a file; none if it cannot be opened.
inline std::string BytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}
