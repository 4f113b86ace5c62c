#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/status.h>
#include <tessel/system/datetime.h>

#include <chrono>
#include <climits>
#include <cwchar>
#include <initializer_list>
#include <iterator>
#include <string>

namespace {

constexpr FORMAT_ID kBehindLast = static_cast<FORMAT_ID>(24);
const CDateTimeEnglish kEvening(2004, 2, 29, 20, 5, 9, 7);

FORMAT_ID Id(int number) {
    return static_cast<FORMAT_ID>(number);
}

/// The calling thread's language for as long as the object lives.
struct ThreadLanguage {
    explicit ThreadLanguage(WORD language) { SetThreadLocale(MAKELCID(language, SORT_DEFAULT)); }
    ~ThreadLanguage() { SetThreadLocale(before); }
    ThreadLanguage(const ThreadLanguage&) = delete;
    ThreadLanguage& operator=(const ThreadLanguage&) = delete;
    LCID before = GetThreadLocale();
};

TEST(DateTime, EveryDayFrom1850To2400AgreesWithTheCalendar) {
    using namespace std::chrono;
    for (int y = 1850; y <= 2400; ++y) {
        for (unsigned m = 1; m <= 12; ++m) {
            for (unsigned d = 1; d <= 32; ++d) {
                const year_month_day date{year(y), month(m), day(d)};
                CDateTimeEnglish time(y, static_cast<int>(m), static_cast<int>(d), 0, 0, 0, 0);
                ASSERT_EQ(time.GetStatus(), date.ok() ? DTS_VALID : DTS_INVALID) << y << '-' << m << '-' << d;
                if (!date.ok()) continue;
                ASSERT_EQ(time.GetDayOfWeek(), static_cast<int>(weekday(sys_days(date)).c_encoding())) << y << m << d;
                ASSERT_EQ(time.IsLeapYear(), date.year().is_leap());
            }
        }
    }
}

TEST(DateTime, ComponentsOutOfRangeAreInvalidAndAllZeroIsNullOdd170) {
    constexpr struct {
        int values[7];
        DateTimeStatus status;
    } kCases[] = {
        {{0, 0, 0, 0, 0, 0, 0}, DTS_NULL},          {{0, 0, 0, 0, 0, 0, 1}, DTS_INVALID},
        {{1849, 12, 31, 0, 0, 0, 0}, DTS_INVALID},  {{1850, 1, 1, 23, 59, 59, 999}, DTS_VALID},
        {{65535, 12, 31, 0, 0, 0, 0}, DTS_VALID},   {{65536 + 2000, 1, 1, 0, 0, 0, 0}, DTS_INVALID},
        {{2000, 0, 1, 0, 0, 0, 0}, DTS_INVALID},    {{2000, 13, 1, 0, 0, 0, 0}, DTS_INVALID},
        {{2000, 1, 0, 0, 0, 0, 0}, DTS_INVALID},    {{2000, 1, 1, 24, 0, 0, 0}, DTS_INVALID},
        {{2000, 1, 1, 0, 60, 0, 0}, DTS_INVALID},   {{2000, 1, 1, 0, 0, 60, 0}, DTS_INVALID},
        {{2000, 1, 1, 0, 0, 0, 1000}, DTS_INVALID}, {{2000, 1, 1, -1, 0, 0, 0}, DTS_INVALID},
        {{2000, 1, 1, 0, -1, 0, 0}, DTS_INVALID},   {{2000, 1, 1, 0, 0, -1, 0}, DTS_INVALID},
        {{2000, 1, 1, 0, 0, 0, -1}, DTS_INVALID},   {{-1, -1, -1, -1, -1, -1, -1}, DTS_INVALID},
    };
    for (const auto& [v, status] : kCases) {
        CDateTimeEnglish time;
        EXPECT_EQ(time.SetDateTime(v[0], v[1], v[2], v[3], v[4], v[5], v[6]), status) << v[0] << ' ' << v[1];
        EXPECT_EQ(time.GetStatus(), status);
    }
    CDateTimeEnglish time(kEvening);
    EXPECT_EQ(time.SetDate(2005, 2, 29), DTS_INVALID);
    EXPECT_EQ(time.SetDate(2005, 3, 1), DTS_VALID);
    EXPECT_EQ(time.SetTime(25, 0, 0, 0), DTS_INVALID);
    EXPECT_EQ(time.SetTime(1, 2, 3, 4), DTS_VALID);
    EXPECT_EQ(time, CDateTimeEnglish(2005, 3, 1, 1, 2, 3, 4));
    for (const int tooGreat : {-1, 65536 + 2004}) {
        (void)time.SetDateTime(tooGreat, 1, 1, 0, 0, 0, 0);
        EXPECT_EQ(time.SetTime(1, 2, 3, 4), DTS_INVALID) << "the year stays invalid";
    }
    (void)time.SetTime(65536 + 8, 0, 0, 0);
    EXPECT_EQ(time.SetDate(2005, 3, 1), DTS_INVALID) << "the hour stays invalid";
}

TEST(DateTime, EveryLayoutFitsItsSizeAndIsReadBackOdd171) {
    constexpr struct {
        const wchar_t* text;
        unsigned int size;
        const wchar_t* readBack; // in the layout that has all components
    } kLayouts[] = {
        {L"20040229", 9, L"20040229000000000"},
        {L"02/29/2004", 11, L"20040229000000000"},
        {L"29-02-2004", 11, L"20040229000000000"},
        {L"29 Feb 2004", 12, nullptr},
        {L"29 Feb 2004 20:05", 19, nullptr},
        {L"29 Feb 2004 08:05 PM", 22, nullptr},
        {L"29-02-2004 20:05", 18, L"20040229200500000"},
        {L"02/29/2004 20:05", 18, L"20040229200500000"},
        {L"29-02-2004 08:05 PM", 21, L"20040229200500000"},
        {L"02/29/2004 20:05:09", 21, L"20040229200509000"},
        {L"02/29/2004 20:05:09.007", 25, L"20040229200509007"},
        {L"29-02-2004 20:05:09", 21, L"20040229200509000"},
        {L"20040229200509", 15, L"20040229200509000"},
        {L"200509", 7, L"19990102200509000"},
        {L"20:05", 6, L"19990102200500000"},
        {L"08:05 PM", 9, L"19990102200500000"},
        {L"20:05:09", 9, L"19990102200509000"},
        {L"08:05:09 PM", 12, L"19990102200509000"},
        {L"20040229", 9, L"20040229000000000"},
        {L"200509", 7, L"19990102200509000"},
        {L"20040229200509", 15, L"20040229200509000"},
        {L"20040229200509007", 18, L"20040229200509007"},
        {L"Sunday", 20, nullptr},
        {L"Sunday", 10, nullptr},
    };
    for (int id = 0; id < static_cast<int>(std::size(kLayouts)); ++id) {
        const auto& [text, size, readBack] = kLayouts[id];
        EXPECT_EQ(CDateTimeEnglish::MaxFormatSize(Id(id)), size) << id;
        EXPECT_STREQ(kEvening.Format(Id(id)), text) << id;
        if (readBack == nullptr) continue;
        CDateTimeEnglish read(1999, 1, 2, 3, 4, 5, 6);
        EXPECT_EQ(read.SetDateTime(Id(id), text), DTS_VALID) << id;
        EXPECT_STREQ(read.Format(FID_RECORD_MILLISECONDS), readBack) << id;
    }
}

TEST(DateTime, HoursOfTheTwelveHourClockAreWrittenAndRead) {
    for (int hour = 0; hour < 24; ++hour) {
        const CDateTimeEnglish time(2000, 1, 1, hour, 30, 0, 0);
        const std::wstring text = time.Format(FID_TIME12);
        wchar_t expected[9];
        std::swprintf(expected, 9, L"%02d:30 ", hour % 12 == 0 ? 12 : hour % 12);
        EXPECT_EQ(text, expected + std::wstring(hour < 12 ? L"AM" : L"PM"));
        CDateTimeEnglish read(2000, 1, 1, 0, 0, 0, 0);
        EXPECT_EQ(read.SetDateTime(FID_TIME12, text.c_str()), DTS_VALID);
        EXPECT_EQ(read, time);
    }
    EXPECT_EQ(CDateTimeEnglish(FID_TIME12, L"01:30 pm").GetHour(), 13);
    CDateTimeEnglish time(kEvening);
    for (const wchar_t* text : {L"00:30 AM", L"13:30 PM", L"01:30 XM", L"01:30 ", L"01:30 AMs"}) {
        EXPECT_EQ(time.SetDateTime(FID_TIME12, text), DTS_INVALID) << text;
        EXPECT_EQ(time, kEvening) << "the components stay";
    }
    struct Untold : CDateTimeEnglish {
        void GetMeridianIndicator(int, wchar_t*, unsigned int) const override {}
    };
    EXPECT_EQ(Untold().SetDateTime(FID_TIME12, L"08:05 "), DTS_INVALID) << "morning or evening";
}

TEST(DateTime, TextsOfWrongLengthAreInvalidWhateverTheyHold) {
    for (int id = 0; id <= FID_RECORD_MILLISECONDS; ++id) {
        const std::size_t right = std::wcslen(kEvening.Format(Id(id)));
        for (std::size_t length = 0; length < 60; ++length) {
            const std::wstring text(length, L'0');
            const DateTimeStatus status = CDateTimeEnglish(Id(id), text.c_str()).GetStatus();
            const bool isRead = id < FID_DATE_NAME || id > FID_DATE_NAME_TIME12;
            if (isRead && length == right) continue;
            EXPECT_EQ(status, isRead ? DTS_INVALID : DTS_NULL) << id << ' ' << length;
        }
    }
    CDateTimeEnglish none(FID_DATE_PACKED, nullptr);
    EXPECT_EQ(none.GetStatus(), DTS_INVALID);
    EXPECT_EQ(none.SetTime(12, 0, 0, 0), DTS_INVALID) << "no date is taken from the clock";
    EXPECT_EQ(none.SetDateTime(FID_TIME, L"21:22"), DTS_INVALID);
}

TEST(DateTime, FieldsAreCutAtTheirPlacesWhateverPartsThemOdd172) {
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_SLASH_SECONDS, L"02x29x2004x20x05x9x"),
              CDateTimeEnglish(2004, 2, 29, 20, 5, 9, 0));
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_DASH, L"1 / 2-2004"), CDateTimeEnglish(2004, 2, 1, 0, 0, 0, 0));
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_DASH, L"-1-02-2004").GetStatus(), DTS_INVALID);
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_PACKED, L"-0010101").GetStatus(), DTS_INVALID);
    EXPECT_EQ(CDateTimeEnglish(FID_DATE_PACKED, L"xxxxxxxx").GetStatus(), DTS_NULL);
}

