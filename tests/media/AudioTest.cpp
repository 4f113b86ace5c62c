#include "Recorder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

namespace fs = std::filesystem;

struct Audio : testing::Test {
    fs::path folder = fs::temp_directory_path() / ("tessel-audio-" + std::to_string(GetCurrentProcessId()));
    void SetUp() override { fs::create_directory(folder); }
    void TearDown() override { fs::remove_all(folder); }

    fs::path File(const std::string& name, const std::string& bytes = {}) const {
        std::ofstream(folder / name, std::ios::binary) << bytes;
        return folder / name;
    }
};

std::string Tone(unsigned int hertz, unsigned int bytes) {
    std::string tone(bytes, '\0');
    for (unsigned int i = 0; i < bytes; ++i)
        tone[i] = static_cast<char>(128 + std::lround(80 * std::sin(2 * std::numbers::pi * hertz * i / 8000)));
    return tone;
}

/// Bytes of PCM data in windows of 0.1 s that hold a tone and little else, as loud as Tone() makes it.
unsigned int Hold(const std::string& pcm, unsigned int hertz) {
    constexpr std::size_t kWindow = 800;
    unsigned int found = 0;
    for (std::size_t at = 0; at + kWindow <= pcm.size(); at += kWindow) {
        double real = 0, imaginary = 0, energy = 0;
        for (std::size_t i = 0; i < kWindow; ++i) {
            const double sample = static_cast<unsigned char>(pcm[at + i]) - 128.0;
            const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / 8000;
            real += sample * std::cos(angle);
            imaginary += sample * std::sin(angle);
            energy += sample * sample;
        }
        const double share = 2 * (real * real + imaginary * imaginary) / kWindow / (energy + 1);
        const double loudness = energy / kWindow / 3200;
        if (share > 0.9 && loudness > 0.5 && loudness < 1.5) found += kWindow;
    }
    return found;
}

} // namespace

TEST_F(Audio, AToneThatOneObjectPlaysIsRecordedByAnother) {
    Recorder player(0, File("tone", Tone(1000, 16000)));
    Recorder recorder(0, File("recorded"));
    ASSERT_EQ(recorder.Record(), 0u);
    recorder.WaitFor(1600);
    ASSERT_EQ(player.Play(), 0u);
    player.Finish();
    recorder.Stop();
    recorder.Finish();
    const std::string recorded = BytesOf(folder / "recorded");
    EXPECT_EQ(recorded.size(), recorder.m_ulDataWrite);
    EXPECT_EQ(recorded.size() % 1600, 0u);
    EXPECT_GE(Hold(recorded, 1000), 8000u);
    EXPECT_EQ(Hold(recorded, 1300), 0u);
}
