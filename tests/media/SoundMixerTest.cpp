#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/media/sound.h>

#include <algorithm>
#include <optional>
#include <tuple>

namespace {

constexpr DWORD kVolume = MIXERCONTROL_CONTROLTYPE_VOLUME;
constexpr DWORD kBass = MIXERCONTROL_CONTROLTYPE_BASS;
constexpr DWORD kMute = MIXERCONTROL_CONTROLTYPE_MUTE;
constexpr DWORD kMeter = MIXERCONTROL_CONTROLTYPE_PEAKMETER;
constexpr DWORD kMux = MIXERCONTROL_CONTROLTYPE_MUX;
constexpr DWORD kItems = MIXERCONTROL_CONTROLF_MULTIPLE;
constexpr DWORD kUniformItems = kItems | MIXERCONTROL_CONTROLF_UNIFORM;

using Names = std::vector<std::wstring>;
using Values = std::vector<DWORD>;

struct Control {
    DWORD id, type;
    std::wstring name;
    DWORD flags = 0;
    Names items{};
    Values values{0, 0}; ///< all items of the first channel, then those of the second
};

using Controls = std::vector<Control>;

/// A sound card that logs what is done to it.
struct Card {
    /// The recording line and its three sources, the speaker line and its five.
    std::vector<Controls> lines{
        {{9, kVolume, L"Recording"},
         {10, kBass, L"Depth"},
         {12, kMeter, L"Microphone"},
         {11, kMux, L"Source", kUniformItems, {L"Line In", L"Microphone", L"CD"}, {1, 0, 0}}},
        {},
        {{13, kVolume, L"Back Microphone"}, {14, kMute, L"Microphone"}},
        {{15, kVolume, L"Line In"}},
        {{20, kVolume, L"The Master Volume"}, {21, kBass, L"Bass"}, {19, kMute, L"Master"}, {22, kMute, L"All"}},
        {{24, kVolume, L"Microphone"}, {25, kMute, L"Mute Microphone"}},
        {},
        {{26, kVolume, L"Line In"}, {27, kMute, L"Line In"}},
        {{28, kVolume, L"Wave"}, {29, kMute, L"Wave"}, {23, kMeter, L"Wave"}},
        {{30, kVolume, L"Master of the CD, in the wave"}}};
    UINT devices = 1;
    DWORD claimed = 0; ///< number of records to claim; 0: the true one
    int calls = 0;
    int failing = 0; ///< number of the call that fails; 0: none
    Texts log{};     ///< what was opened, closed and set

    MMRESULT Step(HMIXEROBJ mixer, DWORD flags) {
        if (mixer != Handle() || (flags & 0xF0000000) != DWORD{MIXER_OBJECTF_HMIXER}) return MMSYSERR_INVALHANDLE;
        return ++calls == failing ? MMSYSERR_ERROR : MMSYSERR_NOERROR;
    }
    static HMIXEROBJ Handle() { return reinterpret_cast<HMIXEROBJ>(0xC0DE); }
    DWORD Claim(std::size_t count) const { return claimed != 0 ? claimed : static_cast<DWORD>(count); }

