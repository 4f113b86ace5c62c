#pragma once

#include <string>

/// The level of sound as a line of text: one character for each 0.1 s, from blank to '@'.
/// @param samples  8 bits each, 8,000 a second, 128 is silence
/// @param count    number of samples
std::string LevelLine(const unsigned char* samples, unsigned long count);
