#pragma once

#include <tessel/foundation/platform.h>

#include <mmsystem.h>

#include <cstdint>

/// Result of CSound::Play() when the sound cannot be played.
inline constexpr unsigned long STATUS_SOUND_NOT_PLAYED = 0x1E000000;

/// Result of CSound when a device has no control of the requested kind.
inline constexpr unsigned long STATUS_SOUND_NO_CONTROL = 0x1E000001;

/// Sets the volumes, mutes, record levels and record source of the first mixer device, and plays sounds from memory.
///
/// Make a CSoundPort to find the controls of the mixer and apply the workstation's settings, or a CSoundViewer only to
/// find the controls. Controls are recognised by their kind and by words in their names. Their identifiers are kept in
/// static members, so all objects of the process use what one of them finds. An operation on a control that was not
/// found does nothing and succeeds.
///
/// Wine calls the fader of the speaker "Volume", without the word "Master", so the speaker's volume is not found there.
/// To find it, set mMaster to L"Volume" and call InitMixerLineOut().
///
/// Levels range from 1 to 32; other values are clamped. A level L is written to a control as (L - 1) * 2048 + 2047, so
/// that 32 becomes 65535.
///
/// Results are 0, STATUS_SOUND_NOT_PLAYED, STATUS_SOUND_NO_CONTROL or the multimedia error. A failure to open, close or
/// initialise is also reported.
///
/// Copies share the mixer handle and the sound; the last copy closes and frees them.
/// Threads: one at a time for an object. The static members are not locked: find the controls, as the constructors of
/// CSoundPort and CSoundViewer do, while no other thread uses any of these objects.
class TESSEL_API CSound {
public:
    /// What can be set.
    enum SOUND_DEVICE : std::uint32_t {
        SOUND_WAVE = 0,       ///< played sounds: volume, mute
        SOUND_MICROPHONE = 1, ///< microphone: volume and mute at the speaker, record level, record source
        SOUND_LINE_IN = 2,    ///< line in: volume and mute at the speaker, record source; its record level is not found
        SOUND_SPEAKER = 3,    ///< all output: volume, balance, mute
        SOUND_RECORD_MASTER = 4 ///< all input: record level
    };

    /// Identifier of a control that was not found.
    enum : unsigned long { INVALID_CONTROLID = 0xFFFFFFFF };

    /// Opens the mixer without finding the controls. A failure is only reported.
    /// @param hwnd       window that receives notifications of changed controls and lines (MM_MIXM_CONTROL_CHANGE and
    ///                   MM_MIXM_LINE_CHANGE, with the mixer handle as wParam and the identifier as lParam); null for
    ///                   none. The class itself does not use them
    /// @param bDefaults  not 0: finding the controls also applies the workstation's settings
    CSound(HWND hwnd, int bDefaults);

    /// Reads a sound for Play(int), opens the mixer and calls Initialize(). A file that cannot be read, is not RIFF or
    /// is shorter than it states leaves the object without a sound, so that Play(int) fails. So does an incomplete
    /// format, or one that cannot be played: no channels, a block without samples, or a rate below 100 or above
    /// 384,000.
    /// @param file  path of a WAVE file, less than 4 GB
    explicit CSound(wchar_t* file);

    /// Shares the mixer handle and the sound. Without memory to count the owner, the copy has neither.
    /// @param other  object to copy
    CSound(const CSound& other);

    /// Releases this object's mixer and sound and shares the other's.
    /// @param other  object to copy
    /// @return this object
    CSound& operator=(const CSound& other);

    /// Closes the mixer and frees the sound, unless copies use them. A sound that is playing is stopped.
    virtual ~CSound();

    /// Opens the mixer unless it is open.
    /// @return 0: open, or no mixer exists; else the multimedia error, which is reported
    unsigned long Open();

    /// Closes the mixer unless copies use it. This object has none afterwards, whatever the result.
    /// @return 0: closed, or it was not open; else the multimedia error, which is reported
    unsigned long Close();

