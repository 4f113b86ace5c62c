#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/status.h>
#include <tessel/system/datetime.h>

#include <chrono>
#include <climits>
#include <cwchar>

namespace {

constexpr FORMAT_ID kBehindLast = static_cast<FORMAT_ID>(24);
const CDateTimeEnglish kEvening(2004, 2, 29, 20, 5, 9, 7);
const CDateTimeEnglish kZero(0, 0, 0, 0, 0, 0, 0);

/// All components of a time, the milliseconds last.
std::wstring Whole(const CDateTimeEnglish& time) {
    return time.Format(FID_RECORD_MILLISECONDS);
}

/// Sets the calling thread's language.
void Speak(WORD language) {
    SetThreadLocale(MAKELCID(language, SORT_DEFAULT));
}

TEST(DateTime, EveryDayFrom1850To2400AgreesWithTheCalendar) {
    using namespace std::chrono;
    for (int y = 1850; y <= 2400; ++y) {
        for (int md = 0; md < 12 * 32; ++md) {
            const int m = md / 32 + 1;
            const int d = md % 32 + 1;
            const year_month_day date{year(y), month(static_cast<unsigned>(m)), day(static_cast<unsigned>(d))};
            const CDateTimeEnglish time(y, m, d, 0, 0, 0, 0);
            ASSERT_EQ(time.GetStatus(), date.ok() ? DTS_VALID : DTS_INVALID) << y << '-' << m << '-' << d;
            if (!date.ok()) continue;
            ASSERT_EQ(time.GetDayOfWeek(), static_cast<int>(weekday(sys_days(date)).c_encoding())) << y << m << d;
            ASSERT_EQ(time.IsLeapYear(), date.year().is_leap());
        }
    }
}

TEST(DateTime, ComponentsOutOfRangeAreInvalidAndAllZeroIsNullOdd170) {
    EXPECT_EQ(kZero.GetStatus(), DTS_NULL);
    EXPECT_EQ(CDateTimeEnglish(1850, 1, 1, 23, 59, 59, 999).GetStatus(), DTS_VALID);
    EXPECT_EQ(CDateTimeEnglish(65535, 12, 31, 0, 0, 0, 0).GetStatus(), DTS_VALID);
    const CDateTimeEnglish invalid[] = {
        {0, 0, 0, 0, 0, 0, 1},       {1849, 12, 31, 0, 0, 0, 0}, {65536 + 2000, 1, 1, 0, 0, 0, 0},
        {2000, 0, 1, 0, 0, 0, 0},    {2000, 13, 1, 0, 0, 0, 0},  {2000, 1, 0, 0, 0, 0, 0},
        {2000, 1, 1, 24, 0, 0, 0},   {2000, 1, 1, 0, 60, 0, 0},  {2000, 1, 1, 0, 0, 60, 0},
        {2000, 1, 1, 0, 0, 0, 1000}, {2000, 1, 1, -1, 0, 0, 0},  {2000, 1, 1, 0, -1, 0, 0},
        {2000, 1, 1, 0, 0, -1, 0},   {2000, 1, 1, 0, 0, 0, -1},  {-1, -1, -1, -1, -1, -1, -1}};
    for (const auto& time : invalid) EXPECT_EQ(time.GetStatus(), DTS_INVALID) << &time - invalid;
}

TEST(DateTime, DateAndTimeAreSetSeparatelyAndWhatDoesNotFitStaysInvalid) {
    CDateTimeEnglish time(kEvening);
    EXPECT_EQ(time.SetDate(2005, 2, 29), DTS_INVALID);
    EXPECT_EQ(time.SetDate(2005, 3, 1), DTS_VALID);
    EXPECT_EQ(time.SetTime(25, 0, 0, 0), DTS_INVALID);
    EXPECT_EQ(time.SetTime(1, 2, 3, 4), DTS_VALID);
    EXPECT_EQ(Whole(time), L"20050301010203004");
    for (const int tooGreat : {-1, 65536 + 2004}) {
        (void)time.SetDateTime(tooGreat, 1, 1, 0, 0, 0, 0);
        EXPECT_EQ(time.SetTime(1, 2, 3, 4), DTS_INVALID) << tooGreat;
    }
    (void)time.SetTime(65536 + 8, 0, 0, 0);
    EXPECT_EQ(time.SetDate(2005, 3, 1), DTS_INVALID);
}

TEST(DateTime, EveryLayoutFitsItsSizeAndIsReadBackOdd171) {
    std::wstring texts;
    for (int number = 0; number < kBehindLast; ++number) {
        const auto id = static_cast<FORMAT_ID>(number);
        const bool isRead = id < FID_DATE_NAME || (id > FID_DATE_NAME_TIME12 && id < FID_DAY);
        const wchar_t* const text = kEvening.Format(id);
        texts += text + (L" = " + std::to_wstring(CDateTimeEnglish::MaxFormatSize(id))) + L"|";
        CDateTimeEnglish read(1999, 1, 2, 3, 4, 5, 6);
        EXPECT_EQ(read.SetDateTime(id, text), isRead ? DTS_VALID : DTS_NULL) << id;
        EXPECT_STREQ(read.Format(id), isRead ? text : L"");
        EXPECT_EQ(read == kZero, !isRead);
        for (const std::wstring& wrong : {std::wstring(), text + std::wstring(L"0"), std::wstring(text + 1)})
            EXPECT_EQ(read.SetDateTime(id, wrong.c_str()), isRead ? DTS_INVALID : DTS_NULL) << wrong;
    }
    EXPECT_EQ(texts, L"20040229 = 9|02/29/2004 = 11|29-02-2004 = 11|29 Feb 2004 = 12|29 Feb 2004 20:05 = 19|"
                     L"29 Feb 2004 08:05 PM = 22|29-02-2004 20:05 = 18|02/29/2004 20:05 = 18|29-02-2004 08:05 PM = 21|"
                     L"02/29/2004 20:05:09 = 21|02/29/2004 20:05:09.007 = 25|29-02-2004 20:05:09 = 21|"
                     L"20040229200509 = 15|200509 = 7|20:05 = 6|08:05 PM = 9|20:05:09 = 9|08:05:09 PM = 12|"
                     L"20040229 = 9|200509 = 7|20040229200509 = 15|20040229200509007 = 18|Sunday = 20|Sunday = 10|");
    CDateTimeEnglish read(1999, 1, 2, 3, 4, 5, 6);
    (void)read.SetDateTime(FID_DATE_SLASH, L"02/29/2004");
    EXPECT_EQ(Whole(read), L"20040229000000000") << "clears the time";
}

TEST(DateTime, HoursOfTheTwelveHourClockAreWrittenAndRead) {
    constexpr std::pair<int, const wchar_t*> kHours[] = {{0, L"12:30 AM"},  {1, L"01:30 AM"},  {11, L"11:30 AM"},
                                                         {12, L"12:30 PM"}, {13, L"01:30 PM"}, {23, L"11:30 PM"}};
    for (const auto& [hour, text] : kHours) {
        EXPECT_STREQ(CDateTimeEnglish(2000, 1, 1, hour, 30, 0, 0).Format(FID_TIME12), text);
        EXPECT_EQ(CDateTimeEnglish(FID_TIME12, text).GetHour(), hour);
    }
    EXPECT_EQ(CDateTimeEnglish(FID_TIME12, L"01:30 pm").GetHour(), 13);
    CDateTimeEnglish time(kEvening);
    for (const wchar_t* text : {L"00:30 AM", L"13:30 PM", L"01:30 XM", L"01:30 ", L"01:30 AMs"}) {
        EXPECT_EQ(time.SetDateTime(FID_TIME12, text), DTS_INVALID) << text;
        EXPECT_EQ(time, kEvening) << "the components stay";
    }
    struct WithoutIndicators : CDateTimeEnglish {
        void GetMeridianIndicator(int, wchar_t*, unsigned int) const override {}
    };
    EXPECT_EQ(WithoutIndicators().SetDateTime(FID_TIME12, L"08:05 "), DTS_INVALID) << "morning or evening";
}

TEST(DateTime, FieldsAreReadAtTheirPlacesWhateverTheSeparatorsOdd172) {
    EXPECT_EQ(Whole({FID_DATE_SLASH_SECONDS, L"02x29x2004x20x05x9x"}), L"20040229200509000");
    EXPECT_EQ(Whole({FID_DATE_DASH, L"1 / 2-2004"}), L"20040201000000000");
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_DASH, L"-1-02-2004").GetStatus(), DTS_INVALID);
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_PACKED, L"-0010101").GetStatus(), DTS_INVALID);
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_PACKED, L"xxxxxxxx").GetStatus(), DTS_NULL);
}

