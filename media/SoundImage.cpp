#include <foundation/Handle.h>
#include <foundation/SharedOwners.h>
#include <media/SoundImage.h>
#include <tessel/foundation/platform.h>

#include <mmsystem.h>

#include <mmreg.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>

namespace {

/// Zeros after the file: a last chunk may lack its pad byte, and the system reads 12 bytes at the start of a chunk.
constexpr DWORD kZerosAfterFile = 16;
constexpr LONGLONG kLongest = MAXDWORD - kZerosAfterFile;

/// Head of a chunk of a RIFF file.
struct ChunkHead {
    char name[4];
    std::uint32_t length;
};
constexpr std::size_t kRiffHead = sizeof(ChunkHead) + 4; // and the form type

using Bytes = std::span<const unsigned char>;

/// Skips to the end of the next chunk with a name.
/// @param content  receives the content of the chunk
/// @return false: not found, or a chunk before it extends beyond the bytes
bool FindChunk(const char* name, Bytes& rest, Bytes& content) {
    ChunkHead head;
    do {
        if (rest.size() < sizeof head) return false;
        std::memcpy(&head, rest.data(), sizeof head);
        rest = rest.subspan(sizeof head);
        if (head.length > rest.size()) return false;
        content = rest.first(head.length);
        rest = rest.subspan(std::min<std::size_t>(rest.size(), std::size_t{head.length} + (head.length & 1)));
    } while (std::memcmp(head.name, name, sizeof head.name) != 0);
    return true;
}

/// Size of the head that each block has for every channel, in bytes.
unsigned int HeadOf(WORD tag) {
    switch (tag) {
    case WAVE_FORMAT_ADPCM: return 7;
    case WAVE_FORMAT_IMA_ADPCM: return 4;
    default: return 0;
    }
}

// GUARD-253: Wine divides by these values or loops forever, and its sound driver ends the process at rates that it does
// not support.
bool IsPlayable(const WAVEFORMATEX& format) {
    constexpr DWORD kLowestRate = 100;
    constexpr DWORD kHighestRate = 384000;
    return format.nChannels > 0 && format.nBlockAlign > HeadOf(format.wFormatTag) * format.nChannels &&
           format.nSamplesPerSec >= kLowestRate && format.nSamplesPerSec <= kHighestRate;
}

/// Whether a format has the length that its tag and its size field require, and can be played.
bool IsValidFormat(Bytes content) {
    WAVEFORMATEX format{};
    if (content.size() < sizeof(PCMWAVEFORMAT)) return false;
    std::memcpy(&format, content.data(), std::min(content.size(), sizeof format));
    return IsPlayable(format) &&
           (format.wFormatTag == WAVE_FORMAT_PCM || content.size() >= sizeof format + format.cbSize);
}

/// Whether the lengths in a sound stay inside its bytes.
bool LengthsFit(Bytes image) {
    if (image.size() < kRiffHead || std::memcmp(image.data(), "RIFF", sizeof ChunkHead::name) != 0) return false;
    Bytes whole = image;
    Bytes chunks = image.subspan(kRiffHead);
    Bytes content;
    return FindChunk("RIFF", whole, content) && FindChunk("fmt ", chunks, content) && IsValidFormat(content) &&
           FindChunk("data", chunks, content);
}

/// Reads a file and appends zeros.
/// @param size  receives the size of the file in bytes, without the zeros
/// @return content; null: the file is empty, too long or unreadable, or out of memory
std::unique_ptr<unsigned char[]> ReadAll(HANDLE file, std::size_t& size) {
    LARGE_INTEGER length{};
    if (!GetFileSizeEx(file, &length) || length.QuadPart == 0 || length.QuadPart > kLongest) return nullptr;
    const DWORD count = length.LowPart;
    size = count;
    std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[size + kZerosAfterFile]);
    DWORD read = 0;
    if (bytes == nullptr || !ReadFile(file, bytes.get(), count, &read, nullptr) || read != count) return nullptr;
    std::memset(bytes.get() + size, 0, kZerosAfterFile);
    return bytes;
}

} // namespace

unsigned char* tessel::ReadSoundImage(const wchar_t* path) {
    if (path == nullptr) return nullptr; // GUARD-09
    const Handle file(
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return nullptr;
    std::size_t size = 0;
    std::unique_ptr<unsigned char[]> image = ReadAll(file.Get(), size);
    // GUARD-132: the system would read beyond the end of an incomplete file.
    return image != nullptr && LengthsFit({image.get(), size}) ? image.release() : nullptr;
}

void tessel::FreeSoundImage(unsigned char* image) {
    if (image == nullptr || !RemoveOwner(image)) return;
    StopSoundImage(image); // GUARD-131: the system may still be reading it
    delete[] image;
}
