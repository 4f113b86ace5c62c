#pragma once

#include <string>

/// Converts a sound file. The extensions determine the formats: ".gsm" is GSM 6.10 data, ".wav" a WAVE file with the
/// source's kind of data, anything else 8-bit PCM data.
/// @return whether the new file was written in full
bool ConvertFile(const std::wstring& from, const std::wstring& to);

/// Whether a name has this ending, ignoring case.
bool EndsIn(const std::wstring& name, const std::wstring& end);
