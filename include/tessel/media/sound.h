#pragma once

#include <tessel/foundation/platform.h>

#include <mmsystem.h>

#include <cstdint>

/// Result of CSound::Play() when the sound cannot be played.
inline constexpr unsigned long STATUS_SOUND_NOT_PLAYED = 0x1E000000;

/// Result of CSound when a device has no control of the asked kind.
inline constexpr unsigned long STATUS_SOUND_NO_CONTROL = 0x1E000001;

/// Sets the volumes, mutes, record levels and record source of the machine's first mixer device, and plays sounds
/// from memory.
///
/// Make a CSoundPort to find the mixer's controls and put the workstation's settings into force, a CSoundViewer to find
/// them only. The controls are recognised by their kind and by words in their names; their identifiers are kept in
/// static members, so that what one object finds serves all of the process. An operation on a control that was never
/// found does nothing and succeeds.
///
/// Levels go from 1 to 32; what is outside counts as the nearer end. A level L is written to a control as
/// (L - 1) * 2048 + 2047, so 32 is a control's 65535.
///
/// Results are 0, STATUS_SOUND_NOT_PLAYED, STATUS_SOUND_NO_CONTROL or the multimedia error. A failure to open, close or
/// initialise is also reported.
///
/// Copies share the mixer handle and the sound image; the last of them to go closes and frees.
/// Threads: one at a time uses an object. The static members are not locked: find the controls, which the
/// construction of CSoundPort and CSoundViewer does, while no other thread uses any of these objects.
class TESSEL_API CSound {
public:
    /// What can be set.
    enum SOUND_DEVICE : std::uint32_t {
        SOUND_WAVE = 0,       ///< played sounds: volume, mute
        SOUND_MICROPHONE = 1, ///< microphone: volume and mute at the speaker, record level, record source
        SOUND_LINE_IN = 2,    ///< line in: volume and mute at the speaker, record source; its record level is not found
        SOUND_SPEAKER = 3,    ///< all that is heard: volume, balance, mute
        SOUND_RECORD_MASTER = 4 ///< all that is recorded: record level
    };

    /// Identifier of a control that has not been found.
    enum : unsigned long { INVALID_CONTROLID = 0xFFFFFFFF };

    /// Opens the mixer; a failure is only reported. Finds no controls.
    /// @param hwnd       window that the system tells of changes of controls and lines (MM_MIXM_CONTROL_CHANGE and
    ///                   MM_MIXM_LINE_CHANGE, with the mixer handle as wParam and the identifier as lParam); null for
    ///                   none. The class itself makes no use of them
    /// @param bDefaults  not 0: finding the controls puts the workstation's settings into force
    CSound(HWND hwnd, int bDefaults);

    /// Reads a sound for Play(int), opens the mixer and calls Initialize(). The object is left without a sound, so that
    /// Play(int) fails, by a file that cannot be read, is no RIFF file or lacks a byte of the length that it states,
    /// and by a format that is incomplete or that no device plays: no channels, a block without samples, or a rate of 0
    /// or above 384,000.
    /// @param file  path of a WAVE file, less than 4 GB
    explicit CSound(wchar_t* file);

    /// Shares the mixer handle and the sound; without memory to note that, the copy has none.
    /// @param other  object to copy
    CSound(const CSound& other);

    /// Gives up what the object has and shares what the other one has.
    /// @param other  object to copy
    /// @return this object
    CSound& operator=(const CSound& other);

    /// Closes the mixer and frees the sound, unless copies use them. The sound is stopped if it is being played.
    virtual ~CSound();

    /// Opens the mixer, unless it is open.
    /// @return 0: open, or the machine has no mixer; else the multimedia error, which is reported
    unsigned long Open();

    /// Closes the mixer, unless copies use it; this object has none afterwards, whatever the result.
    /// @return 0: closed, or it was not open; else the multimedia error, which is reported
    unsigned long Close();

    /// Finds the controls, those of the recording line first, and then, if the constructor was told so, puts the
    /// workstation's settings into force: microphone muted at the speaker, line in at 16, wave and speaker at 10,
    /// record master at 32, microphone recorded at 16 and chosen as the source. Stops at the first failure: without a
    /// recording line the speaker is not looked at. Does nothing when m_bInit is set, and sets it when all succeeded.
    /// @return 0; MMSYSERR_INVALHANDLE (5): the mixer is not open; else the multimedia error. It is reported
    unsigned long Initialize();

