#include <foundation/Report.h>
#include <media/AudioMode.h>
#include <media/AudioRatio.h>
#include <media/WaveFormats.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

using tessel::BufferSet;
using tessel::Transfer;

namespace {

constexpr tessel::ReportSite kPartOfABlock{"CAudio", 646};

void SetBuffers(ACMSTREAMHEADER& header, char* source, unsigned long sourceSize, char* destination,
                unsigned long destinationSize) {
    header.cbStruct = sizeof header;
    header.pbSrc = reinterpret_cast<BYTE*>(source);
    header.cbSrcLength = sourceSize;
    header.pbDst = reinterpret_cast<BYTE*>(destination);
    header.cbDstLength = destinationSize;
}

/// Pads a source buffer with zero bytes. @return the bytes in use, at most its length
unsigned long FillUp(const ACMSTREAMHEADER& header, unsigned long use) {
    use = std::min<unsigned long>(use, header.cbSrcLength); // GUARD-104: a device or a caller may claim more
    // ODD-114: in 8-bit PCM, 0 is not silence but the lowest value.
    if (header.pbSrc != nullptr) std::memset(header.pbSrc + use, 0, header.cbSrcLength - use);
    return use;
}

} // namespace

void CAudio::InitWaveFormatPCM(WAVEFORMATEX* format) {
    if (format != nullptr) *format = tessel::kFormatPCM; // GUARD-09
}

void CAudio::InitWaveFormatGSM(WAVEFORMATGSM610* format) {
    if (format != nullptr) *format = tessel::kFormatGSM; // GUARD-09
}

void CAudio::InitStreamHeaders() {
    SetBuffers(m_StreamHeaderStep, m_pCompressStep, m_ulSizeCompressStep, m_pAudioStep, m_ulSizeAudioStep);
}

void CAudio::InitStreamHeadersConvert() {
    if (Mode().buffers != BufferSet::Continuous) return;
    for (std::size_t i = 0; i < std::size(m_StreamHeader); ++i) {
        if (Mode().transfer == Transfer::ToFile)
            SetBuffers(m_StreamHeader[i], m_pAudio[i], m_ulSizeAudio, m_pCompress[i], m_ulSizeCompress);
        else
            SetBuffers(m_StreamHeader[i], m_pCompress[i], m_ulSizeCompress, m_pAudio[i], m_ulSizeAudio);
    }
}

void CAudio::ClearStreamHeadersConvert() {
    for (ACMSTREAMHEADER& header : m_StreamHeader) SetBuffers(header, nullptr, 0, nullptr, 0);
}

unsigned long CAudio::ResultOfStream(MMRESULT result) {
    if (result != 0) SetStreamError(result);
    return result != 0 ? 1 : 0;
}

unsigned long CAudio::ForEachBuffer(unsigned long (CAudio::*step)(ACMSTREAMHEADER*)) {
    return tessel::ForEachOf(Mode().buffers, m_StreamHeader, m_StreamHeaderStep,
                             [&](ACMSTREAMHEADER* header) { return (this->*step)(header); });
}

unsigned long CAudio::OpenStream() {
    if (!m_bConvert) return 0;
    if (m_hStream != nullptr) return 1; // GUARD-108
    if (Mode().transfer == Transfer::None) return 1;
    WAVEFORMATEX* source = &m_FormatGSM.wfx;
    WAVEFORMATEX* destination = &m_FormatPCM;
    if (Mode().transfer == Transfer::ToFile) std::swap(source, destination);
    return ResultOfStream(acmStreamOpen(&m_hStream, nullptr, source, destination, nullptr, 0, 0, 0));
}

unsigned long CAudio::CloseStream() {
    if (!m_bConvert || m_hStream == nullptr) return 0;
    const HACMSTREAM stream = m_hStream;
    m_hStream = nullptr;
    return ResultOfStream(acmStreamClose(stream, 0));
}

unsigned long CAudio::PrepareStreamHeaders() {
    return m_bConvert ? ForEachBuffer(&CAudio::PrepareStreamHeader) : 0;
}

unsigned long CAudio::PrepareStreamHeader(ACMSTREAMHEADER* header) {
    return m_bConvert ? ResultOfStream(acmStreamPrepareHeader(m_hStream, header, 0)) : 0;
}

unsigned long CAudio::UnprepareStreamHeaders() {
    unsigned long failed = UnprepareStreamHeader(&m_StreamHeaderStep);
    for (ACMSTREAMHEADER& header : m_StreamHeader) failed |= UnprepareStreamHeader(&header);
    return failed;
}

unsigned long CAudio::UnprepareStreamHeader(ACMSTREAMHEADER* header) {
    if (!m_bConvert) return 0;
    if (header == nullptr) return 1; // GUARD-09
    if ((header->fdwStatus & ACMSTREAMHEADER_STATUSF_PREPARED) == 0) return 0;
    return ResultOfStream(acmStreamUnprepareHeader(m_hStream, header, 0));
}

unsigned long CAudio::CompressBuffers() {
    if (!m_bConvert) return 0;
    return Mode().transfer == Transfer::ToFile ? ForEachBuffer(&CAudio::CompressBuffer) : 1;
}

unsigned long CAudio::CompressBuffer(ACMSTREAMHEADER* header) {
    return ConvertBuffer(header);
}

unsigned long CAudio::UncompressBuffers() {
    if (!m_bConvert) return 0;
    return Mode().transfer == Transfer::FromFile ? ForEachBuffer(&CAudio::UncompressBuffer) : 1;
}

unsigned long CAudio::UncompressBuffer(ACMSTREAMHEADER* header) {
    return ConvertBuffer(header);
}

unsigned long CAudio::ConvertBuffer(ACMSTREAMHEADER* header) {
    return m_bConvert ? ResultOfStream(acmStreamConvert(m_hStream, header, ACM_STREAMCONVERTF_BLOCKALIGN)) : 0;
}

void CAudio::SetCompressUse(ACMSTREAMHEADER* header, unsigned long dwUse) {
    if (header == nullptr) return; // GUARD-09
    const unsigned long blocks = (FillUp(*header, dwUse) + m_ulBlockAudio - 1) / m_ulBlockAudio;
    header->dwSrcUser = blocks * m_ulBlockAudio;
    header->dwDstUser = tessel::InRatio(blocks * m_ulBlockAudio, m_ulRatioAudio, m_ulRatioCompress);
}

void CAudio::SetUncompressUse(ACMSTREAMHEADER* header, unsigned long dwUse) {
    tessel::ReportUnless(dwUse % m_ulBlockCompress == 0, "(dwUse % m_ulBlockCompress) == 0", kPartOfABlock);
    if (header == nullptr) return; // GUARD-09
    const unsigned long use = FillUp(*header, dwUse);
    header->dwSrcUser = use;
    header->dwDstUser = tessel::InRatio(use, m_ulRatioCompress, m_ulRatioAudio);
}
