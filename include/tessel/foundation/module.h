#pragma once

#include <tessel/foundation/platform.h>

/// Result of TesselSetStringModule() if a module is already set.
inline constexpr unsigned long STATUS_STRING_MODULE_SET = 0x07000003;

/// The library's own module. Any thread.
/// @return the module handle; do not free it
TESSEL_API HINSTANCE TesselGetModuleInstance();

/// Sets the module whose string table TesselLoadString() reads. The first call wins, and the library makes it when it
/// is loaded; later calls have no effect. Any thread.
/// @param module  a module that stays loaded
/// @return STATUS_OK: set; STATUS_STRING_MODULE_SET: an earlier module is kept
TESSEL_API unsigned long TesselSetStringModule(HINSTANCE module);

/// Loads a text from the library's string table (LoadStringW), in the thread's language. Any thread.
/// @param id           number of the text; 0 loads none
/// @param buffer       receives the text, terminated and truncated to fit; empty if there is none
/// @param sizeInChars  size of @p buffer, including the terminator
/// @return characters copied, without the terminator; 0 if nothing was loaded
TESSEL_API int TesselLoadString(unsigned int id, wchar_t* buffer, int sizeInChars);

/// @name Other modules
/// Any thread may call these functions.
///@{

/// Loads a module (LoadLibraryW); it has nothing to do with images.
/// @param name  file name of the module
/// @return the module, to be released with UnLoadImage(); null: failure (GetLastError())
TESSEL_API HINSTANCE LoadImageW(const wchar_t* name);

/// Releases a module (FreeLibrary).
/// @param module  result of LoadImageW()
/// @return not 0: released; 0: failure (GetLastError())
TESSEL_API UINT UnLoadImage(HINSTANCE module);

/// Loads the module that provides the rich edit control ("Riched20.dll").
/// @return the module, to be released with ReleaseRichEditControls(); null: failure (GetLastError())
TESSEL_API HINSTANCE InitRichEditControls();

/// Releases the rich edit module (FreeLibrary).
/// @param module  result of InitRichEditControls()
/// @return not 0: released; 0: failure (GetLastError())
TESSEL_API int ReleaseRichEditControls(HINSTANCE module);
///@}
