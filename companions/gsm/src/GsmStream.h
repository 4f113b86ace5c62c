#pragma once

#include "SystemCodec.h"

namespace tesselgsm {

/// A stream between 8-bit PCM and GSM 6.10: between the program's buffers and those of the system's codec.
/// One thread at a time.
class GsmStream {
public:
    GsmStream(HACMDRIVERID codec, bool compress) : m_compress(compress), m_codec(codec, compress) {}

    /// How opening the system's codec went.
    MMRESULT Result() const { return m_codec.Result(); }

    /// Converts as many blocks as the source has and the destination has room for, and writes down how much that was.
    /// Without ACM_STREAMCONVERTF_BLOCKALIGN a last piece of PCM becomes a block, filled up with silence.
    /// ACM_STREAMCONVERTF_START forgets the sound before it; nothing is held back for ACM_STREAMCONVERTF_END.
    MMRESULT Convert(StreamHeader& header);

    /// Fills in the length that is not given: room for all of the source, a last piece included, or the longest source
    /// that is sure to find room.
    /// @return ACMERR_NOTPOSSIBLE for lengths that give no block or do not fit into 32 bits
    MMRESULT Size(StreamSizes& sizes) const;

private:
    DWORD SourceBlock() const { return m_compress ? kSamplesPerBlock : kBytesPerBlock; }
    DWORD DestinationBlock() const { return m_compress ? kBytesPerBlock : kSamplesPerBlock; }
    bool TakesLastPiece(const StreamHeader& header) const;
    MMRESULT ConvertPortion(StreamHeader& header, DWORD bytes, DWORD blocks);
    MMRESULT Compress(const BYTE* pcm, DWORD samples, BYTE* gsm, DWORD blocks);
    MMRESULT Expand(const BYTE* gsm, BYTE* pcm, DWORD blocks);

    bool m_compress;
    CodecStream m_codec;
};

} // namespace tesselgsm
