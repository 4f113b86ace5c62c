#include <foundation/LastError.h>
#include <tessel/system/file.h>

#include <cwchar>
#include <deque>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

namespace {

using tessel::LastErrorUnless;

constexpr unsigned long kNullPath = 0xFFFFFFFF;

unsigned long Create(const std::wstring& path) {
    return LastErrorUnless(CreateDirectoryW(path.c_str(), nullptr));
}

/// Whether a file is at a path. The system finds none behind several backslashes.
bool IsFile(std::wstring path) {
    path.resize(path.find_last_not_of(L'\\') + 1);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

/// The directories of a path start after its drive or, in a network path, after server and share.
/// @return npos: a network path without a share
std::size_t StartOfDirectories(const std::wstring& path) {
    constexpr std::wstring_view kNetwork = L"\\\\";
    constexpr std::size_t kDriveLength = 2;
    if (path.size() >= kDriveLength && path[1] == L':') return kDriveLength;
    if (!path.starts_with(kNetwork)) return 0;
    const std::size_t endOfServer = path.find(L'\\', kNetwork.size());
    const std::size_t endOfShare = endOfServer == std::wstring::npos ? endOfServer : path.find(L'\\', endOfServer + 1);
    return endOfShare == std::wstring::npos ? endOfShare : endOfShare + 1;
}

// ODD-202: what follows the last backslash counts as the name of a file and is not created.
unsigned long CreateAll(const std::wstring& path) {
    std::size_t start = StartOfDirectories(path);
    if (start == std::wstring::npos) return ERROR_PATH_NOT_FOUND;
    if (start < path.size() && path[start] == L'\\') ++start;
    unsigned long error = 0;
    std::wstring directory;
    for (std::size_t end = path.find(L'\\', start);
         end != std::wstring::npos && (error == 0 || error == ERROR_ALREADY_EXISTS); end = path.find(L'\\', end + 1)) {
        directory = path.substr(0, end);
        error = Create(directory);
    }
    if (error != ERROR_ALREADY_EXISTS) return error;
    return IsFile(directory) ? ERROR_DIRECTORY : 0;
}

/// Removes a tree. Only the length of paths limits its depth, so that recursion could exhaust the stack.
class TreeRemover {
public:
    TreeRemover(std::wstring path, bool recursive) : m_path(std::move(path)), m_recursive(recursive) {}
    ~TreeRemover() {
        for (const Level& level : m_levels) Close(level.search);
    }
    TreeRemover(const TreeRemover&) = delete;
    TreeRemover& operator=(const TreeRemover&) = delete;

    unsigned long Run() {
        Enter();
        unsigned long error = 0;
        while (error == 0 && !m_levels.empty()) {
            Level& level = m_levels.back();
            error = level.atEntry ? RemoveEntry() : Leave();
        }
        return error;
    }

private:
    struct Level {
        HANDLE search;
        std::size_t pathLength;
        bool atEntry;
    };

    static void Close(HANDLE search) {
        if (search != INVALID_HANDLE_VALUE) (void)FindClose(search); // open until now
    }

    void Enter() {
        Level& level = m_levels.emplace_back(Level{INVALID_HANDLE_VALUE, m_path.size(), false});
        m_path += L"\\*";
        level.search = FindFirstFileW(m_path.c_str(), &m_entry);
        level.atEntry = level.search != INVALID_HANDLE_VALUE;
    }

    void ReadNext() {
        if (!m_levels.empty()) m_levels.back().atEntry = FindNextFileW(m_levels.back().search, &m_entry);
    }

    /// Closes the search before the directory is removed: it keeps the directory open.
    unsigned long Leave() {
        const Level level = m_levels.back();
        m_levels.pop_back();
        Close(level.search);
        m_path.resize(level.pathLength);
        const unsigned long error = LastErrorUnless(RemoveDirectoryW(m_path.c_str()));
        ReadNext();
        return error;
    }

    unsigned long RemoveEntry() {
        m_path.resize(m_levels.back().pathLength);
        m_path.append(L"\\").append(m_entry.cFileName);
        if (!(m_entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) return Removed(DeleteFileW(m_path.c_str()));
        if (!m_recursive || IsSelfOrParent()) return Removed(TRUE);
        if (IsUnixLink()) return Removed(TRUE);
        if (IsLink()) return Removed(RemoveDirectoryW(m_path.c_str()));
        Enter();
        return 0;
    }

    bool IsSelfOrParent() const {
        return std::wcscmp(m_entry.cFileName, L".") == 0 || std::wcscmp(m_entry.cFileName, L"..") == 0;
    }

    /// GUARD-260: Wine reports a link to a Unix directory with tag 0, which no reparse point has, and would remove the
    /// directory behind it. The link is kept.
    bool IsUnixLink() const {
        return (m_entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) && m_entry.dwReserved0 == 0;
    }

    /// GUARD-199: the target of a link belongs to another tree. Other reparse points are directories of this one.
    bool IsLink() const {
        return (m_entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) &&
               IsReparseTagNameSurrogate(m_entry.dwReserved0);
    }

    unsigned long Removed(BOOL done) {
        const unsigned long error = LastErrorUnless(done);
        ReadNext();
        return error;
    }

    std::wstring m_path;
    bool m_recursive;
    std::deque<Level> m_levels;
    WIN32_FIND_DATAW m_entry{};
};

unsigned long RemoveAll(std::wstring path, bool recursive) {
    if (path.empty()) return ERROR_PATH_NOT_FOUND; // GUARD-200: the root of the drive would be emptied
    path.resize(path.find_last_not_of(L'\\') + 1);
    return TreeRemover(std::move(path), recursive).Run();
}

} // namespace

unsigned long CreateDir(const wchar_t* path) {
    try {
        return path == nullptr ? kNullPath : CreateAll(path);
    } catch (const std::exception&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

unsigned long RemoveDir(const wchar_t* path) {
    return path == nullptr ? kNullPath : LastErrorUnless(RemoveDirectoryW(path));
}

unsigned long RemoveDirAndFiles(const wchar_t* path, bool bRecursive) {
    try {
        return path == nullptr ? 1 : RemoveAll(path, bRecursive);
    } catch (const std::exception&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}
