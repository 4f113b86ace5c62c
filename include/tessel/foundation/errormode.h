#pragma once

#include <tessel/foundation/platform.h>

/// Suppresses the system's dialogs about failing drives (SEM_FAILCRITICALERRORS) until the matching EndErrorMode().
///
/// Pairs nest: only the outermost one changes the mode, which applies to the whole process. Any thread may call either
/// function.
TESSEL_API void BeginErrorModeFailCritical();

/// Ends what BeginErrorModeFailCritical() began; the outermost call restores the earlier mode.
///
/// An unmatched call is reported but still counted: the next Begin then only restores the balance, and the mode stays
/// unchanged until the calls are in pairs again.
TESSEL_API void EndErrorMode();