TEST(DateTime, UnknownLayoutEmptiesTheObjectAndIsReportedForAValidOneOnlyOdd173And174) {
    Reports reports;
    EXPECT_STREQ(CDateTimeEnglish(2000, 2, 30, 0, 0, 0, 0).Format(kBehindLast), L"");
    EXPECT_EQ(reports.Take(), Texts{});
    for (const FORMAT_ID id : {kBehindLast, static_cast<FORMAT_ID>(-1)}) {
        EXPECT_STREQ(kEvening.Format(id), L"");
        EXPECT_EQ(reports.Take(), Texts{"DateTimeEnglish:427 CDateTimeEnglish::Format(): Invalid Format Type"});
        EXPECT_EQ(CDateTimeEnglish::MaxFormatSize(id), 1U);
        CDateTimeEnglish time(kEvening);
        EXPECT_EQ(time.SetDateTime(id, L"20040229"), DTS_NULL);
        EXPECT_EQ(time, kZero);
    }
}

TEST(DateTime, TextIsCopiedCompletelyOrNotAtAllOdd175) {
    wchar_t text[] = L"##########";
    const wchar_t* const formatted = kEvening.Format(FID_TIME);
    EXPECT_EQ(kEvening.GetFormattedString(FID_DATE_PACKED, text, 8), 1UL);
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(kEvening.GetFormattedString(FID_DATE_PACKED, text, 9), 0UL);
    EXPECT_EQ(kEvening.GetFormattedString(FID_DATE_PACKED, nullptr, 9), 0UL);
    EXPECT_EQ(std::wstring(text, 10), std::wstring(L"20040229\0#", 10));
    EXPECT_EQ(CDateTimeEnglish(1, 1, 1, 0, 0, 0, 0).GetFormattedString(FID_DATE_PACKED, text, 9), 0UL);
    EXPECT_STREQ(text, L"");
    EXPECT_STREQ(formatted, L"20:05") << "the object's own text";
}

