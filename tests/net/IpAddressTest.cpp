#include <winsock2.h>

#include <gtest/gtest.h>
#include <tessel/net/ipaddress.h>

#include <utility>

namespace {

unsigned long Number(const CIpAddress& address) {
    return address;
}

} // namespace

TEST(IpAddress, ConvertsBetweenNumberAndTextInBothWidths) {
    const unsigned long number = htonl(0x0A0100FF);
    EXPECT_EQ(Number("10.1.0.255"), number);
    EXPECT_EQ(Number(L"10.1.0.255"), number);
    const CIpAddress address(number);
    EXPECT_STREQ(static_cast<char*>(address), "10.1.0.255");
    EXPECT_STREQ(static_cast<wchar_t*>(address), L"10.1.0.255");
    EXPECT_EQ(Number(L"255.255.255.254 and more than fits"), htonl(0xFFFFFFFE));
    EXPECT_EQ(Number("nonsense"), INADDR_NONE);
    EXPECT_EQ(Number(L"1.2.3.4\u0134"), INADDR_NONE);
    EXPECT_EQ(Number(static_cast<const wchar_t*>(nullptr)), INADDR_NONE);
}

TEST(IpAddress, CopiesHaveTextsOfTheirOwn) {
    const CIpAddress first("1.2.3.4");
    const char* const text = first;
    const CIpAddress copy(first);
    CIpAddress assigned("5.6.7.8");
    const char* const earlier = assigned;
    assigned = copy;
    EXPECT_STREQ(earlier, "5.6.7.8");
    EXPECT_NE(static_cast<char*>(copy), text);
    EXPECT_STREQ(static_cast<char*>(copy), "1.2.3.4");
    EXPECT_STREQ(static_cast<char*>(assigned), "1.2.3.4");
}

TEST(IpAddress, PacksAndUnpacksInHostOrder) {
    for (const auto& [text, value] : {std::pair(L"1.2.3.4", 0x01020304UL),
                                      {L"10.2.30", 0x0A021E00},
                                      {L"1..2.3.4", 0x01020304},
                                      {L"300.1.1.1", 0x2C010101},
                                      {L"1.2.3.4.5", 0x01020304}}) {
        EXPECT_EQ(CIpAddress::Pack(text), value) << text;
    }
    for (const wchar_t* const none : {L"1.2.3.", L".......", LPCWSTR{}}) EXPECT_EQ(CIpAddress::Pack(none), 0);
    wchar_t out[17] = L"################";
    CIpAddress::Unpack(0x0A000001, out);
    EXPECT_STREQ(out, L"10.0.0.1");
    CIpAddress::Unpack(0xFFFFFFFF, out);
    EXPECT_STREQ(out, L"255.255.255.255");
}
