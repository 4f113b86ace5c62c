#include "Formats.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>

namespace tesselgsm {

namespace {

struct KnownFormat {
    Format format;
    const WAVEFORMATEX* record;
    DWORD size;
    const wchar_t* tagName;
    const wchar_t* name;
};

// The manager supplies the names of PCM formats.
constexpr KnownFormat kKnown[] = {
    {Format::Pcm, &kPcm8, sizeof(PCMWAVEFORMAT), L"", L""},
    {Format::Gsm, &kGsm.wfx, sizeof(GSM610WAVEFORMAT), L"GSM 6.10", L"8.000 kHz, Mono"},
};
constexpr DWORD kKnownCount = std::size(kKnown);

const KnownFormat* FindTag(DWORD tag) {
    const auto* const found = std::find_if(std::begin(kKnown), std::end(kKnown),
                                           [tag](const KnownFormat& known) { return known.record->wFormatTag == tag; });
    return found != std::end(kKnown) ? found : nullptr;
}

const KnownFormat* FindTag(const ACMFORMATTAGDETAILSW& details, DWORD query) {
    switch (query & ACM_FORMATTAGDETAILSF_QUERYMASK) {
    case ACM_FORMATTAGDETAILSF_INDEX:
        return details.dwFormatTagIndex < kKnownCount ? &kKnown[details.dwFormatTagIndex] : nullptr;
    case ACM_FORMATTAGDETAILSF_LARGESTSIZE:
        return FindTag(details.dwFormatTag != WAVE_FORMAT_UNKNOWN ? details.dwFormatTag : WAVE_FORMAT_GSM610);
    case ACM_FORMATTAGDETAILSF_FORMATTAG: return FindTag(details.dwFormatTag);
    default: return nullptr;
    }
}

template <std::size_t size> void Copy(WCHAR (&to)[size], const wchar_t* from) {
    std::wcsncpy(to, from, size - 1);
    to[size - 1] = 0;
}

void Write(const KnownFormat& known, WAVEFORMATEX* format, DWORD room) {
    const DWORD whole = known.format == Format::Pcm ? sizeof(WAVEFORMATEX) : known.size;
    std::memcpy(format, known.record, std::min(room, whole));
}

/// Whether a format matches in the members that are set.
bool Matches(const WAVEFORMATEX& format, const WAVEFORMATEX& wanted, DWORD given) {
    const auto holds = [given](DWORD flag, bool equal) { return (given & flag) == 0 || equal; };
    return holds(ACM_FORMATSUGGESTF_WFORMATTAG, format.wFormatTag == wanted.wFormatTag) &&
           holds(ACM_FORMATSUGGESTF_NCHANNELS, format.nChannels == wanted.nChannels) &&
           holds(ACM_FORMATSUGGESTF_NSAMPLESPERSEC, format.nSamplesPerSec == wanted.nSamplesPerSec) &&
           holds(ACM_FORMATSUGGESTF_WBITSPERSAMPLE, format.wBitsPerSample == wanted.wBitsPerSample);
}

bool IsSameFormat(const WAVEFORMATEX& format, const WAVEFORMATEX& known) {
    return format.wFormatTag == known.wFormatTag && format.nChannels == known.nChannels &&
           format.nSamplesPerSec == known.nSamplesPerSec && format.nBlockAlign == known.nBlockAlign &&
           format.wBitsPerSample == known.wBitsPerSample;
}

bool HasGsmBlocks(const WAVEFORMATEX& format) {
    return format.cbSize >= kGsm.wfx.cbSize &&
           reinterpret_cast<const GSM610WAVEFORMAT&>(format).wSamplesPerBlock == kSamplesPerBlock;
}

} // namespace

Format Recognise(const WAVEFORMATEX& format, DWORD size) {
    if (size >= sizeof(PCMWAVEFORMAT) && IsSameFormat(format, kPcm8)) return Format::Pcm;
    if (size >= sizeof(GSM610WAVEFORMAT) && IsSameFormat(format, kGsm.wfx) && HasGsmBlocks(format)) return Format::Gsm;
    return Format::None;
}

Format Recognise(const WAVEFORMATEX& format) {
    return Recognise(format, sizeof(GSM610WAVEFORMAT));
}

Format Counterpart(Format format) {
    switch (format) {
    case Format::Pcm: return Format::Gsm;
    case Format::Gsm: return Format::Pcm;
    default: return Format::None;
    }
}

MMRESULT DescribeTag(ACMFORMATTAGDETAILSW& details, DWORD query) {
    if (details.cbStruct < sizeof details) return MMSYSERR_INVALPARAM;
    const KnownFormat* const known = FindTag(details, query);
    if (known == nullptr) return ACMERR_NOTPOSSIBLE;
    details.dwFormatTagIndex = static_cast<DWORD>(known - kKnown);
    details.dwFormatTag = known->record->wFormatTag;
    details.cbFormatSize = known->size;
    details.fdwSupport = ACMDRIVERDETAILS_SUPPORTF_CODEC;
    details.cStandardFormats = 1;
    Copy(details.szFormatTag, known->tagName);
    return MMSYSERR_NOERROR;
}

MMRESULT DescribeFormat(ACMFORMATDETAILSW& details, DWORD query) {
    if (details.cbStruct < sizeof details || details.pwfx == nullptr) return MMSYSERR_INVALPARAM;
    const KnownFormat* const known = FindTag(details.dwFormatTag);
    if (known == nullptr || details.cbwfx < known->size) return ACMERR_NOTPOSSIBLE;
    switch (query & ACM_FORMATDETAILSF_QUERYMASK) {
    case ACM_FORMATDETAILSF_INDEX:
        if (details.dwFormatIndex != 0) return ACMERR_NOTPOSSIBLE;
        Write(*known, details.pwfx, details.cbwfx);
        break;
    case ACM_FORMATDETAILSF_FORMAT:
        if (Recognise(*details.pwfx, details.cbwfx) != known->format) return ACMERR_NOTPOSSIBLE;
        break;
    default: return MMSYSERR_NOTSUPPORTED;
    }
    details.fdwSupport = ACMDRIVERDETAILS_SUPPORTF_CODEC;
    Copy(details.szFormat, known->name);
    return MMSYSERR_NOERROR;
}

MMRESULT Suggest(FormatSuggestion& suggestion) {
    if (suggestion.size < sizeof suggestion) return MMSYSERR_NOTSUPPORTED;
    const Format wanted = Counterpart(Recognise(*suggestion.source, suggestion.sourceSize));
    for (const KnownFormat& known : kKnown) {
        if (known.format != wanted || suggestion.destinationSize < known.size) continue;
        if (!Matches(*known.record, *suggestion.destination, suggestion.restrictions)) continue;
        Write(known, suggestion.destination, suggestion.destinationSize);
        return MMSYSERR_NOERROR;
    }
    return ACMERR_NOTPOSSIBLE;
}

} // namespace tesselgsm