    /// Finds the controls, those of the recording line first. If the constructor received bDefaults, it then applies
    /// the workstation's settings: microphone muted at the speaker, line in at 16, wave and speaker at 10, record
    /// master at 32, microphone recorded at 16 and selected as the source. It stops at the first failure: without a
    /// recording line it does not search the speaker line. It does nothing if m_bInit is set, and sets it when
    /// everything succeeded.
    /// @return 0; MMSYSERR_INVALHANDLE (5): the mixer is not open; else the multimedia error. Failures are reported
    unsigned long Initialize();

    /// Finds the controls of the recording line and its sources. Controls found earlier are kept unless they are found
    /// again. With bDefaults, all faders of the line are set to 0.
    /// @return 0; MMSYSERR_INVALHANDLE: the mixer is not open; MMSYSERR_NOMEM: no memory, or a line that claims more
    ///         than 65,535 controls; else the multimedia error at which the search stopped
    unsigned int InitMixerWaveIn();

    /// Finds the controls of the speaker line and its sources. Controls found earlier are kept unless they are found
    /// again. With bDefaults, all faders of the line are set to 0 and all switches to 1, which mutes.
    /// @return as InitMixerWaveIn()
    unsigned int InitMixerLineOut();

    /// Sets a volume on all channels.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @param level   1 to 32
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long SetVolume(SOUND_DEVICE device, unsigned long level);

    /// Reads a volume.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @param level   receives 1 to 32; unchanged if the control was not found and after a failure
    /// @return 0, also if the control was not found; STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long GetVolume(SOUND_DEVICE device, unsigned long& level);

    /// Sets the volume of a speaker line with two channels and keeps the balance: the louder channel is set to
    /// the level, or both if they are equal. If there are not two channels that can be read, it does the same as
    /// SetVolume().
    /// @param device  SOUND_SPEAKER
    /// @param level   1 to 32
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long SetVolumeBalance(SOUND_DEVICE device, unsigned long level);

    /// Mutes or unmutes.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @param bMute   0: unmute; not 0: mute
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long Mute(SOUND_DEVICE device, int bMute);

    /// Unmutes.
    /// @param device  SOUND_WAVE to SOUND_SPEAKER
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long UnMute(SOUND_DEVICE device);

    /// Sets a record level.
    /// @param device  SOUND_MICROPHONE or SOUND_RECORD_MASTER; SOUND_LINE_IN, whose control is never found
    /// @param level   1 to 32
    /// @return 0, STATUS_SOUND_NO_CONTROL or the multimedia error
    unsigned long SetRecordLevel(SOUND_DEVICE device, unsigned long level);

    /// Selects the record source: switches on the items of the record-source control whose names contain mMicrophone or
    /// mLine. In a control that selects a single item it switches off all others; otherwise they stay as they are.
    /// @param device  SOUND_MICROPHONE or SOUND_LINE_IN; any other device matches no item
    /// @return 0; MMSYSERR_NOMEM: no memory, or the control claims more than 65,535 items; else the multimedia error
    unsigned long SetRecordSource(SOUND_DEVICE device);

    /// Plays the sound that was read from the file and stops an earlier one.
    /// @param bSync  0: return at once; not 0: return when it has been played
    /// @return 0; STATUS_SOUND_NOT_PLAYED: no sound, or the system refused
    unsigned long Play(int bSync);

    /// Plays a sound from memory and stops an earlier one.
    /// @param image  a complete RIFF WAVE file in memory, whose lengths the system trusts. The caller owns it and must
    ///               not change or free it until it has been played. Null is refused
    /// @param bSync  0: return at once; not 0: return when it has been played
    /// @return 0; STATUS_SOUND_NOT_PLAYED: null, or the system refused
    unsigned long Play(wchar_t* image, int bSync);

    /// Returns the identifier of the speaker's volume control, as notifications carry it.
    /// @return identifier; INVALID_CONTROLID: not found
    static unsigned long GetSpeakerVolumeControlId() { return mSpeakerVolCtrlId; }

