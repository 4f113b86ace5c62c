#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

/// 8 kHz mono sound in unsigned bytes; 128 is silence.
namespace tone {

constexpr unsigned long kSecond = 8000;

inline std::string Sine(double hertz, unsigned long samples) {
    std::string sound(samples, '\0');
    for (unsigned long i = 0; i < samples; ++i) {
        const double angle = 2 * std::numbers::pi * hertz * i / kSecond;
        sound[i] = static_cast<char>(128 + std::lround(90 * std::sin(angle)));
    }
    return sound;
}

/// Amplitude of a frequency in the sound. Whole seconds leak nothing from other frequencies.
inline double AmplitudeAt(double hertz, const std::string& sound) {
    double sine = 0, cosine = 0;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / kSecond;
        const double sample = static_cast<unsigned char>(sound[i]) - 128.0;
        sine += sample * std::sin(angle);
        cosine += sample * std::cos(angle);
    }
    return 2 * std::hypot(sine, cosine) / static_cast<double>(std::max<std::size_t>(sound.size(), 1));
}

/// Number of samples, in pieces of 0.1 s, that contain a tone as loud as Sine() makes it. A busy machine plays and
/// records with gaps: expect some pieces of a tone, not all of them.
inline unsigned long Held(double hertz, const std::string& sound) {
    constexpr unsigned long kPiece = kSecond / 10;
    unsigned long held = 0;
    for (std::size_t at = 0; at + kPiece <= sound.size(); at += kPiece) {
        const double amplitude = AmplitudeAt(hertz, sound.substr(at, kPiece));
        if (amplitude > 75 && amplitude < 105) held += kPiece;
    }
    return held;
}

} // namespace tone
