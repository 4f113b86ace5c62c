#pragma once

#include <windows.h>

#include <filesystem>

/// A folder that exists for as long as the object lives, with a blank in its path. Converts to its path:
///
///     TemporaryFolder folder;
///     std::ofstream(folder / L"file") << "text";
class TemporaryFolder {
public:
    TemporaryFolder() { std::filesystem::create_directories(m_path); }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    operator const std::filesystem::path&() const { return m_path; }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return m_path / name; }

private:
    const std::filesystem::path m_path =
        std::filesystem::temp_directory_path() / (L"tessel test " + std::to_wstring(GetCurrentProcessId()));
};
