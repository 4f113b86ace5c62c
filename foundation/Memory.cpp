#include <foundation/MappedView.h>
#include <foundation/SharedHandle.h>
#include <foundation/SharedOwners.h>
#include <tessel/foundation/memory.h>
#include <tessel/foundation/strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>

namespace {

using tessel::RemoveOwner;
using tessel::Share;

constexpr unsigned long kLastOffset = std::numeric_limits<unsigned long>::max();

bool EndsInRange(unsigned long offset, unsigned long count) {
    return count <= kLastOffset - offset;
}

/// Whether a file's handle is open. ReName() leaves a closed handle, which has no owners to count.
bool IsOpen(HANDLE file) {
    DWORD flags = 0;
    return file != INVALID_HANDLE_VALUE && GetHandleInformation(file, &flags) != 0;
}

void FreeHeap(unsigned char* buffer) {
    if (buffer != nullptr && RemoveOwner(buffer)) std::free(buffer);
}

/// Resizes a buffer that may be shared; other owners keep the old one.
/// @return the buffer; null: out of memory, and the old one is unchanged
unsigned char* ResizeHeap(unsigned char* buffer, std::size_t oldSize, std::size_t newSize) {
    if (buffer == nullptr || !tessel::IsShared(buffer)) {
        return static_cast<unsigned char*>(std::realloc(buffer, newSize));
    }
    auto* const own = static_cast<unsigned char*>(std::malloc(newSize));
    if (own == nullptr) return nullptr;
    std::memcpy(own, buffer, std::min(oldSize, newSize));
    FreeHeap(buffer);
    return own;
}

/// A caller's pointer, which may point into the buffer that is about to move.
template <class Byte> class CallersBuffer {
public:
    CallersBuffer(Byte* range, unsigned char* buffer, unsigned long size)
        : m_range(range),
          m_inside(buffer != nullptr && !std::less<>{}(range, buffer) && std::less<>{}(range, buffer + size)),
          m_distance(m_inside ? range - buffer : 0) {}
    Byte* At(unsigned char* buffer) const { return m_inside ? buffer + m_distance : m_range; }

private:
    Byte* m_range;
    bool m_inside;
    std::ptrdiff_t m_distance;
};

} // namespace

CMemory::CMemory(int kind, unsigned long size, const wchar_t* name, OPENTYPE openType, int readOnly)
    : m_hHandle(nullptr), m_hMapping(nullptr), m_szName{}, m_pBuffer(nullptr), m_pReadCopy(nullptr), m_iKind(kind),
      m_ulSize(0), m_ulReadCursor(0), m_ulWriteCursor(0), m_ulReadCopyCapacity(0), m_ulRequestedSize(0), m_iStatus(0),
      m_iNewFile(1) {
    switch (kind) {
    case KIND_HEAP:
    case KIND_GLOBAL: break;
    case KIND_MAPPING:
        m_hHandle = INVALID_HANDLE_VALUE;
        m_iStatus = OpenMapping(size, name);
        break;
    case KIND_FILE:
        m_iStatus = OpenFile(name, openType, readOnly != 0);
        if (m_iStatus == ERROR_ACCESS_DENIED && readOnly == 0) m_iStatus = OpenFile(name, openType, true);
        break;
    default: m_iStatus = 1;
    }
}

CMemory::CMemory(const CMemory& other) {
    ShareWith(other);
}

CMemory& CMemory::operator=(const CMemory& other) {
    if (this == &other) return *this;
    DropOwnership();
    ShareWith(other);
    return *this;
}

CMemory::~CMemory() {
    ReleaseResources();
}

void CMemory::KeepName(const wchar_t* name) {
    (void)CopyString(m_szName, name, sizeof m_szName / sizeof m_szName[0]); // GUARD-203: a longer name is truncated
}

