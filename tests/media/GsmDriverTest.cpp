#include "Tone.h"

#include <tesselgsm/driver.h>

#include <gtest/gtest.h>
#include <windows.h>

#include <mmsystem.h>

#include <mmreg.h>

#include <msacm.h>

#include <string>
#include <vector>

namespace {

WAVEFORMATEX Pcm(WORD bits, WORD channels = 1, DWORD rate = 8000) {
    const auto align = static_cast<WORD>(channels * bits / 8);
    return {WAVE_FORMAT_PCM, channels, rate, rate * align, align, bits, 0};
}

GSM610WAVEFORMAT Gsm(WORD samplesPerBlock = 320) {
    return {{WAVE_FORMAT_GSM610, 1, 8000, 1625, 65, 0, 2}, samplesPerBlock};
}

MMRESULT Query(WAVEFORMATEX source, GSM610WAVEFORMAT destination, DWORD flags = 0) {
    return acmStreamOpen(nullptr, nullptr, &source, &destination.wfx, nullptr, 0, 0, flags | ACM_STREAMOPENF_QUERY);
}

class GsmDriver : public testing::Test {
protected:
    GsmDriver() { EXPECT_EQ(TesselGsmInstall(), 0u); }
    ~GsmDriver() override { EXPECT_EQ(TesselGsmRemove(), 0u); }
};

/// A stream between 8-bit PCM and GSM, opened without naming a driver.
struct Stream {
    explicit Stream(bool compress) {
        WAVEFORMATEX pcm = Pcm(8);
        GSM610WAVEFORMAT gsm = Gsm();
        EXPECT_EQ(compress ? acmStreamOpen(&handle, nullptr, &pcm, &gsm.wfx, nullptr, 0, 0, 0)
                           : acmStreamOpen(&handle, nullptr, &gsm.wfx, &pcm, nullptr, 0, 0, 0),
                  0u);
    }
    ~Stream() { EXPECT_EQ(acmStreamClose(handle, 0), 0u); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    /// @return what was made of it
    std::string Convert(std::string source, DWORD room, DWORD flags = ACM_STREAMCONVERTF_BLOCKALIGN) {
        std::string destination(room, '\0');
        ACMSTREAMHEADER header{};
        header.cbStruct = sizeof header;
        header.pbSrc = reinterpret_cast<BYTE*>(source.data());
        header.cbSrcLength = static_cast<DWORD>(source.size());
        header.pbDst = reinterpret_cast<BYTE*>(destination.data());
        header.cbDstLength = room;
        EXPECT_EQ(acmStreamPrepareHeader(handle, &header, 0), 0u);
        EXPECT_EQ(acmStreamConvert(handle, &header, flags), 0u);
        EXPECT_EQ(acmStreamUnprepareHeader(handle, &header, 0), 0u);
        used = header.cbSrcLengthUsed;
        destination.resize(header.cbDstLengthUsed);
        return destination;
    }

    /// @return the other length; 0 when the driver refuses
    DWORD Size(DWORD bytes, DWORD flags) const {
        DWORD other = 0;
        return acmStreamSize(handle, bytes, &other, flags) == 0 ? other : 0;
    }

    HACMSTREAM handle = nullptr;
    DWORD used = 0;
};

/// The driver by its name, opened.
struct OpenDriver {
    OpenDriver() { EXPECT_EQ(acmDriverEnum(Look, reinterpret_cast<DWORD_PTR>(this), 0), 0u); }
    ~OpenDriver() { EXPECT_EQ(acmDriverClose(handle, 0), 0u); }
    OpenDriver(const OpenDriver&) = delete;
    OpenDriver& operator=(const OpenDriver&) = delete;

    static BOOL CALLBACK Look(HACMDRIVERID id, DWORD_PTR self, DWORD) {
        auto& details = reinterpret_cast<OpenDriver*>(self)->details;
        details.cbStruct = sizeof details;
        EXPECT_EQ(acmDriverDetailsW(id, &details, 0), 0u);
        if (std::wstring(details.szShortName) != L"Tessel GSM") return TRUE;
        EXPECT_EQ(acmDriverOpen(&reinterpret_cast<OpenDriver*>(self)->handle, id, 0), 0u);
        return FALSE;
    }

