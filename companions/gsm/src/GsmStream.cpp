#include "GsmStream.h"

#include <algorithm>
#include <cstring>

namespace tesselgsm {

namespace {

std::int16_t Widen(BYTE sample) {
    return static_cast<std::int16_t>((sample - 128) * 256);
}

// To nearest: truncating would shift all sound down by half a step.
BYTE Narrow(std::int16_t sample) {
    return static_cast<BYTE>(std::min((sample + 32768 + 128) / 256, 255));
}

MMRESULT StoreLength(ULONGLONG blocks, DWORD block, DWORD& length) {
    const ULONGLONG bytes = blocks * block;
    if (bytes == 0 || bytes > MAXDWORD) return ACMERR_NOTPOSSIBLE;
    length = static_cast<DWORD>(bytes);
    return MMSYSERR_NOERROR;
}

} // namespace

MMRESULT GsmStream::Size(StreamSizes& sizes) const {
    const ULONGLONG source = sizes.source;
    switch (sizes.flags & ACM_STREAMSIZEF_QUERYMASK) {
    case ACM_STREAMSIZEF_SOURCE:
        return StoreLength((source + SourceBlock() - 1) / SourceBlock(), DestinationBlock(), sizes.destination);
    case ACM_STREAMSIZEF_DESTINATION:
        return StoreLength(sizes.destination / DestinationBlock(), SourceBlock(), sizes.source);
    default: return MMSYSERR_NOTSUPPORTED;
    }
}

bool GsmStream::ConvertsPartialBlock(const StreamHeader& header) const {
    const DWORD rest = header.sourceSize - header.sourceUsed;
    return m_compress && (header.flags & ACM_STREAMCONVERTF_BLOCKALIGN) == 0 && rest > 0 && rest < kSamplesPerBlock &&
           header.destinationSize - header.destinationUsed >= kBytesPerBlock;
}

MMRESULT GsmStream::Convert(StreamHeader& header) {
    header.sourceUsed = 0;
    header.destinationUsed = 0;
    MMRESULT result = (header.flags & ACM_STREAMCONVERTF_START) != 0 ? m_codec.Restart() : m_codec.Result();
    DWORD blocks = std::min(header.sourceSize / SourceBlock(), header.destinationSize / DestinationBlock());
    while (result == MMSYSERR_NOERROR && blocks > 0) {
        const DWORD portion = std::min(blocks, CodecStream::kBlocks);
        result = ConvertPortion(header, portion * SourceBlock(), portion);
        blocks -= portion;
    }
    if (result != MMSYSERR_NOERROR || !ConvertsPartialBlock(header)) return result;
    return ConvertPortion(header, header.sourceSize - header.sourceUsed, 1);
}

MMRESULT GsmStream::ConvertPortion(StreamHeader& header, DWORD bytes, DWORD blocks) {
    const BYTE* const source = header.source + header.sourceUsed;
    BYTE* const destination = header.destination + header.destinationUsed;
    const MMRESULT result =
        m_compress ? Compress(source, bytes, destination, blocks) : Expand(source, destination, blocks);
    if (result != MMSYSERR_NOERROR) return result;
    header.sourceUsed += bytes;
    header.destinationUsed += blocks * DestinationBlock();
    return MMSYSERR_NOERROR;
}

MMRESULT GsmStream::Compress(const BYTE* pcm, DWORD samples, BYTE* gsm, DWORD blocks) {
    std::int16_t* const end = std::transform(pcm, pcm + samples, m_codec.Samples(), Widen);
    std::fill(end, m_codec.Samples() + blocks * kSamplesPerBlock, std::int16_t{0});
    const MMRESULT result = m_codec.Convert(blocks);
    if (result == MMSYSERR_NOERROR) std::memcpy(gsm, m_codec.Blocks(), blocks * kBytesPerBlock);
    return result;
}

MMRESULT GsmStream::Expand(const BYTE* gsm, BYTE* pcm, DWORD blocks) {
    std::memcpy(m_codec.Blocks(), gsm, blocks * kBytesPerBlock);
    const MMRESULT result = m_codec.Convert(blocks);
    const std::int16_t* const samples = m_codec.Samples();
    if (result == MMSYSERR_NOERROR) std::transform(samples, samples + blocks * kSamplesPerBlock, pcm, Narrow);
    return result;
}

} // namespace tesselgsm
