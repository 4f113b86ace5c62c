#include <foundation/SharedOwners.h>
#include <media/WaveFormats.h>
#include <tessel/media/audioconvert.h>

#include <algorithm>

namespace {

bool FitsInto32Bits(unsigned long long size) {
    return size <= MAXDWORD;
}

/// Allocates zeroed memory to be freed with GlobalFree(). @return null: no memory
char* Allocate(unsigned long long size) {
    if (!FitsInto32Bits(size)) return nullptr; // GUARD-121
    return static_cast<char*>(GlobalAlloc(GPTR, static_cast<SIZE_T>(size)));
}

} // namespace

CAudioConvert::CAudioConvert(int bCompress)
    : m_nDirection(bCompress != 0 ? DIRECTION_COMPRESS : DIRECTION_DECOMPRESS),
      m_ulChunkPCM(tessel::kFormatPCM.nAvgBytesPerSec), m_ulChunkGSM(tessel::kFormatGSM.wfx.nAvgBytesPerSec),
      m_ulBlockPCM(tessel::kBlockPCM), m_ulBlockGSM(tessel::kBlockGSM), m_hStream(nullptr) {
    InitWaveFormatPCM(&m_FormatPCM);
    InitWaveFormatGSM(&m_FormatGSM);
    InitStreamHeader(&m_StreamHeader);
}

// GUARD-122: copies hold the stream by value, and would close it twice.
CAudioConvert::CAudioConvert(const CAudioConvert& other)
    : m_nDirection(other.m_nDirection), m_ulChunkPCM(other.m_ulChunkPCM), m_ulChunkGSM(other.m_ulChunkGSM),
      m_ulBlockPCM(other.m_ulBlockPCM), m_ulBlockGSM(other.m_ulBlockGSM), m_FormatPCM(other.m_FormatPCM),
      m_FormatGSM(other.m_FormatGSM), m_hStream(tessel::Share(other.m_hStream)), m_StreamHeader(other.m_StreamHeader) {}

CAudioConvert& CAudioConvert::operator=(const CAudioConvert& other) {
    if (this == &other) return *this;
    (void)CloseStream(); // the result concerns the stream that is given up
    m_nDirection = other.m_nDirection;
    m_ulChunkPCM = other.m_ulChunkPCM;
    m_ulChunkGSM = other.m_ulChunkGSM;
    m_ulBlockPCM = other.m_ulBlockPCM;
    m_ulBlockGSM = other.m_ulBlockGSM;
    m_FormatPCM = other.m_FormatPCM;
    m_FormatGSM = other.m_FormatGSM;
    m_hStream = tessel::Share(other.m_hStream);
    m_StreamHeader = other.m_StreamHeader;
    return *this;
}

CAudioConvert::~CAudioConvert() {
    if (m_hStream != nullptr) (void)CloseStream(); // a destructor has no result
}

unsigned long CAudioConvert::Convert(char* pSrc, char*& pDst, unsigned long ulSrc, unsigned long& ulDst,
                                     unsigned long ulAlloc, unsigned long& ulAllocDst) {
    const unsigned long long size = InBlocks(ulSrc);
    const unsigned long long room = InBlocks(ulAlloc);
    char* const destination = Allocate(room);
    pDst = destination;
    // GUARD-121: after a wrapped product or a failed allocation, the conversion would write beyond the buffer.
    ulDst = destination != nullptr && FitsInto32Bits(size) ? static_cast<unsigned long>(size) : 0;
    ulAllocDst = destination != nullptr ? static_cast<unsigned long>(room) : 0;
    if (pSrc == nullptr || destination == nullptr) return 0; // GUARD-09
    (void)OpenStream();                                      // ODD-131: failures are not returned, the chunks stay zero
    ConvertChunks(pSrc, ulSrc, destination, static_cast<unsigned long>(room));
    (void)CloseStream(); // ODD-131
    InitStreamHeader(&m_StreamHeader);
    return 0;
}

// ODD-130: it tests the number of whole chunks, not whether bytes are left over.
unsigned long CAudioConvert::CountChunks(unsigned long sourceSize) const {
    constexpr unsigned long kChunksInGroup = 5;
    const unsigned long whole = sourceSize / SourceOf(m_ulChunkPCM, m_ulChunkGSM);
    return whole % kChunksInGroup == 0 ? whole : whole + 1;
}

unsigned long long CAudioConvert::InBlocks(unsigned long sourceSize) const {
    const unsigned long long blocks = sourceSize / SourceOf(m_ulBlockPCM, m_ulBlockGSM);
    return blocks * DestinationOf(m_ulBlockPCM, m_ulBlockGSM);
}

