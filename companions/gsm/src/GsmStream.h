#pragma once

#include "SystemCodec.h"

namespace tesselgsm {

/// A stream between 8-bit PCM and GSM 6.10 that connects the program's buffers with the system's codec. One thread at a
/// time.
class GsmStream {
public:
    GsmStream(HACMDRIVERID codec, bool compress) : m_compress(compress), m_codec(codec, compress) {}

    /// The result of opening the system's codec.
    MMRESULT Result() const { return m_codec.Result(); }

    /// Converts as many blocks as the source contains and the destination can hold, and records how much that was.
    /// Without ACM_STREAMCONVERTF_BLOCKALIGN an incomplete last block of PCM is padded with silence.
    /// ACM_STREAMCONVERTF_START discards the state; ACM_STREAMCONVERTF_END has nothing left to deliver.
    MMRESULT Convert(StreamHeader& header);

    /// Computes the missing length: the destination size for the whole source, an incomplete last block included, or
    /// the longest source that is certain to fit.
    /// @return ACMERR_NOTPOSSIBLE for lengths of less than a block or above 32 bits
    MMRESULT Size(StreamSizes& sizes) const;

private:
    DWORD SourceBlock() const { return m_compress ? kSamplesPerBlock : kBytesPerBlock; }
    DWORD DestinationBlock() const { return m_compress ? kBytesPerBlock : kSamplesPerBlock; }
    bool ConvertsPartialBlock(const StreamHeader& header) const;
    MMRESULT ConvertPortion(StreamHeader& header, DWORD bytes, DWORD blocks);
    MMRESULT Compress(const BYTE* pcm, DWORD samples, BYTE* gsm, DWORD blocks);
    MMRESULT Expand(const BYTE* gsm, BYTE* pcm, DWORD blocks);

    bool m_compress;
    CodecStream m_codec;
};

} // namespace tesselgsm
