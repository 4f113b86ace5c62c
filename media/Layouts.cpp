#include <foundation/Layout.h>
#include <tessel/media.h>

using tessel::kOn32Bits;

static_assert(!kOn32Bits || sizeof(ACMSTREAMHEADER) == 84);

struct CAudioLayout {
    static_assert(!kOn32Bits || offsetof(CAudio, m_bConvert) == 4);
    static_assert(!kOn32Bits || offsetof(CAudio, m_hFile) == 28);
    static_assert(!kOn32Bits || offsetof(CAudio, m_ulDataWrite) == 1072);
    static_assert(!kOn32Bits || offsetof(CAudio, m_ulDataRead) == 1088);
    static_assert(!kOn32Bits || offsetof(CAudio, m_pAudio) == 1104);
    static_assert(!kOn32Bits || offsetof(CAudio, m_ulSizeAudio) == 1128);
    static_assert(!kOn32Bits || offsetof(CAudio, m_cAudio) == 1168);
    static_assert(!kOn32Bits || offsetof(CAudio, m_hStream) == 22344);
    static_assert(!kOn32Bits || offsetof(CAudio, m_hWaveIn) == 22600);
    static_assert(!kOn32Bits || offsetof(CAudio, m_FormatPCM) == 22608);
};

struct CAudioConvertLayout {
    static_assert(offsetof(CAudioConvert, m_nDirection) == sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_ulChunkPCM) == 8);
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_ulChunkGSM) == 12);
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_ulBlockPCM) == 16);
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_ulBlockGSM) == 20);
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_FormatPCM) == 24);
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_FormatGSM) == 42);
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_hStream) == 64);
    static_assert(!kOn32Bits || offsetof(CAudioConvert, m_StreamHeader) == 68);
    static_assert(!kOn32Bits || sizeof(CAudioConvert) == 152);
};

struct CAviFileLayout {
    static_assert(offsetof(CAviFile, m_pFile) == sizeof(void*));
    static_assert(offsetof(CAviFile, m_pStream) == 2 * sizeof(void*));
    static_assert(offsetof(CAviFile, m_pCompressed) == 3 * sizeof(void*));
    static_assert(offsetof(CAviFile, m_pHeader) == 4 * sizeof(void*));
    static_assert(offsetof(CAviFile, m_pPixels) == 5 * sizeof(void*));
    static_assert(offsetof(CAviFile, m_pFrame) == 6 * sizeof(void*));
    static_assert(offsetof(CAviFile, m_iHeight) == 7 * sizeof(void*));
    static_assert(offsetof(CAviFile, m_iWidth) == 7 * sizeof(void*) + 4);
};

struct CSoundLayout {
    static_assert(offsetof(CSound, m_bDefaults) == sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CSound, m_pImage) == 8);
    static_assert(!kOn32Bits || offsetof(CSound, mhMixer) == 12);
    static_assert(!kOn32Bits || offsetof(CSound, m_hWnd) == 16);
    static_assert(!kOn32Bits || sizeof(CSound) == 20);
};