    Control& Find(DWORD id) {
        for (Controls& line : lines) {
            const auto found = std::ranges::find(line, id, &Control::id);
            if (found != line.end()) return *found;
        }
        static Control none{};
        return none;
    }
};

Card card;

MMRESULT OpenMixer(LPHMIXER mixer, UINT id, DWORD_PTR window, DWORD_PTR, DWORD flags) {
    card.log.push_back("open " + std::to_string(id) + " " + std::to_string(window) + " " + std::to_string(flags));
    *mixer = reinterpret_cast<HMIXER>(Card::Handle());
    return card.Step(Card::Handle(), MIXER_OBJECTF_HMIXER);
}

MMRESULT CloseMixer(HMIXER mixer) {
    card.log.push_back("close");
    return card.Step(reinterpret_cast<HMIXEROBJ>(mixer), MIXER_OBJECTF_HMIXER);
}

MMRESULT GetLine(HMIXEROBJ mixer, LPMIXERLINEW out, DWORD flags) {
    if (const MMRESULT result = card.Step(mixer, flags)) return result;
    const bool isSource = (flags & MIXER_GETLINEINFOF_QUERYMASK) == MIXER_GETLINEINFOF_SOURCE;
    if (!isSource) out->dwDestination = out->dwComponentType == MIXERLINE_COMPONENTTYPE_DST_SPEAKERS;
    out->dwLineID = out->dwDestination * 4 + (isSource ? out->dwSource + 1 : 0);
    out->cConnections = out->dwDestination == 0 ? 3 : 5;
    out->cChannels = out->dwDestination + 1;
    out->cControls = card.Claim(card.lines.at(out->dwLineID).size());
    return out->cbStruct == sizeof *out ? MMSYSERR_NOERROR : MMSYSERR_INVALPARAM;
}

MMRESULT GetControls(HMIXEROBJ mixer, LPMIXERLINECONTROLSW query, DWORD flags) {
    if (const MMRESULT result = card.Step(mixer, flags)) return result;
    const bool isOne = (flags & MIXER_GETLINECONTROLSF_QUERYMASK) == MIXER_GETLINECONTROLSF_ONEBYID;
    const Controls controls = isOne ? Controls{card.Find(query->dwControlID)} : card.lines.at(query->dwLineID);
    const bool fits = query->cbStruct == sizeof *query && query->cbmxctrl == sizeof *query->pamxctrl &&
                      query->cControls == controls.size() && !controls.empty();
    if (!fits) return MMSYSERR_INVALPARAM;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        MIXERCONTROLW& out = query->pamxctrl[i];
        out.dwControlID = controls[i].id;
        out.dwControlType = controls[i].type;
        out.fdwControl = controls[i].flags;
        out.cMultipleItems = card.Claim(controls[i].items.size());
        controls[i].name.copy(out.szName, MIXER_LONG_NAME_CHARS);
    }
    return MMSYSERR_NOERROR;
}

/// Reads or writes the details of a control, which must be requested as its kind requires.
MMRESULT Exchange(HMIXEROBJ mixer, const MIXERCONTROLDETAILS& details, DWORD flags, bool sets) {
    if (const MMRESULT result = card.Step(mixer, flags)) return result;
    Control& control = card.Find(details.dwControlID);
    const std::size_t count = std::size_t{details.cChannels} * std::max(details.cMultipleItems, DWORD{1});
    const bool isText = !sets && (flags & MIXER_GETCONTROLDETAILSF_QUERYMASK) == MIXER_GETCONTROLDETAILSF_LISTTEXT;
    auto* const texts = static_cast<MIXERCONTROLDETAILS_LISTTEXTW*>(details.paDetails);
    auto* const values = static_cast<DWORD*>(details.paDetails);
    const bool fits = details.cbStruct == sizeof details && count <= control.values.size() &&
                      details.cbDetails == (isText ? sizeof *texts : sizeof *values) &&
                      details.cMultipleItems == control.items.size();
    if (!fits) return MMSYSERR_INVALPARAM;
    for (std::size_t i = 0; isText && i < control.items.size(); ++i) {
        texts[i].dwParam1 = L'L';
        control.items[i].copy(texts[i].szName, MIXER_LONG_NAME_CHARS);
    }
    if (!isText && !sets) std::copy_n(control.values.begin(), count, values);
    if (!sets) return MMSYSERR_NOERROR;
    std::copy_n(values, count, control.values.begin());
    card.log.push_back(std::to_string(control.id) + "=" + std::to_string(values[0]));
    for (std::size_t i = 1; i < count; ++i) card.log.back() += "," + std::to_string(values[i]);
    return MMSYSERR_NOERROR;
}

// The controls found stay known to the process, so each test needs its own process.
struct Mixer : testing::Test {
    ImportPatch patches[7] = {
        {"mixerGetNumDevs", &mixerGetNumDevs, [] { return card.devices; }},
        {"mixerOpen", &mixerOpen, OpenMixer},
        {"mixerClose", &mixerClose, CloseMixer},
        {"mixerGetLineInfoW", &mixerGetLineInfoW, GetLine},
        {"mixerGetLineControlsW", &mixerGetLineControlsW, GetControls},
        {"mixerGetControlDetailsW", &mixerGetControlDetailsW,
         [](auto mixer, auto details, auto flags) { return Exchange(mixer, *details, flags, false); }},
        {"mixerSetControlDetails", &mixerSetControlDetails,
         [](auto mixer, auto details, auto flags) { return Exchange(mixer, *details, flags, true); }}};
    Reports reports;
};

} // namespace