TEST(DateTime, ComponentsThatDoNotExistHaveNoNames) {
    const auto format = [](CDateTimeEnglish time, FORMAT_ID id) {
        time.SetStatus(DTS_VALID);
        return std::wstring(time.Format(id));
    };
    EXPECT_EQ(format({2000, 13, 1, 99, 0, 0, 0}, FID_DATE_NAME_TIME12), L"01  2000 87:00 PM");
    EXPECT_EQ(format({65535, 1, 1, 0, 0, 0, 0}, FID_DATE_SLASH), L"01/01/65535");
    EXPECT_EQ(format({65535, 65535, 65535, 65535, 65535, 65535, 65535}, FID_DATE_SLASH_MILLISECONDS),
              L"65535/65535/65535 65535:65535:6");
    Speak(MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT));
    const CDateTime local(kEvening);
    for (const CDateTimeEnglish* time : {&kEvening, static_cast<const CDateTimeEnglish*>(&local)}) {
        for (const int index : {-1, 13, INT_MIN, INT_MAX}) {
            wchar_t texts[2][5] = {L"####", L"####"};
            time->GetMonthText(index, texts[0], 4);
            time->GetDayText(index, texts[1], 4);
            EXPECT_EQ(texts[0][0] + texts[1][0], 0) << index;
        }
        wchar_t text[5] = L"####";
        time->GetMonthText(1, text, 3);
        EXPECT_STREQ(text, L"Ja");
    }
}

TEST(DateTime, ComparisonsGoFromTheYearToTheMillisecond) {
    const CDateTimeEnglish later[] = {
        {2005, 2, 28, 20, 5, 9, 7}, {2004, 3, 1, 20, 5, 9, 7},   {2004, 2, 30, 20, 5, 9, 7}, {2004, 2, 29, 21, 0, 9, 7},
        {2004, 2, 29, 20, 6, 0, 7}, {2004, 2, 29, 20, 5, 10, 0}, {2004, 2, 29, 20, 5, 9, 8}};
    for (const CDateTimeEnglish& time : later) {
        EXPECT_TRUE(kEvening < time && kEvening <= time && time > kEvening && time >= kEvening && time != kEvening);
        EXPECT_FALSE(time < kEvening || time <= kEvening || kEvening > time || kEvening >= time || time == kEvening);
    }
    const CDateTime same(kEvening);
    EXPECT_TRUE(same == kEvening && kEvening == same && same <= same && same >= same);
}

TEST(DateTime, CopiesLeaveTheTextToItsObjectAndTheDayOfTheWeekIsComputed) {
    CDateTimeEnglish time(1999, 1, 2, 3, 4, 5, 6);
    const wchar_t* const text = time.Format(FID_TIME);
    (void)kEvening.Format(FID_DATE_PACKED);
    time = kEvening;
    EXPECT_STREQ(text, L"03:04");
    EXPECT_EQ(time, kEvening);
    SYSTEMTIME taken = kEvening.GetSystemTime();
    taken.wDayOfWeek = 3;
    time = taken;
    EXPECT_EQ(time.GetDayOfWeek(), 0);
    EXPECT_EQ(CDateTime(taken), time);
    EXPECT_EQ(CDateTime(CDateTimeEnglish(2000, 2, 30, 0, 0, 0, 0)).GetStatus(), DTS_INVALID);
}

