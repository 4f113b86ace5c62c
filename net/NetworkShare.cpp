#include <foundation/Report.h>
#include <foundation/SharedOwners.h>
#include <tessel/net/networkshare.h>

#include <winnetwk.h>

#include <cstdlib>
#include <cwchar>
#include <memory>
#include <new>

namespace {

constexpr tessel::ReportSite kNoLogonSession{"NetworkShare", 68};

void Release(wchar_t* name) {
    if (name != nullptr && tessel::RemoveOwner(name)) std::free(name);
}

/// Whether a local name is connected to a share.
bool IsConnectedTo(const wchar_t* localName, const wchar_t* remoteName) {
    auto length = static_cast<DWORD>(std::wcslen(remoteName)) + 1;
    const std::unique_ptr<wchar_t[]> current(new (std::nothrow) wchar_t[length]{});
    if (current == nullptr || WNetGetConnectionW(localName, current.get(), &length) != NO_ERROR) return false;
    return CompareStringOrdinal(current.get(), -1, remoteName, -1, TRUE) == CSTR_EQUAL;
}

unsigned long Connect(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password, wchar_t* localName) {
    NETRESOURCEW resource{};
    resource.dwType = localName != nullptr ? RESOURCETYPE_DISK : RESOURCETYPE_ANY;
    resource.lpLocalName = localName;
    resource.lpRemoteName = remoteName;
    unsigned long status = WNetAddConnection2W(&resource, password, userName, 0);
    if (status == ERROR_ALREADY_ASSIGNED && localName != nullptr && IsConnectedTo(localName, remoteName)) status = 0;
    tessel::ReportUnless(status != ERROR_NO_SUCH_LOGON_SESSION, "Status != ERROR_NO_SUCH_LOGON_SESSION",
                         kNoLogonSession);
    return status != ERROR_NO_SUCH_LOGON_SESSION ? status : 0; // ODD-91: counts as connected
}

} // namespace

CNetworkShare::CNetworkShare(bool closeOnDestruction)
    : m_szConnection(nullptr), m_bCloseOnDestruction(closeOnDestruction) {}

// GUARD-79: copies hold the name by value; each would free it.
CNetworkShare::CNetworkShare(const CNetworkShare& other)
    : m_szConnection(tessel::Share(other.m_szConnection)), m_bCloseOnDestruction(other.m_bCloseOnDestruction) {}

CNetworkShare& CNetworkShare::operator=(const CNetworkShare& other) {
    if (this == &other) return *this;
    Release(m_szConnection);
    m_szConnection = tessel::Share(other.m_szConnection);
    m_bCloseOnDestruction = other.m_bCloseOnDestruction;
    return *this;
}

CNetworkShare::~CNetworkShare() {
    if (m_bCloseOnDestruction) (void)Close(); // a destructor has no result
    Release(m_szConnection);
}

unsigned long CNetworkShare::Open(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password,
                                  wchar_t* localName) {
    if (m_szConnection != nullptr) return ERROR_ALREADY_ASSIGNED;
    if (remoteName == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-09
    // Copied first: a connection whose name is lost could not be cancelled.
    wchar_t* const name = _wcsdup(localName != nullptr ? localName : remoteName);
    if (name == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    const unsigned long status = Connect(remoteName, userName, password, localName);
    if (status == 0) {
        m_szConnection = name;
    } else {
        std::free(name);
    }
    return status;
}

unsigned long CNetworkShare::Test(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password) {
    if (remoteName == nullptr) return ERROR_INVALID_PARAMETER;
    const unsigned long status = Open(remoteName, userName, password, nullptr);
    if (status == 0) (void)Close(); // the result is that of opening
    return status;
}

unsigned long CNetworkShare::Close() {
    // ODD-92: the name is kept, so the object still counts as connected
    return m_szConnection != nullptr ? WNetCancelConnection2W(m_szConnection, 0, FALSE) : 0;
}
