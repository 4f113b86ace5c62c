#pragma once

#include <tessel/foundation/platform.h>

/// Keeps the system's dialogs about failing drives away (SEM_FAILCRITICALERRORS) until the matching
/// EndErrorMode().
///
/// Pairs nest: only the outermost one changes the mode. The mode is the whole process's.
/// Any thread may call either half.
TESSEL_API void BeginErrorModeFailCritical();

/// Ends what BeginErrorModeFailCritical() began; the outermost call restores the earlier mode.
///
/// A call without its Begin is reported and still counted: the next Begin then only evens it out,
/// and the mode stays as it is until the calls are in pairs again.
TESSEL_API void EndErrorMode();
