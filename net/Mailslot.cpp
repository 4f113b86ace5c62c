#include <net/ChannelPath.h>
#include <net/SharedHandle.h>
#include <tessel/net/mailslot.h>

#include <cstddef>
#include <cwchar>
#include <new>

struct CMailslotLayout {
    static constexpr bool kOn32Bits = sizeof(void*) == 4;
    static_assert(offsetof(CMailslot, m_hMailslot) == sizeof(void*));
    static_assert(offsetof(CMailslot, m_bReadingEnd) == 2 * sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CMailslot, m_ulLastError) == 12);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_Overlapped) == 16);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_bPending) == 36);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_szName) == 40);
    static_assert(!kOn32Bits || offsetof(CMailslot, m_ulNameLen) == 44);
    static_assert(!kOn32Bits || sizeof(CMailslot) == 48);
};

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
    ForgetName();
    ShareWith(other);
    return *this;
}

CMailslot::~CMailslot() {
    LetGo();
    ForgetName();
}

// GUARD-76: copies hold handle and name by value, where each closing and freeing them would do so twice.
void CMailslot::ShareWith(const CMailslot& other) {
    m_hMailslot = tessel::ShareHandle(other.m_hMailslot);
    m_bReadingEnd = other.m_bReadingEnd;
    m_ulLastError = other.m_ulLastError;
    m_Overlapped = other.m_Overlapped;
    m_bPending = other.m_bPending;
    const bool named = other.m_szName != nullptr && tessel::AddOwner(other.m_szName);
    m_szName = named ? other.m_szName : nullptr;
    m_ulNameLen = named ? other.m_ulNameLen : 0;
}

void CMailslot::ForgetName() {
    if (m_szName != nullptr && tessel::RemoveOwner(m_szName)) delete[] m_szName;
    m_szName = nullptr;
    m_ulNameLen = 0;
}

bool CMailslot::KeepName(const wchar_t* name) {
    m_ulLastError = name == nullptr ? ERROR_INVALID_PARAMETER : ERROR_NOT_ENOUGH_MEMORY;
    if (name == nullptr) return false; // GUARD-09
    const std::size_t length = std::wcslen(name) + 1;
    auto* const copy = new (std::nothrow) wchar_t[length];
    if (copy == nullptr) return false;
    std::wmemcpy(copy, name, length);
    ForgetName(); // the name may have been this one's
    m_szName = copy;
    m_ulNameLen = static_cast<unsigned long>(length);
    return true;
}

void CMailslot::LetGo() {
    tessel::CancelOverlapped(m_hMailslot, m_Overlapped);
    if (tessel::IsHandle(m_hMailslot)) (void)tessel::ReleaseHandle(m_hMailslot); // it was opened here
    m_hMailslot = INVALID_HANDLE_VALUE;
    m_bPending = FALSE;
}

unsigned long CMailslot::KeepError(bool succeeded) {
    return m_ulLastError = succeeded ? 0 : GetLastError();
}

bool CMailslot::Keep(HANDLE handle) {
    m_hMailslot = handle;
    return KeepError(handle != INVALID_HANDLE_VALUE) == 0;
}

bool CMailslot::Create(const wchar_t* name, unsigned long maxMessageSize, unsigned long readTimeout,
                       SECURITY_ATTRIBUTES* attributes) {
    wchar_t path[kPathSize];
    if (name != nullptr) tessel::JoinPath(path, {L"\\\\.\\mailslot\\", name});
    if (!KeepName(name)) return false;
    LetGo();
    m_bReadingEnd = TRUE;
    return Keep(CreateMailslotW(path, maxMessageSize, readTimeout, attributes));
}

bool CMailslot::Open(const wchar_t* name, const wchar_t* server) {
    wchar_t path[kPathSize];
    if (server == nullptr) name = nullptr;
    if (name != nullptr) tessel::JoinPath(path, {L"\\\\", server, L"\\mailslot\\", name});
    if (!KeepName(name)) return false;
    LetGo();
    m_bReadingEnd = FALSE;
    return Keep(CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool CMailslot::Read(unsigned char* buffer, unsigned long size, unsigned long* read, void* event) {
    m_bPending = FALSE;
    if (event != nullptr) {
        m_Overlapped = OVERLAPPED{};
        m_Overlapped.hEvent = event;
        if (!ResetEvent(event)) {
            (void)KeepError(false);
            return false;
        }
    }
    DWORD got = 0;
    const bool done = ReadFile(m_hMailslot, buffer, size, &got, event != nullptr ? &m_Overlapped : nullptr) != 0;
    (void)KeepError(done);
    if (read != nullptr) *read = got; // GUARD-09
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
    (void)KeepError(done);
    if (m_ulLastError == ERROR_IO_INCOMPLETE) m_ulLastError = ERROR_IO_PENDING;
    if (done && transferred != nullptr) *transferred = count;
    if (m_ulLastError == 0) m_bPending = FALSE; // a failed read is asked about again
    return m_ulLastError;
}

unsigned long CMailslot::GetInfo(unsigned long* maxMessageSize, unsigned long* nextSize, unsigned long* count,
                                 unsigned long* readTimeout) {
    return KeepError(GetMailslotInfo(m_hMailslot, maxMessageSize, nextSize, count, readTimeout) != 0);
}

unsigned long CMailslot::SetInfo(unsigned long readTimeout) {
    return KeepError(SetMailslotInfo(m_hMailslot, readTimeout) != 0);
}

// ODD-104: a read that was pending still counts as pending, and its status hides the result of closing.
bool CMailslot::Close() {
    tessel::CancelOverlapped(m_hMailslot, m_Overlapped);
    const bool closed = tessel::ReleaseHandle(m_hMailslot);
    (void)KeepError(closed);
    m_hMailslot = INVALID_HANDLE_VALUE;
    return closed;
}