TEST(DateTime, LayoutsWithNamesAreNotReadAndEmptyTheObjectOdd173) {
    for (const FORMAT_ID id : {FID_DATE_NAME, FID_DATE_NAME_TIME, FID_DAY, FID_DAY_BRIEF, kBehindLast, Id(-1)}) {
        CDateTimeEnglish time(kEvening);
        EXPECT_EQ(time.SetDateTime(id, kEvening.Format(FID_DATE_NAME)), DTS_NULL);
        EXPECT_EQ(time, CDateTimeEnglish(0, 0, 0, 0, 0, 0, 0));
        EXPECT_STREQ(time.Format(FID_DATE_PACKED), L"");
    }
}

TEST(DateTime, UnknownLayoutIsReportedForAValidObjectOnlyOdd174) {
    Reports reports;
    EXPECT_STREQ(CDateTimeEnglish(2000, 2, 30, 0, 0, 0, 0).Format(kBehindLast), L"");
    EXPECT_EQ(reports.Take(), Texts{});
    for (const int id : {24, -1}) {
        EXPECT_STREQ(kEvening.Format(Id(id)), L"");
        EXPECT_EQ(reports.Take(), Texts{"DateTimeEnglish:427 CDateTimeEnglish::Format(): Invalid Format Type"});
        EXPECT_EQ(CDateTimeEnglish::MaxFormatSize(Id(id)), 1U);
    }
}

