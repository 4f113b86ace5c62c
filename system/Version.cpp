#include <foundation/Permit.h>
#include <foundation/SharedOwners.h>
#include <foundation/SlimLock.h>
#include <system/VersionResource.h>
#include <tessel/system/version.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <new>
#include <string>

namespace {

constexpr unsigned long kLockTimeoutMs = 5000;

/// Protects the count when the lock that all processes share cannot be obtained.
SRWLOCK countLock = SRWLOCK_INIT;

/// Zeros after the version resource. GUARD-182: a value that claims more than the file has ends in them; an aligned
/// value starts up to 3 bytes after the resource.
constexpr DWORD kTailSize = sizeof(VS_FIXEDFILEINFO) + 3;

/// @param size  receives the bytes of the resource
unsigned char* LoadVersionInfo(const wchar_t* path, DWORD& size) {
    DWORD unused = 0;
    size = GetFileVersionInfoSizeW(path, &unused);
    if (size == 0 || size > MAXDWORD - kTailSize) return nullptr;
    auto* const info = new (std::nothrow) unsigned char[size + kTailSize]{};
    if (info == nullptr || GetFileVersionInfoW(path, 0, size, info)) return info;
    delete[] info;
    return nullptr;
}

/// A value of a version resource.
struct Value {
    const void* data;
    UINT size; ///< bytes or, of a text, characters
};

Value Query(const unsigned char* info, const wchar_t* path) {
    void* data = nullptr;
    UINT size = 0;
    if (info == nullptr || !VerQueryValueW(info, path, &data, &size) || data == nullptr) return {nullptr, 0};
    return {data, size};
}

/// Finds a text by name in the first language.
Value QueryText(const unsigned char* info, const wchar_t* name) {
    const Value translation = Query(info, L"\\VarFileInfo\\Translation");
    if (translation.size < 2 * sizeof(WORD)) return {nullptr, 0}; // GUARD-182
    const auto* const language = static_cast<const WORD*>(translation.data);
    constexpr std::size_t kBlockPathSize = 40;
    wchar_t block[kBlockPathSize];
    (void)std::swprintf(block, kBlockPathSize, L"\\StringFileInfo\\%04X%04X\\", language[0],
                        language[1]); // always fits
    try {
        return Query(info, (std::wstring(block) + name).c_str());
    } catch (const std::bad_alloc&) {
        return {nullptr, 0};
    }
}

void Release(unsigned char* info) {
    if (info != nullptr && tessel::RemoveOwner(info)) delete[] info;
}

} // namespace

int CSwVersion::mRefCount = 0;
int CSwVersion::mFinishedWithTable = 0;

CSwVersion::CSwVersion(const wchar_t* path) : m_File{}, m_pVersionInfo(nullptr) {
    CountObject();
    if (path != nullptr) {                                           // GUARD-180
        std::wcsncpy(m_File.path, path, std::size(m_File.path) - 1); // GUARD-181: the last character stays 0
        ReadVersion(path);
        ReadAttributes(path);
    }
    try {
        mSwFileTable.Add(m_File);
    } catch (const std::bad_alloc&) {
        return; // the object describes its file nevertheless
    }
}

CSwVersion::CSwVersion(int index) : m_File{}, m_pVersionInfo(nullptr) {
    CountObject();
    (void)Select(index); // if there is no such entry, the object stays empty
}

// GUARD-183: copies share the version resource; otherwise it would be freed twice.
CSwVersion::CSwVersion(const CSwVersion& other)
    : m_File(other.m_File), m_pVersionInfo(tessel::Share(other.m_pVersionInfo)) {
    CountObject();
}

CSwVersion& CSwVersion::operator=(const CSwVersion& other) {
    if (this == &other) return *this;
    Release(m_pVersionInfo);
    m_File = other.m_File;
    m_pVersionInfo = tessel::Share(other.m_pVersionInfo);
    return *this;
}

CSwVersion::~CSwVersion() {
    Release(m_pVersionInfo);
    UncountObject();
}

void CSwVersion::CountObject() {
    const tessel::Permit shared(mRefLock, kLockTimeoutMs); // GUARD-185
    const tessel::SlimLock own(countLock);
    ++mRefCount;
}

void CSwVersion::UncountObject() {
    const tessel::Permit shared(mRefLock, kLockTimeoutMs); // GUARD-185
    const tessel::SlimLock own(countLock);
    if (--mRefCount == 0 && mFinishedWithTable != 0) mSwFileTable.RemoveAll();
}

void CSwVersion::RemoveTable() {
    const tessel::Permit shared(mRefLock, kLockTimeoutMs); // GUARD-185
    const tessel::SlimLock own(countLock);
    mFinishedWithTable = 1; // ODD-191: never reset, so that a later table is emptied with its last object, too
    if (mRefCount == 0) mSwFileTable.RemoveAll();
}

