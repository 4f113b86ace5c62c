#include <foundation/Handle.h>
#include <media/NarrowPath.h>

#include <cwchar>
#include <iterator>

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr int kBytesPerCharacter = 4; // the most in any code page

/// Whether a path is the same after conversion to the system's code page and back.
bool SurvivesNarrowing(const wchar_t* path) {
    char narrow[MAX_PATH * kBytesPerCharacter];
    wchar_t widened[MAX_PATH];
    const int size = WideCharToMultiByte(CP_ACP, 0, path, -1, narrow, std::size(narrow), nullptr, nullptr);
    return size > 0 && MultiByteToWideChar(CP_ACP, 0, narrow, size, widened, std::size(widened)) > 0 &&
           std::wcscmp(widened, path) == 0;
}

/// Whether a path leads to an open file.
bool LeadsTo(const wchar_t* path, HANDLE file) {
    const tessel::Handle found(CreateFileW(path, 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    BY_HANDLE_FILE_INFORMATION wanted;
    BY_HANDLE_FILE_INFORMATION reached;
    return found && GetFileInformationByHandle(file, &wanted) && GetFileInformationByHandle(found.Get(), &reached) &&
           wanted.dwVolumeSerialNumber == reached.dwVolumeSerialNumber &&
           wanted.nFileIndexHigh == reached.nFileIndexHigh && wanted.nFileIndexLow == reached.nFileIndexLow;
}

} // namespace

tessel::NarrowPath::NarrowPath(const wchar_t* path)
    : m_path(path), m_narrow(SurvivesNarrowing(path) ? path : FindShortPath()) {}

// GUARD-250: the narrowed path may be that of another file, which would be overwritten.
const wchar_t* tessel::NarrowPath::FindShortPath() {
    const Handle file(
        CreateFileW(m_path, GENERIC_WRITE, kShareAll, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return nullptr;
    m_created = GetLastError() != ERROR_ALREADY_EXISTS;
    const DWORD length = GetShortPathNameW(m_path, m_short, DWORD{MAX_PATH});
    // Wine derives short names from a hash, so two files may have the same one.
    if (length > 0 && length < std::size(m_short) && LeadsTo(m_short, file.Get())) return m_short;
    Discard();
    return nullptr;
}

void tessel::NarrowPath::Discard() const {
    if (m_created) (void)DeleteFileW(m_path); // if this fails, the file is empty
}
