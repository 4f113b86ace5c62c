#include <foundation/SharedHandle.h>
#include <net/ChannelPath.h>
#include <net/Overlapped.h>
#include <tessel/net/mailslot.h>

#include <cstddef>
#include <cwchar>
#include <new>

namespace {

constexpr std::size_t kPathSize = 520;

} // namespace

CMailslot::CMailslot()
    : m_hMailslot(nullptr), m_bReadingEnd(TRUE), m_ulLastError(0), m_Overlapped{}, m_bPending(FALSE), m_szName(nullptr),
      m_ulNameLen(0) {}

CMailslot::CMailslot(const CMailslot& other) {
    ShareWith(other);
}

CMailslot& CMailslot::operator=(const CMailslot& other) {
    if (this == &other) return *this;
    tessel::CancelOverlapped(m_hMailslot, m_Overlapped);
    if (tessel::IsHandle(m_hMailslot)) (void)tessel::RemoveOwner(m_hMailslot); // ODD-22: left open
    ReleaseName();
    ShareWith(other);
    return *this;
}

CMailslot::~CMailslot() {
    Reset();
    ReleaseName();
}

// GUARD-76: copies hold handle and name by value; each would close and free them.
void CMailslot::ShareWith(const CMailslot& other) {
    m_hMailslot = tessel::Share(other.m_hMailslot, INVALID_HANDLE_VALUE);
    m_bReadingEnd = other.m_bReadingEnd;
    m_ulLastError = other.m_ulLastError;
    m_Overlapped = other.m_Overlapped;
    m_bPending = other.m_bPending;
    m_szName = tessel::Share(other.m_szName);
    m_ulNameLen = m_szName != nullptr ? other.m_ulNameLen : 0;
}

void CMailslot::ReleaseName() {
    if (m_szName != nullptr && tessel::RemoveOwner(m_szName)) delete[] m_szName;
    m_szName = nullptr;
    m_ulNameLen = 0;
}

bool CMailslot::StoreName(const wchar_t* name) {
    m_ulLastError = name == nullptr ? ERROR_INVALID_PARAMETER : ERROR_NOT_ENOUGH_MEMORY;
    if (name == nullptr) return false; // GUARD-09
    const std::size_t length = std::wcslen(name) + 1;
    auto* const copy = new (std::nothrow) wchar_t[length];
    if (copy == nullptr) return false;
    std::wmemcpy(copy, name, length);
    ReleaseName(); // after the copy: the name may be the one held
    m_szName = copy;
    m_ulNameLen = static_cast<unsigned long>(length);
    return true;
}

void CMailslot::Reset() {
    tessel::CancelOverlapped(m_hMailslot, m_Overlapped);
    if (tessel::IsHandle(m_hMailslot))
        (void)tessel::ReleaseHandle(m_hMailslot); // opened by this class, so it can be closed
    m_hMailslot = INVALID_HANDLE_VALUE;
    m_bPending = FALSE;
}

unsigned long CMailslot::StoreError(bool succeeded) {
    return m_ulLastError = succeeded ? 0 : GetLastError();
}

bool CMailslot::TakeHandle(HANDLE handle) {
    m_hMailslot = handle;
    return StoreError(handle != INVALID_HANDLE_VALUE) == 0;
}

bool CMailslot::Create(const wchar_t* name, unsigned long maxMessageSize, unsigned long readTimeout,
                       SECURITY_ATTRIBUTES* attributes) {
    wchar_t path[kPathSize];
    if (name != nullptr) tessel::JoinPath(path, {L"\\\\.\\mailslot\\", name});
    if (!StoreName(name)) return false;
    Reset();
    m_bReadingEnd = TRUE;
    return TakeHandle(CreateMailslotW(path, maxMessageSize, readTimeout, attributes));
}

bool CMailslot::Open(const wchar_t* name, const wchar_t* server) {
    wchar_t path[kPathSize];
    if (server == nullptr) name = nullptr;
    if (name != nullptr) tessel::JoinPath(path, {L"\\\\", server, L"\\mailslot\\", name});
    if (!StoreName(name)) return false;
    Reset();
    m_bReadingEnd = FALSE;
    return TakeHandle(CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool CMailslot::Read(unsigned char* buffer, unsigned long size, unsigned long* read, void* event) {
    m_bPending = FALSE;
    if (event != nullptr) {
        m_Overlapped = OVERLAPPED{};
        m_Overlapped.hEvent = event;
        if (!ResetEvent(event)) {
            (void)StoreError(false);
            return false;
        }
    }
    DWORD bytesRead = 0;
    const bool done = ReadFile(m_hMailslot, buffer, size, &bytesRead, event != nullptr ? &m_Overlapped : nullptr) != 0;
    (void)StoreError(done);
    if (read != nullptr) *read = bytesRead; // GUARD-09
    m_bPending = event != nullptr && m_ulLastError == ERROR_IO_PENDING;
    return done || m_bPending;
}

bool CMailslot::Write(unsigned char* buffer, unsigned long size, unsigned long* written) const {
    DWORD count = 0;
    const bool done = WriteFile(m_hMailslot, buffer, size, &count, nullptr) != 0;
    if (written != nullptr) *written = count; // GUARD-09
    return done;
}

unsigned long CMailslot::GetStatus(unsigned long* transferred) {
    if (!m_bPending) return m_ulLastError;
    DWORD count = 0;
    const bool done = GetOverlappedResult(m_hMailslot, &m_Overlapped, &count, FALSE) != 0;
    (void)StoreError(done);
    if (m_ulLastError == ERROR_IO_INCOMPLETE) m_ulLastError = ERROR_IO_PENDING;
    if (done && transferred != nullptr) *transferred = count;
    if (m_ulLastError == 0) m_bPending = FALSE; // after a failure the next call asks again
    return m_ulLastError;
}

unsigned long CMailslot::GetInfo(unsigned long* maxMessageSize, unsigned long* nextSize, unsigned long* count,
                                 unsigned long* readTimeout) {
    return StoreError(GetMailslotInfo(m_hMailslot, maxMessageSize, nextSize, count, readTimeout) != 0);
}

unsigned long CMailslot::SetInfo(unsigned long readTimeout) {
    return StoreError(SetMailslotInfo(m_hMailslot, readTimeout) != 0);
}

// ODD-104: a pending read stays pending, and its status hides the result of closing.
bool CMailslot::Close() {
    tessel::CancelOverlapped(m_hMailslot, m_Overlapped);
    const bool closed = tessel::ReleaseHandle(m_hMailslot);
    (void)StoreError(closed);
    m_hMailslot = INVALID_HANDLE_VALUE;
    return closed;
}
