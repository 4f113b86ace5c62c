#include <media/AudioMode.h>
#include <media/AudioRatio.h>
#include <media/WaveFormats.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

using tessel::BufferSet;
using tessel::InRatio;

namespace {

double Seconds(unsigned long bytes, unsigned long bytesPerSecond) {
    return static_cast<double>(bytes) / bytesPerSecond;
}

} // namespace

// GUARD-106: a posted message can carry any address.
ACMSTREAMHEADER* CAudio::StreamHeaderOf(const WAVEHDR* header) {
    const bool own = header == &m_WaveHeader[0] || header == &m_WaveHeader[1];
    return own && header->dwUser < std::size(m_StreamHeader) ? &m_StreamHeader[header->dwUser] : nullptr;
}

unsigned long CAudio::RecordedByPosition() const {
    const unsigned long written = InRatio(m_ulDataWrite, m_ulRatioCompress, m_ulRatioAudio);
    return written < m_Record.ulPosition ? std::min(m_ulSizeAudio, m_Record.ulPosition - written) : 0;
}

unsigned long CAudio::StoreRecorded(WAVEHDR* header) {
    ACMSTREAMHEADER* const stream = StreamHeaderOf(header);
    if (stream == nullptr) return 1;
    const unsigned long recorded = header->dwBytesRecorded;
    SetCompressUse(stream, recorded != 0 ? recorded : RecordedByPosition());
    if (CompressBuffer(stream) || WriteBuffer(stream)) return 1;
    return m_bStop || m_hWaveIn == nullptr ? 0 : AddWaveBuffer(header);
}

void CAudio::ProcessWimData(HWAVEIN, WAVEHDR* header) {
    if (StoreRecorded(header) != 0) OnStop();
}

void CAudio::ProcessWimClose(HWAVEIN) {
    m_ulDataRead = m_ulDataWrite;
    FinishRun();
}

unsigned long CAudio::ContinuePlayback(WAVEHDR* header) {
    if (m_bStop || m_hWaveOut == nullptr || m_ulDataRead == m_ulDataWrite) return 0;
    ACMSTREAMHEADER* const stream = StreamHeaderOf(header);
    return stream == nullptr || ReadBuffer(stream) || UncompressBuffer(stream) || AddWaveBuffer(header);
}

void CAudio::ProcessWomDone(HWAVEOUT, WAVEHDR* header) {
    if (Mode().buffers != BufferSet::Step) {
        if (ContinuePlayback(header) != 0) OnStop();
        return;
    }
    if (header == &m_WaveHeaderStep) // GUARD-106
        m_Play.ulPosition = static_cast<unsigned long>(
            std::min<std::uint64_t>(m_Play.ulLimit, std::uint64_t{m_Play.ulPosition} + header->dwBufferLength));
    UpdateDisplay(1, 0);
    OnStop();
}

void CAudio::ProcessWomClose(HWAVEOUT) {
    m_ulDataRead = InRatio(m_Play.ulPosition, m_ulRatioAudio, m_ulRatioCompress);
    FinishRun();
}

void CAudio::FinishRun() {
    StopStream();
    StopFile();
    StopDeviceTimer();
    ClearDeviceTime();
    EndEveryRun();     // the close may come from an earlier device, whose start failed
    ClearDeviceTime(); // of the run that this ended
    m_nMode = MODE_IDLE;
    SetControls(1);
    UpdateDisplay(1, 1);
    m_bStop = 0;
    OnQuit();
}

void CAudio::ProcessTimer(unsigned int) {
    if (!m_bTimer) return;
    (void)UpdateDeviceTime(); // after a failure the old position stays
    UpdateDisplay(1, 0);
}

unsigned long CAudio::StartDeviceTimer() {
    m_bTimer = 1;
    return SetTimer(m_hParent, TIMER_ID, TIMER_INTERVAL, nullptr) != 0 ? 0 : 1;
}

void CAudio::StopDeviceTimer() {
    if (!m_bTimer) return;
    m_bTimer = 0;
    (void)KillTimer(m_hParent, TIMER_ID); // a destroyed window has no timer
}

unsigned long CAudio::UpdateDeviceTime() {
    if (Mode().buffers != BufferSet::Continuous) return 0;
    unsigned long bytes = 0;
    if (GetDevicePosition(bytes) != 0) return 1;
    AUDIO_TIME& time = this->*Mode().time;
    const auto reached =
        static_cast<unsigned long>(std::min<std::uint64_t>(time.ulLimit, std::uint64_t{time.ulBase} + bytes));
    time.ulPosition = reached - reached % m_ulBlockAudio; // ODD-116: only limits in whole blocks are reached
    if (time.ulPosition == time.ulLimit) OnStop();
    return 0;
}

// ODD-117: the position of a play-step stays. ODD-118: the close after a failed start finds position 0.
void CAudio::ClearDeviceTime() {
    if (Mode().buffers == BufferSet::Continuous) this->*Mode().time = AUDIO_TIME{};
}

unsigned long CAudio::FileBytesPerSecond() const {
    return m_bConvert ? tessel::kFormatGSM.wfx.nAvgBytesPerSec : tessel::kFormatPCM.nAvgBytesPerSec;
}

unsigned long CAudio::GetTimeCurrent(double& seconds) const {
    seconds = m_nMode == MODE_IDLE ? Seconds(m_ulDataRead, FileBytesPerSecond())
                                   : Seconds((this->*Mode().time).ulPosition, tessel::kFormatPCM.nAvgBytesPerSec);
    return 0;
}

unsigned long CAudio::GetTimeTotal(double& seconds) const {
    seconds = Seconds(this->*Mode().total, FileBytesPerSecond());
    return 0;
}