// GUARD-06: copies share buffers and handles; if each copy freed them, they would be freed twice.
void CMemory::ShareWith(const CMemory& other) {
    m_pBuffer = Share(other.m_pBuffer);
    m_pReadCopy = Share(other.m_pReadCopy);
    m_hMapping = Share(other.m_hMapping);
    const bool hasFile = other.m_iKind == KIND_FILE && IsOpen(other.m_hHandle);
    m_hHandle = hasFile ? Share(other.m_hHandle) : other.m_hHandle;
    const bool complete = m_pBuffer == other.m_pBuffer && m_pReadCopy == other.m_pReadCopy &&
                          m_hMapping == other.m_hMapping && m_hHandle == other.m_hHandle;
    m_iStatus = complete ? other.m_iStatus : ERROR_NOT_ENOUGH_MEMORY;
    if (other.m_iKind == KIND_GLOBAL) m_hHandle = m_pBuffer;
    std::copy(std::begin(other.m_szName), std::end(other.m_szName), m_szName);
    m_iKind = other.m_iKind;
    m_ulSize = m_pBuffer == nullptr && m_iKind != KIND_MAPPING ? 0 : other.m_ulSize;
    m_ulReadCursor = other.m_ulReadCursor;
    m_ulWriteCursor = other.m_ulWriteCursor;
    m_ulReadCopyCapacity = m_pReadCopy == nullptr ? 0 : other.m_ulReadCopyCapacity;
    m_ulRequestedSize = other.m_ulRequestedSize;
    m_iNewFile = other.m_iNewFile;
}

// ODD-22: the target's previous storage is neither closed nor freed; a copy may now be its last owner.
void CMemory::DropOwnership() {
    (void)RemoveOwner(m_pBuffer);
    (void)RemoveOwner(m_pReadCopy);
    (void)RemoveOwner(m_hMapping);
    if (m_iKind == KIND_FILE) (void)RemoveOwner(m_hHandle);
}

// If the system refuses to free something, a caller has freed it already.
void CMemory::ReleaseResources() {
    switch (m_iKind) {
    case KIND_HEAP: FreeHeap(m_pBuffer); break;
    case KIND_MAPPING:
        if (m_pBuffer != nullptr && RemoveOwner(m_pBuffer)) (void)UnmapViewOfFile(m_pBuffer);
        if (m_hMapping != nullptr) (void)tessel::ReleaseHandle(m_hMapping);
        break;
    case KIND_FILE:
        if (m_hHandle != INVALID_HANDLE_VALUE) (void)tessel::ReleaseHandle(m_hHandle);
        break;
    case KIND_GLOBAL:
        if (m_pBuffer != nullptr && RemoveOwner(m_pBuffer)) (void)GlobalFree(m_pBuffer);
        break;
    default: break;
    }
    FreeHeap(m_pReadCopy);
}

