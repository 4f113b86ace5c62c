#include "NetworkCard.h"

#include <gtest/gtest.h>
#include <tessel/net/networkid.h>

#include <cstdlib>
#include <tuple>

using namespace std::literals;

namespace {

constexpr wchar_t kAdapter[] = L"SYSTEM\\CurrentControlSet\\Services\\net1\\Parameters\\Tcpip";
constexpr wchar_t kHost[] = L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr wchar_t kLogon[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon";

struct NetworkIdTest : NetworkCardTest {
    NetworkIdTest() {
        AddCard(L"1", REG_SZ, L"net1\0"sv);
        SetAdapter(L"EnableDHCP", L"\1\0"sv, REG_DWORD);
    }
    void SetAdapter(const wchar_t* value, std::wstring_view data, DWORD type = REG_MULTI_SZ) {
        machine.Set(kAdapter, value, type, data);
    }
};

} // namespace

TEST_F(NetworkIdTest, NameAtTheNextBootStartsAsTheNameOfNow) {
    machine.Set(L"System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName", L"ComputerName", REG_SZ,
                L"LAB-7\0"sv); // Wine looks for the name here
    CNetworkId identity;
    wchar_t now[16], next[16];
    unsigned long size = 16, nextSize = 16;
    EXPECT_EQ(identity.GetComputerNameW(now, &size), 0U);
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(next, &nextSize), 0U);
    EXPECT_STREQ(next, now);
    EXPECT_EQ(nextSize, size + 1);
    size = 1;
    EXPECT_EQ(identity.GetComputerNameW(now, &size), DWORD{ERROR_BUFFER_OVERFLOW});
}

TEST_F(NetworkIdTest, Odd94And95NameIsNotedBeforeTheSystemIsAskedAndThenWrittenAsTheDefaultDomain) {
    CNetworkId identity;
    wchar_t next[16] = L"unset";
    unsigned long size = 4;
    const ImportPatch refusing(Failing("SetComputerNameW", &::SetComputerNameW, FALSE, ERROR_ACCESS_DENIED));
    EXPECT_EQ(identity.SetComputerNameW(L"WORKSTATION"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(next, &size), 111U);
    EXPECT_STREQ(next, L"WOR");
    EXPECT_EQ(size, 12U);
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(next, &size), 0U);
    EXPECT_STREQ(next, L"WORKSTATION");

    const ImportPatch accepting(Failing("SetComputerNameW", &::SetComputerNameW, TRUE));
    machine.Set(kHost, L"Hostname", REG_SZ, L"OLD\0"sv);
    machine.Set(kLogon, L"DefaultDomainName", REG_MULTI_SZ, L"OLD\0\0"sv); // read as a list, written as one
    EXPECT_EQ(identity.SetComputerNameW(L"A-NAME-OF-SEVENTEEN"), 0U);
    EXPECT_EQ(machine.Get(kHost, L"Hostname"), L"1:A-NAME-OF-SEVENTEEN\0"sv);
    EXPECT_EQ(machine.Get(kLogon, L"DefaultDomainName"), L"7:A-NAME-OF-SEVENTEEN\0\0"sv);
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(nullptr, &size), 111U);
    EXPECT_EQ(size, 16U);
    EXPECT_EQ(reports.Take(), Texts{});
}

TEST_F(NetworkIdTest, NamesAreValidatedUpToTheFirstBadCharacterAndAddressesAgainstContiguousMasks) {
    CNetworkId identity;
    for (const wchar_t* const none : {L"", LPCWSTR{}}) EXPECT_EQ(identity.ValidateName(none), VN_EMPTY);
    EXPECT_EQ(identity.ValidateName(L"PC 1"), VN_SPACE);
    EXPECT_EQ(identity.ValidateName(L"PC*1 2"), VN_BAD_CHAR);
    EXPECT_EQ(identity.ValidateName(L"aZ9!@#$%^&()-_'{}.~"), VN_VALID);
    EXPECT_EQ(identity.ValidateIpAddr(0x0A000000, 0xFF000000), VI_NO_HOST_PART);
    for (const unsigned long mask : {0xFF00FF00UL, 0xFFFFFFFFUL, 0UL}) {
        EXPECT_EQ(identity.ValidateIpAddr(0x0A000001, mask), VI_BAD_MASK) << mask;
    }
    for (const unsigned long mask : {0xFF000000UL, 0xFFFFFFFEUL, 0x80000000UL}) {
        EXPECT_EQ(identity.ValidateIpAddr(0x0AFFFFFF, mask), VI_VALID) << mask;
    }
}

