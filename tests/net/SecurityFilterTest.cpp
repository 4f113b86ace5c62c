#include "support/OwnLocalMachine.h"

#include <gtest/gtest.h>
#include <tessel/net/securityfilter.h>

#include <algorithm>

using namespace std::literals;

namespace {

constexpr PROTOCOL kBoth = PROTOCOL_TCP | PROTOCOL_UDP;
constexpr wchar_t kTcp[] = L"TCPAllowedPorts";
constexpr wchar_t kUdp[] = L"UDPAllowedPorts";
constexpr wchar_t kRaw[] = L"RawIPAllowedProtocols";
const std::wstring kServices = L"SYSTEM\\CurrentControlSet\\Services\\";

/// The machine has two adapters, 1 and 2, and a third that is not bound. Their lists are written with a comma for
/// each terminator.
struct SecurityFilter : testing::Test {
    SecurityFilter() {
        machine.Set(kServices + L"Tcpip\\Linkage", L"Bind", REG_MULTI_SZ,
                    L"\\Device\\Card1\0Card3\0\\Device\\Card2\0\0"sv);
        for (const int card : {1, 2, 3}) {
            for (const wchar_t* list : {kTcp, kUdp, kRaw}) Set(card, list, L",");
        }
    }

    static std::wstring Path(int card) { return kServices + L"Card" + std::to_wstring(card) + L"\\Parameters\\Tcpip"; }
    void Set(int card, const wchar_t* list, std::wstring texts) {
        std::replace(texts.begin(), texts.end(), L',', L'\0');
        machine.Set(Path(card), list, REG_MULTI_SZ, texts);
    }
    std::wstring Get(int card, const wchar_t* list) {
        std::wstring texts = machine.Get(Path(card), list);
        std::replace(texts.begin(), texts.end(), L'\0', L',');
        return texts;
    }

    OwnLocalMachine machine;
};

TEST_F(SecurityFilter, AllowedPortComesFirstOnEveryBoundAdapter) {
    CSecurityFilterNT filter;
    Set(1, kTcp, L"080,0,,");
    Set(2, kTcp, L"80,,");
    EXPECT_EQ(filter.AllowPort(80, PROTOCOL_TCP), 1);
    EXPECT_EQ(filter.AllowPort(80, PROTOCOL_TCP), 0);
    EXPECT_EQ(Get(1, kTcp), L"7:80,080,0,,");
    EXPECT_EQ(Get(2, kTcp), L"7:80,,");
    EXPECT_EQ(filter.AllowPort(65535, kBoth), 1);
    EXPECT_EQ(Get(2, kTcp), L"7:65535,80,,");
    EXPECT_EQ(Get(2, kUdp), L"7:65535,,");
    EXPECT_EQ(Get(3, kUdp), L"7:,");
}

TEST_F(SecurityFilter, BlockingTakesPortsAwayAndAlwaysGives0Odd74) {
    CSecurityFilterNT filter;
    std::wstring many;
    for (int port = 1001; port < 1200; ++port) many += std::to_wstring(port) + L","; // more than a read has room for
    Set(1, kTcp, L"1000," + many + L",");
    Set(1, kUdp, L"7,8,7,,");
    EXPECT_EQ(filter.BlockPort(1000, kBoth), 0);
    EXPECT_EQ(Get(1, kTcp), L"7:" + many + L",");
    EXPECT_EQ(filter.BlockPort(7, PROTOCOL_UDP), 0);
    EXPECT_EQ(Get(1, kUdp), L"7:8,,");
    EXPECT_EQ(filter.BlockPort(CSecurityFilterNT::ALL_PORTS, kBoth), 0);
    EXPECT_EQ(Get(1, kTcp) + Get(1, kUdp), L"7:,7:,");
}

TEST_F(SecurityFilter, SwitchingChangesTheProtocolsOfEveryAdapter) {
    CSecurityFilterNT filter;
    machine.Set(kServices + L"Tcpip\\Parameters", L"EnableSecurityFilters", REG_SZ, L"1\0"sv);
    EXPECT_EQ(filter.Enable(1), 0);
    machine.Set(kServices + L"Tcpip\\Parameters", L"EnableSecurityFilters", REG_DWORD, L"\0\0"sv);
    EXPECT_NE(filter.Enable(1), 0);
    EXPECT_EQ(filter.IsEnabled(), 1);
    EXPECT_EQ(Get(1, kRaw), L"7:255,1,,");
    EXPECT_EQ(filter.Enable(1), 0);
    Set(2, kRaw, L"1,,");
    EXPECT_NE(filter.Enable(1), 0);
    EXPECT_NE(filter.Enable(0), 0);
    EXPECT_EQ(filter.IsEnabled(), 0);
    EXPECT_EQ(Get(2, kRaw), L"7:,");
    EXPECT_EQ(filter.Enable(0), 0);
}

TEST_F(SecurityFilter, ListsThatAreMissingOrOfAnotherTypeStayAsTheyAre) {
    const CSecurityFilterNT original;
    machine.Remove(kServices + L"Tcpip\\Linkage", L"Bind");
    CSecurityFilterNT filter;
    EXPECT_EQ(filter.AllowPort(81, PROTOCOL_UDP), 0) << "no adapters";
    filter = CSecurityFilterNT(original);
    machine.Remove(Path(1), kTcp);
    machine.Set(Path(2), kTcp, REG_SZ, L"80\0"sv);
    EXPECT_EQ(filter.AllowPort(81, PROTOCOL_TCP), 0);
    EXPECT_EQ(Get(1, kTcp) + Get(2, kTcp), L"none1:80,");
    EXPECT_EQ(filter.AllowPort(81, PROTOCOL_UDP), 1);
}

} // namespace
