#include <foundation/SharedHandle.h>
#include <foundation/SharedOwners.h>
#include <tessel/system/file.h>

#include <utility>

namespace {

void Unmap(void* view) {
    if (view != nullptr && tessel::RemoveOwner(view)) (void)UnmapViewOfFile(view); // mapped until now
}

} // namespace

CMemMappedFile::CMemMappedFile(HANDLE file, const wchar_t* name, unsigned long sizeLow, unsigned long protect,
                               unsigned long sizeHigh, SECURITY_ATTRIBUTES* attributes)
    : m_hMapping(CreateFileMappingW(file, attributes, protect, sizeHigh, sizeLow, name)), m_pView(nullptr),
      m_ulLastError(GetLastError()) {}

CMemMappedFile::CMemMappedFile(const wchar_t* name, unsigned long sizeLow, unsigned long protect,
                               unsigned long sizeHigh, SECURITY_ATTRIBUTES* attributes)
    : CMemMappedFile(INVALID_HANDLE_VALUE, name, sizeLow, protect, sizeHigh, attributes) {}

CMemMappedFile::CMemMappedFile(HANDLE mapping) : m_hMapping(mapping), m_pView(nullptr), m_ulLastError(0) {}

// GUARD-194: copies share mapping and view; otherwise both would be released twice.
CMemMappedFile::CMemMappedFile(const CMemMappedFile& other)
    : m_hMapping(tessel::Share(other.m_hMapping)), m_pView(tessel::Share(other.m_pView)),
      m_ulLastError(other.m_ulLastError) {}

CMemMappedFile& CMemMappedFile::operator=(const CMemMappedFile& other) {
    if (this == &other) return *this;
    Release();
    m_hMapping = tessel::Share(other.m_hMapping);
    m_pView = tessel::Share(other.m_pView);
    m_ulLastError = other.m_ulLastError;
    return *this;
}

CMemMappedFile::~CMemMappedFile() {
    Release();
}

void CMemMappedFile::Release() {
    Unmap(m_pView);
    if (m_hMapping != nullptr) (void)tessel::ReleaseHandle(m_hMapping); // open until now
}

void* CMemMappedFile::MapView(unsigned long access, unsigned long offsetHigh, unsigned long offsetLow,
                              unsigned long size) {
    Unmap(std::exchange(m_pView, nullptr));
    m_pView = MapViewOfFile(m_hMapping, access, offsetHigh, offsetLow, size);
    if (m_pView == nullptr) m_ulLastError = GetLastError();
    return m_pView;
}