TEST_F(NetworkIdTest, Odd98DhcpDecidesWhichValuesAreReadAndMissingOnesLeaveTheTextAlone) {
    SetAdapter(L"IpAddress", L"10.0.0.1\0"s + std::wstring(120, L'2') + L"\0\0"s);
    SetAdapter(L"DhcpIpAddress", L"192.168.0.7\0"sv, REG_SZ);
    SetAdapter(L"SubnetMask", L"255.255.0.0\0\0"sv);
    SetAdapter(L"DhcpDefaultGateway", L"192.168.0.1\0\0"sv);
    CNetworkId identity;
    wchar_t text[CNetworkId::ADDRESS_SIZE];
    identity.GetIpAddress(text);
    EXPECT_STREQ(text, L"192.168.0.7");
    identity.GetSubnetMask(text);
    EXPECT_STREQ(text, L"192.168.0.7") << "missing";
    EXPECT_EQ(identity.GetIpAddress(0), 0x0A000001U);
    EXPECT_EQ(identity.GetSubnetMask(0), 0xFFFF0000U);
    EXPECT_EQ(identity.GetDefGateway(), 0xC0A80001U) << "the setting is on again";
    identity.GetDefGateway(text);
    EXPECT_STREQ(text, L"192.168.0.1");

    identity.SetDhcpSetting(false);
    EXPECT_EQ(machine.Get(kAdapter, L"EnableDHCP"), L"4:\0\0"sv);
    CNetworkId copy(identity);
    EXPECT_FALSE(copy.GetDhcpSetting());
    EXPECT_EQ(copy.GetIpAddress(), 0x0A000001U);
    EXPECT_EQ(copy.GetSubnetMask(), 0xFFFF0000U);
    EXPECT_EQ(copy.GetDefGateway(), 0U);
    EXPECT_EQ(copy.GetDefGateway(1), 0xC0A80001U);
    EXPECT_EQ(copy.GetIpAddress(1), 0xC0A80007U);
}

TEST_F(NetworkIdTest, Odd96PiecesCarryAndWhatIsNoAddressStaysInBounds) {
    CNetworkId identity;
    const std::tuple<DWORD, std::wstring_view, const wchar_t*, unsigned long> values[] = {
        {REG_SZ, L"10.0.0.300\0"sv, L"10.0.0.300", 0x0A00012C},
        {REG_SZ, L"10..1\0"sv, L"10..1", 0x0A010000},
        {REG_MULTI_SZ, L"1234.1234.1234.1\0\0"sv, L"0.0.0.0", 0}, // does not fit
        {REG_MULTI_SZ, L"1.2.3"sv, L"1.2.3", 0x01020300},         // without terminators
        {REG_MULTI_SZ, L""sv, L"", 0},
        {REG_DWORD, L"12"sv, L"0.0.0.0", 0},
        {REG_EXPAND_SZ, L"1.2.3.4\0"sv, L"0.0.0.0", 0},
    };
    for (const auto& [type, data, expected, number] : values) {
        SetAdapter(L"DhcpIpAddress", data, type);
        wchar_t text[CNetworkId::ADDRESS_SIZE + 1] = L"preset..........";
        identity.GetIpAddress(text);
        EXPECT_STREQ(text, expected);
        EXPECT_EQ(identity.GetIpAddress(), number) << expected;
    }
}

TEST_F(NetworkIdTest, Odd97OnlyFixedValuesThatAreThereAreSet) {
    SetAdapter(L"IpAddress", L"10.0.0.1\0\0"sv);
    SetAdapter(L"SubnetMask", L"255.0.0.0\0"sv, REG_SZ);
    CNetworkId identity;
    identity.SetIpAddress(L"10.0.0.9");
    identity.SetSubnetMask(L"255.255.255.0");
    identity.SetDefGateway(L"10.0.0.254");
    EXPECT_EQ(machine.Get(kAdapter, L"IpAddress"), L"7:10.0.0.9\0\0"sv);
    EXPECT_EQ(machine.Get(kAdapter, L"SubnetMask"), L"7:255.255.255.0\0\0"sv);
    const ImportPatch memory(Failing("calloc", &calloc, nullptr));
    CNetworkId(identity).SetDefGateway(L"10.0.0.254");
    EXPECT_EQ(machine.Get(kAdapter, L"DefaultGateway"), L"none");
}

