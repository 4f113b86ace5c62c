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

/// Direction of the sound between device and file.
enum class Transfer { None, ToFile, FromFile };

/// Which buffers a run uses.
enum class BufferSet { None, Continuous, Step };

/// What distinguishes a mode of CAudio from the others.
struct AudioMode {
    Transfer transfer;
    BufferSet buffers;
    const WaveDevice* device;
    DWORD fileAccess;                      ///< 0: no file is opened
    unsigned long AUDIO_DATA::*fileOffset; ///< where the file is read or written; null: neither
    AUDIO_TIME AUDIO_DATA::*time;          ///< progress of the run
    unsigned long AUDIO_DATA::*total;      ///< total length of the sound in bytes of the file
};

/// Returns the description of a mode.
/// @param mode  a CAudio::MODE; any other number opens neither a file nor a device
const AudioMode& ModeOf(int mode);

/// Applies a step to each buffer of a set, even if it fails for one of them.
/// @param step  takes the address of a record and returns 0 or 1
/// @return 0; 1: the step failed for a buffer, or the set is empty
template <class Header, class Step>
unsigned long ForEachOf(BufferSet buffers, Header (&continuous)[2], Header& single, Step step) {
    switch (buffers) {
    case BufferSet::Step: return step(&single);
    case BufferSet::Continuous: {
        const unsigned long failed = step(&continuous[0]); // the order is that of the sound
        return step(&continuous[1]) | failed;
    }
    default: return 1;
    }
}

} // namespace tessel
