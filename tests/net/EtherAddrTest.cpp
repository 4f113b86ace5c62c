#include "NetworkCard.h"

#include <gtest/gtest.h>
#include <tessel/net/etheraddr.h>

using namespace std::literals;

namespace {

using EtherAddrTest = NetworkCardTest;

/// Everything that the object returns: "status bytes text service name".
std::wstring All(const CEtherAddr& address) {
    unsigned char binary[6];
    wchar_t text[CEtherAddr::TEXT_SIZE], name[CEtherAddr::SERVICE_NAME_SIZE];
    address.GetBinary(binary);
    address.GetText(text);
    address.GetServiceName(name);
    EXPECT_EQ(address.GetServiceNameLen(), std::wcslen(name));
    std::wstring all = std::to_wstring(address.GetStatus()) + L" ";
    for (const unsigned char byte : binary) all += std::to_wstring(byte) + L".";
    return all + L" " + text + L" " + name;
}

} // namespace

TEST_F(EtherAddrTest, AsksTheDriverOfTheFirstCardWhoseNameIsAText) {
    machine.Set(kCardsKey + L"1"s, L"Description", REG_SZ, L"nameless\0"sv);
    AddCard(L"2", REG_DWORD, L"\x61\0"sv);
    AddCard(L"3", REG_SZ, std::wstring(64, L'x')); // too long, and without a terminator
    AddCard(L"4", REG_SZ, std::wstring(300, L'x'));
    AddCard(L"5", REG_SZ, L"net5"sv); // without a terminator
    AddCard(L"6", REG_SZ, L"net6\0"sv);
    const CEtherAddr address;
    EXPECT_EQ(All(CEtherAddr(address)), L"0 0.160.201.20.200.41. 00A0C914C829 net5");
    EXPECT_EQ(driver.calls.Take(), L"query net5\nopen \\\\.\\net5 2147483648 3\nask 1507330 16843010\n");
    EXPECT_EQ(reports.Take(), Texts{});
}

TEST_F(EtherAddrTest, MissingDeviceNameIsDefinedForTheQuestion) {
    AddCard(L"1", REG_SZ, std::wstring(63, L'n')); // just fits
    driver.does.queryError = ERROR_FILE_NOT_FOUND;
    const std::wstring name(63, L'n');
    EXPECT_EQ(All(CEtherAddr()), L"0 0.160.201.20.200.41. 00A0C914C829 " + name);
    ASSERT_EQ(driver.calls.size(), 5U);
    EXPECT_EQ(driver.calls[1], L"define 1 " + name + L" \\Device\\" + name);
    EXPECT_EQ(driver.calls[4], L"define 7 " + name + L" \\Device\\" + name);
}

TEST_F(EtherAddrTest, Odd93DriverThatCannotBeAskedAndNameThatStaysBehindGiveNoAddress) {
    AddCard(L"1", REG_SZ, L"net1\0"sv);
    const CardDriver::Behaviour failures[] = {
        {.answer = {1, 2, 3, 4, 5, 6, 7}},
        {.answer = {1, 2, 3, 4, 5}},
        {.answer = {}},
        {.canOpen = false},
        {.queryError = ERROR_ACCESS_DENIED},
        {.queryError = ERROR_FILE_NOT_FOUND, .canRemove = false},
        {.queryError = ERROR_FILE_NOT_FOUND, .canDefine = false},
    };
    for (const auto& failure : failures) {
        driver.does = failure;
        EXPECT_EQ(All(CEtherAddr()), L"1 0.0.0.0.0.0.  net1");
    }
    EXPECT_EQ(driver.calls.back().substr(0, 9), L"define 1 ") << "what was not defined is not removed";
}

TEST_F(EtherAddrTest, OnlyNamelessCardsAreReported) {
    EXPECT_EQ(All(CEtherAddr()), L"1 0.0.0.0.0.0.  ");
    EXPECT_EQ(reports.Take(), Texts{});
    AddCard(L"1", REG_SZ, std::wstring(64, L'x'));
    EXPECT_EQ(All(CEtherAddr()), L"1 0.0.0.0.0.0.  ");
    EXPECT_EQ(reports.Take(), Texts{"EthAddr:91 status == STATUS_OK"});
    EXPECT_TRUE(driver.calls.empty());
}
