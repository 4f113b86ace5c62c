#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/TemporaryFolder.h"
#include "support/UnixTool.h"

#include <gtest/gtest.h>
#include <tessel/media/avifile.h>

#include <vfw.h>

#include <array>
#include <climits>
#include <cstring>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr unsigned long kRefused = 0xFFFFFFFF;
using Pixels = std::vector<unsigned char>;

/// An image whose pixels differ from their neighbours and from those of the next image.
Pixels Draw(int width, int height, int number) {
    Pixels pixels;
    for (int i = 0; i < width * height; ++i) pixels.push_back(static_cast<unsigned char>(i * 37 + number * 50));
    return pixels;
}

/// Reads rows of width pixels, stride pixels apart, and flips the image.
Pixels TurnOver(const Pixels& pixels, int width, int height, int stride) {
    Pixels turned;
    for (const unsigned char* row = pixels.data() + height * stride; height-- > 0;) {
        row -= stride;
        turned.insert(turned.end(), row, row + width);
    }
    return turned;
}

struct AviFile : testing::Test {
    AviFile() {
        EXPECT_EQ(movie.Open(path.c_str()), 0u);
        // Greys: Wine's run-length codec merges colours of the same brightness.
        for (int i = 0; i < 256; ++i) palette[i] = RGB(255 - i, 255 - i, 255 - i);
    }
    ~AviFile() override { movie.Close(); }
    unsigned long Write(long position, Pixels pixels) {
        return movie.WriteFrame(position, pixels.data(), static_cast<unsigned long>(pixels.size()));
    }
    /// What a tool says about the file once it is closed.
    std::string Ask(const std::wstring& tool, const std::wstring& what) {
        movie.Close();
        return RunUnix(tool + L" -v error -i '" + UnixPath(path) + L"' " + what).output;
    }
    /// For each image, whether it is a key frame and when it is shown; codec, width, height, images per second.
    std::string Described() {
        return Ask(L"ffprobe", L"-of csv=p=0 -show_entries frame=key_frame,pts_time:"
                               L"stream=codec_name,width,height,avg_frame_rate | tr '\\n' ' '");
    }
    /// The pixels that a player shows.
    std::string Played(const std::wstring& stream = L"0") {
        return Ask(L"ffmpeg", L"-map 0:" + stream + L" -fps_mode passthrough -f rawvideo -pix_fmt rgb24 -");
    }
    /// The pixels that it should show.
    std::string Colours(const Pixels& pixels) const {
        std::string colours;
        for (const unsigned char pixel : pixels) {
            for (const int shift : {0, 8, 16}) colours += static_cast<char>(palette[pixel] >> shift);
        }
        return colours;
    }

    TemporaryFolder folder;
    fs::path path = folder / L"m.avi";
    unsigned long palette[256]{};
    CAviFile movie;
    void* frame = nullptr;
};

constexpr auto kFailure = static_cast<unsigned long>(AVIERR_INTERNAL);

} // namespace

TEST_F(AviFile, UncompressedImagesPlayAtTheirMillisecondsAsTheyWereDrawn) {
    for (int i = 0; i < 256; ++i) palette[i] = RGB(i, 255 - i, i / 2);
    ASSERT_EQ(movie.InitializeStream(12, 5, palette, frame), 0u);
    std::memcpy(frame, TurnOver(Draw(12, 5, 0), 12, 5, 12).data(), 60);
    EXPECT_EQ(movie.WriteFrame(0), 0u);
    EXPECT_EQ(Write(40, Draw(12, 5, 1)), 0u);
    EXPECT_EQ(movie.WriteFrame(200), 0u);
    EXPECT_EQ(Described(), "1,0.000000 1,0.040000 1,0.200000 rawvideo,12,5,1000/1 ");
    EXPECT_EQ(Played(), Colours(Draw(12, 5, 0)) + Colours(Draw(12, 5, 1)) + Colours(Draw(12, 5, 0)));
}