TEST(DateTime, TextIsCopiedWholeOrNotAtAllOdd175) {
    wchar_t text[] = L"##########";
    const wchar_t* const formatted = kEvening.Format(FID_TIME);
    EXPECT_EQ(kEvening.GetFormattedString(FID_DATE_PACKED, text, 8), 1UL);
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(kEvening.GetFormattedString(FID_DATE_PACKED, text, 9), 0UL);
    EXPECT_EQ(std::wstring(text, 10), std::wstring(L"20040229\0#", 10));
    EXPECT_EQ(kEvening.GetFormattedString(FID_DATE_PACKED, text, 0), 0UL);
    EXPECT_EQ(kEvening.GetFormattedString(FID_DATE_PACKED, nullptr, 9), 0UL);
    EXPECT_STREQ(text, L"20040229");
    EXPECT_EQ(CDateTimeEnglish(1, 1, 1, 0, 0, 0, 0).GetFormattedString(FID_DATE_PACKED, text, 9), 0UL);
    EXPECT_STREQ(text, L"");
    EXPECT_STREQ(CDateTimeEnglish(65535, 1, 1, 0, 0, 0, 0).Format(FID_DATE_SLASH_MILLISECONDS),
                 L"01/01/65535 00:00:00.000");
    EXPECT_STREQ(formatted, L"20:05") << "the object's own text";
}

