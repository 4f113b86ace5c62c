#pragma once

#include "Formats.h"

#include <array>
#include <cstdint>

namespace tesselgsm {

/// Searches the process's drivers for one that converts 16-bit PCM to GSM 6.10.
/// @return null when there is none
HACMDRIVERID FindSystemCodec();

/// A stream of the system's codec between two buffers, for the object's lifetime. It is opened with a specific driver,
/// so that the manager does not search for one and come back to ours.
class CodecStream {
public:
    static constexpr DWORD kBlocks = 25; ///< size of the buffers: one second

    /// @param compress  from 16-bit PCM to GSM 6.10; otherwise back
    CodecStream(HACMDRIVERID codec, bool compress);
    ~CodecStream() { Close(); }
    CodecStream(const CodecStream&) = delete;
    CodecStream& operator=(const CodecStream&) = delete;

    /// The result of opening.
    MMRESULT Result() const { return m_result; }

    /// Reopens the stream, so that earlier sound does not affect the next.
    MMRESULT Restart();

    /// Converts a number of blocks from one buffer to the other.
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