TEST_F(NetworkIdTest, WorkgroupNameNeedsNoTerminatorAndIsSetWithoutASid) {
    CNetworkId identity;
    wchar_t name[64];
    wchar_t known[] = L"LABxxxx";
    POLICY_PRIMARY_DOMAIN_INFO domain{{3 * sizeof(wchar_t), 3 * sizeof(wchar_t), known}, nullptr};
    LONG result = 0;
    CallLog calls;
    const ImportPatch open(calls.Adding("LsaOpenPolicy", &LsaOpenPolicy, 0));
    const ImportPatch query("LsaQueryInformationPolicy", &LsaQueryInformationPolicy, [&](auto, auto kind, void** out) {
        calls.Add(L"get", static_cast<int>(kind));
        *out = &domain;
        return result;
    });
    const ImportPatch set("LsaSetInformationPolicy", &LsaSetInformationPolicy, [&](auto, auto kind, void* in) {
        const auto& [text, sid] = *static_cast<POLICY_PRIMARY_DOMAIN_INFO*>(in);
        calls.Add(L"set", static_cast<int>(kind), LPCWSTR{text.Buffer}, text.Length, text.MaximumLength, sid);
        return result;
    });
    const ImportPatch release(calls.Adding("LsaFreeMemory", &LsaFreeMemory, 0));
    const ImportPatch close(calls.Adding("LsaClose", &LsaClose, 0));
    EXPECT_EQ(identity.GetWorkgroupName(name), 0U);
    EXPECT_STREQ(name, L"LAB");
    EXPECT_EQ(identity.SetWorkgroupName(L"LAB"), 0U);
    EXPECT_EQ(calls.Take(), L"LsaOpenPolicy - * 1 *\nget 3\nLsaFreeMemory *\nLsaClose -\n"
                            L"LsaOpenPolicy - * 8 *\nset 3 LAB 6 8 -\nLsaClose -\n");
    result = static_cast<LONG>(0xC0000022); // access denied
    EXPECT_EQ(identity.GetWorkgroupName(name), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(identity.SetWorkgroupName(L"LAB"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(identity.SetWorkgroupName(std::wstring(32767, L'x').c_str()), DWORD{ERROR_INVALID_PARAMETER});
    for (const unsigned long refused :
         {identity.SetWorkgroupName(nullptr), identity.GetWorkgroupName(nullptr), identity.SetComputerNameW(nullptr),
          identity.GetComputerNameW(name, nullptr), identity.GetComputerNameAtNextBoot(name, nullptr)})
        EXPECT_EQ(refused, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(reports.Take(), Texts{"NetworkId:140 WorkgroupName"});
}

TEST_F(NetworkIdTest, ConfigurationToolIsEndedWhenItHangs) {
    HANDLE held = nullptr;
    CallLog calls;
    const ImportPatch start("CreateProcessW", &CreateProcessW,
                            [&](auto, LPCWSTR line, auto, auto, BOOL inherit, DWORD flags, auto, auto,
                                STARTUPINFOW* startup, PROCESS_INFORMATION* process) {
                                calls.Add(L"start", line, inherit, flags, startup->dwFlags, startup->wShowWindow);
                                held = process->hProcess = CreateEventW(nullptr, TRUE, FALSE, nullptr);
                                return TRUE;
                            });
    const ImportPatch end(calls.Adding("TerminateProcess", &TerminateProcess, TRUE));
    const ImportPatch wait(calls.Adding("WaitForSingleObject", &WaitForSingleObject, WAIT_TIMEOUT));
    CNetworkId identity;
    const std::wstring tool = _wgetenv(L"SystemRoot") + L"\\System32\\IpConfig.exe "s;
    for (const bool renew : {false, true}) {
        renew ? identity.RenewDhcp() : identity.ReleaseDhcp();
        EXPECT_FALSE(CloseHandle(held)) << "it is closed already";
        EXPECT_EQ(calls.Take(), L"start " + tool + (renew ? L"/renew" : L"/release") +
                                    L" 1 32 1 0\nWaitForSingleObject * 5000\nTerminateProcess * 259\n");
    }
}
