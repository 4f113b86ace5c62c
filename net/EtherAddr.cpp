#include <foundation/Handle.h>
#include <foundation/Report.h>
#include <system/RegistryKey.h>
#include <tessel/foundation/status.h>
#include <tessel/net/etheraddr.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <iterator>

namespace {

using tessel::RegistryKey;
using tessel::ReportUnless;

using ServiceName = wchar_t[CEtherAddr::SERVICE_NAME_SIZE];

constexpr unsigned long kFailed = 1;
constexpr wchar_t kDevicePrefix[] = L"\\\\.\\";
constexpr wchar_t kTargetPrefix[] = L"\\Device\\";
constexpr wchar_t kCards[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
constexpr std::size_t kTargetRoom = 1024;
constexpr std::size_t kAnswerRoom = 4096;
constexpr unsigned long kKeyNameRoom = 256; // a key's name has up to 255 characters
constexpr tessel::ReportSite kNoServiceName{"EthAddr", 91};
constexpr DWORD kQueryGlobalStats = 0x00170002; // IOCTL_NDIS_QUERY_GLOBAL_STATS
constexpr DWORD kCurrentAddress = 0x01010102;   // OID_802_3_CURRENT_ADDRESS

bool ReadServiceName(CReg& registry, HKEY cards, const wchar_t* card, ServiceName& name) {
    const RegistryKey key(registry, cards, card);
    if (key.Read(L"ServiceName") && registry.GetData(name, CEtherAddr::SERVICE_NAME_SIZE, 0) == STATUS_OK) return true;
    name[0] = L'\0';
    return false;
}

/// Finds the first card whose name can be read.
bool FindServiceName(ServiceName& name) {
    CReg registry;
    const RegistryKey cards(registry, HKEY_LOCAL_MACHINE, kCards);
    wchar_t card[kKeyNameRoom];
    if (cards.Get() == nullptr || registry.FindFirstKey(cards.Get(), card, kKeyNameRoom) != ERROR_SUCCESS) return false;
    bool found = false;
    do {
        found = ReadServiceName(registry, cards.Get(), card, name);
    } while (!found && registry.FindNextKey(card) == ERROR_SUCCESS);
    ReportUnless(found, "status == STATUS_OK", kNoServiceName);
    return found;
}

/// Defines the device name of a card unless it is defined.
/// @param defined  becomes true when the name was defined here and must be removed again
bool DefineName(const wchar_t* name, const wchar_t* target, bool& defined) {
    wchar_t current[kTargetRoom];
    if (QueryDosDeviceW(name, current, std::size(current)) != 0) return true;
    if (GetLastError() != ERROR_FILE_NOT_FOUND) return false;
    defined = DefineDosDeviceW(DDD_RAW_TARGET_PATH, name, target) != 0;
    return defined;
}

bool RemoveName(const wchar_t* name, const wchar_t* target) {
    constexpr DWORD kRemoval = DDD_RAW_TARGET_PATH | DDD_REMOVE_DEFINITION | DDD_EXACT_MATCH_ON_REMOVE;
    return DefineDosDeviceW(kRemoval, name, target) != 0;
}

/// Queries the address of an open driver.
/// @param out  receives 6 bytes, if the driver returns exactly as many
bool QueryAddress(HANDLE driver, unsigned char* out) {
    constexpr DWORD kAddressSize = 6;
    DWORD object = kCurrentAddress;
    unsigned char answer[kAnswerRoom];
    DWORD length = 0;
    if (!DeviceIoControl(driver, kQueryGlobalStats, &object, sizeof object, answer, sizeof answer, &length, nullptr) ||
        length != kAddressSize) {
        return false;
    }
    std::copy_n(answer, kAddressSize, out);
    return true;
}

bool QueryCard(const wchar_t* name, unsigned char* out) {
    wchar_t path[std::size(kDevicePrefix) + CEtherAddr::SERVICE_NAME_SIZE];
    (void)std::wcscpy(path, kDevicePrefix);
    const tessel::Handle driver(CreateFileW(std::wcscat(path, name), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            nullptr, OPEN_EXISTING, 0, nullptr));
    return driver && QueryAddress(driver.Get(), out);
}

} // namespace

CEtherAddr::CEtherAddr() : m_aBinary{}, m_szText{}, m_szServiceName{} {
    m_ulStatus = GetEthernetAddress(m_aBinary);
    if (m_ulStatus != STATUS_OK) {
        std::fill(std::begin(m_aBinary), std::end(m_aBinary), static_cast<unsigned char>(0));
        return;
    }
    constexpr std::size_t kHexDigits = 2;
    wchar_t* digits = m_szText;
    for (const unsigned char byte : m_aBinary) {
        (void)std::swprintf(digits, kHexDigits + 1, L"%02.2X", byte); // always fits
        digits += kHexDigits;
    }
}

unsigned long CEtherAddr::GetEthernetAddress(unsigned char* out) {
    if (!FindServiceName(m_szServiceName)) return kFailed;
    wchar_t target[std::size(kTargetPrefix) + SERVICE_NAME_SIZE];
    (void)std::wcscpy(target, kTargetPrefix);
    (void)std::wcscat(target, m_szServiceName);
    bool defined = false;
    bool read = DefineName(m_szServiceName, target, defined) && QueryCard(m_szServiceName, out);
    // ODD-93: when the name cannot be removed, an address that was read is dropped.
    if (defined && !RemoveName(m_szServiceName, target)) read = false;
    return read ? STATUS_OK : kFailed;
}

void CEtherAddr::GetBinary(unsigned char* out) const {
    if (out != nullptr) std::copy(std::begin(m_aBinary), std::end(m_aBinary), out); // GUARD-09
}

void CEtherAddr::GetText(wchar_t* out) const {
    if (out != nullptr) (void)std::wcscpy(out, m_szText); // GUARD-09
}

unsigned int CEtherAddr::GetServiceNameLen() const {
    return static_cast<unsigned int>(std::wcslen(m_szServiceName));
}

void CEtherAddr::GetServiceName(wchar_t* out) const {
    if (out != nullptr) (void)std::wcscpy(out, m_szServiceName); // GUARD-09
}