TEST_F(AviFile, RunLengthImagesPlayAtTheirRateAsTheyWereGiven) {
    ASSERT_EQ(movie.InitializeStream(40, 6, palette, 25, 1, 0), 0u);
    Pixels runs = Draw(40, 6, 1);
    std::fill(runs.begin() + 50, runs.begin() + 190, static_cast<unsigned char>(9));
    EXPECT_EQ(Write(0, Draw(40, 6, 0)), 0u);
    EXPECT_EQ(Write(1, runs), 0u);
    EXPECT_EQ(movie.WriteFrame(2), kRefused) << "there is no frame to draw in";
    EXPECT_EQ(Described(), "1,0.000000 1,0.040000 msrle,40,6,25/1 ");
    EXPECT_EQ(Played(), Colours(Draw(40, 6, 0)) + Colours(runs));
}

TEST_F(AviFile, AStreamThatItsCodecRefusesStaysWithoutAFormatOdd151) {
    AVICOMPRESSOPTIONS options{};
    DWORD parameter = 0;
    const ImportPatch compressed("AVIMakeCompressedStream", &AVIMakeCompressedStream,
                                 [&](auto made, auto source, AVICOMPRESSOPTIONS* given, auto codec) {
                                     options = *given;
                                     std::memcpy(&parameter, given->lpParms, sizeof parameter);
                                     return AVIMakeCompressedStream(made, source, given, codec);
                                 });
    EXPECT_NE(movie.InitializeStream(8, 4, palette, 25, 0, 80), 0u) << "Wine's codec compresses nothing";
    EXPECT_EQ(options.fccHandler, mmioFOURCC('M', 'S', 'V', 'C'));
    EXPECT_EQ(options.dwQuality, 8000u);
    EXPECT_EQ(parameter, 75u);
    EXPECT_EQ(Write(0, Draw(8, 4, 0)), 0u);
    EXPECT_EQ(Described(), "unknown,25/1 ");
}

TEST_F(AviFile, RowsThatAreNotPaddedPlayByTheirSizeAndAskewFromACodecOdd150) {
    const Pixels image = Draw(5, 3, 0);
    ASSERT_EQ(movie.InitializeStream(5, 3, palette, frame), 0u);
    EXPECT_EQ(Write(0, image), 0u);
    EXPECT_EQ(Played(), Colours(image));

    ASSERT_EQ(movie.Open(path.c_str()), 0u);
    ASSERT_EQ(movie.InitializeStream(5, 3, palette, 25, 1, 0), 0u);
    EXPECT_EQ(Write(0, image), 0u);
    Pixels stored = TurnOver(image, 5, 3, 5);
    stored.resize(24); // zeros follow the last row
    EXPECT_EQ(Played(), Colours(TurnOver(stored, 5, 3, 8)));
}

TEST_F(AviFile, AnotherSizeIsReportedAndTheRowsThatFitAreWritten) {
    Reports reports;
    ASSERT_EQ(movie.InitializeStream(4, 3, palette, frame), 0u);
    Pixels image = Draw(4, 3, 0);
    EXPECT_EQ(Write(0, Pixels(image.begin(), image.begin() + 9)), 0u); // two rows and a byte
    EXPECT_EQ(Write(1, Draw(4, 4, 0)), 0u);
    EXPECT_EQ(reports.Take(), Texts(2, "AviFile:184 Size == (ULONG)(Width * Height)"));
    EXPECT_EQ(movie.WriteFrame(2, nullptr, 12), kRefused);
    std::fill(image.begin() + 8, image.end(), static_cast<unsigned char>(0)); // a frame starts black
    EXPECT_EQ(Played(), Colours(image) + Colours(Draw(4, 3, 0)));
}

