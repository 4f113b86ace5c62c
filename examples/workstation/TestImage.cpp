#include "TestImage.h"

#include <algorithm>

// Integers only, so that the image is the same on every thread and in every build: the last bits of floating-point
// results depend on the unit's settings.

namespace {

constexpr int kApexX = 240;
constexpr int kApexY = -30;
constexpr int kNear = 700; // tenths of a pixel, as all depths
constexpr int kFar = 5250;
constexpr int kHalfWidth = 500; // thousandths of the distance downwards
constexpr std::uint32_t kWedgeLeft = 488;
constexpr std::uint32_t kWedgeRight = 504;
constexpr std::uint32_t kWedgeTop = 64;
constexpr std::uint32_t kWedgeBottom = 448;

/// A target in the sector: inside its ellipse the echo is scaled by a percentage.
struct Target {
    int x, y, width, height;
    int gain;
};

constexpr Target kTargets[] = {
    {170, 210, 44, 36, 6}, {320, 260, 30, 30, 10},  {205, 390, 60, 38, 25}, {330, 400, 26, 26, 220},
    {240, 120, 5, 4, 400}, {240, 190, 5, 4, 400},   {240, 260, 5, 4, 400},  {240, 330, 5, 4, 400},
    {240, 400, 5, 4, 400}, {120, 330, 28, 20, 180},
};

/// Distance of the moving target from its centre, by image.
constexpr int kBeat[] = {0, 14, 18, 8, -8, -18, -14};

/// A pseudo-random value of 0 to 255.
int Noise(std::uint32_t a, std::uint32_t b) {
    std::uint32_t h = a * 0x9E3779B1U ^ b * 0x85EBCA77U;
    h = (h ^ h >> 15) * 0x2C1B3C6DU;
    h = (h ^ h >> 12) * 0x297A2D39U;
    return static_cast<int>((h ^ h >> 15) & 0xFF);
}

/// The integer square root.
int SquareRoot(int value) {
    int root = 0;
    for (int bit = 1 << 15; bit > 0; bit >>= 1) {
        if ((root + bit) <= value / (root + bit)) root += bit;
    }
    return root;
}

/// Grains that are short along the beam and broad across it, as in a real sector.
/// @param across  thousandths, to the right
/// @return per cent
int Speckle(int depth, int across, std::uint32_t image) {
    const auto grain = static_cast<std::uint32_t>(depth / 22 * 4096 + (across + 1000) / 11);
    const int noise = Noise(grain, image / 2) + Noise(grain + 77, image); // 0 to 510
    return 25 + noise * noise * 150 / (510 * 510);
}

bool IsIn(const Target& target, int x, int y) {
    const int dx = (x - target.x) * 100 / target.width;
    const int dy = (y - target.y) * 100 / target.height;
    return dx * dx + dy * dy < 100 * 100;
}

/// @return per cent
int GainAt(int x, int y, std::uint32_t image) {
    const int beat = kBeat[image % std::size(kBeat)];
    int gain = IsIn({285 + beat, 165 + beat / 3, 24, 9, 0}, x, y) ? 260 : 100;
    for (const Target& target : kTargets) {
        if (IsIn(target, x, y)) gain = gain * target.gain / 100;
    }
    return gain;
}

std::uint8_t SectorPixel(int x, int y, std::uint32_t image) {
    const int right = x - kApexX;
    const int down = y - kApexY;
    const int depth = SquareRoot(100 * (right * right + down * down));
    const int across = right * 1000 / down;
    if (depth < kNear || depth > kFar || across < -kHalfWidth || across > kHalfWidth) return 0;
    const int echo = 165 - 100 * (depth - kNear) / (kFar - kNear); // weaker from afar
    const int grey = echo * GainAt(x, y, image) / 100 * Speckle(depth, across, image) / 100;
    return static_cast<std::uint8_t>(std::min(grey + 12, 255));
}

std::uint8_t WedgePixel(std::uint32_t line) {
    if (line < kWedgeTop || line >= kWedgeBottom) return 0;
    return static_cast<std::uint8_t>((kWedgeBottom - 1 - line) * 255 / (kWedgeBottom - 1 - kWedgeTop));
}

} // namespace

void MakeLine(std::uint32_t image, std::uint32_t line, std::span<std::uint8_t> pixels) {
    for (std::uint32_t x = 0; x < kImageWidth; ++x) {
        const bool isWedge = x >= kWedgeLeft && x < kWedgeRight;
        pixels[x] = isWedge ? WedgePixel(line) : SectorPixel(static_cast<int>(x), static_cast<int>(line), image);
    }
}

Image MakeImage(std::uint32_t image) {
    Image pixels(kImageWidth * kImageHeight);
    for (std::uint32_t line = 0; line < kImageHeight; ++line) {
        MakeLine(image, line, std::span(pixels).subspan(line * kImageWidth, kImageWidth));
    }
    return pixels;
}
