#include "Level.h"

#include <algorithm>
#include <cstdlib>

std::string LevelLine(const unsigned char* samples, unsigned long count) {
    constexpr char kScale[] = " .:-=+*#%@"; // each character is about 4 dB louder than the one before
    constexpr int kLoudest[] = {1, 2, 4, 6, 10, 16, 25, 40, 65};
    constexpr unsigned long kColumn = 800;
    std::string line;
    for (unsigned long from = 0; from < count; from += kColumn) {
        int peak = 0;
        for (unsigned long i = from; i < std::min(from + kColumn, count); ++i) {
            peak = std::max(peak, std::abs(samples[i] - 128));
        }
        line += kScale[std::upper_bound(std::begin(kLoudest), std::end(kLoudest), peak) - std::begin(kLoudest)];
    }
    return line;
}