    /// Finds the controls of the recording line and its sources, of which those found before stay. With the
    /// workstation's settings all its faders are set to 0.
    /// @return 0; MMSYSERR_INVALHANDLE: the mixer is not open; MMSYSERR_NOMEM: no memory, or a line that claims more
    ///         than 65,535 controls; else the multimedia error at which the search stopped
    unsigned int InitMixerWaveIn();

    /// Finds the controls of the speaker line and its sources, of which those found before stay. With the
    /// workstation's settings all its faders are set to 0 and all its switches to 1, which mutes.
    /// @return as InitMixerWaveIn()
    unsigned int InitMixerLineOut();

    /// Sets a volume on all channels.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @param level   1 to 32
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long SetVolume(SOUND_DEVICE device, unsigned long level);

    /// Reads a volume.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @param level   receives 1 to 32; left as it is for a control that was never found and after a failure
    /// @return 0, also for a control that was never found; STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long GetVolume(SOUND_DEVICE device, unsigned long& level);

    /// Sets the volume of a speaker line with two channels so that the louder one takes the level and the balance
    /// stays; equal channels both take it. Where there are not two channels to be read it is SetVolume().
    /// @param device  SOUND_SPEAKER
    /// @param level   1 to 32
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long SetVolumeBalance(SOUND_DEVICE device, unsigned long level);

    /// Mutes or unmutes.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @param bMute   0: unmute; else mute
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long Mute(SOUND_DEVICE device, int bMute);

    /// Unmutes.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long UnMute(SOUND_DEVICE device);

    /// Sets how loud something is recorded.
    /// @param device  SOUND_MICROPHONE, SOUND_RECORD_MASTER; SOUND_LINE_IN, whose control is never found
    /// @param level   1 to 32
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long SetRecordLevel(SOUND_DEVICE device, unsigned long level);

    /// Chooses what is recorded: the items of the record-source control whose names contain mMicrophone or mLine are
    /// switched on. If it takes one item only, all others are switched off, else they stay.
    /// @param device  SOUND_MICROPHONE or SOUND_LINE_IN; for any other one no item is sought
    /// @return 0; MMSYSERR_NOMEM: no memory, or the control claims more than 65,535 items; else the multimedia error
    unsigned long SetRecordSource(SOUND_DEVICE device);

    /// Plays the sound that was read from the file; an earlier one is stopped.
    /// @param bSync  0: return at once; else when it has been played
    /// @return 0; STATUS_SOUND_NOT_PLAYED: there is none, or the system refuses
    unsigned long Play(int bSync);

    /// Plays a sound of the caller's; an earlier one is stopped.
    /// @param image  a whole RIFF WAVE file in memory, whose lengths the system trusts. It stays the caller's and must
    ///               stay as it is until it has been played. Null is refused
    /// @param bSync  0: return at once; else when it has been played
    /// @return 0; STATUS_SOUND_NOT_PLAYED: null, or the system refuses
    unsigned long Play(wchar_t* image, int bSync);

    /// The control of the speaker's volume, as notifications name it.
    /// @return its identifier; INVALID_CONTROLID: not found
    static unsigned long GetSpeakerVolumeControlId() { return mSpeakerVolCtrlId; }

    /// The control of the speaker's mute, as notifications name it.
    /// @return its identifier; INVALID_CONTROLID: not found
    static unsigned long GetSpeakerMuteControlId() { return mSpeakerMuteCtrlId; }

    /// Reads a switch, all its channels as one. An invalid identifier and a mixer that is not open are reported, here
    /// and in the operations that follow.
    /// @param id     identifier of the control
    /// @param value  receives whether it is on; left as it is after a failure
    /// @return 0 or the multimedia error
    unsigned int GetMixerControlBoolean(unsigned long id, bool& value);

    /// Sets a switch on all channels.
    /// @param id     identifier of the control
    /// @param value  whether it is to be on
    /// @return 0 or the multimedia error
    unsigned int SetMixerControlBoolean(unsigned long id, bool value);