int CSwVersion::GetFileCount() {
    return mSwFileTable.GetSize();
}

void CSwVersion::ReadVersion(const wchar_t* path) {
    using tessel::VersionResource;
    DWORD size = 0;
    m_pVersionInfo = LoadVersionInfo(path, size);
    if (m_pVersionInfo == nullptr) return;
    const VersionResource readable = tessel::CheckVersionResource(m_pVersionInfo, size);
    if (readable != VersionResource::DAMAGED) ReadFixedPart();
    if (readable == VersionResource::COMPLETE) return;
    delete[] m_pVersionInfo; // GUARD-261: the system would follow the lengths of its blocks out of the resource
    m_pVersionInfo = nullptr;
}

void CSwVersion::ReadFixedPart() {
    const Value root = Query(m_pVersionInfo, L"\\");
    if (root.size < sizeof(VS_FIXEDFILEINFO)) return; // GUARD-182
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(root.data);
    m_File.major = HIWORD(fixed.dwFileVersionMS);
    m_File.minor = LOWORD(fixed.dwFileVersionMS);
    m_File.build = HIWORD(fixed.dwFileVersionLS);
    m_File.revision = LOWORD(fixed.dwFileVersionLS);
}

void CSwVersion::ReadAttributes(const wchar_t* path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return;
    m_File.size = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
    if (!FileTimeToSystemTime(&data.ftLastWriteTime, &m_File.time)) m_File.time = {};
}

/// Copies an entry of the table into the object, unless the index is negative.
/// @return false: there is no such entry
bool CSwVersion::Select(int index) {
    if (index >= mSwFileTable.GetSize()) return false;
    if (index >= 0) m_File = mSwFileTable[index]; // ODD-192: the version resource remains that of the object's own file
    return true;
}

int CSwVersion::GetPath(wchar_t (&path)[100], int index) {
    if (!Select(index)) return 0;
    std::copy(std::begin(m_File.path), std::end(m_File.path), path);
    return 1;
}

int CSwVersion::GetBinary(unsigned int* major, unsigned int* minor, unsigned int* build, unsigned int* revision,
                          int index) {
    if (major == nullptr || minor == nullptr || build == nullptr || revision == nullptr) return 0; // GUARD-09
    if (!Select(index)) return 0;
    *major = m_File.major;
    *minor = m_File.minor;
    *build = m_File.build;
    *revision = m_File.revision;
    return 1;
}

int CSwVersion::GetFileTime(unsigned short* month, unsigned short* day, unsigned short* year, unsigned short* hour,
                            unsigned short* minute, unsigned short* second, int index) {
    const std::array wanted{month, day, year, hour, minute, second};
    if (std::find(wanted.begin(), wanted.end(), nullptr) != wanted.end()) return 0; // GUARD-09
    if (!Select(index)) return 0;
    const SYSTEMTIME& time = m_File.time;
    const std::array values{time.wMonth, time.wDay, time.wYear, time.wHour, time.wMinute, time.wSecond};
    for (std::size_t i = 0; i < wanted.size(); ++i) *wanted[i] = values[i];
    return 1;
}

int CSwVersion::GetFileSize(std::uint64_t* size, int index) {
    if (size == nullptr || !Select(index)) return 0; // GUARD-09
    *size = m_File.size;
    return 1;
}

int CSwVersion::GetString(wchar_t (&text)[100], int index) {
    if (!Select(index)) return 0;
    const SYSTEMTIME& time = m_File.time;
    (void)std::swprintf(text, std::size(text), L"%u.%u.%u.%u %02u/%02u/%04u %02u:%02u:%02u", m_File.major, m_File.minor,
                        m_File.build, m_File.revision, time.wMonth, time.wDay, time.wYear, time.wHour, time.wMinute,
                        time.wSecond); // always fits
    return 1;
}

bool CSwVersion::GetVerStringInfo(const wchar_t* name, wchar_t* value, unsigned long len) {
    if (name == nullptr || value == nullptr) return false; // GUARD-09
    const Value found = QueryText(m_pVersionInfo, name);
    if (found.data == nullptr) return false;
    const auto* const text = static_cast<const wchar_t*>(found.data);
    const std::size_t length = wcsnlen(text, found.size);
    std::copy_n(text, std::min<std::size_t>(length, len), value);
    if (length < len) value[length] = L'\0'; // ODD-193: a text that fills the buffer or is longer is not terminated
    return true;
}

int CSwVersion::Compare(const CSwVersion& other) const {
    const std::array own{m_File.major, m_File.minor, m_File.build, m_File.revision};
    const std::array others{other.m_File.major, other.m_File.minor, other.m_File.build, other.m_File.revision};
    return own == others ? 0 : own < others ? -1 : 1;
}
