#include <foundation/Handle.h>
#include <foundation/SharedOwners.h>
#include <foundation/SlimLock.h>
#include <media/SoundImage.h>
#include <tessel/foundation/status.h>
#include <tessel/media/sound.h>

#include <mmreg.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>

namespace {

/// Zeros behind the file: a last chunk may lack its pad byte, and heads of chunks are read 12 bytes at a time.
constexpr DWORD kSlack = 16;
constexpr LONGLONG kLongest = MAXDWORD - kSlack;

/// What stands in front of every chunk of a RIFF file.
struct ChunkHead {
    char name[4];
    std::uint32_t length;
};
constexpr std::size_t kRiffHead = sizeof(ChunkHead) + 4; // and the kind of file

using Bytes = std::span<const unsigned char>;

SRWLOCK playingLock = SRWLOCK_INIT;
const void* playing = nullptr; // the sound that was started last without waiting for its end

/// Moves behind the next chunk of a name.
/// @param content  receives what is in it
/// @return false: there is none, or a chunk on the way there does not lie inside the bytes
bool PassChunk(const char* name, Bytes& rest, Bytes& content) {
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

/// Bytes of a channel that stand in front of each block's samples.
unsigned int HeadOf(WORD tag) {
    switch (tag) {
    case WAVE_FORMAT_ADPCM: return 7;
    case WAVE_FORMAT_IMA_ADPCM: return 4;
    default: return 0;
    }
}

// GUARD-253: Wine divides by these figures, waits for ever for a sample of no bytes, and its driver ends the process at
// rates that it does not know.
bool IsPlayable(const WAVEFORMATEX& format) {
    constexpr DWORD kHighestRate = 384000;
    return format.nChannels > 0 && format.nBlockAlign > HeadOf(format.wFormatTag) * format.nChannels &&
           format.nSamplesPerSec > 0 && format.nSamplesPerSec <= kHighestRate;
}

/// Whether a format is as long as its tag and its own length say, and can be played.
bool IsWholeFormat(Bytes content) {
    WAVEFORMATEX format{};
    if (content.size() < sizeof(PCMWAVEFORMAT)) return false;
    std::memcpy(&format, content.data(), std::min(content.size(), sizeof format));
    return IsPlayable(format) &&
           (format.wFormatTag == WAVE_FORMAT_PCM || content.size() >= sizeof format + format.cbSize);
}

/// Whether whoever reads a sound by the lengths in it stays inside the bytes.
bool StaysInside(Bytes image) {
    if (image.size() < kRiffHead || std::memcmp(image.data(), "RIFF", 4) != 0) return false;
    Bytes whole = image;
    Bytes chunks = image.subspan(kRiffHead);
    Bytes content;
    return PassChunk("RIFF", whole, content) && PassChunk("fmt ", chunks, content) && IsWholeFormat(content) &&
           PassChunk("data", chunks, content);
}

/// Reads a file and puts zeros behind it.
/// @param size  receives the number of its bytes, without the zeros
/// @return its bytes; null: it is empty, too long or cannot be read, or there is no memory
std::unique_ptr<unsigned char[]> ReadAll(HANDLE file, std::size_t& size) {
    LARGE_INTEGER length{};
    if (!GetFileSizeEx(file, &length) || length.QuadPart == 0 || length.QuadPart > kLongest) return nullptr;
    const DWORD count = length.LowPart;
    size = count;
    std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[size + kSlack]);
    DWORD got = 0;
    if (bytes == nullptr || !ReadFile(file, bytes.get(), count, &got, nullptr) || got != count) return nullptr;
    std::memset(bytes.get() + size, 0, kSlack);
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
    // GUARD-132: the system would read behind the bytes of a file that is not whole.
    return image != nullptr && StaysInside({image.get(), size}) ? image.release() : nullptr;
}

void tessel::FreeSoundImage(unsigned char* image) {
    if (image == nullptr || !RemoveOwner(image)) return;
    const SlimLock lock(playingLock);
    if (playing == image) {
        (void)PlaySoundW(nullptr, nullptr, 0); // GUARD-131: the system still reads the bytes
        playing = nullptr;
    }
    delete[] image;
}

unsigned long CSound::Play(int bSync) {
    return Play(reinterpret_cast<wchar_t*>(m_pImage), bSync);
}

unsigned long CSound::Play(wchar_t* image, int bSync) {
    if (image == nullptr) return STATUS_SOUND_NOT_PLAYED;
    if (bSync != 0) return PlaySoundW(image, nullptr, SND_MEMORY | SND_SYNC) ? STATUS_OK : STATUS_SOUND_NOT_PLAYED;
    const tessel::SlimLock lock(playingLock);
    if (!PlaySoundW(image, nullptr, SND_MEMORY | SND_ASYNC)) return STATUS_SOUND_NOT_PLAYED;
    playing = image;
    return STATUS_OK;
}
