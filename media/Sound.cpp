#include <foundation/Report.h>
#include <foundation/SharedOwners.h>
#include <media/SoundImage.h>
#include <tessel/foundation/status.h>
#include <tessel/media/sound.h>

#include <algorithm>
#include <iterator>

unsigned long CSound::mWaveInVolCtrlId = INVALID_CONTROLID;
unsigned long CSound::mWaveInMuteCtrlId = INVALID_CONTROLID;
unsigned long CSound::mMicVolCtrlId = INVALID_CONTROLID;
unsigned long CSound::mMicMuteCtrlId = INVALID_CONTROLID;
unsigned long CSound::mLineInVolCtrlId = INVALID_CONTROLID;
unsigned long CSound::mLineInMuteCtrlId = INVALID_CONTROLID;
unsigned long CSound::mSpeakerVolCtrlId = INVALID_CONTROLID;
unsigned long CSound::mSpeakerMuteCtrlId = INVALID_CONTROLID;
unsigned long CSound::mRecordMicLevelCtrlId = INVALID_CONTROLID;
unsigned long CSound::mRecordLineInLevelCtrlId = INVALID_CONTROLID; // ODD-144: no search sets it
unsigned long CSound::mRecordMasterLevelCtrlId = INVALID_CONTROLID;
unsigned long CSound::mRecordSourcesCtrlId = INVALID_CONTROLID;
unsigned long CSound::mNumChannelIn = 0;
unsigned long CSound::mNumChannelOut = 0;
int CSound::m_bInit = 1; // ODD-143: set although nothing was found yet
const wchar_t* CSound::mMaster = L"Master";
const wchar_t* CSound::mLine = L"Line";
const wchar_t* CSound::mMicrophone = L"Microphone";
const wchar_t* CSound::mWave = L"Wave";

namespace {

constexpr tessel::ReportSite kNotOpened{"CSound", 88};
constexpr tessel::ReportSite kNotClosed{"CSound", 107};
constexpr tessel::ReportSite kNotInitialised{"CSound", 129};
constexpr unsigned long kLevelStep = 2048;
constexpr unsigned long kHighestLevel = 32;
constexpr unsigned long kStereo = 2;

/// Where the control identifiers of a device are kept; null: no control of that kind.
struct DeviceControls {
    const unsigned long* volume;
    const unsigned long* mute;
    const unsigned long* recordLevel;
};

/// In the order of SOUND_DEVICE.
constexpr DeviceControls kControls[] = {
    {&CSound::mWaveInVolCtrlId, &CSound::mWaveInMuteCtrlId, nullptr},
    {&CSound::mMicVolCtrlId, &CSound::mMicMuteCtrlId, &CSound::mRecordMicLevelCtrlId},
    {&CSound::mLineInVolCtrlId, &CSound::mLineInMuteCtrlId, &CSound::mRecordLineInLevelCtrlId},
    {&CSound::mSpeakerVolCtrlId, &CSound::mSpeakerMuteCtrlId, nullptr},
    {nullptr, nullptr, &CSound::mRecordMasterLevelCtrlId},
};

/// Applies an operation to a control of a device.
/// @param operation  receives the identifier of the control
/// @return result of the operation; 0: the control was not found; STATUS_SOUND_NO_CONTROL
template <class Operation>
unsigned long OnControl(CSound::SOUND_DEVICE device, const unsigned long* DeviceControls::*kind, Operation operation) {
    const unsigned long* const id = device < std::size(kControls) ? kControls[device].*kind : nullptr;
    if (id == nullptr) return STATUS_SOUND_NO_CONTROL;
    return *id == CSound::INVALID_CONTROLID ? STATUS_OK : operation(*id);
}

unsigned long ValueOf(unsigned long level) {
    return (std::clamp(level, 1UL, kHighestLevel) - 1) * kLevelStep + kLevelStep - 1;
}

/// The value of a channel when the louder channel takes a value.
unsigned long InBalance(unsigned long value, unsigned long channel, unsigned long louder) {
    if (channel == louder) return value; // even if both are 0
    return static_cast<unsigned long>(std::uint64_t{value} * channel / louder);
}

unsigned long ReportFailure(unsigned long status, const tessel::ReportSite& site) {
    tessel::ReportUnless(status == STATUS_OK, "Status == STATUS_OK", site);
    return status;
}

void Rediscover(CSound& sound) {
    CSound::mMaster = L"Master";
    CSound::mLine = L"Line";
    CSound::mMicrophone = L"Microphone";
    CSound::mWave = L"Wave";
    CSound::m_bInit = 0;
    (void)sound.Initialize(); // reported
}

} // namespace

CSound::CSound(HWND hwnd, int bDefaults) : m_bDefaults(bDefaults), m_pImage(nullptr), mhMixer(nullptr), m_hWnd(hwnd) {
    (void)Open(); // reported
}

CSound::CSound(wchar_t* file)
    : m_bDefaults(0), m_pImage(tessel::ReadSoundImage(file)), mhMixer(nullptr), m_hWnd(nullptr) {
    (void)Open();       // reported
    (void)Initialize(); // reported
}