void CAudioConvert::ConvertChunks(char* source, unsigned long sourceSize, char* destination, unsigned long room) {
    for (unsigned long count = CountChunks(sourceSize); count > 0; --count) {
        const unsigned long take = std::min(sourceSize, SourceOf(m_ulChunkPCM, m_ulChunkGSM));
        const unsigned long give = std::min(room, DestinationOf(m_ulChunkPCM, m_ulChunkGSM));
        ConvertChunk(source, take, destination, give);
        source += take;
        sourceSize -= take;
        destination += give;
        room -= give;
    }
}

void CAudioConvert::ConvertChunk(char* source, unsigned long sourceSize, char* destination, unsigned long room) {
    const unsigned long samples = m_FormatGSM.wSamplesPerBlock; // one byte each in PCM
    const unsigned long bytes = m_FormatGSM.wfx.nBlockAlign;
    // GUARD-120: only whole codec blocks inside source and buffer; a last chunk may extend beyond both.
    const unsigned long blocks = std::min(sourceSize / SourceOf(samples, bytes), room / DestinationOf(samples, bytes));
    if (blocks == 0) return;
    m_StreamHeader.pbSrc = reinterpret_cast<BYTE*>(source);
    m_StreamHeader.cbSrcLength = blocks * SourceOf(samples, bytes);
    m_StreamHeader.pbDst = reinterpret_cast<BYTE*>(destination);
    m_StreamHeader.cbDstLength = blocks * DestinationOf(samples, bytes);
    (void)PrepareStreamHeader(&m_StreamHeader); // ODD-131, also the next two
    (void)ConvertBuffer(&m_StreamHeader);
    (void)UnprepareStreamHeader(&m_StreamHeader);
}

void CAudioConvert::InitWaveFormatPCM(WAVEFORMATEX* pFormat) {
    if (pFormat != nullptr) *pFormat = tessel::kFormatPCM; // GUARD-09
}

void CAudioConvert::InitWaveFormatGSM(WAVEFORMATGSM610* pFormat) {
    if (pFormat != nullptr) *pFormat = tessel::kFormatGSM; // GUARD-09
}

void CAudioConvert::InitStreamHeader(ACMSTREAMHEADER* pHeader) {
    if (pHeader == nullptr) return; // GUARD-09
    *pHeader = {};
    pHeader->cbStruct = sizeof *pHeader;
    pHeader->cbSrcLength = SourceOf(m_ulChunkPCM, m_ulChunkGSM);
    pHeader->cbDstLength = DestinationOf(m_ulChunkPCM, m_ulChunkGSM);
}

void CAudioConvert::ClearStreamHeader(ACMSTREAMHEADER* pHeader) {
    if (pHeader == nullptr) return; // GUARD-09
    pHeader->pbSrc = nullptr;
    pHeader->cbSrcLength = 0;
    pHeader->pbDst = nullptr;
    pHeader->cbDstLength = 0;
}

unsigned long CAudioConvert::OpenStream() {
    if (m_hStream != nullptr) return 1;
    WAVEFORMATEX* const pcm = &m_FormatPCM;
    WAVEFORMATEX* const gsm = &m_FormatGSM.wfx;
    const MMRESULT result =
        acmStreamOpen(&m_hStream, nullptr, SourceOf(pcm, gsm), DestinationOf(pcm, gsm), nullptr, 0, 0, 0);
    if (result != MMSYSERR_NOERROR) m_hStream = nullptr;
    return ResultOfStream(result);
}

unsigned long CAudioConvert::CloseStream() {
    HACMSTREAM const stream = m_hStream;
    m_hStream = nullptr;
    if (stream != nullptr && !tessel::RemoveOwner(stream)) return 0;
    return ResultOfStream(acmStreamClose(stream, 0));
}

unsigned long CAudioConvert::PrepareStreamHeader(ACMSTREAMHEADER* pHeader) {
    return pHeader != nullptr ? ResultOfStream(acmStreamPrepareHeader(m_hStream, pHeader, 0)) : 1; // GUARD-09
}

unsigned long CAudioConvert::UnprepareStreamHeader(ACMSTREAMHEADER* pHeader) {
    if (pHeader == nullptr) return 1; // GUARD-09
    if ((pHeader->fdwStatus & ACMSTREAMHEADER_STATUSF_PREPARED) == 0) return 0;
    return ResultOfStream(acmStreamUnprepareHeader(m_hStream, pHeader, 0));
}

unsigned long CAudioConvert::ConvertBuffer(ACMSTREAMHEADER* pHeader) {
    if (pHeader == nullptr) return 1; // GUARD-09
    return ResultOfStream(acmStreamConvert(m_hStream, pHeader, ACM_STREAMCONVERTF_BLOCKALIGN));
}

void CAudioConvert::SetStreamError(unsigned int /*uiError*/) {}

unsigned long CAudioConvert::ResultOfStream(unsigned int error) {
    SetStreamError(error);
    return error == MMSYSERR_NOERROR ? 0 : 1;
}
