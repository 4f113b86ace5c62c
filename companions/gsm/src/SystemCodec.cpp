#include "SystemCodec.h"

namespace tesselgsm {

namespace {

constexpr DWORD kSampleBytesPerBlock = kSamplesPerBlock * sizeof(std::int16_t);

/// @param found  HACMDRIVERID* for the first driver that opens such a stream
BOOL CALLBACK TryDriver(HACMDRIVERID id, DWORD_PTR found, DWORD /*support*/) {
    const bool opens = CodecStream(id, true).Result() == MMSYSERR_NOERROR;
    if (opens) *reinterpret_cast<HACMDRIVERID*>(found) = id;
    return !opens;
}

} // namespace

HACMDRIVERID FindSystemCodec() {
    HACMDRIVERID found = nullptr;
    (void)acmDriverEnum(TryDriver, reinterpret_cast<DWORD_PTR>(&found), 0); // a failure finds none
    return found;
}

CodecStream::CodecStream(HACMDRIVERID codec, bool compress) : m_codec(codec), m_compress(compress) {
    Open();
}

void CodecStream::Open() {
    m_result = acmDriverOpen(&m_driver, m_codec, 0);
    if (m_result == MMSYSERR_NOERROR) m_result = OpenStream();
    if (m_result == MMSYSERR_NOERROR) m_result = PrepareHeader();
}

MMRESULT CodecStream::OpenStream() {
    // Copies, because the manager does not promise to leave them unchanged.
    WAVEFORMATEX pcm = kPcm16;
    GSM610WAVEFORMAT gsm = kGsm;
    return m_compress ? acmStreamOpen(&m_stream, m_driver, &pcm, &gsm.wfx, nullptr, 0, 0, 0)
                      : acmStreamOpen(&m_stream, m_driver, &gsm.wfx, &pcm, nullptr, 0, 0, 0);
}

MMRESULT CodecStream::PrepareHeader() {
    auto* const samples = reinterpret_cast<BYTE*>(m_samples.data());
    m_header = {};
    m_header.cbStruct = sizeof m_header;
    m_header.pbSrc = m_compress ? samples : m_blocks.data();
    m_header.cbSrcLength = kBlocks * (m_compress ? kSampleBytesPerBlock : kBytesPerBlock);
    m_header.pbDst = m_compress ? m_blocks.data() : samples;
    m_header.cbDstLength = kBlocks * (m_compress ? kBytesPerBlock : kSampleBytesPerBlock);
    return acmStreamPrepareHeader(m_stream, &m_header, 0);
}

// Nothing is left to do about a failure.
void CodecStream::Close() {
    // The same lengths as for preparing.
    m_header.cbSrcLength = kBlocks * (m_compress ? kSampleBytesPerBlock : kBytesPerBlock);
    if ((m_header.fdwStatus & ACMSTREAMHEADER_STATUSF_PREPARED) != 0) {
        (void)acmStreamUnprepareHeader(m_stream, &m_header, 0);
    }
    if (m_stream != nullptr) (void)acmStreamClose(m_stream, 0);
    if (m_driver != nullptr) (void)acmDriverClose(m_driver, 0);
    m_header = {};
    m_stream = nullptr;
    m_driver = nullptr;
}

MMRESULT CodecStream::Restart() {
    Close();
    Open();
    return m_result;
}

MMRESULT CodecStream::Convert(DWORD blocks) {
    if (m_result != MMSYSERR_NOERROR) return m_result;
    m_header.cbSrcLength = blocks * (m_compress ? kSampleBytesPerBlock : kBytesPerBlock);
    const MMRESULT result = acmStreamConvert(m_stream, &m_header, ACM_STREAMCONVERTF_BLOCKALIGN);
    if (result != MMSYSERR_NOERROR) return result;
    return m_header.cbSrcLengthUsed == m_header.cbSrcLength ? MMSYSERR_NOERROR : MMSYSERR_ERROR;
}

} // namespace tesselgsm
