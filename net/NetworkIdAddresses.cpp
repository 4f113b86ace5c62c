#include <foundation/Launcher.h>
#include <net/DottedText.h>
#include <system/RegistryKey.h>
#include <tessel/foundation/status.h>
#include <tessel/net/networkid.h>

#include <cstddef>
#include <cwchar>
#include <iterator>
#include <utility>

namespace {

using tessel::RegistryKey;

constexpr std::size_t kValueNameRoom = 32;
constexpr std::size_t kCommandLineRoom = 512;
constexpr wchar_t kIpAddress[] = L"IpAddress";
constexpr wchar_t kSubnetMask[] = L"SubnetMask";
constexpr wchar_t kDefaultGateway[] = L"DefaultGateway";

/// Runs a program without a window for up to 5 seconds.
/// @return its exit code; 259 when it could not be started or was terminated
DWORD Run(wchar_t* commandLine) {
    constexpr DWORD kTimeoutMs = 5000;
    DWORD exitCode = STILL_ACTIVE;
    (void)tessel::RunHidden(commandLine, nullptr, kTimeoutMs, exitCode); // a failure leaves the code as it was
    return exitCode;
}

} // namespace

void CNetworkId::SetDhcpSetting(bool on) {
    m_ulDhcp = on ? 1 : 0;
    RegistryKey(m_Registry, HKEY_LOCAL_MACHINE, m_szAdapterKey).Save(L"EnableDhcp", m_ulDhcp);
}

void CNetworkId::GetIpAddr(const wchar_t* name, wchar_t* out) {
    if (out == nullptr) return; // GUARD-09
    wchar_t value[kValueNameRoom] = L"";
    if (m_ulDhcp != 0) (void)std::wcscpy(value, L"Dhcp");
    (void)std::wcscat(value, name);
    const RegistryKey adapter(m_Registry, HKEY_LOCAL_MACHINE, m_szAdapterKey);
    if (!adapter.Read(value)) return; // ODD-98: the text stays as it was
    if (m_Registry.GetData(out, ADDRESS_SIZE, 0) != STATUS_OK) (void)std::wcscpy(out, L"0.0.0.0");
}

unsigned long CNetworkId::GetIpAddr(const wchar_t* name) {
    wchar_t text[ADDRESS_SIZE] = L"";
    GetIpAddr(name, text);
    unsigned long address = 0;
    const wchar_t* rest = text;
    // ODD-96: a number over 255 carries into the one before it.
    for (int octet = 0; octet < tessel::kOctets; ++octet) address = (address << 8) + tessel::NextNumber(rest);
    return address;
}

unsigned long CNetworkId::GetIpAddr(const wchar_t* name, int dhcp) {
    const unsigned long setting = std::exchange(m_ulDhcp, static_cast<unsigned long>(dhcp));
    const unsigned long address = GetIpAddr(name);
    m_ulDhcp = setting;
    return address;
}

void CNetworkId::SetIpAddr(const wchar_t* name, const wchar_t* text) {
    if (text == nullptr) return; // GUARD-09
    const RegistryKey adapter(m_Registry, HKEY_LOCAL_MACHINE, m_szAdapterKey);
    if (!adapter.Read(name)) return; // ODD-97: a missing value is not created
    m_Registry.SetType(CReg::TYPE_MULTI_STRING);
    adapter.SaveText(name, text);
}

void CNetworkId::GetIpAddress(wchar_t* out) {
    GetIpAddr(kIpAddress, out);
}

void CNetworkId::GetSubnetMask(wchar_t* out) {
    GetIpAddr(kSubnetMask, out);
}

void CNetworkId::GetDefGateway(wchar_t* out) {
    GetIpAddr(kDefaultGateway, out);
}

unsigned long CNetworkId::GetIpAddress() {
    return GetIpAddr(kIpAddress);
}

unsigned long CNetworkId::GetSubnetMask() {
    return GetIpAddr(kSubnetMask);
}

unsigned long CNetworkId::GetDefGateway() {
    return GetIpAddr(kDefaultGateway);
}

unsigned long CNetworkId::GetIpAddress(int dhcp) {
    return GetIpAddr(kIpAddress, dhcp);
}

unsigned long CNetworkId::GetSubnetMask(int dhcp) {
    return GetIpAddr(kSubnetMask, dhcp);
}

unsigned long CNetworkId::GetDefGateway(int dhcp) {
    return GetIpAddr(kDefaultGateway, dhcp);
}

void CNetworkId::SetIpAddress(const wchar_t* text) {
    SetIpAddr(kIpAddress, text);
}

void CNetworkId::SetSubnetMask(const wchar_t* text) {
    SetIpAddr(kSubnetMask, text);
}

void CNetworkId::SetDefGateway(const wchar_t* text) {
    SetIpAddr(kDefaultGateway, text);
}

void CNetworkId::ReleaseDhcp() {
    RunIpConfig(L"/release");
}

void CNetworkId::RenewDhcp() {
    RunIpConfig(L"/renew");
}

void CNetworkId::RunIpConfig(const wchar_t* arguments) {
    wchar_t line[kCommandLineRoom];
    const DWORD length =
        ExpandEnvironmentStringsW(L"%SystemRoot%\\System32\\IpConfig.exe ", line, static_cast<DWORD>(std::size(line)));
    // GUARD-87: an incomplete command line is not run.
    if (length == 0 || length + std::wcslen(arguments) > std::size(line)) return;
    (void)Run(std::wcscat(line, arguments)); // the operation has no result
}
