#pragma once

#include <tessel/audio.h>

#include <cstdint>

namespace tessel {

/// What sound devices record and play.
inline constexpr WAVEFORMATEX kFormatPCM{WAVE_FORMAT_PCM, 1, 8000, 8000, 1, 8, 0};

/// What compressed files hold: blocks of 65 bytes for 320 samples.
inline constexpr WAVEFORMATGSM610 kFormatGSM{{WAVE_FORMAT_GSM610, 1, 8000, 1625, 65, 0, 2}, 320};

/// Bytes of one format as bytes of another.
/// @param bytes  bytes
/// @param from   bytes that become @p to
/// @param to     see @p from
inline unsigned long InRatio(unsigned long bytes, unsigned long from, unsigned long to) {
    return static_cast<unsigned long>(std::uint64_t{bytes} * to / from);
}

} // namespace tessel
