#include "Tone.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/TemporaryFolder.h"
#include "support/UnixTool.h"

#include <gtest/gtest.h>
#include <tessel/media/sound.h>

#include <mmreg.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>

namespace {

constexpr int kRate = 8000;

/// A chunk of a RIFF file.
std::string Chunk(const char* name, const std::string& content) {
    const auto length = static_cast<std::uint32_t>(content.size());
    return name + std::string(reinterpret_cast<const char*>(&length), sizeof length) + content;
}

constexpr PCMWAVEFORMAT kPlain{{WAVE_FORMAT_PCM, 1, kRate, kRate, 1}, 8};

/// A WAVE file with a tone of 400 Hz, 8 bits.
template <class Format = PCMWAVEFORMAT> std::string Tone(int milliseconds, const Format& format = kPlain) {
    const std::string head(reinterpret_cast<const char*>(&format), sizeof format);
    const std::string sound = tone::Sine(400, static_cast<unsigned long>(kRate * milliseconds / 1000));
    return Chunk("RIFF", "WAVE" + Chunk("fmt ", head) + Chunk("data", sound));
}

using Played = std::vector<std::pair<const void*, DWORD>>;

/// Logs what the library plays, and plays nothing.
struct Player {
    Played played;
    const ImportPatch patch{"PlaySoundW", &PlaySoundW, [this](LPCWSTR sound, HMODULE, DWORD flags) {
                                return played.emplace_back(sound, flags), TRUE;
                            }};
};

/// Formats that lack their extension, end the process or play forever.
constexpr WAVEFORMATEX kUnplayable[] = {
    {WAVE_FORMAT_MULAW, 1, kRate, kRate, 1, 8, 1},    {WAVE_FORMAT_PCM, 0, kRate, kRate, 1, 8, 0},
    {WAVE_FORMAT_PCM, 1, kRate, kRate, 0, 8, 0},      {WAVE_FORMAT_PCM, 1, 99, 99, 1, 8, 0},
    {WAVE_FORMAT_PCM, 1, 384001, 384001, 1, 8, 0},    {WAVE_FORMAT_ADPCM, 1, kRate, kRate, 7, 4, 0},
    {WAVE_FORMAT_IMA_ADPCM, 2, kRate, kRate, 8, 4, 0}};

struct Sound : testing::Test {
    TemporaryFolder folder;
    std::filesystem::path path = folder / L"sound.wav";
    std::wstring name = path.wstring();

    void Write(const std::string& bytes) const { std::ofstream(path, std::ios::binary) << bytes; }
    /// Plays a file with this content.
    unsigned long Play(const std::string& bytes) {
        Write(bytes);
        return CSound(name.data()).Play(1);
    }
};

} // namespace

TEST_F(Sound, IsHeardOrWaitedFor) {
    if (waveOutGetNumDevs() == 0) GTEST_SKIP() << "the machine has no sound device";
    using Clock = std::chrono::steady_clock;
    Write(Tone(20000));
    CSound sound(name.data());
    const auto start = Clock::now();
    EXPECT_EQ(sound.Play(0), 0U);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20)) << "it does not wait for the end";
    const std::string heard = RunUnix(L"ffmpeg -f pulse -i default -t 1 -af volumedetect -f null -").output;
    const std::size_t peak = heard.find("max_volume: ");
    ASSERT_NE(peak, std::string::npos) << heard;
    EXPECT_GT(std::stod(heard.substr(peak + 12)), -10) << "dB";

    std::string other = Tone(400);
    const auto between = Clock::now();
    EXPECT_EQ(sound.Play(reinterpret_cast<wchar_t*>(other.data()), 1), 0U);
    EXPECT_GT(Clock::now() - between, std::chrono::milliseconds(300));
    other.replace(8, 4, "EVAW");
    EXPECT_EQ(sound.Play(reinterpret_cast<wchar_t*>(other.data()), 1), STATUS_SOUND_NOT_PLAYED);
}

TEST_F(Sound, OnlyCompleteFilesArePassedToTheSystem) {
    const Player player;
    EXPECT_EQ(CSound(name.data()).Play(1), STATUS_SOUND_NOT_PLAYED) << "no file";
    const std::string complete = Tone(10);
    Texts refused{"",
                  std::string(100, 'R'),
                  Tone(10).replace(12, 3, "xyz"),
                  Tone(10).replace(40, 4, 4, '\xFF'), // the length of the samples
                  complete.substr(0, 44),
                  complete.substr(0, complete.size() - 1),
                  Tone(10, kRate),
                  Tone(10, PCMWAVEFORMAT{{WAVE_FORMAT_MULAW, 1, kRate, kRate, 1}, 8})};
    for (const WAVEFORMATEX& format : kUnplayable) refused.push_back(Tone(10, format));
    for (const std::string& bytes : refused) EXPECT_EQ(Play(bytes), STATUS_SOUND_NOT_PLAYED) << &bytes - refused.data();
    EXPECT_EQ(player.played.size(), 0U);
    std::string unpadded = complete.substr(0, complete.size() - 1);
    --unpadded[4];  // the length of the file
    --unpadded[40]; // the length of the samples
    EXPECT_EQ(Play(unpadded), 0U) << "a last byte that makes the samples even need not be there";
    EXPECT_EQ(Play(complete), 0U);
    EXPECT_EQ(Play(Tone(10, WAVEFORMATEX{WAVE_FORMAT_MULAW, 1, 100, 100, 1, 8, 0})), 0U);
    for (long long claimed = 1000; claimed < 0x900000000; claimed *= 0x300000) {
        const ImportPatch size("GetFileSizeEx", &GetFileSizeEx,
                               [&](HANDLE, PLARGE_INTEGER length) { return length->QuadPart = claimed, TRUE; });
        EXPECT_EQ(CSound(name.data()).Play(1), STATUS_SOUND_NOT_PLAYED) << claimed;
    }
    EXPECT_EQ(player.played.size(), 3U);
}

TEST_F(Sound, IsStoppedBeforeItsLastOwnerFreesIt) {
    const Player player;
    Write(Tone(10));
    std::optional<CSound> sound(std::in_place, name.data());
    std::optional<CSound> copy(std::in_place, nullptr, 0);
    *copy = CSound(*sound);
    EXPECT_EQ(sound->Play(0), 0U);
    sound.reset();
    EXPECT_EQ(copy->Play(1), 0U);
    const void* const image = player.played.at(0).first;
    copy.reset();
    EXPECT_EQ(player.played, (Played{{image, SND_MEMORY | SND_ASYNC}, {image, SND_MEMORY}, {nullptr, 0}}));
}