TEST(DateTime, ComponentsThatDoNotExistHaveNoNames) {
    CDateTimeEnglish english(2000, 13, 1, 99, 0, 0, 0);
    english.SetStatus(DTS_VALID);
    EXPECT_STREQ(english.Format(FID_DATE_NAME_TIME12), L"01  2000 87:00 PM");
    CDateTimeEnglish wild(65535, 65535, 65535, 65535, 65535, 65535, 65535);
    wild.SetStatus(DTS_VALID);
    EXPECT_STREQ(wild.Format(FID_DATE_SLASH_MILLISECONDS), L"65535/65535/65535 65535:65535:6");
    EXPECT_EQ(english.SetDateTime(2000, 0, 1, 0, 0, 0, 0), DTS_INVALID);
    const CDateTime local(english);
    for (const CDateTimeEnglish* time : std::initializer_list<const CDateTimeEnglish*>{&english, &local}) {
        wchar_t text[] = L"####";
        for (const int index : {-1, 13, INT_MIN, INT_MAX}) {
            time->GetMonthText(index, text, 4);
            EXPECT_STREQ(text, L"");
            time->GetDayText(index, std::wcscpy(text, L"####"), 4);
            EXPECT_STREQ(text, L"");
        }
        time->GetMonthText(1, text, 3);
        EXPECT_STREQ(text, L"Ja");
        time->GetMonthText(1, nullptr, 3);
        time->GetDayText(1, text, 0);
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

TEST(DateTime, CopiesLeaveTheTextToItsObject) {
    CDateTimeEnglish time(1999, 1, 2, 3, 4, 5, 6);
    const wchar_t* const text = time.Format(FID_TIME);
    (void)kEvening.Format(FID_DATE_PACKED);
    time = kEvening;
    EXPECT_STREQ(text, L"03:04");
    EXPECT_EQ(time, kEvening);
    SYSTEMTIME taken = kEvening.GetSystemTime();
    taken.wDayOfWeek = 3;
    time = taken;
    EXPECT_EQ(time.GetDayOfWeek(), 0) << "computed, not taken";
    EXPECT_EQ(CDateTime(taken), time);
    EXPECT_EQ(CDateTime(time).GetStatus(), DTS_VALID);
    time = CDateTimeEnglish(2000, 2, 30, 0, 0, 0, 0);
    EXPECT_EQ(CDateTime(time).GetStatus(), DTS_INVALID);
}

SYSTEMTIME clockSetTo;
BOOL clockObeys;
BOOL __stdcall SetClock(const SYSTEMTIME* time) {
    clockSetTo = *time;
    return clockObeys;
}
void __stdcall ReadClock(SYSTEMTIME* time) {
    *time = SYSTEMTIME{2004, 2, 5, 29, 20, 5, 9, 7};
}

TEST(DateTime, ClockIsReadAndSetInLocalTime) {
    clockSetTo = {};
    clockObeys = FALSE;
    const ImportPatch reads(L"Tessel.dll", "GetLocalTime", ReadClock);
    const ImportPatch sets(L"Tessel.dll", "SetLocalTime", SetClock);
    EXPECT_EQ(CDateTimeEnglish(), kEvening);
    EXPECT_EQ(CDateTimeEnglish::GetLocalTime(), kEvening);
    EXPECT_EQ(CDateTime::GetLocalTime(), kEvening);
    EXPECT_EQ(CDateTimeEnglish(FID_TIME, L"21:22"), CDateTimeEnglish(2004, 2, 29, 21, 22, 0, 0));
    EXPECT_EQ(CDateTimeEnglish(1999, 2, 29, 0, 0, 0, 0).SetLocalTime(), -1);
    EXPECT_EQ(CDateTimeEnglish(0, 0, 0, 0, 0, 0, 0).SetLocalTime(), -1);
    EXPECT_EQ(clockSetTo.wYear, 0) << "an invalid time does not reach the clock";
    EXPECT_EQ(kEvening.SetLocalTime(), -1);
    clockObeys = TRUE;
    EXPECT_EQ(kEvening.SetLocalTime(), 0);
    EXPECT_EQ(CDateTimeEnglish(clockSetTo), kEvening);
}

/// The system's name in the calling thread's language.
std::wstring SystemName(LCTYPE kind) {
    wchar_t name[80];
    GetLocaleInfoW(GetThreadLocale(), kind, name, 80);
    return name;
}

TEST(DateTime, NamesAreThoseThatTheSystemHasInTheLanguageOfTheThread) {
    for (const int id :
         {LANG_ENGLISH, LANG_GERMAN, LANG_FRENCH, LANG_ITALIAN, LANG_PORTUGUESE, LANG_SPANISH, LANG_SWEDISH}) {
        const ThreadLanguage language(static_cast<WORD>(MAKELANGID(id, SUBLANG_DEFAULT)));
        const CDateTime local;
        wchar_t text[20];
        for (int index = 0; index < 12; ++index) {
            std::wstring month = SystemName(LOCALE_SMONTHNAME1 + static_cast<LCTYPE>(index));
            if (id == LANG_FRENCH && (index == 5 || index == 6)) month.erase(2, 1); // juin, juillet
            local.GetMonthText(index + 1, text, 4);
            EXPECT_EQ(text, month.substr(0, 3));
            kEvening.GetMonthText(index + 1, text, 4);
            EXPECT_TRUE(id != LANG_ENGLISH || text == month.substr(0, 3)) << text;
        }
        for (int index = 0; index < 7; ++index) {
            const std::wstring day = SystemName(LOCALE_SDAYNAME1 + static_cast<LCTYPE>(index + 6) % 7);
            local.GetDayText(index, text, 20);
            EXPECT_EQ(text, day);
            local.GetDayText(index, text, 4);
            EXPECT_TRUE(std::wcslen(text) > 1 && day.starts_with(text)) << text;
            kEvening.GetDayText(index, text, 20);
            EXPECT_TRUE(id != LANG_ENGLISH || text == day) << text;
        }
    }
}

TEST(DateTime, NamesFitTheLayoutsAndAnUnknownLanguageIsEnglish) {
    constexpr struct {
        WORD language;
        const wchar_t* time;
        const wchar_t* day;
    } kLanguages[] = {
        {MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN_SWISS), L"04 Mär 1999 08:05 PM", L"Do"},
        {MAKELANGID(LANG_SWEDISH, SUBLANG_DEFAULT), L"04 mar 1999 08:05 em", L"torsdag"},
        {MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT), L"04 Mar 1999 08:05 PM", L"Thursday"},
    };
    for (const auto& [id, text, day] : kLanguages) {
        const ThreadLanguage language(id);
        const CDateTime time(1999, 3, 4, 20, 5, 0, 0);
        EXPECT_STREQ(time.Format(FID_DATE_NAME_TIME12), text);
        EXPECT_EQ(CDateTime(FID_TIME12, text + 12).GetHour(), 20);
        EXPECT_STREQ(time.Format(FID_DAY_BRIEF), day);
    }
}

TEST(DateTime, DayOfTheWeekComesWithAStatus) {
    const ThreadLanguage language(MAKELANGID(LANG_GERMAN, SUBLANG_DEFAULT));
    wchar_t text[] = L"###########";
    EXPECT_EQ(CDateTime::GetDayOfWeekText(4, text, 11), STATUS_OK);
    EXPECT_STREQ(text, L"Donnerstag");
    EXPECT_EQ(CDateTime::GetDayOfWeekText(4, text, 2), static_cast<unsigned long>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_STREQ(text, L"D");
    EXPECT_EQ(CDateTime::GetDayOfWeekText(7, text, 11), static_cast<unsigned long>(ERROR_INVALID_PARAMETER));
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(CDateTime::GetDayOfWeekText(4, text, 0), static_cast<unsigned long>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(CDateTime::GetDayOfWeekText(4, nullptr, 11), static_cast<unsigned long>(ERROR_INVALID_PARAMETER));
    EXPECT_STREQ(CDateTime::GetDayOfWeekTextEnglish(4), L"Thursday");
    EXPECT_STREQ(CDateTime::GetDayOfWeekTextEnglish(7), L"");
}

} // namespace
