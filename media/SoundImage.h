#pragma once

namespace tessel {

/// Reads a WAVE file for PlaySoundW, which is told no length and trusts those in the file.
/// @param path  path of the file
/// @return its bytes, to be given to FreeSoundImage(); null: not to be read, no RIFF file, not whole, or no memory
unsigned char* ReadSoundImage(const wchar_t* path);

/// Gives a sound image up; the last owner stops it, if it is being played, and frees it.
/// @param image  what ReadSoundImage() gave; may be null
void FreeSoundImage(unsigned char* image);

} // namespace tessel
