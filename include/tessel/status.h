#pragma once

#include <tessel/platform.h>

/// Status code of success. Every other status is a Win32 or Winsock error or a code that the operation names.
inline constexpr unsigned long STATUS_OK = 0;

/// Result of TesselSetStringModule() when a module was set before.
inline constexpr unsigned long STATUS_STRING_MODULE_SET = 0x07000003;

/// The calling thread's last Win32 error (GetLastError).
/// @return the error code; 0 for none
TESSEL_API unsigned long GetError();

/// The library's own module, as the system handed it over at load. Any thread.
/// @return the module handle; not to be freed
TESSEL_API HINSTANCE TesselGetModuleInstance();

/// Names the module whose string table TesselLoadString() reads. The first caller wins, and that is
/// the library itself at load; later calls change nothing. Any thread.
/// @param module  a loaded module that stays loaded
/// @return STATUS_OK: set; STATUS_STRING_MODULE_SET: an earlier module is kept
TESSEL_API unsigned long TesselSetStringModule(HINSTANCE module);

/// Loads a text from the library's string table (LoadStringW), in the thread's language. Any thread.
/// @param id           number of the text; 0 loads none
/// @param buffer       receives the text, terminated and cut to fit; empty when there is none
/// @param sizeInChars  room in @p buffer, terminator included
/// @return characters copied without the terminator; 0 when nothing was loaded
TESSEL_API int TesselLoadString(unsigned int id, wchar_t* buffer, int sizeInChars);

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
