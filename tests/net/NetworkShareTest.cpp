#include "support/CallLog.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/net/networkshare.h>

#include <winnetwk.h>

#include <optional>

namespace {

struct NetworkShare : testing::Test {
    CallLog calls;
    long addResult = 0, lookUpResult = 0;
    std::wstring behindDevice;
    Reports reports;
    const ImportPatch add{"WNetAddConnection2W", &WNetAddConnection2W,
                          [this](const NETRESOURCEW* to, LPCWSTR password, LPCWSTR user, DWORD flags) {
                              const LPCWSTR device = to->lpLocalName, name = to->lpRemoteName;
                              calls.Add(L"add", to->dwType, device, name, user, password, flags);
                              return addResult;
                          }};
    const ImportPatch lookUp{"WNetGetConnectionW", &WNetGetConnectionW,
                             [this](LPCWSTR device, wchar_t* found, DWORD* length) {
                                 calls.Add(L"get", device, *length);
                                 if (lookUpResult == 0) behindDevice.copy(found, *length);
                                 return lookUpResult;
                             }};
    const ImportPatch cancel{calls.Adding("WNetCancelConnection2W", &WNetCancelConnection2W, ERROR_NOT_CONNECTED)};
    std::optional<CNetworkShare> share{std::in_place};
    wchar_t remote[16] = L"\\\\server\\share";
    wchar_t local[3] = L"Z:";

    long Open(wchar_t* device) { return static_cast<long>(share->Open(remote, nullptr, nullptr, device)); }
    long Test(wchar_t* name, const wchar_t* user) { return static_cast<long>(share->Test(name, user, nullptr)); }
};

} // namespace

TEST_F(NetworkShare, Odd92ClosingKeepsTheObjectConnected) {
    EXPECT_EQ(share->Close(), 0u) << "nothing to close";
    EXPECT_EQ(share->Open(remote, L"user", L"secret", local), 0u);
    EXPECT_EQ(share->Close(), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(Open(nullptr), ERROR_ALREADY_ASSIGNED);
    share.reset();
    const std::wstring cancelled = L"WNetCancelConnection2W Z: 0 0\n";
    EXPECT_EQ(calls.Take(), L"add 1 Z: \\\\server\\share user secret 0\n" + cancelled + cancelled);
}

TEST_F(NetworkShare, TestingConnectsWithoutADeviceAndCancels) {
    EXPECT_EQ(share->Open(nullptr, nullptr, nullptr, local), DWORD{ERROR_INVALID_PARAMETER});
    addResult = ERROR_ACCESS_DENIED;
    EXPECT_EQ(Test(remote, L"user"), ERROR_ACCESS_DENIED);
    addResult = 0;
    EXPECT_EQ(Test(remote, nullptr), 0);
    EXPECT_EQ(Test(remote, nullptr), ERROR_ALREADY_ASSIGNED);
    EXPECT_EQ(calls.Take(), L"add 0 - \\\\server\\share user - 0\n"
                            L"add 0 - \\\\server\\share - - 0\n"
                            L"WNetCancelConnection2W \\\\server\\share 0 0\n");
}

TEST_F(NetworkShare, ADeviceThatLeadsToTheShareAlreadyIsASuccess) {
    addResult = ERROR_ALREADY_ASSIGNED;
    lookUpResult = ERROR_MORE_DATA;
    EXPECT_EQ(Open(local), ERROR_ALREADY_ASSIGNED);
    EXPECT_EQ(calls.back(), L"get Z: 15");
    lookUpResult = 0;
    behindDevice = L"\\\\other\\share";
    EXPECT_EQ(Open(local), ERROR_ALREADY_ASSIGNED);
    wchar_t umlaut[] = L"\\\\server\\sh\u00E4re";
    behindDevice = L"\\\\SERVER\\Sh\u00C4re";
    EXPECT_EQ(share->Open(umlaut, nullptr, nullptr, local), 0u);
    calls.clear();
    share.reset();
    EXPECT_EQ(calls.Take(), L"WNetCancelConnection2W Z: 0 0\n");
}

TEST_F(NetworkShare, Odd91AMissingLogonSessionIsReportedAndCountsAsConnected) {
    addResult = ERROR_NO_SUCH_LOGON_SESSION;
    EXPECT_EQ(Open(nullptr), 0);
    EXPECT_EQ(reports.Take(), Texts{"NetworkShare:68 Status != ERROR_NO_SUCH_LOGON_SESSION"});
    EXPECT_EQ(Open(nullptr), ERROR_ALREADY_ASSIGNED);
}

TEST_F(NetworkShare, CopiesShareTheConnectionAndMayLeaveItOpen) {
    share.emplace(false);
    EXPECT_EQ(Open(local), 0);
    CNetworkShare assigned;
    assigned = CNetworkShare(*share);
    share.reset();
    EXPECT_EQ(calls.size(), 1u);
    EXPECT_EQ(assigned.Close(), DWORD{ERROR_NOT_CONNECTED});
    EXPECT_EQ(calls.back(), L"WNetCancelConnection2W Z: 0 0");
}
