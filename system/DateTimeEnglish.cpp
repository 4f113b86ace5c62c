#include <system/DateTimeFields.h>
#include <tessel/system/datetime.h>

using namespace tessel;

namespace {

constexpr int kFebruary = 2;
constexpr int kFirstYear = 1850;
constexpr int kLargestField = 0xFFFF;
constexpr int kLastYear = kLargestField;

constexpr int kDaysOfMonth[kMonths] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// What each century from 1800 on, repeating every 400 years, and each month add to the day of the week.
constexpr int kCenturyKeys[] = {2, 0, 6, 4};
constexpr int kDaysOfWeek = 7;
constexpr int kMonthKeys[kMonths] = {0, 3, 3, 6, 1, 4, 6, 2, 5, 0, 3, 5};

bool IsBetween(int value, int least, int most) {
    return value >= least && value <= most;
}

bool IsTimeOfDay(int hour, int minute, int second, int millisecond) {
    return IsBetween(hour, 0, 23) && IsBetween(minute, 0, 59) && IsBetween(second, 0, 59) &&
           IsBetween(millisecond, 0, 999);
}

bool AreZero(const int (&values)[kDateTimeFieldCount]) {
    for (const int value : values) {
        if (value != 0) return false;
    }
    return true;
}

/// GUARD-163: a value that does not fit the field is never valid, also when other fields are set later.
WORD FieldValue(int value, const DateTimeField& field) {
    return IsBetween(value, 0, kLargestField) ? static_cast<WORD>(value) : field.invalid;
}

/// @return 0 (Sunday) to 6
WORD DayOfWeek(const SYSTEMTIME& time, bool leapYear) {
    // GUARD-160: a month that does not exist has no key; its days count as Sundays
    if (time.wMonth < 1 || time.wMonth > kMonths) return 0;
    const int yearInCentury = time.wYear % 100;
    const int century = kCenturyKeys[(time.wYear / 100 + 2) % 4]; // + 2 is - 18 modulo 4, and never negative
    const int leapDay = leapYear && time.wMonth <= kFebruary ? -1 : 0;
    const int days = century + yearInCentury + yearInCentury / 4 + kMonthKeys[time.wMonth - 1] + leapDay + time.wDay;
    return static_cast<WORD>((days + kDaysOfWeek) % kDaysOfWeek);
}

} // namespace

CDateTimeEnglish::CDateTimeEnglish() : m_SystemTime{}, m_Status(DTS_NULL), m_szText{} {
    SYSTEMTIME now;
    GetDateTime(now);
    *this = now;
}

CDateTimeEnglish::CDateTimeEnglish(const SYSTEMTIME& time) : m_SystemTime{}, m_Status(DTS_NULL), m_szText{} {
    *this = time;
}

CDateTimeEnglish::CDateTimeEnglish(int year, int month, int day, int hour, int minute, int second, int millisecond)
    : m_SystemTime{}, m_Status(DTS_NULL), m_szText{} {
    (void)SetDateTime(year, month, day, hour, minute, second, millisecond); // GetStatus() has the result
}

CDateTimeEnglish::CDateTimeEnglish(const CDateTimeEnglish& other)
    : m_SystemTime(other.m_SystemTime), m_Status(other.m_Status), m_szText{} {}

CDateTimeEnglish& CDateTimeEnglish::operator=(const CDateTimeEnglish& other) {
    if (this == &other) return *this;
    m_SystemTime = other.m_SystemTime;
    m_Status = other.m_Status;
    return *this;
}

CDateTimeEnglish& CDateTimeEnglish::operator=(const SYSTEMTIME& time) {
    (void)SetDateTime(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return *this;
}

CDateTimeEnglish CDateTimeEnglish::GetLocalTime() {
    return {};
}

void CDateTimeEnglish::GetDateTime(SYSTEMTIME& time) {
    ::GetLocalTime(&time);
}

int CDateTimeEnglish::SetLocalTime() const {
    return m_Status == DTS_VALID && ::SetLocalTime(&m_SystemTime) ? 0 : -1;
}

DateTimeStatus CDateTimeEnglish::SetDateTime(int year, int month, int day, int hour, int minute, int second,
                                             int millisecond) {
    const int values[] = {year, month, day, hour, minute, second, millisecond};
    for (unsigned int index = kYear; index < kDateTimeFieldCount; ++index) {
        const DateTimeField& field = kDateTimeFields[index];
        m_SystemTime.*field.component = FieldValue(values[index], field);
    }
    m_SystemTime.wDayOfWeek = DayOfWeek(m_SystemTime, IsLeapYear());
    m_Status = CheckValidDate(year, month, day, hour, minute, second, millisecond);
    return m_Status;
}

DateTimeStatus CDateTimeEnglish::SetDate(int year, int month, int day) {
    return SetDateTime(year, month, day, GetHour(), GetMinute(), GetSecond(), GetMillisecond());
}

DateTimeStatus CDateTimeEnglish::SetTime(int hour, int minute, int second, int millisecond) {
    return SetDateTime(GetYear(), GetMonth(), GetDay(), hour, minute, second, millisecond);
}

bool CDateTimeEnglish::IsLeapYear(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

DateTimeStatus CDateTimeEnglish::CheckValidDate(int year, int month, int day, int hour, int minute, int second,
                                                int millisecond) {
    const int values[] = {year, month, day, hour, minute, second, millisecond};
    if (AreZero(values)) return DTS_NULL;
    // ODD-170: no year before 1850 is valid
    if (!IsBetween(year, kFirstYear, kLastYear) || !IsBetween(month, 1, kMonths)) return DTS_INVALID;
    const int leapDay = month == kFebruary && IsLeapYear(year) ? 1 : 0;
    const bool exists = IsBetween(day, 1, kDaysOfMonth[month - 1] + leapDay);
    return exists && IsTimeOfDay(hour, minute, second, millisecond) ? DTS_VALID : DTS_INVALID;
}

int CDateTimeEnglish::Compare(const CDateTimeEnglish& other) const {
    for (const DateTimeField& field : kDateTimeFields) {
        const int difference = m_SystemTime.*field.component - other.m_SystemTime.*field.component;
        if (difference != 0) return difference;
    }
    return 0;
}
