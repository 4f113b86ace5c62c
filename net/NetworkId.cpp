#include <foundation/SlimLock.h>
#include <system/RegistryKey.h>
#include <tessel/foundation/status.h>
#include <tessel/foundation/strings.h>
#include <tessel/net/etheraddr.h>
#include <tessel/net/networkid.h>

#include <cwchar>
#include <iterator>

namespace {

using tessel::RegistryKey;
using tessel::SlimLock;

constexpr wchar_t kHostKey[] = L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr wchar_t kLogonKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon";
constexpr wchar_t kPunctuation[] = L"!@#$%^&()-_'{}.~";

constexpr unsigned long kNameRoom = MAX_COMPUTERNAME_LENGTH + 1;
SRWLOCK nextBootLock = SRWLOCK_INIT;
wchar_t nextBootName[kNameRoom];

void StoreFirstName() {
    const SlimLock lock(nextBootLock);
    if (nextBootName[0] != L'\0') return;
    DWORD size = kNameRoom;
    if (!GetComputerNameW(nextBootName, &size)) nextBootName[0] = L'\0'; // the next object tries again
}

void StoreName(const wchar_t* name) {
    const SlimLock lock(nextBootLock);
    (void)CopyString(nextBootName, name, kNameRoom); // GUARD-83: a longer name is truncated
}

bool IsNameCharacter(wchar_t character) {
    return IsCharAlphaNumericW(character) != 0 || std::wcschr(kPunctuation, character) != nullptr;
}

} // namespace

CNetworkId::CNetworkId() : m_szAdapterKey{}, m_ulDhcp(0), m_Registry() {
    wchar_t service[CEtherAddr::SERVICE_NAME_SIZE];
    CEtherAddr().GetServiceName(service);
    // It fits: a service name has up to 63 characters.
    (void)std::swprintf(m_szAdapterKey, std::size(m_szAdapterKey),
                        L"SYSTEM\\CurrentControlSet\\Services\\%ls\\Parameters\\Tcpip", service);
    const RegistryKey adapter(m_Registry, HKEY_LOCAL_MACHINE, m_szAdapterKey);
    unsigned long dhcp = 0;
    if (adapter.Read(L"EnableDHCP") && m_Registry.GetData(dhcp) == STATUS_OK) m_ulDhcp = dhcp;
    StoreFirstName();
}

unsigned long CNetworkId::GetComputerNameW(wchar_t* out, unsigned long* size) {
    if (size == nullptr || (out == nullptr && *size != 0)) return ERROR_INVALID_PARAMETER; // GUARD-09
    return ::GetComputerNameW(out, size) ? STATUS_OK : GetLastError();
}

unsigned long CNetworkId::GetComputerNameAtNextBoot(wchar_t* out, unsigned long* size) {
    if (size == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-09
    const SlimLock lock(nextBootLock);
    const auto needed = static_cast<unsigned long>(std::wcslen(nextBootName)) + 1;
    if (out != nullptr && *size != 0) (void)CopyString(out, nextBootName, *size); // the result shows truncation
    const unsigned long result = needed > *size ? ERROR_BUFFER_OVERFLOW : STATUS_OK;
    *size = needed;
    return result;
}

unsigned long CNetworkId::SetComputerNameW(const wchar_t* name) {
    if (name == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-09
    StoreName(name);                                     // ODD-94: even if the system refuses the name
    if (!::SetComputerNameW(name)) return GetLastError();
    SaveName(kHostKey, L"Hostname", name);
    SaveName(kLogonKey, L"DefaultDomainName", name); // ODD-95: even if the machine is in a domain
    return STATUS_OK;
}

void CNetworkId::SaveName(const wchar_t* path, const wchar_t* value, const wchar_t* name) {
    const RegistryKey key(m_Registry, HKEY_LOCAL_MACHINE, path);
    (void)key.Read(value); // only for its type; a missing value is created
    key.SaveText(value, name);
}

VN_RET_CODE CNetworkId::ValidateName(const wchar_t* name) {
    if (name == nullptr || *name == L'\0') return VN_EMPTY; // GUARD-09
    while (*name != L'\0' && IsNameCharacter(*name)) ++name;
    if (*name == L'\0') return VN_VALID;
    return *name == L' ' ? VN_SPACE : VN_BAD_CHAR;
}

VI_RET_CODE CNetworkId::ValidateIpAddr(unsigned long address, unsigned long mask) {
    const unsigned long hostBits = ~mask;
    const bool contiguous = (hostBits & (hostBits + 1)) == 0;
    if (mask == 0 || hostBits == 0 || !contiguous) return VI_BAD_MASK;
    return (address & hostBits) == 0 ? VI_NO_HOST_PART : VI_VALID;
}
