#pragma once

#include <tessel/media/audio.h>

namespace tessel {

/// The calls of a sound device. They return 0 or the multimedia error.
struct WaveDevice {
    MMRESULT (*open)(AUDIO_DATA& audio);
    MMRESULT (*close)(AUDIO_DATA& audio); ///< a device that still has buffers stays open
    MMRESULT (*prepare)(const AUDIO_DATA& audio, WAVEHDR* header);
    MMRESULT (*unprepare)(const AUDIO_DATA& audio, WAVEHDR* header);
    MMRESULT (*queue)(const AUDIO_DATA& audio, WAVEHDR* header);
    MMRESULT (*start)(const AUDIO_DATA& audio);
    MMRESULT (*reset)(const AUDIO_DATA& audio);
    MMRESULT (*getPosition)(const AUDIO_DATA& audio, MMTIME* time);
};

/// Which way sound goes between device and file.
enum class Transfer { None, ToFile, FromFile };

/// Which buffers a run uses.
enum class BufferSet { None, Continuous, Step };

/// What a mode of CAudio does.
struct AudioMode {
    Transfer transfer;
    BufferSet buffers;
    const WaveDevice* device;
    DWORD fileAccess;                         ///< 0: no file is opened
    unsigned long AUDIO_DATA::*fileOffset;    ///< where the file is read or written; null: it is not
    AUDIO_TIME AUDIO_DATA::*time;             ///< how far the run has come
    unsigned long AUDIO_DATA::*longestInFile; ///< the total length that is shown, in bytes of the file
};

/// Finds what a mode does.
/// @param mode  a CAudio::MODE; any other number is a mode that opens no file and no device
const AudioMode& ModeOf(int mode);

/// Does a step with each buffer of a set, also when the step fails for one of them.
/// @param step  takes a record's address and returns 0 or 1
/// @return 0; 1: the step failed for a buffer, or the set is empty
template <class Header, class Step>
unsigned long ForEachOf(BufferSet buffers, Header (&continuous)[2], Header& single, Step step) {
    switch (buffers) {
    case BufferSet::Step: return step(&single);
    case BufferSet::Continuous: return step(&continuous[0]) + step(&continuous[1]) != 0 ? 1 : 0;
    default: return 1;
    }
}

} // namespace tessel
