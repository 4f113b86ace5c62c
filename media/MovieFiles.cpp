#include <foundation/Handle.h>
#include <foundation/SlimLock.h>
#include <media/MovieFiles.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <new>
#include <string>
#include <utility>

namespace {

struct Movie {
    std::wstring path; ///< absolute: the current folder may change before the movie is closed
    bool hasStream = false;
};

SRWLOCK moviesLock = SRWLOCK_INIT;
std::map<const IAVIFile*, Movie> movies;

std::wstring FullPath(const wchar_t* path) {
    std::wstring full(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path, static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

Movie ExtractMovie(const IAVIFile* movie) {
    const tessel::SlimLock lock(moviesLock);
    auto record = movies.extract(movie);
    return record ? std::move(record.mapped()) : Movie{};
}

/// Whether a file is shorter than its RIFF header states, or has no header. Other formats count as complete.
bool IsIncomplete(HANDLE file) {
    struct {
        char id[4];
        std::uint32_t length;
    } head{};
    LARGE_INTEGER size{};
    DWORD read = 0;
    if (!GetFileSizeEx(file, &size) || !ReadFile(file, &head, sizeof head, &read, nullptr)) return false;
    if (std::memcmp(head.id, "\0\0\0\0", sizeof head.id) == 0) return true;
    return std::memcmp(head.id, "RIFF", sizeof head.id) == 0 &&
           size.QuadPart < static_cast<LONGLONG>(sizeof head + std::uint64_t{head.length});
}

} // namespace

void tessel::RecordMovie(IAVIFile* movie, const wchar_t* path) {
    const SlimLock lock(moviesLock);
    try {
        movies[movie] = {FullPath(path)};
    } catch (const std::bad_alloc&) {
        movies.erase(movie);
    }
}

void tessel::RecordStream(IAVIFile* movie) {
    const SlimLock lock(moviesLock);
    const auto record = movies.find(movie);
    if (record != movies.end()) record->second.hasStream = true;
}

bool tessel::CheckMovie(IAVIFile* movie) {
    const Movie closed = ExtractMovie(movie);
    if (!closed.hasStream) return true;
    Handle file(CreateFileW(closed.path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file || !IsIncomplete(file.Get())) return true; // an unreadable file cannot be verified
    file.Reset();
    (void)DeleteFileW(closed.path.c_str()); // if this fails, the report remains
    return false;
}
