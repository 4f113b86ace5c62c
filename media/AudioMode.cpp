#include <media/AudioMode.h>

#include <cstddef>
#include <iterator>

namespace tessel {

namespace {

DWORD_PTR WindowOf(const AUDIO_DATA& audio) {
    return reinterpret_cast<DWORD_PTR>(audio.m_hParent);
}

// GUARD-105: without its handle, a device that still has the buffers could no longer be stopped.
template <class Device> MMRESULT Close(Device& device, MMRESULT(WINAPI* close)(Device)) {
    const MMRESULT result = device != nullptr ? close(device) : MMRESULT{MMSYSERR_NOERROR};
    if (result != WAVERR_STILLPLAYING) device = nullptr;
    return result;
}

MMRESULT OpenInput(AUDIO_DATA& audio) {
    return waveInOpen(&audio.m_hWaveIn, WAVE_MAPPER, &audio.m_FormatPCM, WindowOf(audio), 0, CALLBACK_WINDOW);
}

MMRESULT OpenOutput(AUDIO_DATA& audio) {
    const MMRESULT opened = waveOutOpen(&audio.m_hWaveOut, WAVE_MAPPER, &audio.m_FormatPCM, WindowOf(audio), 0,
                                        CALLBACK_WINDOW | WAVE_ALLOWSYNC);
    return opened != MMSYSERR_NOERROR ? opened : waveOutPause(audio.m_hWaveOut); // silent until the start
}

constexpr WaveDevice kInput{
    OpenInput,
    [](AUDIO_DATA& audio) { return Close(audio.m_hWaveIn, &waveInClose); },
    [](const AUDIO_DATA& audio, WAVEHDR* header) {
        return waveInPrepareHeader(audio.m_hWaveIn, header, sizeof *header);
    },
    [](const AUDIO_DATA& audio, WAVEHDR* header) {
        return waveInUnprepareHeader(audio.m_hWaveIn, header, sizeof *header);
    },
    [](const AUDIO_DATA& audio, WAVEHDR* header) { return waveInAddBuffer(audio.m_hWaveIn, header, sizeof *header); },
    [](const AUDIO_DATA& audio) { return waveInStart(audio.m_hWaveIn); },
    [](const AUDIO_DATA& audio) { return waveInReset(audio.m_hWaveIn); },
    [](const AUDIO_DATA& audio, MMTIME* time) { return waveInGetPosition(audio.m_hWaveIn, time, sizeof *time); },
};

constexpr WaveDevice kOutput{
    OpenOutput,
    [](AUDIO_DATA& audio) { return Close(audio.m_hWaveOut, &waveOutClose); },
    [](const AUDIO_DATA& audio, WAVEHDR* header) {
        return waveOutPrepareHeader(audio.m_hWaveOut, header, sizeof *header);
    },
    [](const AUDIO_DATA& audio, WAVEHDR* header) {
        return waveOutUnprepareHeader(audio.m_hWaveOut, header, sizeof *header);
    },
    [](const AUDIO_DATA& audio, WAVEHDR* header) { return waveOutWrite(audio.m_hWaveOut, header, sizeof *header); },
    [](const AUDIO_DATA& audio) { return waveOutRestart(audio.m_hWaveOut); },
    [](const AUDIO_DATA& audio) { return waveOutReset(audio.m_hWaveOut); },
    [](const AUDIO_DATA& audio, MMTIME* time) { return waveOutGetPosition(audio.m_hWaveOut, time, sizeof *time); },
};

using Data = AUDIO_DATA;

/// In the order of CAudio::MODE; the last row is for numbers that are not a mode.
constexpr AudioMode kModes[] = {
    {Transfer::None, BufferSet::None, &kOutput, GENERIC_READ | GENERIC_WRITE, nullptr, &Data::m_Play,
     &Data::m_ulDataWrite},
    {Transfer::ToFile, BufferSet::Continuous, &kInput, GENERIC_WRITE, &Data::m_ulDataWrite, &Data::m_Record,
     &Data::m_ulMaxCompress},
    {Transfer::FromFile, BufferSet::Continuous, &kOutput, GENERIC_READ, &Data::m_ulDataRead, &Data::m_Play,
     &Data::m_ulDataWrite},
    {Transfer::FromFile, BufferSet::Step, &kOutput, GENERIC_READ, &Data::m_ulDataRead, &Data::m_Play,
     &Data::m_ulDataWrite},
    {Transfer::None, BufferSet::None, &kOutput, 0, nullptr, &Data::m_Play, &Data::m_ulDataWrite},
};

} // namespace

const AudioMode& ModeOf(int mode) {
    const bool isMode = mode >= CAudio::MODE_IDLE && mode <= CAudio::MODE_PLAY_STEP;
    return kModes[isMode ? static_cast<std::size_t>(mode) : std::size(kModes) - 1];
}

} // namespace tessel
