#pragma once

#include <fenestra/export.h>

/// One report of a broken invariant or a misuse, as returned by WndReadAsserts().
/// Texts longer than their field are truncated; both are always terminated.
struct WND_ASSERT_RECORD {
    /// Position among all reports of the process, counted from 1.
    unsigned long ulNumber;
    /// Source line that the reporter gave.
    unsigned long ulLine;
    /// Win32 id of the reporting thread.
    unsigned long ulThreadId;
    /// UTC time of the report.
    FILETIME Time;
    /// Bare name of the source file; empty when the reporter gave none.
    char szFile[64];
    /// The expression that did not hold; empty when the reporter gave none.
    char szExpression[256];
};

/// Number of reports that the ring keeps; older ones are overwritten.
inline constexpr unsigned long WND_ASSERT_RING_SIZE = 256;

/// Receives each report as it is made, on the reporting thread.
///
/// The reporter may hold locks, the post office's among them: a sink must not call back into
/// the reporting library. Reports made by the sink itself are recorded but not passed to it.
/// @param record   the report; valid during the call only
/// @param context  the pointer passed to WndSetAssertSink()
using WND_ASSERT_SINK = void (*)(const WND_ASSERT_RECORD& record, void* context);

/// Records a broken invariant or a misuse and returns; it never stops the program.
///
/// The report is written to the ring, to the debugger's output and to the sink if there is one.
/// Any thread may call it at any time, even while DLLs are being loaded.
/// @param expression  text of what did not hold; null counts as empty
/// @param file        bare name of the source file; null counts as empty
/// @param line        source line
FENESTRA_API void WndLogAssert(const char* expression, const char* file, unsigned int line);

/// Number of reports made in this process so far. Any thread.
/// @return the count, which is also the number of the newest report
FENESTRA_API unsigned long WndGetAssertCount();

/// Copies the newest reports, oldest first. Any thread.
/// @param records  receives the reports; null copies none
/// @param maximum  size of @p records, in reports
/// @return reports copied: at most @p maximum, and at most WND_ASSERT_RING_SIZE
FENESTRA_API unsigned long WndReadAsserts(WND_ASSERT_RECORD* records, unsigned long maximum);

/// Installs the sink of the process and replaces an earlier one. Any thread.
///
/// A report in progress on another thread may still reach the earlier sink after the return.
/// @param sink     the function to call; null for none
/// @param context  passed to the sink unchanged; the caller keeps it alive
FENESTRA_API void WndSetAssertSink(WND_ASSERT_SINK sink, void* context);
