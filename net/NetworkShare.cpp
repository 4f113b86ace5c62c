#include <foundation/Report.h>
#include <foundation/SharedOwners.h>
#include <tessel/net/networkshare.h>

#include <winnetwk.h>

#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <new>

struct CNetworkShareLayout {
    static_assert(offsetof(CNetworkShare, m_szConnection) == sizeof(void*));
    static_assert(offsetof(CNetworkShare, m_bCloseOnDestruction) == 2 * sizeof(void*));
};

namespace {

void Release(wchar_t* name) {
    if (name != nullptr && tessel::RemoveOwner(name)) std::free(name);
}

/// Whether a local name leads to that share already.
bool LeadsTo(const wchar_t* localName, const wchar_t* remoteName) {
    auto length = static_cast<DWORD>(std::wcslen(remoteName)) + 1;
    const std::unique_ptr<wchar_t[]> behind(new (std::nothrow) wchar_t[length]{});
    if (behind == nullptr || WNetGetConnectionW(localName, behind.get(), &length) != NO_ERROR) return false;
    return CompareStringOrdinal(behind.get(), -1, remoteName, -1, TRUE) == CSTR_EQUAL;
}

unsigned long Connect(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password, wchar_t* localName) {
    NETRESOURCEW resource{};
    resource.dwType = localName != nullptr ? RESOURCETYPE_DISK : RESOURCETYPE_ANY;
    resource.lpLocalName = localName;
    resource.lpRemoteName = remoteName;
    unsigned long status = WNetAddConnection2W(&resource, password, userName, 0);
    if (status == ERROR_ALREADY_ASSIGNED && localName != nullptr && LeadsTo(localName, remoteName)) status = 0;
    tessel::ReportUnless(status != ERROR_NO_SUCH_LOGON_SESSION, "Status != ERROR_NO_SUCH_LOGON_SESSION", "NetworkShare",
                         68);
    return status != ERROR_NO_SUCH_LOGON_SESSION ? status : 0; // ODD-91: counts as connected
}

} // namespace

CNetworkShare::CNetworkShare(bool closeOnDestruction)
    : m_szConnection(nullptr), m_bCloseOnDestruction(closeOnDestruction) {}

// GUARD-79: copies hold the name by value, where each freeing it would do so twice.
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
    if (m_bCloseOnDestruction) (void)Close(); // nobody is left to be told
    Release(m_szConnection);
}

unsigned long CNetworkShare::Open(wchar_t* remoteName, const wchar_t* userName, const wchar_t* password,
                                  wchar_t* localName) {
    if (m_szConnection != nullptr) return ERROR_ALREADY_ASSIGNED;
    if (remoteName == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-09
    // Made first: a connection without its name could not be cancelled.
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
    if (status == 0) (void)Close(); // the question was whether it can be opened
    return status;
}

unsigned long CNetworkShare::Close() {
    // ODD-92: the name is kept, so the object stays marked as connected
    return m_szConnection != nullptr ? WNetCancelConnection2W(m_szConnection, 0, FALSE) : 0;
}
