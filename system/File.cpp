#include <foundation/Report.h>
#include <foundation/SharedOwners.h>
#include <tessel/foundation/strings.h>
#include <tessel/system/file.h>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <limits>

namespace {

constexpr int kClosed = 0;
constexpr int kFailed = -1;
constexpr tessel::ReportSite kFileTooLong{"CFile", 71};

/// The system handle of a descriptor, by which its owners are counted.
void* ResourceOf(int file) {
    return reinterpret_cast<void*>(_get_osfhandle(file));
}

int FlagsOf(unsigned int type) {
    int flags = type & CFile::TEXT ? _O_TEXT : _O_BINARY;
    flags |= type & CFile::SEQUENTIAL ? _O_SEQUENTIAL : _O_RANDOM;
    if (type & CFile::READ_ONLY) return flags | _O_RDONLY;
    flags |= _O_CREAT | _O_RDWR;
    if (type & CFile::TRUNCATE) return flags | _O_TRUNC;
    return type & CFile::APPEND ? flags | _O_APPEND : flags;
}

/// The runtime uses descriptor 0, which means closed here, once the program has closed its standard input.
int MoveFromZero(int file) {
    if (file != kClosed) return file;
    const int duplicate = _dup(file);
    (void)_close(file); // the duplicate keeps the file open
    return duplicate;
}

unsigned long SizeOf(const wchar_t* path) {
    WIN32_FILE_ATTRIBUTE_DATA info{};
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &info)) return 0;
    tessel::ReportUnless(info.nFileSizeHigh == 0, "FileInfo.nFileSizeHigh == 0", kFileTooLong);
    return info.nFileSizeLow;
}

/// The runtime's counts are signed.
unsigned int Count(unsigned long size) {
    return std::min<unsigned long>(size, std::numeric_limits<int>::max());
}

} // namespace

CFile::CFile(const wchar_t* path, OPENTYPE type) : m_iFile(kClosed), m_ulStatus(NOT_OPEN), m_ulSize(0), m_szPath{} {
    if (path != nullptr) OpenFile(path, type);
}

CFile::CFile(const CFile& other) {
    ShareWith(other);
}

CFile& CFile::operator=(const CFile& other) {
    if (this == &other) return *this;
    (void)CloseFile(); // the other object's status replaces the result
    ShareWith(other);
    return *this;
}

CFile::~CFile() {
    (void)CloseFile(); // a destructor cannot report
}

// GUARD-190: copies share the descriptor; a second close would close a file that has got the same number since.
void CFile::ShareWith(const CFile& other) {
    const bool isOutOfMemory = other.m_iFile != kClosed && !tessel::AddOwner(ResourceOf(other.m_iFile));
    m_iFile = isOutOfMemory ? kClosed : other.m_iFile;
    m_ulStatus = isOutOfMemory ? NOT_OPEN : other.m_ulStatus;
    m_ulSize = other.m_ulSize;
    std::wmemcpy(m_szPath, other.m_szPath, PATH_LENGTH);
    if (isOutOfMemory) m_szPath[0] = L'\0';
}

unsigned long CFile::OpenFile(const wchar_t* path, OPENTYPE type) {
    if (m_iFile != kClosed) return SetStatus(ALREADY_OPEN);
    if (path == nullptr) return SetStatus(OPEN_FAILED); // GUARD-09
    const int file = MoveFromZero(_wopen(path, FlagsOf(type), _S_IWRITE));
    if (file == kFailed) return SetStatus(OPEN_FAILED);
    m_iFile = file;
    m_ulSize = SizeOf(path);
    (void)CopyString(m_szPath, path, PATH_LENGTH); // GUARD-191: a longer path is truncated
    return SetStatus(SUCCESS);
}

unsigned long CFile::CloseFile() {
    m_szPath[0] = L'\0'; // ODD-203: also when the file then cannot be closed
    if (m_iFile == kClosed) return m_ulStatus;
    if (tessel::RemoveOwner(ResourceOf(m_iFile)) && _close(m_iFile) != 0) return SetStatus(CLOSE_FAILED);
    m_iFile = kClosed;
    return SetStatus(SUCCESS);
}

unsigned long CFile::ReadFile(void* buffer, unsigned long size) {
    if (m_iFile == kClosed) return SetStatus(NOT_OPEN), 0;
    const int count = buffer == nullptr && size > 0 ? kFailed : _read(m_iFile, buffer, Count(size)); // GUARD-09
    SetStatus(count == kFailed ? READ_FAILED : SUCCESS);
    return static_cast<unsigned long>(std::max(count, 0));
}

unsigned long CFile::WriteFile(const void* buffer, unsigned long size) {
    if (m_iFile == kClosed) return SetStatus(NOT_OPEN), 0;
    const int count = buffer == nullptr && size > 0 ? kFailed : _write(m_iFile, buffer, Count(size)); // GUARD-09
    const auto written = static_cast<unsigned long>(std::max(count, 0));
    SetStatus(count == kFailed || written != size ? WRITE_FAILED : SUCCESS);
    return written;
}

unsigned long CFile::SeekFile(long offset, int origin, unsigned long* newPos) {
    if (m_iFile == kClosed) return SetStatus(NOT_OPEN);
    const long position = _lseek(m_iFile, offset, origin);
    if (position == kFailed) return SetStatus(SEEK_FAILED);
    if (newPos != nullptr) *newPos = static_cast<unsigned long>(position);
    return SetStatus(SUCCESS);
}

unsigned long CFile::Rewind() {
    return SeekFile(0, SEEK_SET, nullptr);
}

long CFile::TellFile() {
    if (m_iFile == kClosed) return SetStatus(NOT_OPEN), kFailed;
    const long position = _tell(m_iFile);
    SetStatus(position == kFailed ? TELL_FAILED : SUCCESS);
    return position;
}

// ODD-200: the size when the file was opened, whatever was written since.
unsigned long CFile::SizeFile(unsigned long* size) {
    if (size != nullptr) *size = m_ulSize;
    return SetStatus(m_iFile == kClosed ? NOT_OPEN : SUCCESS);
}

const wchar_t* CFile::GetName() const {
    const wchar_t* const backslash = std::wcsrchr(m_szPath, L'\\');
    return backslash == nullptr ? m_szPath : backslash + 1;
}

const wchar_t* CFile::GetExt() const {
    const wchar_t* const dot = std::wcsrchr(m_szPath, L'.');            // ODD-201: a dot of a directory counts, too
    return dot == nullptr ? m_szPath + std::wcslen(m_szPath) : dot + 1; // GUARD-192
}
