#include <foundation/Handle.h>
#include <tessel/foundation/memory.h>

namespace {

/// Creates a mapping of size 0, which opens an existing one but never creates one. If the system rejects the size
/// before it checks the name, opens the mapping by name.
/// @param error  receives the reason if there is no such mapping
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
    tessel::Handle mapping(AttachToMapping(m_ulSize, name, error));
    if (!mapping) return static_cast<int>(error);
    m_pBuffer = static_cast<unsigned char*>(MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, m_ulSize));
    const int status = m_pBuffer == nullptr ? static_cast<int>(GetLastError()) : 0;
    if (m_pBuffer != nullptr) m_hMapping = mapping.Release();
    KeepName(name);
    m_ulSize = m_ulRequestedSize = size; // ODD-14: set only now, so that the whole mapping is opened
    return status;
}
