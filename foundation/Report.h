#pragma once

#include <fenestra/assertlog.h>

namespace tessel {

/// Reports @p expression when it does not hold; execution goes on in either case.
/// @param holds       whether the condition holds
/// @param expression  text of the condition, or of the message in the form !"text"
/// @param source      bare name of the source file
/// @param line        line that belongs to the report
inline void ReportUnless(bool holds, const char* expression, const char* source, unsigned int line) {
    if (!holds) WndLogAssert(expression, source, line);
}

} // namespace tessel