// GUARD-130: copies share mixer and sound, and would close and free them twice.
CSound::CSound(const CSound& other)
    : m_bDefaults(other.m_bDefaults), m_pImage(tessel::Share(other.m_pImage)), mhMixer(tessel::Share(other.mhMixer)),
      m_hWnd(other.m_hWnd) {}

CSound& CSound::operator=(const CSound& other) {
    if (this == &other) return *this;
    (void)Close(); // reported
    tessel::FreeSoundImage(m_pImage);
    m_bDefaults = other.m_bDefaults;
    m_pImage = tessel::Share(other.m_pImage);
    mhMixer = tessel::Share(other.mhMixer);
    m_hWnd = other.m_hWnd;
    return *this;
}

CSound::~CSound() {
    (void)Close(); // reported
    tessel::FreeSoundImage(m_pImage);
}

unsigned long CSound::Open() {
    if (mhMixer != nullptr) return STATUS_OK;
    if (mixerGetNumDevs() == 0) return STATUS_OK; // ODD-145: success, with nothing open
    HMIXER mixer = nullptr;
    const MMRESULT result = mixerOpen(&mixer, 0, reinterpret_cast<DWORD_PTR>(m_hWnd), 0,
                                      m_hWnd != nullptr ? CALLBACK_WINDOW : CALLBACK_NULL);
    if (result == MMSYSERR_NOERROR) mhMixer = mixer;
    return ReportFailure(result, kNotOpened);
}

unsigned long CSound::Close() {
    HMIXER const closing = mhMixer;
    mhMixer = nullptr;
    if (closing == nullptr || !tessel::RemoveOwner(closing)) return STATUS_OK;
    return ReportFailure(mixerClose(closing), kNotClosed);
}

unsigned long CSound::Initialize() {
    if (m_bInit != 0) return STATUS_OK;
    unsigned long status = InitMixerWaveIn();
    if (status == STATUS_OK) status = InitMixerLineOut();
    if (status == STATUS_OK && m_bDefaults != 0) status = ApplyDefaults();
    if (status == STATUS_OK) m_bInit = 1;
    return ReportFailure(status, kNotInitialised);
}

unsigned long CSound::ApplyDefaults() {
    struct Setting {
        SOUND_DEVICE device;
        unsigned long level;
    };
    static constexpr Setting kHeard[] = {{SOUND_LINE_IN, 16}, {SOUND_WAVE, 10}, {SOUND_SPEAKER, 10}};
    static constexpr Setting kRecorded[] = {{SOUND_RECORD_MASTER, kHighestLevel}, {SOUND_MICROPHONE, 16}};
    unsigned long status = Mute(SOUND_MICROPHONE, 1);
    for (const Setting& heard : kHeard) {
        if (status == STATUS_OK) status = SetVolume(heard.device, heard.level);
        if (status == STATUS_OK) status = UnMute(heard.device);
    }
    for (const Setting& recorded : kRecorded) {
        if (status == STATUS_OK) status = SetRecordLevel(recorded.device, recorded.level);
    }
    return status == STATUS_OK ? SetRecordSource(SOUND_MICROPHONE) : status;
}

unsigned long CSound::SetVolume(SOUND_DEVICE device, unsigned long level) {
    return OnControl(device, &DeviceControls::volume,
                     [&](unsigned long id) { return SetMixerControlUnsigned(id, ValueOf(level)); });
}

unsigned long CSound::GetVolume(SOUND_DEVICE device, unsigned long& level) {
    return OnControl(device, &DeviceControls::volume, [&](unsigned long id) {
        unsigned long value = 0;
        const unsigned int result = GetMixerControlUnsigned(id, value);
        if (result == MMSYSERR_NOERROR) level = value / kLevelStep + 1;
        return result;
    });
}

unsigned long CSound::SetVolumeBalance(SOUND_DEVICE device, unsigned long level) {
    if (device != SOUND_SPEAKER) return STATUS_SOUND_NO_CONTROL;
    return OnControl(device, &DeviceControls::volume, [&](unsigned long id) -> unsigned long {
        unsigned long left = 0;
        unsigned long right = 0;
        if (mNumChannelOut != kStereo || GetMixerControlUnsigned2(id, left, right) != MMSYSERR_NOERROR) {
            return SetVolume(device, level);
        }
        const unsigned long value = ValueOf(level);
        const unsigned long louder = std::max(left, right);
        return SetMixerControlUnsigned2(id, InBalance(value, left, louder), InBalance(value, right, louder));
    });
}

unsigned long CSound::Mute(SOUND_DEVICE device, int bMute) {
    return OnControl(device, &DeviceControls::mute,
                     [&](unsigned long id) { return SetMixerControlBoolean(id, bMute != 0); });
}

unsigned long CSound::UnMute(SOUND_DEVICE device) {
    return Mute(device, 0);
}

unsigned long CSound::SetRecordLevel(SOUND_DEVICE device, unsigned long level) {
    return OnControl(device, &DeviceControls::recordLevel,
                     [&](unsigned long id) { return SetMixerControlUnsigned(id, ValueOf(level)); });
}

CSoundPort::CSoundPort(HWND hwnd) : CSound(hwnd, 1) {
    Rediscover(*this);
}

CSoundViewer::CSoundViewer(HWND hwnd) : CSound(hwnd, 0) {
    Rediscover(*this);
}