TEST_F(AviFile, ASecondStreamReplacesTheFirstWhateverItsSize) {
    ASSERT_EQ(movie.InitializeStream(1, 1, palette, 25, 1, 0), 0u);
    ASSERT_EQ(movie.InitializeStream(8, 8, palette, frame), 0u);
    std::memset(frame, 99, 64);
    ASSERT_EQ(movie.InitializeStream(9, 8, palette, 25, 1, 0), 0u);
    EXPECT_EQ(movie.WriteFrame(0), kRefused) << "the frame is too small";
    ASSERT_EQ(movie.InitializeStream(8, 8, palette, 25, 1, 0), 0u);
    EXPECT_EQ(movie.WriteFrame(0), 0u);
    EXPECT_EQ(Played(L"3"), Colours(Pixels(64, 99)));
}

TEST_F(AviFile, WhatCannotBeIsRefusedAndChangesNothing) {
    EXPECT_EQ(movie.WriteFrame(0), kRefused) << "no stream";
    ASSERT_EQ(movie.InitializeStream(4, 2, palette, frame), 0u);
    std::memset(frame, 7, 8);
    constexpr int kSizes[][2] = {{0, 2}, {2, 0}, {-4, -2}, {65536, 65536}, {INT_MIN, INT_MIN}};
    for (const auto& [width, height] : kSizes) {
        void* none = frame;
        EXPECT_EQ(movie.InitializeStream(width, height, palette, none), kRefused) << width << " by " << height;
        EXPECT_EQ(none, nullptr);
    }
    EXPECT_EQ(movie.WriteFrame(0), 0u);
    EXPECT_EQ(movie.Open(nullptr), kRefused);
    EXPECT_EQ(movie.InitializeStream(4, 2, palette, frame), kRefused) << "no file";
    EXPECT_EQ(Played(), Colours(Pixels(8, 7)));
}

TEST_F(AviFile, TheFirstFailureIsTheResultAndNothingStaysOpen) {
    const std::pair<Stub, std::array<unsigned long, 4>> kFailures[] = {
        {Failing("AVIFileOpenW", &AVIFileOpenW, AVIERR_INTERNAL), {kFailure, kRefused, kRefused, kRefused}},
        {Failing("AVIFileCreateStreamW", &AVIFileCreateStreamW, AVIERR_INTERNAL), {0, kFailure, kFailure, kRefused}},
        {Failing("AVIStreamSetFormat", &AVIStreamSetFormat, AVIERR_INTERNAL), {0, kFailure, kFailure, 0}},
        {Failing("AVIMakeCompressedStream", &AVIMakeCompressedStream, AVIERR_INTERNAL), {0, 0, kFailure, kRefused}},
        {Failing("AVIStreamWrite", &AVIStreamWrite, AVIERR_INTERNAL), {0, 0, 0, kFailure}},
    };
    for (const auto& [stub, expected] : kFailures) {
        const ImportPatch patch(stub);
        const std::array results{movie.Open(path.c_str()), movie.InitializeStream(8, 4, palette, frame),
                                 movie.InitializeStream(8, 4, palette, 25, 1, 0), Write(0, Draw(8, 4, 0))};
        EXPECT_EQ(results, expected) << stub.name;
        movie.Close();
        EXPECT_TRUE(DeleteFileW(path.c_str())) << stub.name;
    }
}

TEST_F(AviFile, CopiesShareTheFileUntilTheLastIsClosed) {
    ASSERT_EQ(movie.InitializeStream(8, 4, palette, frame), 0u);
    CAviFile copy(movie);
    CAviFile assigned;
    assigned = copy;
    movie.Close();
    EXPECT_EQ(movie.WriteFrame(0), kRefused);
    std::memset(frame, 5, 32); // the copies keep it
    EXPECT_EQ(copy.WriteFrame(0), 0u);
    EXPECT_NE(copy.InitializeStream(4, 2, palette, 25, 1, 0), 0u) << "the file has images";
    EXPECT_EQ(assigned.WriteFrame(1), 0u);
    copy.Close();
    EXPECT_FALSE(DeleteFileW(path.c_str())) << "it is open";
    assigned = movie; // closes
    EXPECT_EQ(Played(), Colours(Pixels(64, 5)));
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}
