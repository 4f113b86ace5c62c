#pragma once

#include <tessel/foundation/platform.h>

/// Suppresses the system's dialogs about failing drives (SEM_FAILCRITICALERRORS) until the matching EndErrorMode().
///
/// Pairs nest: only the outermost pair changes the mode, which applies to the whole process.
/// Any thread may call either function.
TESSEL_API void BeginErrorModeFailCritical();

/// Ends what BeginErrorModeFailCritical() began; the outermost call restores the previous mode.
///
/// A call without a matching Begin is reported but still counts: the next Begin only balances it, and the mode does not
/// change until the calls are paired again.
TESSEL_API void EndErrorMode();
