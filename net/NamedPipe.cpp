#include <foundation/SharedHandle.h>
#include <net/ChannelPath.h>
#include <net/Overlapped.h>
#include <tessel/net/namedpipe.h>

#include <algorithm>
#include <iterator>

namespace {

constexpr DWORD kBufferSize = 4096;

constexpr struct {
    DWORD clientAccess;
    DWORD serverDirection;
} kModes[] = {
    {GENERIC_READ, PIPE_ACCESS_INBOUND},
    {GENERIC_WRITE, PIPE_ACCESS_OUTBOUND},
    {GENERIC_READ | GENERIC_WRITE, PIPE_ACCESS_DUPLEX},
};

bool IsMode(CClientNamedPipe::MODE mode) {
    return mode >= CClientNamedPipe::MODE_READ && mode <= CClientNamedPipe::MODE_READ_WRITE;
}

} // namespace

CClientNamedPipe::CClientNamedPipe(const wchar_t* name)
    : m_szName{}, m_szPath{}, m_ulStatus(PIPE_CLOSED), m_hPipe(INVALID_HANDLE_VALUE),
      m_bOverlapped(false), m_Overlapped{}, m_pOverlapped(nullptr), m_bPending(false) {
    if (name != nullptr) tessel::JoinPath(m_szName, {name}); // GUARD-78: truncated to 19 characters
}

CClientNamedPipe::CClientNamedPipe(const CClientNamedPipe& other) {
    ShareWith(other);
}

CClientNamedPipe& CClientNamedPipe::operator=(const CClientNamedPipe& other) {
    if (this == &other) return *this;
    tessel::CancelOverlapped(m_hPipe, m_Overlapped);
    if (tessel::IsHandle(m_hPipe)) (void)tessel::RemoveOwner(m_hPipe); // ODD-22: left open
    ShareWith(other);
    return *this;
}

CClientNamedPipe::~CClientNamedPipe() {
    Reset();
    m_pOverlapped = nullptr;
}

// GUARD-76: copies hold the handle by value; each would close it, and point to the record of another object.
void CClientNamedPipe::ShareWith(const CClientNamedPipe& other) {
    std::copy(std::begin(other.m_szName), std::end(other.m_szName), m_szName);
    std::copy(std::begin(other.m_szPath), std::end(other.m_szPath), m_szPath);
    m_ulStatus = other.m_ulStatus;
    m_hPipe = tessel::Share(other.m_hPipe, INVALID_HANDLE_VALUE);
    m_bOverlapped = other.m_bOverlapped;
    m_Overlapped = other.m_Overlapped;
    m_pOverlapped = other.m_pOverlapped != nullptr ? &m_Overlapped : nullptr;
    m_bPending = other.m_bPending;
}

void CClientNamedPipe::Reset() {
    tessel::CancelOverlapped(m_hPipe, m_Overlapped);
    (void)GetStatus(); // a server that is reopened keeps the status of the cancelled operation
    m_bPending = false;
    if (tessel::IsHandle(m_hPipe)) (void)tessel::ReleaseHandle(m_hPipe); // opened by this class, so it can be closed
    m_hPipe = INVALID_HANDLE_VALUE;
}

bool CClientNamedPipe::Open(const wchar_t* server, MODE mode, bool overlapped) {
    if (!IsMode(mode) || server == nullptr) return false;
    Reset();
    m_bOverlapped = overlapped;
    tessel::JoinPath(m_szPath, {L"\\\\", server, L"\\PIPE\\", m_szName}); // GUARD-78: truncated to 259 characters
    m_hPipe = CreateFileW(m_szPath, kModes[mode].clientAccess, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_EXISTING, overlapped ? FILE_FLAG_OVERLAPPED : FILE_ATTRIBUTE_NORMAL, nullptr);
    m_ulStatus = m_hPipe != INVALID_HANDLE_VALUE ? PIPE_CONNECTED : GetLastError();
    return m_ulStatus == PIPE_CONNECTED;
}