int CMemory::GrowHeap(unsigned long offset, unsigned long count) {
    if (!EndsInRange(offset, count)) return ERROR_NOT_ENOUGH_MEMORY; // GUARD-07
    const unsigned long end = offset + count;
    if (m_pBuffer != nullptr && end <= m_ulSize) return 0;
    if (end == kLastOffset) return ERROR_NOT_ENOUGH_MEMORY;
    unsigned char* const grown = ResizeHeap(m_pBuffer, m_ulSize, std::size_t{end} + 1);
    if (grown == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    m_pBuffer = grown;
    m_ulSize = std::max(m_ulSize, end);
    return 0;
}

int CMemory::PrepareRead(unsigned long offset, unsigned long count) {
    switch (m_iKind) {
    case KIND_HEAP: {
        const unsigned long oldSize = m_ulSize;
        const int status = GrowHeap(offset, count);
        if (status == 0) std::memset(m_pBuffer + oldSize, 0, m_ulSize - oldSize);
        return status;
    }
    case KIND_MAPPING: // ODD-10: a write may end exactly at the end, a read may not
        return EndsInRange(offset, count) && offset + count < m_ulSize ? 0 : ERROR_NOT_ENOUGH_MEMORY;
    default: return 0;
    }
}

int CMemory::PrepareWrite(unsigned long offset, unsigned long count) {
    switch (m_iKind) {
    case KIND_HEAP: return GrowHeap(offset, count);
    case KIND_MAPPING: return EndsInRange(offset, count) && offset + count <= m_ulSize ? 0 : ERROR_NOT_ENOUGH_MEMORY;
    default: return 0;
    }
}

/// The part of a range that lies inside the actual memory.
/// GUARD-08: a mapping may be smaller than its user stated, and a global block is not checked earlier.
unsigned long CMemory::BytesInBounds(unsigned long offset, unsigned long count) const {
    if (m_pBuffer == nullptr) return 0;
    const unsigned long size = m_iKind == KIND_MAPPING ? tessel::MappedBytes(m_pBuffer) : m_ulSize;
    return offset >= size ? 0 : std::min(count, size - offset);
}

int CMemory::Fetch(unsigned char* dest, unsigned long count, unsigned long offset, unsigned long& read) {
    if (m_iKind == KIND_FILE) {
        const int status = FetchFromFile(dest, count, offset, read);
        m_ulReadCursor = offset + count; // even after a failure
        return status;
    }
    read = BytesInBounds(offset, count);
    if (read > 0) std::memmove(dest, m_pBuffer + offset, read);
    if (read < count) return ERROR_NOT_ENOUGH_MEMORY;
    m_ulReadCursor = offset + count;
    return 0;
}

int CMemory::Store(const unsigned char* src, unsigned long count, unsigned long offset) {
    if (m_iKind == KIND_FILE) return StoreInFile(src, count, offset);
    const unsigned long writable = BytesInBounds(offset, count);
    if (writable > 0) std::memmove(m_pBuffer + offset, src, writable);
    return writable < count ? ERROR_NOT_ENOUGH_MEMORY : 0;
}

bool CMemory::EnlargeReadCopy(unsigned long count) {
    if (count == kLastOffset) return false;
    if (count < m_ulReadCopyCapacity) return true;
    unsigned char* const enlarged = ResizeHeap(m_pReadCopy, m_ulReadCopyCapacity, std::size_t{count} + 1);
    if (enlarged == nullptr) return false;
    m_pReadCopy = enlarged;
    m_ulReadCopyCapacity = count + 1;
    return true;
}

int CMemory::ReadMemoryDirect(unsigned char* dest, unsigned long count, unsigned long offset) {
    if (dest == nullptr && count > 0) return m_iStatus = ERROR_INVALID_PARAMETER; // GUARD-09
    if (offset == AT_CURSOR) offset = m_ulReadCursor;
    const CallersBuffer<unsigned char> range(dest, m_pBuffer, m_ulSize);
    unsigned long read = 0;
    m_iStatus = PrepareRead(offset, count);
    if (m_iStatus == 0) m_iStatus = Fetch(range.At(m_pBuffer), count, offset, read);
    return m_iStatus;
}

int CMemory::ReadMemory(unsigned char** result, unsigned long count, unsigned long offset) {
    if (result == nullptr) return m_iStatus = ERROR_INVALID_PARAMETER; // GUARD-09
    if (offset == AT_CURSOR) offset = m_ulReadCursor;
    m_iStatus = PrepareRead(offset, count);
    if (m_iStatus != 0) return m_iStatus;
    if (!EnlargeReadCopy(count)) return m_iStatus = ERROR_NOT_ENOUGH_MEMORY;
    unsigned long read = 0;
    m_iStatus = Fetch(m_pReadCopy, count, offset, read);
    std::memset(m_pReadCopy + read, 0, std::size_t{count} - read + 1); // hides the data of an earlier read
    *result = m_pReadCopy;
    return m_iStatus;
}

int CMemory::WriteMemory(const unsigned char* src, unsigned long count, unsigned long offset) {
    if (src == nullptr && count > 0) return m_iStatus = ERROR_INVALID_PARAMETER; // GUARD-09
    if (offset == AT_CURSOR) offset = m_ulWriteCursor;
    const CallersBuffer<const unsigned char> range(src, m_pBuffer, m_ulSize);
    m_iStatus = PrepareWrite(offset, count);
    if (m_iStatus == 0) m_iStatus = Store(range.At(m_pBuffer), count, offset);
    if (m_iStatus == 0) m_ulWriteCursor = offset + count;
    return m_iStatus;
}

void* CMemory::GetBuffer(unsigned long size) {
    if (m_iKind != KIND_GLOBAL) return m_pBuffer;
    if (m_pBuffer != nullptr && size > m_ulSize) {
        if (RemoveOwner(m_pBuffer)) (void)GlobalFree(m_pBuffer); // allocated here
        m_hHandle = m_pBuffer = nullptr; // GUARD-10: if the allocation fails, no freed block is left
        m_ulSize = 0;
    }
    auto* const block = static_cast<unsigned char*>(GlobalAlloc(GMEM_FIXED, size));
    m_iStatus = block != nullptr ? 0 : static_cast<int>(GetLastError());
    if (block == nullptr) return m_pBuffer;
    if (m_pBuffer != nullptr) (void)RemoveOwner(m_pBuffer); // ODD-11: a sufficiently large block stays allocated
    m_hHandle = m_pBuffer = block;
    m_ulSize = static_cast<unsigned long>(std::min<SIZE_T>(GlobalSize(block), kLastOffset));
    return m_pBuffer;
}
