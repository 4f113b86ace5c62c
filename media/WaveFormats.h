#pragma once

#include <tessel/media/waveformat.h>

namespace tessel {

/// Format on the device side.
inline constexpr WAVEFORMATEX kFormatPCM{WAVE_FORMAT_PCM, 1, 8000, 8000, 1, 8, 0};

/// Format of compressed speech: blocks of 65 bytes for 320 samples.
inline constexpr WAVEFORMATGSM610 kFormatGSM{{WAVE_FORMAT_GSM610, 1, 8000, 1625, 65, 0, 2}, 320};

/// The unit of recording, playing and converting is a block of 0.2 s: five codec blocks.
inline constexpr unsigned long kBlocksPerSecond = 5;

/// Size of a block in bytes.
inline constexpr unsigned long kBlockPCM = kFormatPCM.nAvgBytesPerSec / kBlocksPerSecond;
inline constexpr unsigned long kBlockGSM = kFormatGSM.wfx.nAvgBytesPerSec / kBlocksPerSecond;

} // namespace tessel
