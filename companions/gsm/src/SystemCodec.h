#pragma once

#include "Formats.h"

#include <array>
#include <cstdint>

namespace tesselgsm {

/// Looks among the drivers of the process for one that converts 16-bit PCM to GSM 6.10.
/// @return null when there is none
HACMDRIVERID FindSystemCodec();

/// A stream of the system's codec between its two buffers, for as long as the object lives. It is opened by its
/// driver, so that the manager does not look for one and come back to this one.
class CodecStream {
public:
    static constexpr DWORD kBlocks = 25; ///< room of the buffers: a second

    /// @param compress  from 16-bit PCM to GSM 6.10; otherwise back
    CodecStream(HACMDRIVERID codec, bool compress);
    ~CodecStream() { Close(); }
    CodecStream(const CodecStream&) = delete;
    CodecStream& operator=(const CodecStream&) = delete;

    /// How opening went.
    MMRESULT Result() const { return m_result; }

    /// Opens anew: the next sound owes nothing to what was before it.
    MMRESULT Restart();

    /// Converts so many blocks from one buffer to the other.
    MMRESULT Convert(DWORD blocks);

    std::int16_t* Samples() { return m_samples.data(); }
    BYTE* Blocks() { return m_blocks.data(); }

private:
    void Open();
    void Close();
    MMRESULT OpenStream();
    MMRESULT PrepareHeader();

    HACMDRIVERID m_codec;
    bool m_compress;
    MMRESULT m_result = MMSYSERR_ERROR;
    HACMDRIVER m_driver = nullptr;
    HACMSTREAM m_stream = nullptr;
    ACMSTREAMHEADER m_header{};
    std::array<std::int16_t, kBlocks * kSamplesPerBlock> m_samples{};
    std::array<BYTE, kBlocks * kBytesPerBlock> m_blocks{};
};

} // namespace tesselgsm
