#include "support/OwnLocalMachine.h"

#include <gtest/gtest.h>
#include <tessel/system/registry.h>

#include <tuple>
#include <utility>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using Entry = std::pair<DWORD, Bytes>;
using WideTexts = std::vector<std::wstring>;
constexpr unsigned long kTooMuch = 0xFFFFFFFF;

Bytes BytesOf(const std::wstring& text) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    return {bytes, bytes + text.size() * sizeof(wchar_t)};
}

struct Registry : testing::Test {
    ~Registry() override { CReg::CloseKey(key); }

    void Store(const wchar_t* name, DWORD type, Bytes data) {
        data.insert(data.end(), 2, 1); // the system would mistake zeros there for a terminator
        ASSERT_EQ(RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size() - 2)), 0);
    }
    Entry Stored(const wchar_t* name) {
        Bytes data(1000);
        DWORD type = REG_NONE;
        EXPECT_EQ(RegQueryValueExW(key, name, nullptr, &type, data.data(), &(size = 1000)), 0);
        data.resize(size);
        return {type, data};
    }
    /// The accessor's content, by type.
    WideTexts Texts() {
        if (reg.GetType() == CReg::TYPE_STRING) return {Text()};
        CList<const wchar_t*> list;
        list.AddTail(L"of an earlier value");
        EXPECT_EQ(reg.GetData(list), 0UL);
        return {list.begin(), list.end()};
    }
    std::wstring Text(int index = 0) {
        wchar_t text[300];
        EXPECT_EQ(reg.GetData(text, 300, index), 0UL);
        return text;
    }
    std::wstring Name() {
        wchar_t name[300];
        EXPECT_EQ(reg.GetName(name, 300), 0UL);
        return name;
    }

    OwnLocalMachine machine;
    HKEY key = CReg::OpenKey(HKEY_LOCAL_MACHINE, L"Software\\Tessel tests", true);
    CReg reg;
    unsigned long number = 0, size = 0;
};

