#include <media/MixerRecords.h>
#include <tessel/media/sound.h>

#include <memory>
#include <new>

namespace {

using tessel::IsNamed;

using NoteControl = void (*)(const MIXERCONTROLW& control);

/// What to find at a destination line of the mixer.
struct Destination {
    DWORD componentType;
    unsigned long* channels;
    NoteControl noteOwn;      ///< stores a control of the line itself
    NoteControl noteSource;   ///< stores a control of one of its sources
    bool switchesHaveDefault; ///< whether the workstation's settings include its switches
};

/// Controls of a source of the speaker line, found by name.
struct NamedControls {
    const wchar_t* const* name;
    unsigned long* volume;
    unsigned long* mute;
};

constexpr NamedControls kHeardSources[] = {
    {&CSound::mMicrophone, &CSound::mMicVolCtrlId, &CSound::mMicMuteCtrlId},
    {&CSound::mLine, &CSound::mLineInVolCtrlId, &CSound::mLineInMuteCtrlId},
    {&CSound::mWave, &CSound::mWaveInVolCtrlId, &CSound::mWaveInMuteCtrlId},
};

bool IsOfClass(const MIXERCONTROLW& control, DWORD controlClass) {
    return (control.dwControlType & MIXERCONTROL_CT_CLASS_MASK) == controlClass;
}

bool IsFader(const MIXERCONTROLW& control) {
    return IsOfClass(control, MIXERCONTROL_CT_CLASS_FADER);
}

bool IsSwitch(const MIXERCONTROLW& control) {
    return IsOfClass(control, MIXERCONTROL_CT_CLASS_SWITCH);
}

// ODD-142: names are not compared here, so the last of several faders, lists or switches is kept.
void NoteRecording(const MIXERCONTROLW& control) {
    if (IsOfClass(control, MIXERCONTROL_CT_CLASS_LIST)) CSound::mRecordSourcesCtrlId = control.dwControlID;
    if (IsFader(control)) CSound::mRecordMasterLevelCtrlId = control.dwControlID;
}

void NoteRecordedSource(const MIXERCONTROLW& control) {
    const bool isMicrophone = IsFader(control) && IsNamed(control.szName, CSound::mMicrophone);
    if (isMicrophone) CSound::mRecordMicLevelCtrlId = control.dwControlID;
}

void NoteSpeaker(const MIXERCONTROLW& control) {
    if (IsFader(control) && IsNamed(control.szName, CSound::mMaster)) CSound::mSpeakerVolCtrlId = control.dwControlID;
    if (IsSwitch(control)) CSound::mSpeakerMuteCtrlId = control.dwControlID; // ODD-142
}

void NoteHeardSource(const MIXERCONTROLW& control) {
    for (const NamedControls& source : kHeardSources) {
        if (!IsNamed(control.szName, *source.name)) continue;
        if (IsFader(control)) *source.volume = control.dwControlID;
        if (IsSwitch(control)) *source.mute = control.dwControlID;
    }
}

constexpr Destination kRecording = {MIXERLINE_COMPONENTTYPE_DST_WAVEIN, &CSound::mNumChannelIn, NoteRecording,
                                    NoteRecordedSource, false};
constexpr Destination kSpeaker = {MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, &CSound::mNumChannelOut, NoteSpeaker,
                                  NoteHeardSource, true};

/// A search for controls. Its operations return 0 or the multimedia error at which it stopped.
class Discovery {
public:
    Discovery(CSound& sound, HMIXER mixer, bool setsDefaults, const Destination& destination)
        : m_sound(sound), m_mixer(mixer), m_setsDefaults(setsDefaults), m_destination(destination) {}

    MMRESULT Run() const {
        if (m_mixer == nullptr) return MMSYSERR_INVALHANDLE;
        MIXERLINEW line{};
        line.dwComponentType = m_destination.componentType;
        MMRESULT result = ReadLine(line, MIXER_GETLINEINFOF_COMPONENTTYPE);
        if (result != MMSYSERR_NOERROR) return result;
        *m_destination.channels = line.cChannels;
        result = TakeControls(line, m_destination.noteOwn);
        for (DWORD source = 0; result == MMSYSERR_NOERROR && source < line.cConnections; ++source) {
            result = TakeSource(line.dwDestination, source);
        }
        return result;
    }

private:
    MMRESULT ReadLine(MIXERLINEW& line, DWORD by) const {
        line.cbStruct = sizeof line;
        return mixerGetLineInfoW(tessel::AsMixerObject(m_mixer), &line, by | tessel::kByHandle);
    }

    MMRESULT TakeSource(DWORD destination, DWORD source) const {
        MIXERLINEW line{};
        line.dwDestination = destination;
        line.dwSource = source;
        const MMRESULT result = ReadLine(line, MIXER_GETLINEINFOF_SOURCE);
        return result == MMSYSERR_NOERROR ? TakeControls(line, m_destination.noteSource) : result;
    }

    MMRESULT TakeControls(const MIXERLINEW& line, NoteControl note) const {
        if (line.cControls == 0) return MMSYSERR_NOERROR; // drivers refuse a query for none
        std::unique_ptr<MIXERCONTROLW[]> controls;
        MMRESULT result = ReadControls(line, controls);
        for (DWORD i = 0; result == MMSYSERR_NOERROR && i < line.cControls; ++i) {
            note(controls[i]);
            if (m_setsDefaults) result = SetDefault(controls[i]);
        }
        return result;
    }

    MMRESULT ReadControls(const MIXERLINEW& line, std::unique_ptr<MIXERCONTROLW[]>& controls) const {
        if (line.cControls > tessel::kMostMixerRecords) return MMSYSERR_NOMEM; // GUARD-133
        controls.reset(new (std::nothrow) MIXERCONTROLW[line.cControls]{});
        if (controls == nullptr) return MMSYSERR_NOMEM;
        MIXERLINECONTROLSW query{};
        query.cbStruct = sizeof query;
        query.dwLineID = line.dwLineID;
        query.cControls = line.cControls;
        query.cbmxctrl = sizeof controls[0];
        query.pamxctrl = controls.get();
        return mixerGetLineControlsW(tessel::AsMixerObject(m_mixer), &query,
                                     MIXER_GETLINECONTROLSF_ALL | tessel::kByHandle);
    }

    MMRESULT SetDefault(const MIXERCONTROLW& control) const {
        if (IsFader(control)) return m_sound.SetMixerControlUnsigned(control.dwControlID, 0);
        if (IsSwitch(control) && m_destination.switchesHaveDefault) {
            return m_sound.SetMixerControlBoolean(control.dwControlID, true);
        }
        return MMSYSERR_NOERROR;
    }

    CSound& m_sound;
    HMIXER m_mixer;
    bool m_setsDefaults;
    const Destination& m_destination;
};

} // namespace

unsigned int CSound::InitMixerWaveIn() {
    return Discovery(*this, mhMixer, m_bDefaults != 0, kRecording).Run();
}

unsigned int CSound::InitMixerLineOut() {
    return Discovery(*this, mhMixer, m_bDefaults != 0, kSpeaker).Run();
}
