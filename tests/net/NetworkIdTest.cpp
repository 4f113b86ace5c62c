#include "NetworkCard.h"
#include "support/ChildProcess.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/net/networkid.h>

#include <utility>

using namespace std::literals;

namespace {

constexpr wchar_t kAdapter[] = L"SYSTEM\\CurrentControlSet\\Services\\net1\\Parameters\\Tcpip";
constexpr wchar_t kHost[] = L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr wchar_t kLogon[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon";

/// The arguments and results of the replaced functions.
std::wstring seen;
bool allowed = true;
LONG lsaResult = 0;
POLICY_PRIMARY_DOMAIN_INFO domain{};
HANDLE tool = nullptr;
PROCESS_INFORMATION started{};
DWORD toolWait = WAIT_OBJECT_0;

BOOL WINAPI SetName(const wchar_t* name) {
    seen += name;
    SetLastError(ERROR_ACCESS_DENIED);
    return allowed;
}

NTSTATUS WINAPI OpenPolicy(LSA_UNICODE_STRING*, LSA_OBJECT_ATTRIBUTES*, ACCESS_MASK access, LSA_HANDLE* policy) {
    seen += std::to_wstring(access);
    *policy = &domain;
    return 0;
}

NTSTATUS WINAPI ClosePolicy(LSA_HANDLE policy) {
    seen += policy == &domain ? L" closed" : L" closed something else";
    return 0;
}

NTSTATUS WINAPI QueryPolicy(LSA_HANDLE, POLICY_INFORMATION_CLASS kind, void** information) {
    seen += L" " + std::to_wstring(kind);
    *information = &domain;
    return lsaResult;
}

NTSTATUS WINAPI FreePolicy(void* information) {
    seen += information == &domain ? L" freed" : L" freed something else";
    return 0;
}

NTSTATUS WINAPI SetPolicy(LSA_HANDLE, POLICY_INFORMATION_CLASS kind, void* information) {
    const auto& record = *static_cast<POLICY_PRIMARY_DOMAIN_INFO*>(information);
    seen += L" " + std::to_wstring(kind) + L" " + record.Name.Buffer + L" "s + std::to_wstring(record.Name.Length) +
            L" " + std::to_wstring(record.Name.MaximumLength) + (record.Sid == nullptr ? L" no sid" : L" sid");
    return lsaResult;
}

/// Starts this program, which ends with 98 for want of such a role, in place of the configuration tool.
BOOL WINAPI StartTool(const wchar_t*, wchar_t* line, SECURITY_ATTRIBUTES*, SECURITY_ATTRIBUTES*, BOOL inherit,
                      DWORD flags, void*, const wchar_t*, STARTUPINFOW* startup, PROCESS_INFORMATION* process) {
    seen += line + L" "s + std::to_wstring(inherit) + std::to_wstring(flags) + std::to_wstring(startup->dwFlags) +
            std::to_wstring(startup->wShowWindow);
    std::wstring own = Quoted(OwnProgram()) + L"--role none";
    const DWORD suspended = toolWait == WAIT_TIMEOUT ? CREATE_SUSPENDED : 0;
    const BOOL result =
        CreateProcessW(nullptr, own.data(), nullptr, nullptr, FALSE, suspended, nullptr, nullptr, startup, process);
    DuplicateHandle(GetCurrentProcess(), process->hProcess, GetCurrentProcess(), &tool, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    started = *process;
    return result;
}

DWORD WINAPI WaitForTool(HANDLE process, DWORD milliseconds) {
    seen += L" " + std::to_wstring(milliseconds);
    return toolWait == WAIT_TIMEOUT ? WAIT_TIMEOUT : WaitForSingleObject(process, INFINITE);
}

class NetworkIdTest : public testing::Test {
protected:
    NetworkIdTest() {
        seen.clear();
        allowed = true;
        lsaResult = 0;
        toolWait = WAIT_OBJECT_0;
        machine.Set(kCardsKey + L"1"s, L"ServiceName", REG_SZ, L"net1\0"sv);
        machine.Set(kAdapter, L"EnableDHCP", REG_DWORD, L"\1\0"sv);
    }
    void SetAdapter(const wchar_t* value, std::wstring_view data, DWORD type = REG_MULTI_SZ) {
        machine.Set(kAdapter, value, type, data);
    }

    OwnLocalMachine machine;
    CardDriver driver;
};

} // namespace

TEST_F(NetworkIdTest, NameAtTheNextBootStartsAsTheNameOfNow) {
    machine.Set(L"System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName", L"ComputerName", REG_SZ,
                L"LAB-7\0"sv); // Wine looks for the name here
    CNetworkId identity;
    wchar_t now[16];
    wchar_t next[16];
    unsigned long size = 16;
    EXPECT_EQ(identity.GetComputerNameW(now, &size), 0U);
    EXPECT_EQ(std::wcslen(now), size);
    unsigned long room = 16;
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(next, &room), 0U);
    EXPECT_STREQ(next, now);
    size = 1;
    EXPECT_EQ(identity.GetComputerNameW(now, &size), DWORD{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(identity.GetComputerNameW(nullptr, &size), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(NetworkIdTest, Odd94And95NameIsNotedBeforeTheSystemIsAskedAndThenWrittenAsTheDefaultDomain) {
    const ImportPatch patch(L"Tessel.dll", "SetComputerNameW", SetName);
    CNetworkId identity;
    wchar_t next[16] = L"unset";
    unsigned long size = 4;
    allowed = false;
    EXPECT_EQ(identity.SetComputerNameW(L"WORKSTATION"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(next, &size), 111U);
    EXPECT_STREQ(next, L"WOR");
    EXPECT_EQ(size, 12U);
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(next, &size), 0U);
    EXPECT_STREQ(next, L"WORKSTATION");

    allowed = true;
    machine.Set(kHost, L"Hostname", REG_SZ, L"OLD\0"sv);
    machine.Set(kLogon, L"DefaultDomainName", REG_MULTI_SZ, L"OLD\0\0"sv); // read as a list, written as one
    EXPECT_EQ(identity.SetComputerNameW(L"A-NAME-OF-SEVENTEEN"), 0U);
    EXPECT_EQ(machine.Get(kHost, L"Hostname"), L"1:A-NAME-OF-SEVENTEEN\0"sv);
    EXPECT_EQ(machine.Get(kLogon, L"DefaultDomainName"), L"7:A-NAME-OF-SEVENTEEN\0\0"sv);
    EXPECT_EQ(identity.GetComputerNameAtNextBoot(nullptr, &size), 111U);
    EXPECT_EQ(size, 16U);
}

TEST_F(NetworkIdTest, NamesAreValidatedUpToTheFirstBadCharacterAndAddressesAgainstContiguousMasks) {
    CNetworkId identity;
    EXPECT_EQ(identity.ValidateName(L""), VN_EMPTY);
    EXPECT_EQ(identity.ValidateName(L"PC 1"), VN_SPACE);
    EXPECT_EQ(identity.ValidateName(L"PC*1"), VN_BAD_CHAR);
    EXPECT_EQ(identity.ValidateName(L"PC*1 2"), VN_BAD_CHAR);
    EXPECT_EQ(identity.ValidateName(L"aZ9!@#$%^&()-_'{}.~"), VN_VALID);
    EXPECT_EQ(identity.ValidateIpAddr(0x0A000000, 0xFF000000), VI_NO_HOST_PART);
    EXPECT_EQ(identity.ValidateIpAddr(0x0A000001, 0xFF00FF00), VI_BAD_MASK);
    EXPECT_EQ(identity.ValidateIpAddr(0x0A000001, 0xFFFFFFFF), VI_BAD_MASK);
    EXPECT_EQ(identity.ValidateIpAddr(0x0A000001, 0), VI_BAD_MASK);
    EXPECT_EQ(identity.ValidateIpAddr(0x0AFFFFFF, 0xFF000000), VI_VALID);
    EXPECT_EQ(identity.ValidateIpAddr(0x0A000001, 0xFFFFFFFE), VI_VALID);
    EXPECT_EQ(identity.ValidateIpAddr(1, 0x80000000), VI_VALID);
}

TEST_F(NetworkIdTest, Odd98DhcpDecidesWhichValuesAreReadAndMissingOnesLeaveTheTextAlone) {
    SetAdapter(L"IpAddress", L"10.0.0.1\0"s + std::wstring(120, L'2') + L"\0\0"s);
    SetAdapter(L"DhcpIpAddress", L"192.168.0.7\0"sv, REG_SZ);
    SetAdapter(L"SubnetMask", L"255.255.0.0\0\0"sv);
    SetAdapter(L"DhcpDefaultGateway", L"192.168.0.1\0\0"sv);
    CNetworkId identity;
    wchar_t text[CNetworkId::ADDRESS_SIZE];
    EXPECT_TRUE(identity.GetDhcpSetting());
    identity.GetIpAddress(text);
    EXPECT_STREQ(text, L"192.168.0.7");
    identity.GetSubnetMask(text);
    EXPECT_STREQ(text, L"192.168.0.7");
    EXPECT_EQ(identity.GetIpAddress(0), 0x0A000001U);
    EXPECT_EQ(identity.GetSubnetMask(0), 0xFFFF0000U);
    EXPECT_EQ(identity.GetDefGateway(), 0xC0A80001U) << "the setting is on again";

    identity.SetDhcpSetting(false);
    EXPECT_EQ(machine.Get(kAdapter, L"EnableDHCP"), L"4:\0\0"sv);
    CNetworkId copy(identity);
    EXPECT_FALSE(copy.GetDhcpSetting());
    EXPECT_EQ(copy.GetIpAddress(), 0x0A000001U);
    EXPECT_EQ(copy.GetDefGateway(), 0U);
    EXPECT_EQ(copy.GetIpAddress(1), 0xC0A80007U);
}

TEST_F(NetworkIdTest, Odd96PiecesCarryAndWhatIsNoAddressStaysInBounds) {
    CNetworkId identity;
    struct {
        DWORD type;
        std::wstring_view data;
        const wchar_t* text;
        unsigned long number;
    } const values[] = {
        {REG_SZ, L"10.0.0.300\0"sv, L"10.0.0.300", 0x0A00012C},
        {REG_SZ, L"10..1\0"sv, L"10..1", 0x0A010000},
        {REG_MULTI_SZ, L"1234.1234.1234.1\0\0"sv, L"0.0.0.0", 0}, // does not fit
        {REG_MULTI_SZ, L"1.2.3"sv, L"1.2.3", 0x01020300},         // without terminators
        {REG_MULTI_SZ, L""sv, L"", 0},
        {REG_DWORD, L"12"sv, L"0.0.0.0", 0},
        {REG_EXPAND_SZ, L"1.2.3.4\0"sv, L"0.0.0.0", 0},
    };
    for (const auto& value : values) {
        SetAdapter(L"DhcpIpAddress", value.data, value.type);
        wchar_t text[CNetworkId::ADDRESS_SIZE + 1] = L"preset..........";
        identity.GetIpAddress(text);
        EXPECT_STREQ(text, value.text);
        EXPECT_EQ(identity.GetIpAddress(), value.number) << value.data.data();
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
    Reports reports;
    CNetworkId identity;
    wchar_t name[64];
    EXPECT_EQ(identity.GetWorkgroupName(name), 0U) << "the system's own";
    const ImportPatch open(L"Tessel.dll", "LsaOpenPolicy", OpenPolicy);
    const ImportPatch query(L"Tessel.dll", "LsaQueryInformationPolicy", QueryPolicy);
    const ImportPatch release(L"Tessel.dll", "LsaFreeMemory", FreePolicy);
    const ImportPatch set(L"Tessel.dll", "LsaSetInformationPolicy", SetPolicy);
    const ImportPatch close(L"Tessel.dll", "LsaClose", ClosePolicy);
    wchar_t known[] = L"LABxxxx";
    domain.Name = {3 * sizeof(wchar_t), 3 * sizeof(wchar_t), known};
    EXPECT_EQ(identity.GetWorkgroupName(name), 0U);
    EXPECT_STREQ(name, L"LAB");
    EXPECT_EQ(std::exchange(seen, L""), L"1 3 freed closed");
    EXPECT_EQ(identity.SetWorkgroupName(L"LAB"), 0U);
    EXPECT_EQ(seen, L"8 3 LAB 6 8 no sid closed");
    lsaResult = static_cast<LONG>(0xC0000022);
    EXPECT_EQ(identity.GetWorkgroupName(name), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(identity.SetWorkgroupName(L"LAB"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(identity.SetWorkgroupName(std::wstring(32767, L'x').c_str()), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(reports.Take(), Texts{});
    EXPECT_EQ(identity.SetWorkgroupName(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(reports.Take(), Texts{"NetworkId:140 WorkgroupName"});
}

TEST_F(NetworkIdTest, ConfigurationToolIsWaitedForOrEnded) {
    const ImportPatch start(L"Tessel.dll", "CreateProcessW", StartTool);
    const ImportPatch wait(L"Tessel.dll", "WaitForSingleObject", WaitForTool);
    CNetworkId identity;
    wchar_t system[MAX_PATH];
    GetEnvironmentVariableW(L"SystemRoot", system, MAX_PATH);
    const std::wstring line = system + L"\\System32\\IpConfig.exe "s;
    DWORD exitCode = 0;
    identity.ReleaseDhcp();
    GetExitCodeProcess(tool, &exitCode);
    EXPECT_EQ(exitCode, 98U);
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(started.hProcess, &flags) || GetHandleInformation(started.hThread, &flags));
    EXPECT_EQ(seen, line + L"/release 13210 5000");

    seen.clear();
    toolWait = WAIT_TIMEOUT;
    identity.RenewDhcp();
    WaitForSingleObject(tool, INFINITE);
    GetExitCodeProcess(tool, &exitCode);
    EXPECT_EQ(exitCode, 259U);
    EXPECT_EQ(seen, line + L"/renew 13210 5000");
}
