#include <foundation/LastError.h>
#include <foundation/Report.h>
#include <foundation/SharedOwners.h>
#include <tessel/foundation/memory.h>

#include <cstdio>
#include <iterator>

namespace {

constexpr tessel::ReportSite kUnknownOpenType{"CMemory", 215};
constexpr tessel::ReportSite kFileTooLong{"CMemory", 274};

/// Dispositions of CreateFileW in the order of OPENTYPE.
constexpr DWORD kDispositions[] = {CREATE_NEW, CREATE_ALWAYS, OPEN_EXISTING, OPEN_ALWAYS, TRUNCATE_EXISTING};

int StatusOf(BOOL succeeded) {
    return static_cast<int>(tessel::LastErrorUnless(succeeded));
}

int Seek(HANDLE file, unsigned long offset) {
    LARGE_INTEGER position;
    position.QuadPart = offset;
    return StatusOf(SetFilePointerEx(file, position, nullptr, FILE_BEGIN));
}

} // namespace

int CMemory::OpenFile(const wchar_t* name, unsigned int openType, bool readOnly) {
    const bool known = openType < std::size(kDispositions);
    tessel::ReportUnless(known, "!_T(\"Invalid Open Type\")", kUnknownOpenType);
    const DWORD disposition = kDispositions[known ? openType : OPENTYPE_OPEN_ALWAYS];
    const bool existed = GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES;

    m_hHandle = CreateFileW(name, readOnly ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE,
                            readOnly ? FILE_SHARE_READ : FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    const DWORD error = GetLastError();
    if (m_hHandle == INVALID_HANDLE_VALUE) return static_cast<int>(error);
    KeepName(name);
    if (existed || error == ERROR_ALREADY_EXISTS) m_iNewFile = 0;
    return 0;
}

int CMemory::FetchFromFile(unsigned char* dest, unsigned long count, unsigned long offset, unsigned long& read) {
    int status = Seek(m_hHandle, offset);
    if (status == 0) status = StatusOf(::ReadFile(m_hHandle, dest, count, &read, nullptr));
    if (status == 0 && read < count) status = ERROR_HANDLE_EOF;
    return status;
}

int CMemory::StoreInFile(const unsigned char* src, unsigned long count, unsigned long offset) {
    DWORD written = 0;
    int status = Seek(m_hHandle, offset);
    // ODD-12: the number of bytes written is not checked.
    if (status == 0) status = StatusOf(::WriteFile(m_hHandle, src, count, &written, nullptr));
    return status;
}

unsigned long CMemory::GetFileLength() {
    if (m_iKind != KIND_FILE) return m_ulRequestedSize;
    DWORD high = 0;
    const DWORD low = GetFileSize(m_hHandle, &high);
    tessel::ReportUnless(high == 0, "HighPart == 0", kFileTooLong);
    return low;
}

int CMemory::RemoveFile(const wchar_t* name) {
    const int status = StatusOf(DeleteFileW(name));
    return status == ERROR_FILE_NOT_FOUND ? 0 : status;
}

int CMemory::ReName(const wchar_t* newName) {
    if (m_hHandle != nullptr) {
        if (m_iKind == KIND_FILE) (void)tessel::RemoveOwner(m_hHandle); // closed for the copies, too
        (void)CloseHandle(m_hHandle);                                   // ODD-13: the field keeps the closed handle
    }
    m_iStatus = newName == nullptr ? -1 : _wrename(m_szName, newName); // GUARD-09
    if (m_iStatus == 0) KeepName(newName);
    return m_iStatus;
}

int CMemory::SetFileModificationTime(const FILETIME* time) {
    m_iStatus = m_hHandle == nullptr ? ERROR_INVALID_HANDLE : StatusOf(SetFileTime(m_hHandle, nullptr, nullptr, time));
    return m_iStatus;
}

int CMemory::GetFileModificationTime(FILETIME* time) {
    m_iStatus = m_hHandle == nullptr ? ERROR_INVALID_HANDLE : StatusOf(GetFileTime(m_hHandle, nullptr, nullptr, time));
    return m_iStatus;
}