OVERLAPPED* CClientNamedPipe::Prepare(void* event) {
    m_pOverlapped = nullptr;
    if (!m_bOverlapped) return nullptr;
    m_Overlapped = OVERLAPPED{};
    m_Overlapped.hEvent = event;
    return m_pOverlapped = &m_Overlapped;
}

bool CClientNamedPipe::RecordStart(bool succeeded) {
    m_ulStatus = succeeded ? PIPE_CONNECTED : GetLastError();
    m_bPending = m_ulStatus == ERROR_IO_PENDING; // an operation that ended at once is not in the record
    return succeeded; // ODD-88: false for an overlapped transfer that has started, unlike CMailslot
}

bool CClientNamedPipe::Read(void* buffer, unsigned int size, void* event) {
    DWORD read = 0;
    return RecordStart(ReadFile(m_hPipe, buffer, size, &read, Prepare(event)) != 0);
}

bool CClientNamedPipe::Write(const void* buffer, unsigned int size, void* event) {
    DWORD written = 0;
    return RecordStart(WriteFile(m_hPipe, buffer, size, &written, Prepare(event)) != 0);
}

unsigned long CClientNamedPipe::GetStatus() {
    if (!m_bOverlapped || !m_bPending) return m_ulStatus;
    DWORD transferred = 0;
    const bool done = GetOverlappedResult(m_hPipe, &m_Overlapped, &transferred, FALSE) != 0;
    const DWORD error = done ? ERROR_PIPE_CONNECTED : GetLastError();
    switch (error) {
    case ERROR_PIPE_CONNECTED: m_ulStatus = PIPE_CONNECTED; break;
    case ERROR_PIPE_LISTENING: m_ulStatus = PIPE_LISTENING; break;
    case ERROR_IO_INCOMPLETE: m_ulStatus = ERROR_IO_PENDING; break;
    default: m_ulStatus = error;
    }
    if (m_ulStatus == PIPE_CONNECTED) m_bPending = false; // after a failure the next call asks again
    return m_ulStatus;
}

// ODD-104: a pending operation stays pending, and its status hides PIPE_CLOSED.
void CClientNamedPipe::Close() {
    m_ulStatus = PIPE_CLOSED;
    tessel::CancelOverlapped(m_hPipe, m_Overlapped);
    (void)tessel::ReleaseHandle(m_hPipe); // fails when it is closed already
    m_hPipe = INVALID_HANDLE_VALUE;
}

CServerNamedPipe::CServerNamedPipe(const wchar_t* name) : CClientNamedPipe(name) {}

CServerNamedPipe::~CServerNamedPipe() = default;

bool CServerNamedPipe::Open(CClientNamedPipe::MODE mode, bool overlapped) {
    if (!IsMode(mode)) return false;
    Reset();
    m_bOverlapped = overlapped;
    if (!overlapped) m_pOverlapped = nullptr;
    tessel::JoinPath(m_szPath, {L"\\\\.\\PIPE\\", m_szName});
    m_hPipe = CreateNamedPipeW(m_szPath, kModes[mode].serverDirection | (overlapped ? FILE_FLAG_OVERLAPPED : 0),
                               PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, PIPE_UNLIMITED_INSTANCES,
                               kBufferSize, kBufferSize, INFINITE, nullptr);
    const bool created = m_hPipe != INVALID_HANDLE_VALUE;
    if (!created) m_ulStatus = GetLastError(); // ODD-89: success leaves the status unchanged, even an error
    return created;
}

void CServerNamedPipe::AwaitConnection(void* event) {
    m_ulStatus = PIPE_LISTENING;
    (void)RecordStart(ConnectNamedPipe(m_hPipe, Prepare(event)) != 0); // the result is in the status
}

void CServerNamedPipe::Close() {
    if ((m_ulStatus & PIPE_CONNECTED) != 0) CloseInstance(); // ODD-90: also after an error that has one of these bits
    CClientNamedPipe::Close();
}

void CServerNamedPipe::CloseInstance() {
    (void)FlushFileBuffers(m_hPipe);    // fails without a client
    (void)DisconnectNamedPipe(m_hPipe); // likewise
    m_ulStatus = PIPE_CLOSED;
}
