#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/strings.h>

#include <algorithm>
#include <clocale>

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
    EXPECT_EQ(this->Copy("abc", 8), 0u);
    EXPECT_EQ(this->m_target[8], To('#'));
    EXPECT_EQ(this->Copy("abc", 4), 0u);
    EXPECT_EQ(this->Result(), As<To>("abc"));
    EXPECT_EQ(this->Copy("abc", 3), 1u);
    EXPECT_EQ(this->Result(), As<To>("ab"));
    EXPECT_EQ(this->Copy("abc", 1), 1u);
    EXPECT_EQ(this->Result(), As<To>(""));
    EXPECT_EQ(this->m_target[1], To('#'));
    EXPECT_EQ(this->Copy("", 1), 0u);
}

TYPED_TEST(CopyStringTest, ReportsBadArgumentsOnTheirLinesAndStaysInBounds) {
    using To = typename TypeParam::first_type;
    using From = typename TypeParam::second_type;
    const bool wideTarget = sizeof(To) == 2;
    const int line = sizeof(From) == 1 ? (wideTarget ? 55 : 13) : (wideTarget ? 76 : 34);
    const auto report = [line](int offset, const char* text) {
        return "StringConversions:" + std::to_string(line + offset) + " " + text;
    };
    Reports reports;
    EXPECT_EQ(CopyString(this->m_target, static_cast<const From*>(nullptr), 16), 1u);
    EXPECT_EQ(this->m_target[0], To(0));
    EXPECT_EQ(reports.Take(), Texts{report(1, "pSrc")});
    EXPECT_EQ(this->Copy("abc", 0), 1u);
    EXPECT_EQ(this->m_target[0], To('#'));
    EXPECT_EQ(reports.Take(), Texts{report(2, "DestSizeInChars > 0")});
    EXPECT_EQ(CopyString(static_cast<To*>(nullptr), static_cast<const From*>(nullptr), 0), 1u);
    EXPECT_EQ(reports.Take(), (Texts{report(0, "pDest"), report(1, "pSrc"), report(2, "DestSizeInChars > 0")}));
}

} // namespace

TEST(CopyString, ClosesTheTextBeforeACharacterThatCannotBeConverted) {
    char target[8];
    std::fill(std::begin(target), std::end(target), '#');
    EXPECT_EQ(CopyString(target,
                         L"ab\x4E2D"
                         L"c",
                         8),
              0u);
    EXPECT_STREQ(target, "ab");
    // Where a character becomes two bytes, the text may stop short of the room, or fill it.
    ASSERT_NE(std::setlocale(LC_ALL, ".932"), nullptr);
    for (const unsigned int size : {2u, 3u, 4u}) {
        std::fill(std::begin(target), std::end(target), '#');
        EXPECT_EQ(CopyString(target, L"\x3042\x3042", size), size == 2 ? 1u : 0u);
        EXPECT_NE(std::find(target, target + size, '\0'), target + size);
    }
}

TEST(Widening, Odd02TakesBytesAsSignedAndNarrowingDropsTheHighByte) {
    wchar_t wide[4];
    ASCII_TO_UNICODE(wide, "a\xE9");
    EXPECT_STREQ(wide, L"a\xFFE9");
    char narrow[4];
    UNICODE_TO_ASCII(narrow, L"\x4E41z");
    EXPECT_STREQ(narrow, "Az");
    ASCII_TO_UNICODE(nullptr, "a");
    UNICODE_TO_ASCII(narrow, nullptr);
    EXPECT_STREQ(narrow, "Az");
}

struct TrimCase {
    const char* text;
    const char* narrowRight;
    const char* wideRight;
    const char* narrowBoth;
    const char* wideBoth;

    friend void PrintTo(const TrimCase& c, std::ostream* out) { *out << testing::PrintToString(c.text); }
};

class Odd03And04TrimTest : public testing::TestWithParam<TrimCase> {};

TEST_P(Odd03And04TrimTest, TheWidthsDifferWhereOnlyBlanksFollowTheFirstCharacter) {
    const TrimCase& c = GetParam();
    const auto trimmed = [&c]<class Char>(Char* (*trim)(Char*)) {
        std::basic_string<Char> text = As<Char>(c.text);
        EXPECT_EQ(trim(text.data()), text.data());
        return std::basic_string<Char>(text.c_str());
    };
    EXPECT_EQ(trimmed.template operator()<char>(TrimRight), c.narrowRight);
    EXPECT_EQ(trimmed.template operator()<wchar_t>(TrimRight), As<wchar_t>(c.wideRight));
    EXPECT_EQ(trimmed.template operator()<char>(Trim), c.narrowBoth);
    EXPECT_EQ(trimmed.template operator()<wchar_t>(Trim), As<wchar_t>(c.wideBoth));
}

INSTANTIATE_TEST_SUITE_P(Texts, Odd03And04TrimTest,
                         testing::Values(TrimCase{"", "", "", "", ""}, TrimCase{"ab  ", "ab", "ab", "ab", "ab"},
                                         TrimCase{"a  ", "a  ", "a", "a  ", "a"}, TrimCase{"   ", "   ", " ", "", ""},
                                         TrimCase{"  x  ", "  x", "  x", "x  ", "x"},
                                         TrimCase{"\t\r\na b\v\f", "\t\r\na b", "\t\r\na b", "a b", "a b"}));

TEST(Trim, NullAndBytesAbove0x7FAreLeftAlone) {
    EXPECT_EQ(Trim(static_cast<char*>(nullptr)), nullptr);
    EXPECT_EQ(Trim(static_cast<wchar_t*>(nullptr)), nullptr);
    char text[] = "\xA0\x85xy\xA0";
    EXPECT_STREQ(Trim(text), "\xA0\x85xy\xA0");
}
