#pragma once

#include <tessel/platform.h>

namespace tessel {

/// The components of a date and time, the most significant first. A letter stands for each in the layouts of texts.
struct DateTimeField {
    wchar_t letter;
    unsigned int digits;
    WORD SYSTEMTIME::*component;
};

inline constexpr DateTimeField kDateTimeFields[] = {
    {L'y', 4, &SYSTEMTIME::wYear},         {L'o', 2, &SYSTEMTIME::wMonth},  {L'd', 2, &SYSTEMTIME::wDay},
    {L'H', 2, &SYSTEMTIME::wHour},         {L'm', 2, &SYSTEMTIME::wMinute}, {L's', 2, &SYSTEMTIME::wSecond},
    {L'l', 3, &SYSTEMTIME::wMilliseconds},
};

/// Places in kDateTimeFields, and their number.
enum : unsigned int { kYear, kMonth, kDay, kHour, kMinute, kSecond, kMillisecond, kDateTimeFieldCount };

static_assert(sizeof kDateTimeFields / sizeof *kDateTimeFields == kDateTimeFieldCount);

} // namespace tessel
