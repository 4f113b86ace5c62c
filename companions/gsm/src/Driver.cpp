#include <tesselgsm/driver.h>

#include "GsmStream.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <cwchar>
#include <memory>
#include <mutex>
#include <new>

namespace tesselgsm {

namespace {

/// What is installed in this process.
struct Installation {
    std::mutex lock;
    unsigned int count = 0;
    HACMDRIVERID id = nullptr;
    HACMDRIVERID codec = nullptr;
    std::atomic<unsigned int> streams = 0;
} installation;

MMRESULT DescribeDriver(LPARAM record, LPARAM /*unused*/) {
    auto* const details = reinterpret_cast<ACMDRIVERDETAILSW*>(record);
    ACMDRIVERDETAILSW description{};
    description.cbStruct = std::min<DWORD>(details->cbStruct, sizeof description);
    description.fccType = ACMDRIVERDETAILS_FCCTYPE_AUDIOCODEC;
    description.wMid = MM_UNMAPPED;
    description.wPid = MM_PID_UNMAPPED;
    description.vdwACM = 0x04000000;    // the manager's version that drivers of 32 bits and more are written for
    description.vdwDriver = 0x01000000; // 1.0
    description.fdwSupport = ACMDRIVERDETAILS_SUPPORTF_CODEC;
    description.cFormatTags = 2;
    std::wcscpy(description.szShortName, L"Tessel GSM");
    std::wcscpy(description.szLongName, L"Tessel GSM 6.10 for 8-bit PCM");
    std::memcpy(details, &description, description.cbStruct);
    return MMSYSERR_NOERROR;
}

MMRESULT AnswerTag(LPARAM record, LPARAM query) {
    return DescribeTag(*reinterpret_cast<ACMFORMATTAGDETAILSW*>(record), static_cast<DWORD>(query));
}

MMRESULT AnswerFormat(LPARAM record, LPARAM query) {
    return DescribeFormat(*reinterpret_cast<ACMFORMATDETAILSW*>(record), static_cast<DWORD>(query));
}

MMRESULT AnswerSuggestion(LPARAM record, LPARAM /*unused*/) {
    return Suggest(*reinterpret_cast<FormatSuggestion*>(record));
}

GsmStream* StreamOf(LPARAM record) {
    return reinterpret_cast<GsmStream*>(reinterpret_cast<const StreamInstance*>(record)->driverData);
}

bool Serves(const StreamInstance& instance) {
    const Format source = Recognise(*instance.source);
    return source != Format::None && Recognise(*instance.destination) == Counterpart(source) &&
           instance.filter == nullptr && (instance.flags & ACM_STREAMOPENF_ASYNC) == 0;
}

MMRESULT OpenStream(LPARAM record, LPARAM /*unused*/) {
    auto& instance = *reinterpret_cast<StreamInstance*>(record);
    if (instance.size < sizeof instance) return MMSYSERR_NOTSUPPORTED;
    instance.driverData = 0; // no stream to close as long as there is none
    if (!Serves(instance)) return ACMERR_NOTPOSSIBLE;
    if ((instance.flags & ACM_STREAMOPENF_QUERY) != 0) return MMSYSERR_NOERROR;
    const bool compress = Recognise(*instance.source) == Format::Pcm;
    std::unique_ptr<GsmStream> stream(new (std::nothrow) GsmStream(installation.codec, compress));
    if (stream == nullptr) return MMSYSERR_NOMEM;
    if (stream->Result() != MMSYSERR_NOERROR) return stream->Result();
    instance.driverData = reinterpret_cast<DWORD_PTR>(stream.release());
    ++installation.streams;
    return MMSYSERR_NOERROR;
}

// Wine also closes streams that were only queried.
MMRESULT CloseStream(LPARAM record, LPARAM /*unused*/) {
    const GsmStream* const stream = StreamOf(record);
    if (stream == nullptr) return MMSYSERR_NOERROR;
    delete stream;
    --installation.streams;
    reinterpret_cast<StreamInstance*>(record)->driverData = 0;
    return MMSYSERR_NOERROR;
}

MMRESULT SizeStream(LPARAM record, LPARAM sizes) {
    return StreamOf(record)->Size(*reinterpret_cast<StreamSizes*>(sizes));
}

MMRESULT ConvertStream(LPARAM record, LPARAM header) {
    return StreamOf(record)->Convert(*reinterpret_cast<StreamHeader*>(header));
}

// The rest is left to the manager, which prepares a stream's buffers without the driver.
constexpr struct {
    UINT message;
    MMRESULT (*answer)(LPARAM, LPARAM);
} kAnswers[] = {
    {kDriverDetails, DescribeDriver},   {kFormatTagDetails, AnswerTag},  {kFormatDetails, AnswerFormat},
    {kFormatSuggest, AnswerSuggestion}, {kStreamOpen, OpenStream},       {kStreamClose, CloseStream},
    {kStreamSize, SizeStream},          {kStreamConvert, ConvertStream},
};

MMRESULT AnswerManager(UINT message, LPARAM first, LPARAM second) {
    for (const auto& entry : kAnswers) {
        if (entry.message == message) return entry.answer(first, second);
    }
    return MMSYSERR_NOTSUPPORTED;
}

/// @param description  null when the driver itself is opened
BOOL OpenDriver(const OpenDescription* description) {
    return description == nullptr || description->type == ACMDRIVERDETAILS_FCCTYPE_AUDIOCODEC;
}

LRESULT CALLBACK DriverProcedure(DWORD_PTR id, HDRVR driver, UINT message, LPARAM first, LPARAM second) {
    switch (message) {
    case DRV_LOAD:
    case DRV_FREE:
    case DRV_ENABLE:
    case DRV_DISABLE:
    case DRV_CLOSE: return TRUE;
    case DRV_OPEN: return OpenDriver(reinterpret_cast<const OpenDescription*>(second));
    case DRV_QUERYCONFIGURE:
    case DRV_CONFIGURE: return FALSE; // there is nothing to configure
    case DRV_INSTALL:
    case DRV_REMOVE: return DRVCNF_OK;
    default: break;
    }
    if (message >= ACMDM_RESERVED_LOW && message <= ACMDM_RESERVED_HIGH) {
        return static_cast<LRESULT>(AnswerManager(message, first, second));
    }
    return DefDriverProc(id, driver, message, first, second);
}

MMRESULT AddDriver() {
    installation.codec = FindSystemCodec();
    if (installation.codec == nullptr) return ACMERR_NOTPOSSIBLE;
    HMODULE self = nullptr;
    const auto procedure = reinterpret_cast<LPARAM>(&DriverProcedure);
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(procedure), &self);
    return acmDriverAddW(&installation.id, self, procedure, 0, ACM_DRIVERADDF_FUNCTION);
}

// On request, Wine would remove a driver whose streams are still open.
MMRESULT RemoveDriver() {
    return installation.streams == 0 ? acmDriverRemove(installation.id, 0) : ACMERR_BUSY;
}

} // namespace

} // namespace tesselgsm

using tesselgsm::installation;

unsigned int TesselGsmInstall() {
    const std::scoped_lock guard(installation.lock);
    const MMRESULT result = installation.count == 0 ? tesselgsm::AddDriver() : MMSYSERR_NOERROR;
    if (result == MMSYSERR_NOERROR) ++installation.count;
    return result;
}

unsigned int TesselGsmRemove() {
    const std::scoped_lock guard(installation.lock);
    if (installation.count == 0) return MMSYSERR_INVALHANDLE;
    const MMRESULT result = installation.count == 1 ? tesselgsm::RemoveDriver() : MMSYSERR_NOERROR;
    if (result == MMSYSERR_NOERROR) --installation.count;
    return result;
}
