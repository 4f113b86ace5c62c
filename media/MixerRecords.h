#pragma once

#include <tessel/foundation/platform.h>

#include <mmsystem.h>

#include <cwchar>
#include <string_view>

namespace tessel {

/// The most controls of a line, or items of a control, that are accepted from a driver.
inline constexpr DWORD kMostMixerRecords = 0xFFFF;

/// Flag for an object from AsMixerObject().
inline constexpr DWORD kByHandle = MIXER_OBJECTF_HMIXER;

/// Converts a handle to the type of object that the mixer functions take.
inline HMIXEROBJ AsMixerObject(HMIXER mixer) {
    return reinterpret_cast<HMIXEROBJ>(mixer);
}

/// Whether the name of a control or item contains a word.
/// @param name  MIXER_LONG_NAME_CHARS characters
/// @param word  word to find; null is in no name
inline bool IsNamed(const wchar_t* name, const wchar_t* word) {
    // GUARD-134: the name may lack a terminator.
    return word != nullptr &&
           std::wstring_view(name, wcsnlen(name, MIXER_LONG_NAME_CHARS)).find(word) != std::wstring_view::npos;
}

} // namespace tessel
