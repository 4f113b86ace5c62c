#pragma once

#include <tessel/foundation/platform.h>

#include <mmsystem.h>

#include <cwchar>
#include <string_view>

namespace tessel {

/// The most controls of a line, or items of a control, that a driver is believed to have.
inline constexpr DWORD kMostMixerRecords = 0xFFFF;

/// Tells the mixer functions that their object is what AsMixerObject() gives.
inline constexpr DWORD kByHandle = MIXER_OBJECTF_HMIXER;

/// The handle as the kind of object that the mixer functions take.
inline HMIXEROBJ AsMixerObject(HMIXER mixer) {
    return reinterpret_cast<HMIXEROBJ>(mixer);
}

/// Whether a control or item goes by a name.
/// @param name  MIXER_LONG_NAME_CHARS characters
/// @param word  what is looked for; null is in no name
inline bool IsNamed(const wchar_t* name, const wchar_t* word) {
    // GUARD-134: a driver's name need not have a terminator.
    return word != nullptr &&
           std::wstring_view(name, wcsnlen(name, MIXER_LONG_NAME_CHARS)).find(word) != std::wstring_view::npos;
}

} // namespace tessel
