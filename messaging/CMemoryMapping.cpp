#include <tessel/memory.h>

namespace {

/// Asks for a mapping of size 0, which opens one that exists and refuses to create one. A system that
/// refuses the size before it looks at the name is asked to open the name.
/// @param error  receives the reason when there is no such mapping
HANDLE AttachToMapping(unsigned long size, const wchar_t* name, DWORD& error) {
    HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name);
    error = GetLastError();
    if (mapping == nullptr && error == ERROR_INVALID_PARAMETER) {
        mapping = OpenFileMappingW(FILE_MAP_WRITE, FALSE, name);
        if (GetLastError() != ERROR_FILE_NOT_FOUND) error = GetLastError();
    }
    return mapping;
}

} // namespace

int CMemory::OpenMapping(unsigned long size, const wchar_t* name) {
    DWORD error = 0;
    m_hMapping = AttachToMapping(m_ulSize, name, error);
    if (m_hMapping == nullptr) return static_cast<int>(error);
    m_pBuffer = static_cast<unsigned char*>(MapViewOfFile(m_hMapping, FILE_MAP_WRITE, 0, 0, m_ulSize));
    int status = 0;
    if (m_pBuffer == nullptr) {
        status = static_cast<int>(GetLastError());
        (void)CloseHandle(m_hMapping); // just opened
        m_hMapping = nullptr;
    }
    KeepName(name);
    m_ulSize = m_ulRequestedSize = size; // ODD-14: only now, so that the size is the caller's word
    return status;
}
