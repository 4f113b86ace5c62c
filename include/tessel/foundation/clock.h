#pragma once

#include <tessel/foundation/platform.h>

/// @name Clock
/// Any thread may call these functions.
///@{

/// Sets the machine's local clock (SetLocalTime). Ignores dates that do not exist, and 29 February.
/// @param day     1 to 31
/// @param month   1 to 12
/// @param year    four digits
/// @param hour    0 to 23
/// @param minute  0 to 59
/// @param second  0 to 59
TESSEL_API void SetDateTime(unsigned short day, unsigned short month, unsigned short year, unsigned short hour,
                            unsigned short minute, unsigned short second);

/// Reads the machine's local clock (GetLocalTime).
/// @param day     receives 1 to 31
/// @param month   receives 1 to 12
/// @param year    receives four digits
/// @param hour    receives 0 to 23
/// @param minute  receives 0 to 59
/// @param second  receives 0 to 59
TESSEL_API void GetDateTime(unsigned short& day, unsigned short& month, unsigned short& year, unsigned short& hour,
                            unsigned short& minute, unsigned short& second);
///@}
