#include <foundation/Report.h>
#include <media/NarrowPath.h>
#include <media/WaveFormats.h>
#include <tessel/media/audio.h>

#include <climits>
#include <iterator>
#include <numeric>

namespace {

constexpr tessel::ReportSite kPartOfABlock{"CAudio", 1287};

constexpr ULONGLONG kChunkHead = 8;             // identifier and length
constexpr ULONGLONG kRiffHead = kChunkHead + 4; // and the form type

struct Chunk {
    const char* id; ///< four characters
    const void* data;
    unsigned long size;
};

FOURCC Code(const char* id) {
    return mmioFOURCC(id[0], id[1], id[2], id[3]);
}

bool WriteChunk(HMMIO file, const Chunk& chunk) {
    const auto size = static_cast<LONG>(chunk.size);
    MMCKINFO info{};
    info.ckid = Code(chunk.id);
    return mmioCreateChunk(file, &info, 0) == 0 &&
           mmioWrite(file, static_cast<const char*>(chunk.data), size) == size && mmioAscend(file, &info, 0) == 0;
}

bool WriteChunks(HMMIO file, const Chunk (&chunks)[3]) {
    MMCKINFO riff{};
    riff.fccType = Code("WAVE");
    if (mmioCreateChunk(file, &riff, MMIO_CREATERIFF) != 0) return false;
    for (const Chunk& chunk : chunks)
        if (!WriteChunk(file, chunk)) return false;
    return mmioAscend(file, &riff, 0) == 0;
}

/// Size of a chunk in a file: head, data and padding to an even length.
ULONGLONG SpaceOf(const Chunk& chunk) {
    return kChunkHead + chunk.size + chunk.size % 2;
}

/// Size of a RIFF file of these chunks.
ULONGLONG LengthOf(const Chunk (&chunks)[3]) {
    return std::accumulate(std::begin(chunks), std::end(chunks), ULONGLONG{kRiffHead},
                           [](ULONGLONG sum, const Chunk& chunk) { return sum + SpaceOf(chunk); });
}

/// @return size of a file; 0: not found
ULONGLONG LengthOf(const wchar_t* path) {
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &found)) return 0;
    return ULARGE_INTEGER{{found.nFileSizeLow, found.nFileSizeHigh}}.QuadPart;
}

bool WriteRiff(const wchar_t* path, const Chunk (&chunks)[3]) {
    const tessel::NarrowPath narrow(path);
    auto* const name = const_cast<wchar_t*>(narrow.Get()); // the function does not write to it
    const HMMIO file = name != nullptr ? mmioOpenW(name, nullptr, MMIO_CREATE | MMIO_WRITE | MMIO_ALLOCBUF) : nullptr;
    if (file == nullptr) {
        narrow.Discard();
        return false;
    }
    const bool written = WriteChunks(file, chunks);
    const bool closed = mmioClose(file, 0) == 0; // it flushes the buffer
    // GUARD-251: Wine does not report a full disk.
    const bool complete = written && closed && LengthOf(path) == LengthOf(chunks);
    if (!complete) (void)DeleteFileW(path);
    return complete;
}

} // namespace

unsigned long CAudio::CreateWAV(const wchar_t* path, const char* data, unsigned long size, int bCompressed) {
    if (data == nullptr || size == 0) return 0;
    const bool gsm = bCompressed != 0;
    const unsigned long align = gsm ? tessel::kFormatGSM.wfx.nBlockAlign : tessel::kFormatPCM.nBlockAlign;
    tessel::ReportUnless(size % align == 0, "(ulSizeAudio % ulBlockAlign) == 0", kPartOfABlock);
    if (size % align != 0) return 1;
    if (path == nullptr || size > LONG_MAX) return 1; // GUARD-107: it would become negative
    const unsigned int samples = size / align * (gsm ? tessel::kFormatGSM.wSamplesPerBlock : 1);
    const Chunk format = gsm ? Chunk{"fmt ", &tessel::kFormatGSM, sizeof tessel::kFormatGSM}
                             : Chunk{"fmt ", &tessel::kFormatPCM, sizeof tessel::kFormatPCM};
    return WriteRiff(path, {format, {"fact", &samples, sizeof samples}, {"data", data, size}}) ? 0 : 1;
}