TEST(DateTime, ClockIsReadAndSetInLocalTime) {
    SYSTEMTIME setTo{};
    int calls = 0;
    const ImportPatch reads("GetLocalTime", &GetLocalTime, [](auto* time) { *time = kEvening.GetSystemTime(); });
    const ImportPatch sets("SetLocalTime", &SetLocalTime, [&](auto* time) { return setTo = *time, ++calls == 2; });
    EXPECT_EQ(CDateTimeEnglish(), kEvening);
    EXPECT_EQ(CDateTimeEnglish::GetLocalTime(), kEvening);
    EXPECT_EQ(CDateTime::GetLocalTime(), kEvening);
    EXPECT_EQ(Whole({FID_TIME, L"21:22"}), L"20040229212200000");
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_PACKED, nullptr).SetDateTime(FID_TIME, L"21:22"), DTS_INVALID)
        << "no date is taken from the clock";
    EXPECT_EQ(CDateTimeEnglish(1999, 2, 29, 0, 0, 0, 0).SetLocalTime(), -1);
    EXPECT_EQ(kZero.SetLocalTime(), -1);
    EXPECT_EQ(kEvening.SetLocalTime(), -1) << "the first call, which is refused";
    EXPECT_EQ(kEvening.SetLocalTime(), 0);
    EXPECT_EQ(CDateTimeEnglish(setTo), kEvening);
}

/// The system's name in the calling thread's language.
std::wstring SystemName(LCTYPE kind) {
    wchar_t name[80];
    GetLocaleInfoW(GetThreadLocale(), kind, name, 80);
    return name;
}

TEST(DateTime, NamesAreThoseThatTheSystemHasInTheLanguageOfTheThread) {
    const CDateTime local;
    const std::pair<WORD, const CDateTimeEnglish*> rows[] = {
        {LANG_ENGLISH, &kEvening}, {LANG_ENGLISH, &local},    {LANG_GERMAN, &local},  {LANG_FRENCH, &local},
        {LANG_ITALIAN, &local},    {LANG_PORTUGUESE, &local}, {LANG_SPANISH, &local}, {LANG_SWEDISH, &local}};
    for (const auto& [id, time] : rows) {
        Speak(static_cast<WORD>(MAKELANGID(id, SUBLANG_DEFAULT)));
        wchar_t text[20];
        for (int index = 0; index < 12; ++index) {
            std::wstring month = SystemName(LOCALE_SMONTHNAME1 + static_cast<LCTYPE>(index));
            if (id == LANG_FRENCH && (index == 5 || index == 6)) month.erase(2, 1); // juin, juillet
            time->GetMonthText(index + 1, text, 4);
            EXPECT_EQ(text, month.substr(0, 3));
        }
        for (int index = 0; index < 7; ++index) {
            const std::wstring day = SystemName(LOCALE_SDAYNAME1 + static_cast<LCTYPE>(index + 6) % 7);
            time->GetDayText(index, text, 20);
            EXPECT_EQ(text, day);
            time->GetDayText(index, text, 4);
            EXPECT_TRUE(std::wcslen(text) > 1 && day.starts_with(text)) << text;
        }
    }
}

TEST(DateTime, NamesFitTheLayoutsAndAnUnknownLanguageIsEnglish) {
    constexpr std::pair<WORD, std::pair<const wchar_t*, const wchar_t*>> kLanguages[] = {
        {MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN_SWISS), {L"04 Mär 1999 08:05 PM", L"Do"}},
        {MAKELANGID(LANG_SWEDISH, SUBLANG_DEFAULT), {L"04 mar 1999 08:05 em", L"torsdag"}},
        {MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT), {L"04 Mar 1999 08:05 PM", L"Thursday"}}};
    for (const auto& [id, expected] : kLanguages) {
        Speak(id);
        const CDateTime time(1999, 3, 4, 20, 5, 0, 0);
        EXPECT_STREQ(time.Format(FID_DATE_NAME_TIME12), expected.first);
        EXPECT_EQ(CDateTime(FID_TIME12, expected.first + 12).GetHour(), 20);
        EXPECT_STREQ(time.Format(FID_DAY_BRIEF), expected.second);
    }
}

TEST(DateTime, DayOfTheWeekComesWithAStatus) {
    Speak(MAKELANGID(LANG_GERMAN, SUBLANG_DEFAULT));
    wchar_t text[] = L"###########";
    EXPECT_EQ(CDateTime::GetDayOfWeekText(4, text, 11), STATUS_OK);
    EXPECT_STREQ(text, L"Donnerstag");
    EXPECT_EQ(CDateTime::GetDayOfWeekText(4, text, 2), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_STREQ(text, L"D");
    EXPECT_EQ(CDateTime::GetDayOfWeekText(7, text, 11), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_STREQ(text, L"");
    EXPECT_STREQ(CDateTime::GetDayOfWeekTextEnglish(7), L"");
}

} // namespace
