#pragma once

#include <tessel/foundation/platform.h>

/// Result of TesselSetStringModule() when a module was set before.
inline constexpr unsigned long STATUS_STRING_MODULE_SET = 0x07000003;

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

/// @name Other modules
/// Any thread may call these functions.
///@{

/// Loads a module (LoadLibraryW); it has nothing to do with images.
/// @param name  file name of the module
/// @return the module, to be given back with UnLoadImage(); null: failure (GetLastError())
TESSEL_API HINSTANCE LoadImageW(const wchar_t* name);

/// Gives a module back (FreeLibrary).
/// @param module  what LoadImageW() gave
/// @return not 0: given back; 0: failure (GetLastError())
TESSEL_API UINT UnLoadImage(HINSTANCE module);

/// Loads the module that brings the rich edit control ("Riched20.dll").
/// @return the module, to be given back with ReleaseRichEditControls(); null: failure (GetLastError())
TESSEL_API HINSTANCE InitRichEditControls();

/// Gives the rich edit module back (FreeLibrary).
/// @param module  what InitRichEditControls() gave
/// @return not 0: given back; 0: failure (GetLastError())
TESSEL_API int ReleaseRichEditControls(HINSTANCE module);
///@}