TEST_F(Mixer, Odd142ViewerFindsControlsByKindAndNameAndSetsNothing) {
    CSound::mMicrophone = L"lost";
    { const CSoundViewer viewer(reinterpret_cast<HWND>(77)); }
    EXPECT_EQ((Values{CSound::mNumChannelIn, CSound::mNumChannelOut}), (Values{1, 2}));
    EXPECT_EQ(CSound::GetSpeakerVolumeControlId(), 20U);
    EXPECT_EQ(CSound::GetSpeakerMuteControlId(), 22U);
    EXPECT_EQ(CSound::mRecordMicLevelCtrlId, 13U);
    EXPECT_EQ(card.log, (Texts{"open 0 77 65536", "close"})) << "with CALLBACK_WINDOW";
}

TEST_F(Mixer, PortPutsTheSettingsIntoForceInOrder) {
    CSoundPort port(nullptr);
    EXPECT_EQ(card.log, (Texts{"open 0 0 0", "9=0",  "10=0",     "13=0",     "15=0",    "20=0",     "21=0",
                               "19=1",       "22=1", "24=0",     "25=1",     "26=0",    "27=1",     "28=0",
                               "29=1",       "30=0", "25=1",     "26=32767", "27=0",    "28=20479", "29=0",
                               "20=20479",   "22=0", "10=65535", "13=32767", "11=0,1,0"}));
    const int calls = card.calls;
    EXPECT_EQ(port.Open() + port.Initialize(), 0U) << "again";
    EXPECT_EQ(card.calls, calls);
    bool muted = false;
    EXPECT_TRUE(port.GetMixerControlBoolean(25, muted) == 0 && muted);
    EXPECT_TRUE(port.GetMixerControlBoolean(22, muted) == 0 && !muted);
}

TEST_F(Mixer, AFailureAtAnyStepStopsIsReportedAndIsTriedAgain) {
    int calls = 2;
    for (int failing = 1; failing <= calls; ++failing) {
        card = {};
        card.failing = failing;
        CSoundPort port(nullptr);
        EXPECT_EQ(card.calls, failing);
        EXPECT_EQ(reports.Take().front(),
                  failing == 1 ? "CSound:88 Status == STATUS_OK" : "CSound:129 Status == STATUS_OK");
        card.calls = card.failing = 0;
        EXPECT_EQ(port.Open() + port.Initialize(), 0U);
        calls = std::max(calls, card.calls);
        card.failing = card.calls + 1;
        EXPECT_NE(port.Close(), 0U);
        EXPECT_EQ(reports.Take(), Texts{"CSound:107 Status == STATUS_OK"});
    }
    EXPECT_GT(calls, 30);
}

TEST_F(Mixer, Odd143And145WithoutADeviceOnlyAskedForDiscoveryFails) {
    card.devices = 0;
    CSound sound(nullptr, 1);
    EXPECT_EQ(sound.Open() + sound.Initialize(), 0U);
    EXPECT_EQ(sound.InitMixerWaveIn() + sound.InitMixerLineOut(), 5U + 5U);
    EXPECT_EQ(reports.Take(), Texts{});
    EXPECT_EQ(sound.SetMixerControlUnsigned2(CSound::INVALID_CONTROLID, 1, 2), 5U);
    EXPECT_EQ(reports.Take(), (Texts{"CSound:514 mhMixer", "CSound:515 ControlId != INVALID_CONTROLID"}));
}

TEST_F(Mixer, Odd144EachDeviceHasItsControls) {
    constexpr unsigned long kNo = STATUS_SOUND_NO_CONTROL;
    constexpr unsigned long kHeard[] = {0, 0, 0, 0, kNo, kNo};
    constexpr unsigned long kBalance[] = {kNo, kNo, kNo, 0, kNo, kNo};
    constexpr unsigned long kRecorded[] = {kNo, 0, 0, kNo, 0, kNo};
    CSound sound(nullptr, 0);
    for (const bool isFound : {false, true}) {
        if (isFound) sound = CSoundViewer(nullptr);
        card.log.clear();
        for (unsigned int i = 0; i < 6; ++i) {
            const auto device = static_cast<CSound::SOUND_DEVICE>(i);
            unsigned long level = 77;
            EXPECT_EQ(sound.SetVolume(device, 20), kHeard[i]);
            EXPECT_EQ(sound.GetVolume(device, level), kHeard[i]);
            EXPECT_EQ(level, isFound && i < 4 ? 20U : 77U);
            EXPECT_EQ(sound.Mute(device, 2), kHeard[i]);
            EXPECT_EQ(sound.UnMute(device), kHeard[i]);
            EXPECT_EQ(sound.SetVolumeBalance(device, 1), kBalance[i]);
            EXPECT_EQ(sound.SetRecordLevel(device, 1), kRecorded[i]);
        }
        EXPECT_EQ(sound.SetRecordSource(CSound::SOUND_LINE_IN), 0U);
        EXPECT_EQ(card.log.empty(), !isFound);
    }
    EXPECT_EQ(card.log, (Texts{"28=40959", "29=1", "29=0", "24=40959", "25=1", "25=0", "13=2047", "26=40959", "27=1",
                               "27=0", "20=40959", "22=1", "22=0", "20=2047,0", "10=2047", "11=1,0,0"}));
}

