#pragma once

#include <string>

/// Turns a sound file into one of another kind. The kinds are told by the ends of the names: ".gsm" is GSM 6.10 data,
/// ".wav" a WAVE file with the kind of data that the source has, anything else 8-bit PCM data.
/// @return whether the new file was written in full
bool ConvertFile(const std::wstring& from, const std::wstring& to);

/// Whether a name ends so, in any case of letters.
bool EndsIn(const std::wstring& name, const std::wstring& end);
