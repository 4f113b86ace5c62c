#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// A test image like a scanner's: a sector of speckle with dark and bright targets, one of which moves from image to
/// image, and a grey wedge beside it. The same number always gives the same image.

inline constexpr std::uint32_t kImageWidth = 512;
inline constexpr std::uint32_t kImageHeight = 512;

/// The grey values of an image, line by line from the top.
using Image = std::vector<std::uint8_t>;

/// Makes one line.
/// @param image   number of the image
/// @param line    0 to kImageHeight - 1
/// @param pixels  receives kImageWidth grey values
void MakeLine(std::uint32_t image, std::uint32_t line, std::span<std::uint8_t> pixels);

/// Makes a whole image.
Image MakeImage(std::uint32_t image);
