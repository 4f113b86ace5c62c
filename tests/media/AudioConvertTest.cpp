#include "Tone.h"
#include "support/ImportPatch.h"
#include "support/TemporaryFolder.h"
#include "support/UnixTool.h"

#include <tessel/media/audio.h>
#include <tessel/media/audioconvert.h>
#include <tesselgsm/driver.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

/// Allocates zeroed memory before a page without access; it is never freed.
char* Fenced(SIZE_T size) {
    constexpr SIZE_T kPage = 4096;
    const SIZE_T pages = (size + kPage - 1) / kPage * kPage;
    char* const memory = static_cast<char*>(VirtualAlloc(nullptr, pages + kPage, MEM_COMMIT, PAGE_READWRITE));
    DWORD before = 0;
    VirtualProtect(memory + pages, kPage, PAGE_NOACCESS, &before);
    return memory + pages - size;
}

/// What a conversion returned.
struct Made {
    char* buffer = nullptr;
    unsigned long whole = 1, size = 1;

    std::string Text() const { return {buffer, size}; }
};

Made Convert(CAudioConvert& converter, char* source, unsigned long size, unsigned long room) {
    Made made;
    EXPECT_EQ(converter.Convert(source, made.buffer, size, made.whole, room, made.size), 0u);
    return made;
}

std::string Convert(auto&& converter, std::string source) {
    const auto size = static_cast<unsigned long>(source.size());
    const Made made = Convert(converter, source.data(), size, size);
    std::string sound = made.Text();
    EXPECT_EQ(GlobalFree(made.buffer), nullptr);
    return sound;
}

struct AudioConvert : testing::Test {
    AudioConvert() { EXPECT_EQ(TesselGsmInstall(), 0u); }
    ~AudioConvert() override { EXPECT_EQ(TesselGsmRemove(), 0u); }
};

/// Opens the protected steps.
struct Steps : CAudioConvert {
    using CAudioConvert::CAudioConvert, CAudioConvert::ClearStreamHeader, CAudioConvert::CloseStream,
        CAudioConvert::ConvertBuffer, CAudioConvert::OpenStream, CAudioConvert::PrepareStreamHeader,
        CAudioConvert::UnprepareStreamHeader;
};

} // namespace

TEST_F(AudioConvert, UnderstandsForeignCodecsAndTheyUnderstandIt) {
    CAudioConvert converter(1);
    const std::string sound = tone::Sine(1000, 3 * tone::kSecond);
    std::string gsm = Convert(converter, sound);
    EXPECT_TRUE(Convert(converter, sound) == gsm) << "starts anew";
    ASSERT_EQ(gsm.size(), 3 * 1625u);
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / L"sound.wav";
    ASSERT_EQ(CAudio::CreateWAV(file.c_str(), gsm.data(), 3 * 1625, 1), 0u);
    const std::wstring name = L"'" + UnixPath(file) + L"'";
    EXPECT_GT(tone::Held(1000, RunUnix(L"sox -D " + name + L" -t u8 -").output), 20000u);

    EXPECT_EQ(RunUnix(L"sox -n -r 8000 -c 1 -e gsm-full-rate " + name + L" synth 3 sine 700 vol 0.7").output, "");
    std::ifstream(file, std::ios::binary).seekg(60).read(gsm.data(), 3 * 1625); // after the head
    EXPECT_GT(tone::Held(700, Convert(CAudioConvert(0), gsm)), 20000u);
}

TEST_F(AudioConvert, Odd130NumberOfWholeChunksDecidesAndNothingOutsideTheBuffersIsTouched) {
    const struct {
        int compress;
        unsigned long source; ///< its size
        unsigned long room;   ///< source size to allocate for
        unsigned long whole;  ///< converted size of the whole blocks
        unsigned long made;   ///< allocated size
        unsigned long done;   ///< size of what is converted
    } cases[] = {
        {1, 7999, 8000, 4 * 325, 1625, 0},                     // less than a chunk
        {1, 44000, 48000, 27 * 325, 9750, 8125},               // 5.5
        {1, 48000, 9700, 9750, 1950, 1625 + 325},              // room for 1.2
        {0, 10562, 11375, 32 * 1600, 56000, 48000 + 12 * 320}, // 6.5
        {0, 3250, 400, 16000, 1600, 1600},                     // room for a block
        {0, 1, 0xFFFFFFFF, 0, 0, 0},                           // an allocation that exceeds 32 bits
    };
    const std::string sound = tone::Sine(440, 8 * tone::kSecond);
    const std::string gsm = Convert(CAudioConvert(1), sound);
    const ImportPatch fenced("GlobalAlloc", &GlobalAlloc,
                             [](UINT, SIZE_T size) { return static_cast<HGLOBAL>(Fenced(size)); });
    for (const auto& sizes : cases) {
        SCOPED_TRACE(sizes.source);
        char* const source = Fenced(sizes.source);
        (sizes.compress ? sound : gsm).copy(source, sizes.source);
        CAudioConvert converter(sizes.compress);
        const Made made = Convert(converter, source, sizes.source, sizes.room);
        EXPECT_EQ(made.whole, sizes.whole);
        EXPECT_EQ(made.size, sizes.made);
        EXPECT_EQ(made.Text().find_last_not_of('\0') + 1, sizes.done);
    }
}

TEST_F(AudioConvert, Odd131FailuresAreNotReportedAndLeaveZeros) {
    const std::string sound = tone::Sine(440, 3 * tone::kSecond);
    {
        const ImportPatch second(Failing("acmStreamConvert", &acmStreamConvert, MMSYSERR_ERROR, 0, 2));
        const std::string gsm = Convert(CAudioConvert(1), sound);
        EXPECT_EQ(gsm.substr(1625, 1625), std::string(1625, '\0'));
        EXPECT_NE(gsm.substr(3250), std::string(1625, '\0'));
    }
    const ImportPatch open(Failing("acmStreamOpen", &acmStreamOpen, ACMERR_NOTPOSSIBLE));
    EXPECT_EQ(Convert(CAudioConvert(1), sound), std::string(3 * 1625, '\0'));
}

TEST_F(AudioConvert, CopiesShareAnOpenStreamThatTheLastOneCloses) {
    int closed = 0;
    const ImportPatch close("acmStreamClose", &acmStreamClose, [&](HACMSTREAM stream, DWORD) {
        return closed += stream != nullptr, acmStreamClose(stream, 0);
    });
    Steps second(0);
    {
        Steps first(1);
        ASSERT_EQ(first.OpenStream(), 0u);
        EXPECT_EQ(first.OpenStream(), 1u);
        second = first;
        const Steps third(first);
        EXPECT_EQ(first.CloseStream(), 0u);
    }
    EXPECT_EQ(closed, 0);
    BYTE bytes[1];
    ACMSTREAMHEADER unprepared{0, 0, 0, bytes, 1, 0, 0, bytes, 1, 0, 0, {}};
    EXPECT_EQ(second.UnprepareStreamHeader(&unprepared), 0u);
    second.ClearStreamHeader(&unprepared);
    EXPECT_TRUE(unprepared.pbSrc == nullptr && unprepared.pbDst == nullptr);
    EXPECT_EQ(unprepared.cbSrcLength + unprepared.cbDstLength, 0u);
    for (const auto step : {&Steps::PrepareStreamHeader, &Steps::ConvertBuffer, &Steps::UnprepareStreamHeader})
        EXPECT_EQ((second.*step)(nullptr), 1u);
    EXPECT_EQ(second.CloseStream(), 0u);
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(Convert(second, tone::Sine(440, tone::kSecond)).size(), 1625u) << "the direction is copied, too";
}
