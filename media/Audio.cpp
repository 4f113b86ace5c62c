#include <media/AudioMode.h>
#include <media/WaveFormats.h>

#include <cstddef>
#include <iterator>

CAudio::CAudio(int bConvert) : AUDIO_DATA{} {
    InitWaveFormatPCM(&m_FormatPCM);
    InitWaveFormatGSM(&m_FormatGSM);
    SetConvert(bConvert);
    ClearStreamHeadersConvert();
    InitWaveHeaders();
}

CAudio::CAudio(const CAudio& other) : AUDIO_DATA(other) {
    DetachFromRun();
}

CAudio& CAudio::operator=(const CAudio& other) {
    if (this == &other) return *this;
    EndEveryRun();
    static_cast<AUDIO_DATA&>(*this) = other;
    DetachFromRun();
    return *this;
}

CAudio::~CAudio() {
    EndEveryRun();
}

// GUARD-100: copied pointers would lead into the other object, and device, conversion, file and timer would be closed
// twice.
void CAudio::DetachFromRun() {
    m_hFile = nullptr;
    m_bTimer = 0;
    m_hStream = nullptr;
    m_hWaveIn = nullptr;
    m_hWaveOut = nullptr;
    for (ACMSTREAMHEADER& header : m_StreamHeader) header = ACMSTREAMHEADER{};
    m_StreamHeaderStep = ACMSTREAMHEADER{};
    for (WAVEHDR& header : m_WaveHeader) header = WAVEHDR{};
    m_WaveHeaderStep = WAVEHDR{};
    UseOwnBuffers();
    InitStreamHeaders();
    ClearStreamHeadersConvert();
    InitWaveHeaders();
}

void CAudio::UseOwnBuffers() {
    const bool converts = m_bConvert != 0;
    for (std::size_t i = 0; i < std::size(m_pAudio); ++i) {
        m_pAudio[i] = m_cAudio[i];
        m_pCompress[i] = converts ? m_cCompress[i] : m_cAudio[i];
    }
    m_pAudioStep = m_cAudioStep;
    m_pCompressStep = converts ? m_cCompressStep : m_cAudioStep;
    m_ulSizeAudio = sizeof m_cAudio[0];
    m_ulSizeCompress = converts ? sizeof m_cCompress[0] : sizeof m_cAudio[0];
    m_ulSizeAudioStep = sizeof m_cAudioStep;
    m_ulSizeCompressStep = converts ? sizeof m_cCompressStep : sizeof m_cAudioStep;
}

// GUARD-101: the device would go on writing to an object that was destroyed or reused.
void CAudio::EndEveryRun() {
    if (m_hWaveOut != nullptr) {
        if (m_nMode != MODE_PLAY_STEP) m_nMode = MODE_PLAY;
        StopWave();
    }
    if (m_hWaveIn != nullptr) {
        m_nMode = MODE_RECORD;
        StopWave();
    }
    StopStream();
    StopFile();
    StopDeviceTimer();
}

void CAudio::SetParentWindow(HWND window) {
    m_hParent = window;
}

const tessel::AudioMode& CAudio::Mode() const {
    return tessel::ModeOf(m_nMode);
}

void CAudio::SetModeIdle() {
    m_nMode = MODE_IDLE;
}

void CAudio::SetModeRecord() {
    m_nMode = MODE_RECORD;
}

void CAudio::SetModePlay() {
    m_nMode = MODE_PLAY;
}

void CAudio::SetModePlayStep() {
    m_nMode = MODE_PLAY_STEP;
}

void CAudio::SetMod(int bMod) {
    m_bMod = bMod;
}

int CAudio::GetMod() const {
    return m_bMod;
}

wchar_t* CAudio::GetPath() {
    return m_szPath;
}

void CAudio::SetConvert(int bConvert) {
    constexpr unsigned long kLongest = 300;   // seconds
    constexpr unsigned long kRatioOfPcm = 64; // against kRatioOfGsm: 1,600 bytes become 325
    constexpr unsigned long kRatioOfGsm = 13;
    const bool converts = bConvert != 0;
    m_bConvert = bConvert;
    UseOwnBuffers();
    m_ulRatioAudio = kRatioOfPcm;
    m_ulRatioCompress = converts ? kRatioOfGsm : kRatioOfPcm;
    m_ulMaxAudio = kLongest * tessel::kFormatPCM.nAvgBytesPerSec;
    m_ulMaxCompress = kLongest * FileBytesPerSecond();
    m_ulBlockAudio = tessel::kBlockPCM;
    m_ulBlockCompress = converts ? tessel::kBlockGSM : tessel::kBlockPCM;
    InitStreamHeaders();
}

// ODD-119: it truncates the file before it knows whether there is a device.
unsigned long CAudio::StartRecord() {
    if (TruncateFile() || OpenFile() || SeekFile()) return StartError();
    InitStreamHeadersConvert();
    if (OpenStream() || PrepareStreamHeaders() || OpenWaveDevice() || PrepareWaveHeaders() || AddWaveBuffers() ||
        StartWaveDevice())
        return StartError();
    return 0;
}

unsigned long CAudio::StartPlay() {
    if (OpenFile() || SeekFile()) return StartError();
    InitStreamHeadersConvert();
    return StartOutput();
}

unsigned long CAudio::StartPlayStep() {
    if (OpenFile() || SeekFile()) return StartError();
    return StartOutput();
}

unsigned long CAudio::StartOutput() {
    if (OpenStream() || PrepareStreamHeaders() || OpenWaveDevice() || PrepareWaveHeaders() || ReadBuffers() ||
        UncompressBuffers() || AddWaveBuffers() || StartWaveDevice())
        return StartError();
    return 0;
}

unsigned long CAudio::StartError() {
    StopWave();
    StopStream();
    StopFile();
    StopDeviceTimer();
    ClearDeviceTime();
    EndEveryRun();     // a run of another mode would continue, and nothing could stop it
    ClearDeviceTime(); // of that run
    ClearStreamHeadersConvert();
    m_nMode = MODE_IDLE;
    SetControls(1);
    UpdateDisplay(1, 1);
    return 1;
}

// A failure while stopping cannot be corrected, and the later steps are still needed.
void CAudio::StopWave() {
    (void)RemoveWaveBuffers();
    (void)UnprepareWaveHeaders();
    (void)CloseWaveDevice();
}

void CAudio::StopStream() {
    (void)UnprepareStreamHeaders();
    (void)CloseStream();
    ClearStreamHeadersConvert();
}

void CAudio::StopFile() {
    (void)CloseFile();
}

void CAudio::SetControls(int) {}

void CAudio::UpdateDisplay(int, int) {}

void CAudio::OnStop() {}

void CAudio::OnQuit() {}

// ODD-110: the codes of failures arrive here and are dropped.
void CAudio::ClearError() {}

void CAudio::SetFileError(unsigned int) {}

void CAudio::SetStreamError(unsigned int) {}

void CAudio::SetWaveError(unsigned int) {}

void CAudio::GetError(unsigned int&, wchar_t*) const {}
