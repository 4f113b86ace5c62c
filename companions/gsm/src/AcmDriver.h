#pragma once

#include <windows.h>

#include <mmsystem.h>

#include <mmreg.h>

#include <msacm.h>

#include <cstddef>

/// The driver interface of the Audio Compression Manager: messages and records that only the driver kit's header has.
namespace tesselgsm {

constexpr UINT kDriverDetails = ACMDM_BASE + 10;
constexpr UINT kFormatTagDetails = ACMDM_BASE + 25;
constexpr UINT kFormatDetails = ACMDM_BASE + 26;
constexpr UINT kFormatSuggest = ACMDM_BASE + 27;
constexpr UINT kStreamOpen = ACMDM_BASE + 76;
constexpr UINT kStreamClose = ACMDM_BASE + 77;
constexpr UINT kStreamSize = ACMDM_BASE + 78;
constexpr UINT kStreamConvert = ACMDM_BASE + 79;

// Laid out as in Wine, where records with pointers are padded. Windows does not pad them, which matters only to 64-bit
// programs: their records are shorter there, and the driver refuses them.

/// With DRV_OPEN.
struct OpenDescription {
    DWORD size;
    FOURCC type;
};

/// With kFormatSuggest.
struct FormatSuggestion {
    DWORD size;
    DWORD restrictions; ///< ACM_FORMATSUGGESTF_*: which members of the destination are set
    const WAVEFORMATEX* source;
    DWORD sourceSize;
    WAVEFORMATEX* destination;
    DWORD destinationSize;
};

/// With every kStream... message.
struct StreamInstance {
    DWORD size;
    const WAVEFORMATEX* source;
    const WAVEFORMATEX* destination;
    const WAVEFILTER* filter;
    DWORD_PTR callback;
    DWORD_PTR callbackInstance;
    DWORD flags; ///< ACM_STREAMOPENF_*
    DWORD driverFlags;
    DWORD_PTR driverData; ///< the driver's own
    HACMSTREAM stream;
};

/// With kStreamSize.
struct StreamSizes {
    DWORD size;
    DWORD flags; ///< ACM_STREAMSIZEF_*: which one is set
    DWORD source;
    DWORD destination;
};

#pragma pack(push, 1)

/// With kStreamConvert: the contents of the program's ACMSTREAMHEADER, unpadded like it, and what follows.
struct StreamHeader {
    DWORD size;
    DWORD status;
    DWORD_PTR user;
    const BYTE* source;
    DWORD sourceSize;
    DWORD sourceUsed;
    DWORD_PTR sourceUser;
    BYTE* destination;
    DWORD destinationSize;
    DWORD destinationUsed;
    DWORD_PTR destinationUser;
    DWORD flags; ///< ACM_STREAMCONVERTF_*
};

#pragma pack(pop)

static_assert(sizeof(StreamInstance) == (sizeof(void*) == 4 ? 40 : 72));
static_assert(offsetof(StreamHeader, flags) == offsetof(ACMSTREAMHEADER, dwReservedDriver));

} // namespace tesselgsm
