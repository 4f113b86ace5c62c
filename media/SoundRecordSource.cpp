#include <media/MixerRecords.h>
#include <tessel/foundation/status.h>
#include <tessel/media/sound.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

namespace {

/// The record-source control.
struct Selector {
    DWORD id;
    bool isSingle;
    DWORD channels;
    DWORD items; ///< 0: one value per channel

    std::size_t Values() const { return std::size_t{channels} * std::max(items, DWORD{1}); } // GUARD-135
};

/// @return 0 or the multimedia error
MMRESULT ReadSelector(HMIXER mixer, Selector& selector) {
    MIXERCONTROLW control{};
    MIXERLINECONTROLSW query{};
    query.cbStruct = sizeof query;
    query.dwControlID = selector.id;
    query.cControls = 1;
    query.cbmxctrl = sizeof control;
    query.pamxctrl = &control;
    const MMRESULT result =
        mixerGetLineControlsW(tessel::AsMixerObject(mixer), &query, MIXER_GETLINECONTROLSF_ONEBYID | tessel::kByHandle);
    selector.isSingle = control.dwControlType == MIXERCONTROL_CONTROLTYPE_SINGLESELECT ||
                        control.dwControlType == MIXERCONTROL_CONTROLTYPE_MUX;
    // ODD-141: two channels are assumed, whatever the line has.
    selector.channels = (control.fdwControl & MIXERCONTROL_CONTROLF_UNIFORM) != 0 ? 1 : 2;
    selector.items = (control.fdwControl & MIXERCONTROL_CONTROLF_MULTIPLE) != 0 ? control.cMultipleItems : 0;
    return result;
}

/// Describes one record per item and channel.
template <class Value> MIXERCONTROLDETAILS DetailsOf(const Selector& selector, Value* values) {
    MIXERCONTROLDETAILS details{};
    details.cbStruct = sizeof details;
    details.dwControlID = selector.id;
    details.cChannels = selector.channels;
    details.cMultipleItems = selector.items;
    details.cbDetails = sizeof(Value);
    details.paDetails = values;
    return details;
}

/// Reads one record per item and channel: all items of the first channel, then those of the second.
template <class Value>
MMRESULT Read(HMIXER mixer, const Selector& selector, DWORD what, std::unique_ptr<Value[]>& values) {
    if (selector.items > tessel::kMostMixerRecords) return MMSYSERR_NOMEM; // GUARD-133
    values.reset(new (std::nothrow) Value[selector.Values()]{});
    if (values == nullptr) return MMSYSERR_NOMEM;
    MIXERCONTROLDETAILS details = DetailsOf(selector, values.get());
    return mixerGetControlDetailsW(tessel::AsMixerObject(mixer), &details, what | tessel::kByHandle);
}

void Choose(const Selector& selector, const wchar_t* word, const MIXERCONTROLDETAILS_LISTTEXTW* texts,
            MIXERCONTROLDETAILS_BOOLEAN* values) {
    for (DWORD item = 0; item < selector.items; ++item) {
        const bool isSought = tessel::IsNamed(texts[item].szName, word);
        if (!isSought && !selector.isSingle) continue;
        for (DWORD channel = 0; channel < selector.channels; ++channel) {
            values[channel * selector.items + item].fValue = isSought ? 1 : 0;
        }
    }
}

const wchar_t* WordFor(CSound::SOUND_DEVICE device) {
    switch (device) {
    case CSound::SOUND_MICROPHONE: return CSound::mMicrophone;
    case CSound::SOUND_LINE_IN: return CSound::mLine;
    default: return nullptr; // ODD-140: a single-select control is left without an item
    }
}

} // namespace

unsigned long CSound::SetRecordSource(SOUND_DEVICE device) {
    if (mRecordSourcesCtrlId == INVALID_CONTROLID) return STATUS_OK;
    Selector selector{mRecordSourcesCtrlId, false, 0, 0};
    std::unique_ptr<MIXERCONTROLDETAILS_LISTTEXTW[]> texts;
    std::unique_ptr<MIXERCONTROLDETAILS_BOOLEAN[]> values;
    MMRESULT result = ReadSelector(mhMixer, selector);
    if (result == MMSYSERR_NOERROR) result = Read(mhMixer, selector, MIXER_GETCONTROLDETAILSF_LISTTEXT, texts);
    if (result == MMSYSERR_NOERROR) result = Read(mhMixer, selector, MIXER_GETCONTROLDETAILSF_VALUE, values);
    if (result != MMSYSERR_NOERROR) return result;
    Choose(selector, WordFor(device), texts.get(), values.get());
    MIXERCONTROLDETAILS details = DetailsOf(selector, values.get());
    return mixerSetControlDetails(tessel::AsMixerObject(mhMixer), &details,
                                  MIXER_SETCONTROLDETAILSF_VALUE | tessel::kByHandle);
}
