#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/strings.h>

#include <algorithm>
#include <clocale>
#include <cstring>

namespace {

template <class Char> std::basic_string<Char> As(const char* text) {
    const std::string narrow(text);
    return {narrow.begin(), narrow.end()};
}

template <class Pair> class CopyStringTest : public testing::Test {
protected:
    using Target = typename Pair::first_type;
    using Source = typename Pair::second_type;

    unsigned long Copy(const char* text, unsigned int size) {
        std::fill(std::begin(m_target), std::end(m_target), Target('#'));
        return CopyString(m_target, As<Source>(text).c_str(), size);
    }
    std::basic_string<Target> Result() const { return m_target; }
    Target m_target[16];
};

using Widths = testing::Types<std::pair<char, char>, std::pair<char, wchar_t>, std::pair<wchar_t, char>,
                              std::pair<wchar_t, wchar_t>>;
TYPED_TEST_SUITE(CopyStringTest, Widths);

TYPED_TEST(CopyStringTest, TruncatesWhereTheSourceLeavesNoRoomForTheTerminator) {
    using To = typename TypeParam::first_type;
    for (const auto& [text, size, copied] :
         {std::tuple{"abc", 8u, "abc"}, {"abc", 4u, "abc"}, {"abc", 3u, "ab"}, {"abc", 1u, ""}, {"", 1u, ""}}) {
        EXPECT_EQ(this->Copy(text, size), std::strlen(text) < size ? 0u : 1u) << size;
        EXPECT_EQ(this->Result(), As<To>(copied));
        EXPECT_EQ(this->m_target[size], To('#')) << size;
    }
}

TYPED_TEST(CopyStringTest, ReportsBadArgumentsOnTheirLinesAndStaysInBounds) {
    using To = typename TypeParam::first_type;
    using From = typename TypeParam::second_type;
    const bool wideTarget = sizeof(To) == 2;
    const int line = sizeof(From) == 1 ? (wideTarget ? 55 : 13) : (wideTarget ? 76 : 34);
    const auto report = [=](int offset, const char* text) {
        return "StringConversions:" + std::to_string(line + offset) + " " + text;
    };
    Reports reports;
    EXPECT_EQ(CopyString(this->m_target, static_cast<const From*>(nullptr), 16), 1u);
    EXPECT_EQ(this->Result(), As<To>(""));
    EXPECT_EQ(reports.Take(), Texts{report(1, "pSrc")});
    EXPECT_EQ(CopyString(static_cast<To*>(nullptr), static_cast<const From*>(nullptr), 0), 1u);
    EXPECT_EQ(reports.Take(), (Texts{report(0, "pDest"), report(1, "pSrc"), report(2, "DestSizeInChars > 0")}));
    EXPECT_EQ(this->Copy("abc", 0), 1u);
    EXPECT_EQ(this->m_target[0], To('#'));
}

} // namespace

TEST(CopyString, ClosesTheTextBeforeACharacterThatCannotBeConverted) {
    const auto copy = [](const wchar_t* text, unsigned int size) {
        std::string target(8, '#');
        const unsigned long truncated = CopyString(target.data(), text, size);
        EXPECT_LT(target.find('\0'), size);
        return std::to_string(truncated) + target.c_str();
    };
    EXPECT_EQ(copy(L"ab\x4E2Dz", 8), "0ab");
    // If a character becomes two bytes, the text may end before the buffer does, or fill it.
    ASSERT_NE(std::setlocale(LC_ALL, ".932"), nullptr);
    for (const unsigned int size : {2u, 3u, 4u}) EXPECT_EQ(copy(L"\x3042\x3042", size)[0], size == 2 ? '1' : '0');
}

TEST(Widening, Odd02TakesBytesAsSignedAndNarrowingDropsTheHighByte) {
    wchar_t wide[4];
    ASCII_TO_UNICODE(wide, "a\xE9");
    EXPECT_STREQ(wide, L"a\xFFE9");
    char narrow[4];
    UNICODE_TO_ASCII(narrow, L"\x4E41z");
    EXPECT_STREQ(narrow, "Az");
}

TEST(Trim, Odd03And04TheWidthsDifferWhereOnlyBlanksFollowTheFirstCharacter) {
    struct Row {
        const char *text, *narrowRight, *wideRight, *narrowBoth, *wideBoth;
    };
    for (const Row& row :
         {Row{"", "", "", "", ""}, Row{"ab ", "ab", "ab", "ab", "ab"}, Row{"a  ", "a  ", "a", "a  ", "a"},
          Row{"   ", "   ", " ", "", ""}, Row{"  x  ", "  x", "  x", "x  ", "x"},
          Row{"\t\r\na b\v\f", "\t\r\na b", "\t\r\na b", "a b", "a b"}}) {
        const auto trimmed = [&row]<class Char>(Char* (*trim)(Char*)) {
            std::basic_string<Char> text = As<Char>(row.text);
            EXPECT_EQ(trim(text.data()), text.data());
            return std::basic_string<Char>(text.c_str());
        };
        EXPECT_EQ(trimmed.template operator()<char>(TrimRight), row.narrowRight) << row.text;
        EXPECT_EQ(trimmed.template operator()<wchar_t>(TrimRight), As<wchar_t>(row.wideRight)) << row.text;
        EXPECT_EQ(trimmed.template operator()<char>(Trim), row.narrowBoth) << row.text;
        EXPECT_EQ(trimmed.template operator()<wchar_t>(Trim), As<wchar_t>(row.wideBoth)) << row.text;
    }
}

TEST(Trim, BytesAbove0x7FAreLeftAlone) {
    char text[] = "\xA0\x85xy\xA0";
    EXPECT_STREQ(Trim(text), "\xA0\x85xy\xA0");
}
