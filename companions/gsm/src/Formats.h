#pragma once

#include "AcmDriver.h"

namespace tesselgsm {

constexpr DWORD kSamplesPerBlock = 320;
constexpr DWORD kBytesPerBlock = 65;

constexpr WAVEFORMATEX kPcm8 = {WAVE_FORMAT_PCM, 1, 8000, 8000, 1, 8, 0};
constexpr WAVEFORMATEX kPcm16 = {WAVE_FORMAT_PCM, 1, 8000, 16000, 2, 16, 0};
constexpr GSM610WAVEFORMAT kGsm = {{WAVE_FORMAT_GSM610, 1, 8000, 1625, kBytesPerBlock, 0, 2}, kSamplesPerBlock};

/// The driver's two formats.
enum class Format { None, Pcm, Gsm };

/// @param size  size of the format in bytes; a PCM format may lack cbSize
Format Recognise(const WAVEFORMATEX& format, DWORD size);

/// Recognises a complete format.
Format Recognise(const WAVEFORMATEX& format);

/// The format that a format is converted to.
Format Counterpart(Format format);

/// Answers to the messages about formats, as an MMRESULT.
MMRESULT DescribeTag(ACMFORMATTAGDETAILSW& details, DWORD query);
MMRESULT DescribeFormat(ACMFORMATDETAILSW& details, DWORD query);
MMRESULT Suggest(FormatSuggestion& suggestion);

} // namespace tesselgsm
