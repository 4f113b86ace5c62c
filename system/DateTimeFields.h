#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// A component of a date and time.
struct DateTimeField {
    wchar_t letter; ///< stands for the component in the layouts of texts
    unsigned int digits;
    WORD SYSTEMTIME::*component;
    WORD invalid; ///< stored for a value that does not fit; no valid time has it
};

inline constexpr WORD kNoTime = 0xFFFF;

/// The most significant first.
inline constexpr DateTimeField kDateTimeFields[] = {
    {L'y', 4, &SYSTEMTIME::wYear, 0},
    {L'o', 2, &SYSTEMTIME::wMonth, 0},
    {L'd', 2, &SYSTEMTIME::wDay, 0},
    {L'H', 2, &SYSTEMTIME::wHour, kNoTime},
    {L'm', 2, &SYSTEMTIME::wMinute, kNoTime},
    {L's', 2, &SYSTEMTIME::wSecond, kNoTime},
    {L'l', 3, &SYSTEMTIME::wMilliseconds, kNoTime},
};

/// Indices in kDateTimeFields, and its length.
enum : unsigned int { kYear, kMonth, kDay, kHour, kMinute, kSecond, kMillisecond, kDateTimeFieldCount };

static_assert(sizeof kDateTimeFields / sizeof *kDateTimeFields == kDateTimeFieldCount);

inline constexpr int kMonths = 12;
inline constexpr int kNoon = 12;

} // namespace tessel