    ACMDRIVERDETAILSW details{};
    HACMDRIVER handle = nullptr;
};

TEST(GsmInstallation, IsCountedAndGoesWithTheLastRemovalOnceItsStreamsAreClosed) {
    const MMRESULT without = Query(Pcm(8), Gsm());
    EXPECT_EQ(TesselGsmRemove(), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(TesselGsmInstall(), 0u);
    EXPECT_EQ(TesselGsmInstall(), 0u);
    EXPECT_EQ(TesselGsmRemove(), 0u);
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
    const OpenDriver own;
    const auto refused = [&](WAVEFORMATEX source, GSM610WAVEFORMAT destination, DWORD flags = 0) {
        return acmStreamOpen(nullptr, own.handle, &source, &destination.wfx, nullptr, 0, 0,
                             flags | ACM_STREAMOPENF_QUERY) == ACMERR_NOTPOSSIBLE;
    };
    EXPECT_FALSE(refused(Pcm(8), Gsm()));
    EXPECT_TRUE(refused(Pcm(16), Gsm()));
    EXPECT_TRUE(refused(Pcm(8, 2), Gsm()));
    EXPECT_TRUE(refused(Pcm(8, 1, 11025), Gsm()));
    EXPECT_TRUE(refused(Pcm(8), Gsm(160)));
    EXPECT_TRUE(refused(Pcm(8), Gsm(), ACM_STREAMOPENF_ASYNC));
}

BOOL CALLBACK CollectFormat(HACMDRIVERID, ACMFORMATDETAILSW* found, DWORD_PTR list, DWORD) {
    reinterpret_cast<std::vector<std::string>*>(list)->push_back(std::to_string(found->dwFormatTag) + "/" +
                                                                 std::to_string(found->pwfx->wBitsPerSample) + "/" +
                                                                 std::to_string(found->pwfx->nBlockAlign));
    return TRUE;
}

TEST_F(GsmDriver, TellsItsFormats) {
    const OpenDriver own;
    EXPECT_EQ(own.details.cFormatTags, 2u);
    ACMFORMATTAGDETAILSW tag{};
    tag.cbStruct = sizeof tag;
    EXPECT_EQ(acmFormatTagDetailsW(own.handle, &tag, ACM_FORMATTAGDETAILSF_LARGESTSIZE), 0u);
    EXPECT_EQ(tag.dwFormatTag, unsigned{WAVE_FORMAT_GSM610});
    EXPECT_EQ(tag.cbFormatSize, sizeof(GSM610WAVEFORMAT));

    GSM610WAVEFORMAT format{};
    ACMFORMATDETAILSW details{};
    details.cbStruct = sizeof details;
    details.pwfx = &format.wfx;
    details.cbwfx = sizeof format;
    std::vector<std::string> formats;
    EXPECT_EQ(acmFormatEnumW(own.handle, &details, CollectFormat, reinterpret_cast<DWORD_PTR>(&formats), 0), 0u);
    EXPECT_EQ(formats, (std::vector<std::string>{"1/8/1", "49/0/65"}));

    WAVEFORMATEX pcm = Pcm(8);
    GSM610WAVEFORMAT gsm = Gsm();
    EXPECT_EQ(acmFormatSuggest(own.handle, &pcm, &format.wfx, sizeof format, 0), 0u);
    EXPECT_EQ(format.wSamplesPerBlock, 320);
    EXPECT_EQ(acmFormatSuggest(own.handle, &gsm.wfx, &format.wfx, sizeof format, 0), 0u);
    EXPECT_EQ(format.wfx.wBitsPerSample, 8);
    format.wfx.wBitsPerSample = 16;
    EXPECT_EQ(acmFormatSuggest(own.handle, &gsm.wfx, &format.wfx, sizeof format, ACM_FORMATSUGGESTF_WBITSPERSAMPLE),
              unsigned{ACMERR_NOTPOSSIBLE});
}

TEST_F(GsmDriver, AFreshStartForgetsTheSoundBefore) {
    const std::string sound = tone::Sine(1000, 3 * tone::kSecond);
    Stream compress(true);
    const std::string first = compress.Convert(sound, 3 * 1625);
    EXPECT_NE(compress.Convert(sound, 3 * 1625), first);
    EXPECT_EQ(compress.Convert(sound, 3 * 1625, ACM_STREAMCONVERTF_START | ACM_STREAMCONVERTF_BLOCKALIGN), first);
}

TEST_F(GsmDriver, ConvertsWholeBlocksThatFitAndFillsUpALastPieceOnlyWhenAllowed) {
    Stream compress(true);
    EXPECT_EQ(compress.Convert(tone::Sine(500, 700), 650).size(), 130u);
    EXPECT_EQ(compress.used, 640u);
    EXPECT_EQ(compress.Convert(tone::Sine(500, 700), 650, 0).size(), 195u);
    EXPECT_EQ(compress.used, 700u);
    EXPECT_EQ(compress.Convert(tone::Sine(500, 700), 194, ACM_STREAMCONVERTF_END).size(), 130u);
    EXPECT_EQ(compress.used, 640u);

    Stream expand(false);
    EXPECT_EQ(expand.Convert(std::string(129, '\0'), 1000, 0).size(), 320u);
    EXPECT_EQ(expand.used, 65u);
    EXPECT_EQ(expand.Convert(std::string(650, '\0'), 639, 0).size(), 320u);
}

TEST_F(GsmDriver, SizesCoverTheConversionAndNeverWrap) {
    const Stream compress(true);
    EXPECT_EQ(compress.Size(8000, ACM_STREAMSIZEF_SOURCE), 1625u);
    EXPECT_EQ(compress.Size(8001, ACM_STREAMSIZEF_SOURCE), 1690u);
    EXPECT_EQ(compress.Size(1689, ACM_STREAMSIZEF_DESTINATION), 8000u);
    EXPECT_EQ(compress.Size(0xFFFFFFFF, ACM_STREAMSIZEF_SOURCE), 13421773u * 65);
    EXPECT_EQ(compress.Size(0xFFFFFFFF, ACM_STREAMSIZEF_DESTINATION), 0u);
    EXPECT_EQ(compress.Size(64, ACM_STREAMSIZEF_DESTINATION), 0u);

    const Stream expand(false);
    EXPECT_EQ(expand.Size(1625, ACM_STREAMSIZEF_SOURCE), 8000u);
    EXPECT_EQ(expand.Size(0x34000000, ACM_STREAMSIZEF_SOURCE), 0u);
    EXPECT_EQ(expand.Size(8000, ACM_STREAMSIZEF_DESTINATION), 1625u);
}

} // namespace
