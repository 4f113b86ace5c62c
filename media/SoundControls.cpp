#include <foundation/Report.h>
#include <media/MixerRecords.h>
#include <tessel/media/sound.h>

namespace {

constexpr tessel::ReportSite kNoMixer{"CSound", 514};
constexpr tessel::ReportSite kNoControl{"CSound", 515};

void ReportUnusable(HMIXER mixer, unsigned long id) {
    tessel::ReportUnless(mixer != nullptr, "mhMixer", kNoMixer);
    tessel::ReportUnless(id != CSound::INVALID_CONTROLID, "ControlId != INVALID_CONTROLID", kNoControl);
}

/// Describes one value per channel.
template <class Value, DWORD channels> MIXERCONTROLDETAILS DetailsOf(unsigned long id, Value (&values)[channels]) {
    MIXERCONTROLDETAILS details{};
    details.cbStruct = sizeof details;
    details.dwControlID = id;
    details.cChannels = channels;
    details.cbDetails = sizeof(Value);
    details.paDetails = values;
    return details;
}

template <class Value, DWORD channels> MMRESULT Get(HMIXER mixer, unsigned long id, Value (&values)[channels]) {
    ReportUnusable(mixer, id);
    MIXERCONTROLDETAILS details = DetailsOf(id, values);
    return mixerGetControlDetailsW(tessel::AsMixerObject(mixer), &details,
                                   MIXER_GETCONTROLDETAILSF_VALUE | tessel::kByHandle);
}

template <class Value, DWORD channels> MMRESULT Set(HMIXER mixer, unsigned long id, Value (&&values)[channels]) {
    ReportUnusable(mixer, id);
    MIXERCONTROLDETAILS details = DetailsOf(id, values);
    return mixerSetControlDetails(tessel::AsMixerObject(mixer), &details,
                                  MIXER_SETCONTROLDETAILSF_VALUE | tessel::kByHandle);
}

} // namespace

unsigned int CSound::GetMixerControlBoolean(unsigned long id, bool& value) {
    MIXERCONTROLDETAILS_BOOLEAN values[1] = {};
    const MMRESULT result = Get(mhMixer, id, values);
    if (result == MMSYSERR_NOERROR) value = values[0].fValue != 0;
    return result;
}

unsigned int CSound::SetMixerControlBoolean(unsigned long id, bool value) {
    return Set<MIXERCONTROLDETAILS_BOOLEAN>(mhMixer, id, {{value ? 1 : 0}});
}

unsigned int CSound::GetMixerControlUnsigned(unsigned long id, unsigned long& value) {
    MIXERCONTROLDETAILS_UNSIGNED values[1] = {};
    const MMRESULT result = Get(mhMixer, id, values);
    if (result == MMSYSERR_NOERROR) value = values[0].dwValue;
    return result;
}

unsigned int CSound::SetMixerControlUnsigned(unsigned long id, unsigned long value) {
    return Set<MIXERCONTROLDETAILS_UNSIGNED>(mhMixer, id, {{value}});
}

unsigned int CSound::GetMixerControlUnsigned2(unsigned long id, unsigned long& left, unsigned long& right) {
    MIXERCONTROLDETAILS_UNSIGNED values[2] = {};
    const MMRESULT result = Get(mhMixer, id, values);
    if (result != MMSYSERR_NOERROR) return result;
    left = values[0].dwValue;
    right = values[1].dwValue;
    return MMSYSERR_NOERROR;
}

unsigned int CSound::SetMixerControlUnsigned2(unsigned long id, unsigned long left, unsigned long right) {
    return Set<MIXERCONTROLDETAILS_UNSIGNED>(mhMixer, id, {{left}, {right}});
}
