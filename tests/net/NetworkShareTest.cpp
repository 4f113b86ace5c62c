#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/net/networkshare.h>

#include <winnetwk.h>

#include <optional>
#include <string>

namespace {

constexpr unsigned long Code(long error) {
    return static_cast<unsigned long>(error);
}

DWORD addResult = 0;
DWORD lookUpResult = 0;
std::wstring behindDevice;
std::vector<std::wstring> calls;

std::wstring Text(const wchar_t* text) {
    return text == nullptr ? L"-" : text;
}

DWORD WINAPI Add(NETRESOURCEW* resource, LPCWSTR password, LPCWSTR user, DWORD flags) {
    const bool bare = resource->dwScope == 0 && resource->dwDisplayType == 0 && resource->dwUsage == 0 &&
                      resource->lpComment == nullptr && resource->lpProvider == nullptr;
    calls.push_back(L"add " + std::to_wstring(resource->dwType) + L" " + Text(resource->lpLocalName) + L" " +
                    Text(resource->lpRemoteName) + L" " + Text(user) + L" " + Text(password) + L" " +
                    std::to_wstring(flags) + (bare ? L"" : L" and more"));
    return addResult;
}

DWORD WINAPI LookUp(LPCWSTR device, LPWSTR remote, DWORD* length) {
    calls.push_back(L"get " + Text(device) + L" " + std::to_wstring(*length));
    if (lookUpResult == 0) behindDevice.copy(remote, *length);
    return lookUpResult;
}

DWORD WINAPI Cancel(LPCWSTR name, DWORD flags, BOOL force) {
    calls.push_back(L"cancel " + Text(name) + L" " + std::to_wstring(flags) + L" " + std::to_wstring(force));
    return ERROR_NOT_CONNECTED;
}

using Calls = std::vector<std::wstring>;

struct NetworkShare : testing::Test {
    ImportPatch add{L"Tessel.dll", "WNetAddConnection2W", Add};
    ImportPatch lookUp{L"Tessel.dll", "WNetGetConnectionW", LookUp};
    ImportPatch cancel{L"Tessel.dll", "WNetCancelConnection2W", Cancel};
    Reports reports;
    std::optional<CNetworkShare> share{std::in_place};
    wchar_t remote[16] = L"\\\\server\\share";
    wchar_t local[3] = L"Z:";

    void SetUp() override {
        addResult = lookUpResult = 0;
        calls.clear();
    }
};

} // namespace

TEST_F(NetworkShare, Odd92ClosingKeepsTheObjectConnected) {
    EXPECT_EQ(share->Close(), 0u) << "nothing to close";
    EXPECT_EQ(share->Open(remote, L"user", L"secret", local), 0u);
    EXPECT_EQ(share->Close(), Code(ERROR_NOT_CONNECTED));
    EXPECT_EQ(share->Open(remote, nullptr, nullptr, nullptr), Code(ERROR_ALREADY_ASSIGNED));
    share.reset();
    EXPECT_EQ(calls, (Calls{L"add 1 Z: \\\\server\\share user secret 0", L"cancel Z: 0 0", L"cancel Z: 0 0"}));
}

TEST_F(NetworkShare, TestingConnectsWithoutADeviceAndCancels) {
    EXPECT_EQ(share->Test(nullptr, nullptr, nullptr), Code(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(share->Open(nullptr, nullptr, nullptr, local), Code(ERROR_INVALID_PARAMETER));
    addResult = ERROR_ACCESS_DENIED;
    EXPECT_EQ(share->Test(remote, L"user", nullptr), Code(ERROR_ACCESS_DENIED));
    addResult = 0;
    EXPECT_EQ(share->Test(remote, nullptr, nullptr), 0u);
    EXPECT_EQ(share->Test(remote, nullptr, nullptr), Code(ERROR_ALREADY_ASSIGNED));
    EXPECT_EQ(calls, (Calls{L"add 0 - \\\\server\\share user - 0", L"add 0 - \\\\server\\share - - 0",
                            L"cancel \\\\server\\share 0 0"}));
}

TEST_F(NetworkShare, ADeviceThatLeadsToTheShareAlreadyIsASuccess) {
    addResult = ERROR_ALREADY_ASSIGNED;
    lookUpResult = ERROR_MORE_DATA;
    EXPECT_EQ(share->Open(remote, nullptr, nullptr, local), Code(ERROR_ALREADY_ASSIGNED));
    EXPECT_EQ(calls.back(), L"get Z: 15");
    lookUpResult = 0;
    behindDevice = L"\\\\other\\share";
    EXPECT_EQ(share->Open(remote, nullptr, nullptr, local), Code(ERROR_ALREADY_ASSIGNED));
    wchar_t umlaut[] = L"\\\\server\\sh\u00E4re";
    behindDevice = L"\\\\SERVER\\Sh\u00C4re";
    EXPECT_EQ(share->Open(umlaut, nullptr, nullptr, local), 0u);
    calls.clear();
    share.reset();
    EXPECT_EQ(calls, Calls{L"cancel Z: 0 0"});
}

TEST_F(NetworkShare, Odd91AMissingLogonSessionIsReportedAndCountsAsConnected) {
    addResult = ERROR_NO_SUCH_LOGON_SESSION;
    EXPECT_EQ(share->Open(remote, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(reports.Take(), Texts{"NetworkShare:68 Status != ERROR_NO_SUCH_LOGON_SESSION"});
    EXPECT_EQ(share->Open(remote, nullptr, nullptr, nullptr), Code(ERROR_ALREADY_ASSIGNED));
}

TEST_F(NetworkShare, CopiesShareTheConnectionAndMayLeaveItOpen) {
    share.emplace(false);
    EXPECT_EQ(share->Open(remote, nullptr, nullptr, local), 0u);
    CNetworkShare assigned;
    {
        const CNetworkShare copy(*share);
        assigned = copy;
    }
    share.reset();
    EXPECT_EQ(calls.size(), 1u);
    EXPECT_EQ(assigned.Close(), Code(ERROR_NOT_CONNECTED));
    EXPECT_EQ(calls.back(), L"cancel Z: 0 0");
}
