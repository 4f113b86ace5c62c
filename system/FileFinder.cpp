#include <foundation/SharedOwners.h>
#include <tessel/system/file.h>

#include <new>

CFileFinder::CFileFinder() : m_pFindData(new (std::nothrow) WIN32_FIND_DATAW{}), m_hFind(INVALID_HANDLE_VALUE) {}

CFileFinder::CFileFinder(const CFileFinder& other) : CFileFinder() {
    ShareWith(other);
}

CFileFinder& CFileFinder::operator=(const CFileFinder& other) {
    if (this == &other) return *this;
    Close();
    ShareWith(other);
    return *this;
}

CFileFinder::~CFileFinder() {
    Close();
    delete m_pFindData;
}

// GUARD-193: copies share the search and own an entry each; otherwise both would be released twice.
void CFileFinder::ShareWith(const CFileFinder& other) {
    if (m_pFindData == nullptr || other.m_pFindData == nullptr) return;
    *m_pFindData = *other.m_pFindData;
    m_hFind = tessel::Share(other.m_hFind, INVALID_HANDLE_VALUE);
}

int CFileFinder::First(const wchar_t* pattern) {
    Close();
    SetLastError(pattern == nullptr ? ERROR_INVALID_PARAMETER : ERROR_NOT_ENOUGH_MEMORY);
    if (pattern == nullptr || m_pFindData == nullptr) return 0; // GUARD-09
    WIN32_FIND_DATAW entry;
    m_hFind = FindFirstFileW(pattern, &entry);
    if (m_hFind == INVALID_HANDLE_VALUE) return 0;
    *m_pFindData = entry;
    return 1;
}

int CFileFinder::Next() {
    WIN32_FIND_DATAW entry; // undefined when there are no more entries
    if (m_hFind == INVALID_HANDLE_VALUE || !FindNextFileW(m_hFind, &entry)) return 0;
    *m_pFindData = entry;
    return 1;
}

int CFileFinder::IsDirectory() const {
    return m_hFind != INVALID_HANDLE_VALUE && (m_pFindData->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
}

const wchar_t* CFileFinder::GetFileName() const {
    return m_pFindData == nullptr ? nullptr : m_pFindData->cFileName;
}

void CFileFinder::Close() {
    if (m_hFind != INVALID_HANDLE_VALUE && tessel::RemoveOwner(m_hFind)) (void)FindClose(m_hFind); // open until now
    m_hFind = INVALID_HANDLE_VALUE;
}
