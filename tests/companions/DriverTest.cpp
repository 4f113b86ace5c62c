#include "media/Tone.h"

#include <tesselgsm/driver.h>

#include <gtest/gtest.h>
#include <windows.h>

#include <mmsystem.h>

#include <mmreg.h>

#include <msacm.h>

#include <string>

namespace {

WAVEFORMATEX Pcm(WORD bits, WORD channels = 1, DWORD rate = 8000) {
    const auto align = static_cast<WORD>(channels * bits / 8);
    return {WAVE_FORMAT_PCM, channels, rate, rate * align, align, bits, 0};
}

GSM610WAVEFORMAT Gsm(WORD samplesPerBlock = 320) {
    return {{WAVE_FORMAT_GSM610, 1, 8000, 1625, 65, 0, 2}, samplesPerBlock};
}

MMRESULT Query(WAVEFORMATEX source, GSM610WAVEFORMAT destination, DWORD flags = 0, HACMDRIVER driver = nullptr) {
    return acmStreamOpen(nullptr, driver, &source, &destination.wfx, nullptr, 0, 0, flags | ACM_STREAMOPENF_QUERY);
}

/// A stream between 8-bit PCM and GSM, opened without naming a driver.
struct Stream {
    explicit Stream(bool compress) {
        WAVEFORMATEX pcm = Pcm(8);
        GSM610WAVEFORMAT gsm = Gsm();
        WAVEFORMATEX* const formats[] = {&gsm.wfx, &pcm};
        EXPECT_EQ(acmStreamOpen(&handle, nullptr, formats[compress], formats[!compress], nullptr, 0, 0, 0), 0u);
    }
    ~Stream() { EXPECT_EQ(acmStreamClose(handle, 0), 0u); }
    Stream(Stream&&) = delete;

    /// @return the converted sound
    std::string Convert(std::string source, DWORD room, DWORD flags = ACM_STREAMCONVERTF_BLOCKALIGN) {
        std::string destination(room, '\0');
        auto* const from = reinterpret_cast<BYTE*>(source.data());
        auto* const to = reinterpret_cast<BYTE*>(destination.data());
        ACMSTREAMHEADER header{sizeof header, 0, 0, from, static_cast<DWORD>(source.size()), 0, 0, to, room, 0, 0, {}};
        EXPECT_EQ(acmStreamPrepareHeader(handle, &header, 0), 0u);
        EXPECT_EQ(acmStreamConvert(handle, &header, flags), 0u);
        EXPECT_EQ(acmStreamUnprepareHeader(handle, &header, 0), 0u);
        used = header.cbSrcLengthUsed;
        destination.resize(header.cbDstLengthUsed);
        return destination;
    }

    HACMSTREAM handle = nullptr;
    DWORD used = 0;
};

/// Installs the driver and opens it.
struct GsmDriver : testing::Test {
    GsmDriver() {
        EXPECT_EQ(TesselGsmInstall(), 0u);
        HACMDRIVERID id = nullptr;
        EXPECT_EQ(acmDriverID(reinterpret_cast<HACMOBJ>(Stream(true).handle), &id, 0), 0u);
        EXPECT_EQ(acmDriverOpen(&own, id, 0), 0u);
    }
    ~GsmDriver() override {
        EXPECT_EQ(acmDriverClose(own, 0), 0u);
        EXPECT_EQ(TesselGsmRemove(), 0u);
    }

    HACMDRIVER own = nullptr;
};

BOOL CALLBACK CollectFormat(HACMDRIVERID, ACMFORMATDETAILSW* found, DWORD_PTR list, DWORD) {
    for (const int number : {+found->pwfx->wFormatTag, +found->pwfx->wBitsPerSample, +found->pwfx->nBlockAlign}) {
        *reinterpret_cast<std::string*>(list) += std::to_string(number) + " ";
    }
    return TRUE;
}

} // namespace

