#include <tessel/foundation/clock.h>

#include <iterator>

namespace {

/// Days of each month. ODD-60: 28 in February of every year, so the clock is never set to 29 February.
constexpr unsigned short kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool Exists(const SYSTEMTIME& time) {
    return time.wSecond < 60 && time.wMinute < 60 && time.wHour < 24 && time.wMonth >= 1 &&
           time.wMonth <= std::size(kDays) && time.wDay >= 1 && time.wDay <= kDays[time.wMonth - 1];
}

} // namespace

void SetDateTime(unsigned short day, unsigned short month, unsigned short year, unsigned short hour,
                 unsigned short minute, unsigned short second) {
    SYSTEMTIME time{};
    time.wDay = day;
    time.wMonth = month;
    time.wYear = year;
    time.wHour = hour;
    time.wMinute = minute;
    time.wSecond = second;
    if (Exists(time)) (void)SetLocalTime(&time); // a refusal is not reported
}

void GetDateTime(unsigned short& day, unsigned short& month, unsigned short& year, unsigned short& hour,
                 unsigned short& minute, unsigned short& second) {
    SYSTEMTIME time{};
    GetLocalTime(&time);
    day = time.wDay;
    month = time.wMonth;
    year = time.wYear;
    hour = time.wHour;
    minute = time.wMinute;
    second = time.wSecond;
}
