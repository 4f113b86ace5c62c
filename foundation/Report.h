#pragma once

#include <fenestra/assertlog.h>

namespace tessel {

/// The origin that a report states.
///
/// Service staff and log filters recognise a report by its source name and line, so that both are part of the
/// library's interface: they are fixed for each report, whatever file and line make it today. A fixed line is
/// a named constant beside the code that reports it. A report without a fixed line gives __LINE__.
struct ReportSite {
    const char* source; ///< bare source name; static string
    unsigned int line;
};

/// Reports @p expression if it does not hold; execution continues in either case.
/// @param holds       whether the condition holds
/// @param expression  text of the condition, or of the message in the form !"text"
/// @param site        source and line of the report
inline void ReportUnless(bool holds, const char* expression, ReportSite site) {
    if (!holds) WndLogAssert(expression, site.source, site.line);
}

} // namespace tessel
