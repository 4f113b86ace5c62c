#include <foundation/SlimLock.h>
#include <media/SoundImage.h>
#include <tessel/foundation/status.h>
#include <tessel/media/sound.h>

namespace {

SRWLOCK playingLock = SRWLOCK_INIT;
const void* playing = nullptr; // sound that was last started without waiting for its end

} // namespace

void tessel::StopSoundImage(const unsigned char* image) {
    const SlimLock lock(playingLock);
    if (playing != image) return;
    (void)PlaySoundW(nullptr, nullptr, 0); // a sound that has ended needs no stop
    playing = nullptr;
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
