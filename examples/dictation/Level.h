#pragma once

#include <string>

/// A line of how loud sound is, for a terminal: one character for each 0.1 s, from blank to '@'.
/// @param samples  8 bits each, 8,000 a second, 128 is silence
/// @param count    number of samples
std::string LevelLine(const unsigned char* samples, unsigned long count);