    /// Reads a fader, all its channels as one.
    /// @param id     identifier of the control
    /// @param value  receives its value, as a rule 0 to 65535; left as it is after a failure
    /// @return 0 or the multimedia error
    unsigned int GetMixerControlUnsigned(unsigned long id, unsigned long& value);

    /// Sets a fader on all channels.
    /// @param id     identifier of the control
    /// @param value  the value, as a rule 0 to 65535
    /// @return 0 or the multimedia error
    unsigned int SetMixerControlUnsigned(unsigned long id, unsigned long value);

    /// Reads a fader with two channels.
    /// @param id     identifier of the control
    /// @param left   receives the left channel's value; left as it is after a failure
    /// @param right  receives the right channel's value; left as it is after a failure
    /// @return 0 or the multimedia error
    unsigned int GetMixerControlUnsigned2(unsigned long id, unsigned long& left, unsigned long& right);

    /// Sets a fader with two channels.
    /// @param id     identifier of the control
    /// @param left   the left channel's value
    /// @param right  the right channel's value
    /// @return 0 or the multimedia error
    unsigned int SetMixerControlUnsigned2(unsigned long id, unsigned long left, unsigned long right);

    static unsigned long mWaveInVolCtrlId;         ///< volume of played sounds at the speaker
    static unsigned long mWaveInMuteCtrlId;        ///< mute of played sounds at the speaker
    static unsigned long mMicVolCtrlId;            ///< volume of the microphone at the speaker
    static unsigned long mMicMuteCtrlId;           ///< mute of the microphone at the speaker
    static unsigned long mLineInVolCtrlId;         ///< volume of line in at the speaker
    static unsigned long mLineInMuteCtrlId;        ///< mute of line in at the speaker
    static unsigned long mSpeakerVolCtrlId;        ///< volume of the speaker
    static unsigned long mSpeakerMuteCtrlId;       ///< mute of the speaker
    static unsigned long mRecordMicLevelCtrlId;    ///< record level of the microphone
    static unsigned long mRecordLineInLevelCtrlId; ///< record level of line in; never found
    static unsigned long mRecordMasterLevelCtrlId; ///< record level of all
    static unsigned long mRecordSourcesCtrlId;     ///< which sources are recorded
    static unsigned long mNumChannelIn;            ///< channels of the recording line
    static unsigned long mNumChannelOut;           ///< channels of the speaker line

    /// Set once the controls have been found, and at the start, when they have not: a plain CSound does not look for
    /// them unless it is cleared.
    static int m_bInit;

    static const wchar_t* mMaster;     ///< word in the name of the speaker's volume: "Master"
    static const wchar_t* mLine;       ///< word in the names of line in's controls and record source: "Line"
    static const wchar_t* mMicrophone; ///< word in the names of the microphone's: "Microphone"
    static const wchar_t* mWave;       ///< word in the names of the controls of played sounds: "Wave"

private:
    friend struct CSoundLayout;

    unsigned long ApplyDefaults();

    int m_bDefaults;
    unsigned char* m_pImage;
    HMIXER mhMixer;
    HWND m_hWnd;
};

/// A CSound that puts the workstation's settings into force.
class TESSEL_API CSoundPort : public CSound {
public:
    /// Opens the mixer, sets the four words to their usual texts, finds the controls even if they were found before,
    /// and puts the settings into force. Failures are only reported; Initialize() tries again.
    /// @param hwnd  window that the system tells of changes; null for none
    explicit CSoundPort(HWND hwnd);

    /// Copies the base.
    CSoundPort(const CSoundPort&) = default;

    /// Copies the base.
    /// @return this object
    CSoundPort& operator=(const CSoundPort&) = default;

    /// Ends the base.
    ~CSoundPort() override = default;
};

/// A CSound that leaves the mixer's settings as they are.
class TESSEL_API CSoundViewer : public CSound {
public:
    /// Opens the mixer, sets the four words to their usual texts and finds the controls even if they were found before.
    /// Failures are only reported; Initialize() tries again.
    /// @param hwnd  window that the system tells of changes; null for none
    explicit CSoundViewer(HWND hwnd);

    /// Copies the base.
    CSoundViewer(const CSoundViewer&) = default;

    /// Copies the base.
    /// @return this object
    CSoundViewer& operator=(const CSoundViewer&) = default;

    /// Ends the base.
    ~CSoundViewer() override = default;
};