    /// Returns the identifier of the speaker's mute control, as notifications carry it.
    /// @return identifier; INVALID_CONTROLID: not found
    static unsigned long GetSpeakerMuteControlId() { return mSpeakerMuteCtrlId; }

    /// Reads a switch, all channels as one. This and the following operations report an invalid identifier and a mixer
    /// that is not open.
    /// @param id     identifier of the control
    /// @param value  receives whether it is on; unchanged after a failure
    /// @return 0 or the multimedia error
    unsigned int GetMixerControlBoolean(unsigned long id, bool& value);

    /// Sets a switch on all channels.
    /// @param id     identifier of the control
    /// @param value  true: on
    /// @return 0 or the multimedia error
    unsigned int SetMixerControlBoolean(unsigned long id, bool value);

    /// Reads a fader, all channels as one.
    /// @param id     identifier of the control
    /// @param value  receives the value, usually 0 to 65535; unchanged after a failure
    /// @return 0 or the multimedia error
    unsigned int GetMixerControlUnsigned(unsigned long id, unsigned long& value);

    /// Sets a fader on all channels.
    /// @param id     identifier of the control
    /// @param value  the value, usually 0 to 65535
    /// @return 0 or the multimedia error
    unsigned int SetMixerControlUnsigned(unsigned long id, unsigned long value);

    /// Reads a fader with two channels.
    /// @param id     identifier of the control
    /// @param left   receives the value of the left channel; unchanged after a failure
    /// @param right  receives the value of the right channel; unchanged after a failure
    /// @return 0 or the multimedia error
    unsigned int GetMixerControlUnsigned2(unsigned long id, unsigned long& left, unsigned long& right);

    /// Sets a fader with two channels.
    /// @param id     identifier of the control
    /// @param left   value of the left channel
    /// @param right  value of the right channel
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
    static unsigned long mRecordMasterLevelCtrlId; ///< record level of all input
    static unsigned long mRecordSourcesCtrlId;     ///< record-source selector
    static unsigned long mNumChannelIn;            ///< channels of the recording line
    static unsigned long mNumChannelOut;           ///< channels of the speaker line

    /// Not 0: the controls were found. It starts set although they were not, so that a plain CSound does not search for
    /// them unless it is cleared.
    static int m_bInit;

    static const wchar_t* mMaster; ///< word in the name of the speaker's volume: "Master"
    static const wchar_t* mLine;   ///< word in the names of line in's controls and record source: "Line"
    static const wchar_t*
        mMicrophone;             ///< word in the names of the microphone's controls and record source: "Microphone"
    static const wchar_t* mWave; ///< word in the names of the controls of played sounds: "Wave"

private:
    friend struct CSoundLayout;

    unsigned long ApplyDefaults();

    int m_bDefaults;
    unsigned char* m_pImage;
    HMIXER mhMixer;
    HWND m_hWnd;
};

/// A CSound that finds the controls and applies the workstation's settings.
class TESSEL_API CSoundPort : public CSound {
public:
    /// Opens the mixer, resets the four words to their defaults, finds the controls again and applies the settings.
    /// Failures are only reported; Initialize() tries again.
    /// @param hwnd  window that receives notifications of changes; null for none
    explicit CSoundPort(HWND hwnd);

    /// Copies the base.
    CSoundPort(const CSoundPort&) = default;

    /// Copies the base.
    /// @return this object
    CSoundPort& operator=(const CSoundPort&) = default;

    /// Destroys the base.
    ~CSoundPort() override = default;
};

/// A CSound that finds the controls and does not change the settings of the mixer.
class TESSEL_API CSoundViewer : public CSound {
public:
    /// Opens the mixer, resets the four words to their defaults and finds the controls again. Failures are only
    /// reported; Initialize() tries again.
    /// @param hwnd  window that receives notifications of changes; null for none
    explicit CSoundViewer(HWND hwnd);

    /// Copies the base.
    CSoundViewer(const CSoundViewer&) = default;

    /// Copies the base.
    /// @return this object
    CSoundViewer& operator=(const CSoundViewer&) = default;

    /// Destroys the base.
    ~CSoundViewer() override = default;
};