TEST_F(Mixer, LevelsBecomeValuesAndTheBalanceIsKept) {
    using Row = std::tuple<unsigned long, Values, unsigned long, Values>;
    const Row rows[] = {
        {2, {100, 200}, 32, {32767, 65535}}, {2, {200, 100}, 32, {65535, 32767}},     {2, {0, 0}, 0, {2047, 2047}},
        {2, {1, 0}, ~0UL, {65535, 0}},       {2, {~0U, ~0U - 1}, 32, {65535, 65534}}, {2, {9}, 32, {65535}},
        {1, {100, 200}, 32, {65535, 200}}};
    CSoundViewer viewer(nullptr);
    Values& values = card.Find(20).values;
    for (const auto& [channels, before, level, after] : rows) {
        CSound::mNumChannelOut = channels;
        values = before;
        EXPECT_EQ(viewer.SetVolumeBalance(CSound::SOUND_SPEAKER, level), 0U);
        EXPECT_EQ(values, after) << level;
    }
}

TEST_F(Mixer, Odd140And141RecordSourceIsChosenAmongItems) {
    constexpr DWORD kSingle = MIXERCONTROL_CONTROLTYPE_SINGLESELECT;
    constexpr DWORD kMixer = MIXERCONTROL_CONTROLTYPE_MIXER;
    const Names two{L"Line In", L"Microphone"};
    const Names three{L"CD", L"A Microphone", L"Microphone 2"};
    const Names endless{std::wstring(64, L'e'), L"Line"};
    const struct {
        CSound::SOUND_DEVICE device;
        Control control;
        Values after;
    } rows[] = {{CSound::SOUND_LINE_IN, {11, kMux, L"", kUniformItems, two, {0, 1}}, {1, 0}},
                {CSound::SOUND_MICROPHONE, {11, kSingle, L"", kItems, two, {1, 0, 1, 0}}, {0, 1, 0, 1}},
                {CSound::SOUND_MICROPHONE, {11, kMux, L"", kUniformItems, three, {1, 0, 0}}, {0, 1, 1}},
                {CSound::SOUND_MICROPHONE, {11, kMixer, L"", kItems, two, {1, 0, 0, 0}}, {1, 1, 0, 1}},
                {CSound::SOUND_WAVE, {11, kMux, L"", kUniformItems, two, {0, 1}}, {0, 0}},
                {CSound::SOUND_MICROPHONE, {11, kMux, L"", 0, {}, {1, 1}}, {1, 1}},
                {CSound::SOUND_LINE_IN, {11, kMux, L"", kUniformItems, endless, {1, 0}}, {0, 0}}};
    CSoundViewer viewer(nullptr);
    for (const auto& row : rows) {
        card.Find(11) = row.control;
        if (row.control.items == endless) CSound::mLine = L"eL"; // what follows an unterminated name in memory
        EXPECT_EQ(viewer.SetRecordSource(row.device), 0U);
        EXPECT_EQ(card.Find(11).values, row.after) << &row - rows;
    }
    card.claimed = ~DWORD{0}; // no driver has so many
    EXPECT_EQ(viewer.InitMixerWaveIn(), DWORD{MMSYSERR_NOMEM});
    EXPECT_EQ(viewer.SetRecordSource(CSound::SOUND_MICROPHONE), DWORD{MMSYSERR_NOMEM});
}

TEST_F(Mixer, CopiesShareTheMixerUntilTheLastGoes) {
    std::optional<CSoundViewer> viewer(std::in_place, nullptr);
    CSound assigned(nullptr, 0);
    EXPECT_EQ(assigned.Close(), 0U);
    card.log.clear();
    {
        const CSound copy(*viewer);
        assigned = copy;
    }
    viewer.reset();
    EXPECT_EQ(assigned.SetVolume(CSound::SOUND_WAVE, 1), 0U);
    EXPECT_EQ(assigned.Close(), 0U);
    EXPECT_EQ(assigned.Close(), 0U) << "there is none";
    EXPECT_EQ(card.log, (Texts{"28=2047", "close"}));
}