TEST_F(Registry, ValuesOfEveryTypeAreWrittenAndReadBack) {
    ASSERT_EQ(reg.SaveKey(key, L"text", L"two words"), 0);
    EXPECT_EQ(Stored(L"text"), Entry(REG_SZ, BytesOf(std::wstring(L"two words\0", 10))));
    ASSERT_EQ(reg.SaveKey(key, nullptr, 0x80000001UL), 0);
    EXPECT_EQ(Stored(nullptr), Entry(REG_DWORD, {1, 0, 0, 0x80}));
    EXPECT_EQ(reg.GetType(), CReg::TYPE_STRING) << "it stays";
    unsigned char bytes[] = {1, 0, 2};
    reg.SetType(CReg::TYPE_UNKNOWN);
    ASSERT_EQ(reg.SaveKey(key, L"bytes", bytes, 3), 0);
    EXPECT_EQ(Stored(L"bytes"), Entry(REG_BINARY, {1, 0, 2}));
    EXPECT_EQ(reg.SaveKey(key, L"bytes", bytes, -1), ERROR_INVALID_PARAMETER);

    ASSERT_EQ(reg.ReadKey(key, nullptr, 0, &size), 0);
    EXPECT_EQ(reg.GetData(number), 0UL);
    EXPECT_EQ(std::pair(number, size), std::pair(0x80000001UL, 4UL));
    wchar_t text[20];
    EXPECT_EQ(reg.GetData(text, 20, 0), CReg::WRONG_TYPE);
    ASSERT_EQ(reg.ReadKey(key, L"text", 0, nullptr), 0);
    EXPECT_EQ(Text(7), L"two words");
    EXPECT_EQ(reg.GetData(number), CReg::WRONG_TYPE);
    ASSERT_EQ(reg.RemoveValue(key, L"text"), 0);
    EXPECT_EQ(reg.ReadKey(key, L"text", 0, nullptr), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(reg.GetStatus(), CReg::NOT_READ);
}

TEST_F(Registry, MultiStringsAreWrittenFromTextsOrFromAList) {
    const Entry expected(REG_MULTI_SZ, BytesOf(std::wstring(L"ab\0c\0\0", 6)));
    reg.SetType(CReg::TYPE_MULTI_STRING);
    ASSERT_EQ(reg.SaveKey(key, L"texts", L"ab\0c\0"), 0);
    EXPECT_EQ(Stored(L"texts"), expected);
    CList<const wchar_t*> list;
    EXPECT_EQ(reg.SaveKey(key, L"none", list), 0UL);
    EXPECT_EQ(Stored(L"none"), Entry(REG_MULTI_SZ, {0, 0}));
    list.AddTail(L"c");
    list.AddTail(nullptr);
    list.AddHead(L"ab");
    EXPECT_EQ(reg.SaveKey(key, L"list", list), 0UL);
    EXPECT_EQ(Stored(L"list"), expected);

    ASSERT_EQ(reg.ReadKey(key, L"list", 0, nullptr), 0);
    unsigned char first = 0;
    EXPECT_EQ(reg.GetBinaryData(&first, size = 1), 0UL);
    EXPECT_EQ(first, 'a');
    EXPECT_EQ(Texts(), (WideTexts{L"ab", L"c"}));
    EXPECT_EQ((WideTexts{Text(-1), Text(1), Text(9)}), (WideTexts{L"ab", L"c", L""}));
    ASSERT_EQ(reg.GetData(list), 0UL);
    ASSERT_EQ(reg.SaveKey(key, L"ab", 7UL), 0);
    EXPECT_EQ(reg.ReadKey(key, *list.begin(), 1000, nullptr), 0) << "the name is in the data that are freed";
}

TEST_F(Registry, BuffersGrowToTheRequestedSize) {
    const std::wstring name(250, L'n');
    const std::wstring text(150, L't');
    ASSERT_EQ(reg.SaveKey(key, name.c_str(), text.c_str()), 0);
    EXPECT_EQ(reg.ReadKey(key, name.c_str(), 301, nullptr), ERROR_MORE_DATA);
    EXPECT_EQ(reg.ReadKey(key, 0), ERROR_MORE_DATA);
    ASSERT_EQ(reg.ReadKey(key, name.c_str(), 0, &size), 0);
    EXPECT_EQ(size, 302UL);
    EXPECT_EQ(Text(), text);
    EXPECT_EQ(Name(), name);
    EXPECT_EQ(CReg(0, 302).ReadKey(key, name.c_str(), 302, nullptr), 0);
}

TEST_F(Registry, TextIsTruncatedToTheCallersBuffer) {
    ASSERT_EQ(reg.SaveKey(key, L"text", L"four"), 0);
    ASSERT_EQ(reg.ReadKey(key, L"text", 0, nullptr), 0);
    wchar_t text[] = L"########";
    EXPECT_EQ(reg.GetData(text, 4, 0), CReg::TEXT_CUT);
    EXPECT_EQ(std::wstring(text, 5), std::wstring(L"fou\0#", 5));
    EXPECT_EQ(reg.GetData(text, 8, 0), 0UL);
    EXPECT_EQ(std::wstring(text, 8), std::wstring(L"four\0##\0", 8)) << "the last character is always set";
    EXPECT_EQ(reg.GetName(text, 0), CReg::BAD_BUFFER);
    EXPECT_EQ(reg.GetStatus(), CReg::BAD_BUFFER);
}

TEST_F(Registry, DataWithoutTerminatorsEndWithTheValue) {
    const std::tuple<DWORD, Bytes, WideTexts> rows[] = {
        {REG_SZ, BytesOf(L"abcd"), {L"abcd"}},
        {REG_SZ, {'a', 0, 'b'}, {L"ab"}},
        {REG_SZ, {}, {L""}},
        {REG_MULTI_SZ, {}, {}},
        {REG_MULTI_SZ, BytesOf(std::wstring(L"abc\0", 4)), {L"abc"}},
        {REG_MULTI_SZ, BytesOf(std::wstring(L"ab\0c", 4)), {L"ab", L"c"}},
        {REG_MULTI_SZ, {'a', 0, 0, 0, 'c'}, {L"a", L"c"}}};
    CReg small(1, 8);
    Store(L"old", REG_SZ, BytesOf(L"####"));
    for (const auto& [type, data, texts] : rows) {
        Store(L"odd", type, data);
        ASSERT_EQ(small.ReadKey(key, L"old", 0, nullptr), 0);
        ASSERT_EQ(small.ReadKey(key, L"odd", 0, nullptr), 0);
        reg = small;
        EXPECT_EQ(Texts(), texts);
    }
    Store(L"odd", REG_EXPAND_SZ, BytesOf(L"%x%"));
    ASSERT_EQ(reg.ReadKey(key, L"odd", 0, nullptr), 0);
    EXPECT_EQ(reg.GetStatus(), CReg::UNKNOWN_VALUE);
    reg.SetType(CReg::TYPE_STRING);
    EXPECT_EQ(Text(), L"%x%") << "an unknown type, but in the buffer";
    Store(L"odd", REG_DWORD, {5, 1});
    ASSERT_EQ(small.ReadKey(key, L"odd", 0, nullptr), 0);
    EXPECT_EQ(small.GetData(number), 0UL);
    EXPECT_EQ(number, 0x105UL);
}

TEST_F(Registry, ValuesAreListedOdd73) {
    ASSERT_EQ(reg.SaveKey(key, L"a", 1UL), 0);
    ASSERT_EQ(reg.SaveKey(key, L"b", L"too long for the buffer"), 0);
    ASSERT_EQ(reg.SaveKey(key, L"third", L"text"), 0);
    wchar_t name[8];
    unsigned char data[16];
    CReg::KEY_TYPE type{};
    EXPECT_EQ(reg.FindFirstValue(key, name, 8, type, data, size = sizeof data), 0);
    EXPECT_EQ(std::pair(type, size), std::pair(CReg::TYPE_DWORD, 4UL));
    ASSERT_EQ(reg.ReadKey(key, 2), 0);
    EXPECT_EQ(reg.FindNextValue(name, 8, type, data, size), ERROR_MORE_DATA);
    CReg copy(1, 1);
    copy = reg;
    EXPECT_EQ(copy.GetStatus(), DWORD{ERROR_MORE_DATA});
    for (CReg* const each : {&reg, &copy}) {
        EXPECT_EQ(each->FindNextValue(name, 8, type, data, size = 0), 0) << "the size of the first call counts";
        EXPECT_STREQ(name, L"third");
        EXPECT_EQ(std::pair(type, Bytes(data, data + size)),
                  std::pair(CReg::TYPE_STRING, BytesOf(std::wstring(L"text\0", 5))));
        EXPECT_EQ(each->FindNextValue(name, 8, type, nullptr, size), ERROR_NO_MORE_ITEMS);
    }
    reg = copy;
    EXPECT_EQ((WideTexts{Name(), Text()}), (WideTexts{L"third", L"text"}));
    EXPECT_EQ(reg.ReadKey(key, 3), ERROR_NO_MORE_ITEMS);
}

TEST_F(Registry, KeysAreOpenedListedAndRemoved) {
    EXPECT_EQ(CReg::OpenKey(key, L"first", false), nullptr);
    for (const wchar_t* name : {L"first", L"second", L"third"}) CReg::CloseKey(CReg::OpenKey(key, name, true));
    wchar_t name[8];
    EXPECT_EQ(reg.FindFirstKey(key, name, 8), 0);
    EXPECT_STREQ(name, L"first");
    EXPECT_EQ(reg.FindNextKey(name), 0);
    EXPECT_STREQ(name, L"second");
    CReg copy;
    copy = reg;
    EXPECT_EQ(copy.FindNextKey(name), 0);
    EXPECT_STREQ(name, L"third");
    EXPECT_EQ(copy.FindNextKey(name), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(reg.RemoveKey(key, L"first"), 0);
    EXPECT_EQ(reg.FindFirstKey(key, name, 6), ERROR_MORE_DATA);
    EXPECT_EQ(CReg::OpenKey(key, L"first", false), nullptr);
}

TEST_F(Registry, KeysOfTheWorkstationAreUnderVarda) {
    EXPECT_EQ(CReg::OpenVardaKey(nullptr, false, L"name"), nullptr);
    for (const HKEY opened : {CReg::OpenVardaKey(L"sub", true, L"name"), CReg::OpenVardaAutoStartKey(L"name"),
                              CReg::OpenVardaKey(nullptr, false, L"name")}) {
        EXPECT_NE(opened, nullptr);
        CReg::CloseKey(opened);
    }
    for (const wchar_t* path : {L"name\\sub", L"name", L"AutoStart\\name"})
        EXPECT_EQ(reg.RemoveKey(HKEY_LOCAL_MACHINE, (L"Software\\Varda\\" + std::wstring(path)).c_str()), 0) << path;
}

TEST_F(Registry, MissingBufferShowsInTheStatusAloneOdd70) {
    CReg missing(kTooMuch, kTooMuch);
    EXPECT_EQ(missing.GetStatus(), CReg::NO_BUFFER);
    wchar_t text[4];
    for (const bool byName : {true, false}) {
        EXPECT_EQ(missing.GetData(text, 4, 0), CReg::WRONG_TYPE);
        EXPECT_EQ(byName ? missing.ReadKey(key, L"x", kTooMuch, nullptr) : missing.ReadKey(key, 0), 0);
        EXPECT_EQ(missing.GetStatus(), CReg::NO_BUFFER);
    }
    missing.SetType(CReg::TYPE_STRING);
    EXPECT_EQ(missing.GetData(text, 4, 0), CReg::NO_BUFFER);
    EXPECT_EQ(missing.ReadKey(key, L"x", 0, nullptr), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, BytesAreWrittenWithThePreviousTypeOdd71) {
    ASSERT_EQ(reg.SaveKey(key, L"text", L"text"), 0);
    Bytes bytes = BytesOf(L"ab");
    for (const short length : {short{4}, short{3}, short{1}}) {
        bytes.resize(static_cast<std::size_t>(length));
        ASSERT_EQ(reg.SaveKey(key, L"x", bytes.data(), length), 0);
        EXPECT_EQ(Stored(L"x"), Entry(REG_SZ, bytes));
    }
}

TEST_F(Registry, BinaryDataReturnTheCapacityNotTheLengthOdd72) {
    CReg small(0, 6);
    Store(L"bytes", REG_BINARY, {1, 2, 3});
    ASSERT_EQ(small.ReadKey(key, L"bytes", 0, nullptr), 0);
    Bytes bytes(10, 9);
    EXPECT_EQ(small.GetBinaryData(bytes.data(), size = kTooMuch), 0UL);
    EXPECT_EQ(size, 6UL);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 0, 0, 0, 9, 9, 9, 9}));
    EXPECT_EQ(small.GetBinaryData(bytes.data(), size = 2), 0UL);
    EXPECT_EQ(size, 2UL);
}

} // namespace