TEST(GsmInstallation, IsCountedAndEndsWithTheLastRemovalOnceItsStreamsAreClosed) {
    const MMRESULT without = Query(Pcm(8), Gsm());
    EXPECT_EQ(TesselGsmRemove(), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(TesselGsmInstall() + TesselGsmInstall() + TesselGsmRemove(), 0u);
    {
        const Stream stream(true);
        EXPECT_EQ(TesselGsmRemove(), unsigned{ACMERR_BUSY});
    }
    EXPECT_EQ(Query(Pcm(8), Gsm()), 0u);
    EXPECT_EQ(TesselGsmRemove(), 0u);
    EXPECT_EQ(Query(Pcm(8), Gsm()), without);
    EXPECT_EQ(TesselGsmRemove(), MMSYSERR_INVALHANDLE);
}

TEST_F(GsmDriver, LeavesEverythingElseToTheSystem) {
    EXPECT_EQ(Query(Pcm(16), Gsm()), 0u) << "served by the system";
    const auto serves = [&](WAVEFORMATEX source, GSM610WAVEFORMAT destination, DWORD flags = 0) {
        const MMRESULT result = Query(source, destination, flags, own);
        EXPECT_TRUE(result == 0 || result == ACMERR_NOTPOSSIBLE) << result;
        return result == 0;
    };
    EXPECT_TRUE(serves(Pcm(8), Gsm()));
    EXPECT_FALSE(serves(Pcm(16), Gsm()) || serves(Pcm(8, 2), Gsm()) || serves(Pcm(8, 1, 11025), Gsm()) ||
                 serves(Pcm(8), Gsm(160)) || serves(Pcm(8), Gsm(), ACM_STREAMOPENF_ASYNC));
}

TEST_F(GsmDriver, DescribesAndSuggestsItsFormats) {
    ACMFORMATTAGDETAILSW tag{};
    tag.cbStruct = sizeof tag;
    EXPECT_EQ(acmFormatTagDetailsW(own, &tag, ACM_FORMATTAGDETAILSF_LARGESTSIZE), 0u);
    EXPECT_EQ(tag.cbFormatSize, sizeof(GSM610WAVEFORMAT));

    GSM610WAVEFORMAT format{};
    ACMFORMATDETAILSW details{sizeof details, 0, 0, 0, &format.wfx, sizeof format, L""};
    std::string formats;
    EXPECT_EQ(acmFormatEnumW(own, &details, CollectFormat, reinterpret_cast<DWORD_PTR>(&formats), 0), 0u);
    EXPECT_EQ(formats, "1 8 1 49 0 65 ");
    WAVEFORMATEX pcm = Pcm(8);
    GSM610WAVEFORMAT gsm = Gsm();
    EXPECT_EQ(acmFormatSuggest(own, &pcm, &format.wfx, sizeof format, 0), 0u);
    EXPECT_EQ(format.wSamplesPerBlock, 320);
    EXPECT_EQ(acmFormatSuggest(own, &gsm.wfx, &format.wfx, sizeof format, 0), 0u);
    EXPECT_EQ(format.wfx.wBitsPerSample, 8);
}

TEST_F(GsmDriver, AFreshStartForgetsTheSoundBefore) {
    const std::string sound = tone::Sine(1000, 3 * tone::kSecond);
    Stream compress(true);
    const std::string first = compress.Convert(sound, 3 * 1625);
    EXPECT_NE(compress.Convert(sound, 3 * 1625), first);
    EXPECT_EQ(compress.Convert(sound, 3 * 1625, ACM_STREAMCONVERTF_START | ACM_STREAMCONVERTF_BLOCKALIGN), first);
}

TEST_F(GsmDriver, ConvertsWholeBlocksThatFitAndFillsUpALastPieceOnlyWhenAllowed) {
    constexpr DWORD kAligned = ACM_STREAMCONVERTF_BLOCKALIGN;
    constexpr DWORD kRows[][6] = {{1, 700, 650, kAligned, 130, 640},
                                  {1, 700, 650, 0, 195, 700},
                                  {1, 700, 194, ACM_STREAMCONVERTF_END, 130, 640},
                                  {0, 650, 639, 0, 320, 65}};
    for (const auto& [compress, source, room, flags, made, used] : kRows) {
        Stream stream(compress != 0);
        EXPECT_EQ(stream.Convert(std::string(source, '\0'), room, flags).size(), made) << room;
        EXPECT_EQ(stream.used, used) << room;
    }
}

TEST_F(GsmDriver, SizesCoverTheConversionAndNeverWrap) {
    constexpr DWORD kSource = ACM_STREAMSIZEF_SOURCE;
    constexpr DWORD kDestination = ACM_STREAMSIZEF_DESTINATION;
    constexpr DWORD kMost = 0xFFFFFFFF;
    constexpr DWORD kRows[][4] = {
        {1, 8000, kSource, 1625}, {1, 8001, kSource, 1690},      {1, kMost, kSource, 13421773u * 65},
        {0, 1625, kSource, 8000}, {0, 0x34000000, kSource},      {1, kMost, kDestination},
        {1, 64, kDestination},    {1, 1689, kDestination, 8000}, {0, 8000, kDestination, 1625}};
    for (const auto& [compress, bytes, flags, expected] : kRows) { // expected 0: the driver refuses
        DWORD other = 0;
        const bool refused = acmStreamSize(Stream(compress != 0).handle, bytes, &other, flags) != 0;
        EXPECT_EQ(refused ? 0 : other, expected) << bytes;
    }
}
