#pragma once

namespace tessel {

/// Reads a WAVE file for PlaySoundW, which takes no length and trusts those in the file.
/// @param path  path of the file
/// @return content, to be freed with FreeSoundImage(); null: unreadable, not RIFF, incomplete, unplayable, or no memory
unsigned char* ReadSoundImage(const wchar_t* path);

/// Stops a sound image if CSound::Play() started it last, without waiting for its end.
/// @param image  result of ReadSoundImage()
void StopSoundImage(const unsigned char* image);

/// Releases a sound image. The last owner stops it if it is playing, and frees it.
/// @param image  result of ReadSoundImage(); may be null
void FreeSoundImage(unsigned char* image);

} // namespace tessel
