#include "Tone.h"

#include <support/ImportPatch.h>
#include <support/UnixTool.h>
#include <tessel/media/audio.h>
#include <tessel/media/audioconvert.h>
#include <tesselgsm/driver.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace {

/// Memory of zeros with a page behind it that ends whoever touches it.
class Fenced {
public:
    explicit Fenced(std::size_t size) {
        const std::size_t pages = (size + kPage - 1) / kPage * kPage;
        m_memory = static_cast<char*>(VirtualAlloc(nullptr, pages + kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD before = 0;
        VirtualProtect(m_memory + pages, kPage, PAGE_NOACCESS, &before);
        m_start = m_memory + pages - size;
    }
    ~Fenced() { VirtualFree(m_memory, 0, MEM_RELEASE); }
    Fenced(const Fenced&) = delete;
    Fenced& operator=(const Fenced&) = delete;

    char* Start() const { return m_start; }

private:
    static constexpr std::size_t kPage = 4096;
    char* m_memory;
    char* m_start;
};

/// What a conversion gave.
struct Result {
    Result(CAudioConvert& converter, char* source, unsigned long size, unsigned long room) {
        EXPECT_EQ(converter.Convert(source, buffer, size, ulDst, room, ulAllocDst), 0u);
    }
    ~Result() { EXPECT_EQ(GlobalFree(buffer), nullptr); }
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;

    std::string Text() const { return {buffer, ulAllocDst}; }

    char* buffer = nullptr;
    unsigned long ulDst = 1;
    unsigned long ulAllocDst = 1;
};

std::string Converted(int compress, std::string source) {
    CAudioConvert converter(compress);
    const auto size = static_cast<unsigned long>(source.size());
    return Result(converter, source.data(), size, size).Text();
}

class AudioConvert : public testing::Test {
protected:
    AudioConvert() { EXPECT_EQ(TesselGsmInstall(), 0u); }
    ~AudioConvert() override { EXPECT_EQ(TesselGsmRemove(), 0u); }
};

/// A file of the temporary folder.
struct SoundFile {
    ~SoundFile() { std::filesystem::remove(path); }
    /// What a command says of the file, which it names $F.
    std::string Ask(const std::wstring& command) const {
        return RunUnix(L"F='" + UnixPath(path) + L"'; " + command).output;
    }

    std::filesystem::path path = std::filesystem::temp_directory_path() / "tessel-convert.wav";
};

void ExpectTone(double hertz, const std::string& sound) {
    EXPECT_NEAR(tone::AmplitudeAt(hertz, sound), 90, 18);
    EXPECT_LT(tone::AmplitudeAt(hertz * 1.5, sound), 5);
}

TEST_F(AudioConvert, UnderstandsForeignCodecsAndTheyUnderstandIt) {
    CAudioConvert converter(1);
    std::string sound = tone::Sine(1000, 3 * tone::kSecond);
    std::string gsm = Result(converter, sound.data(), 3 * tone::kSecond, 3 * tone::kSecond).Text();
    EXPECT_TRUE(Result(converter, sound.data(), 3 * tone::kSecond, 3 * tone::kSecond).Text() == gsm) << "starts anew";
    ASSERT_EQ(gsm.size(), 3 * 1625u);
    const SoundFile file;
    ASSERT_EQ(CAudio::CreateWAV(file.path.c_str(), gsm.data(), 3 * 1625, 1), 0u);
    ExpectTone(1000, file.Ask(L"sox -D $F -t u8 -"));

    EXPECT_EQ(file.Ask(L"sox -n -r 8000 -c 1 -e gsm-full-rate $F synth 3 sine 700 vol 0.7"), "");
    std::ifstream(file.path, std::ios::binary).seekg(60).read(gsm.data(), 3 * 1625); // behind the head
    ExpectTone(700, Converted(0, gsm));
}

HGLOBAL WINAPI AllocateFenced(UINT, SIZE_T size) {
    static std::unique_ptr<Fenced> fenced;
    fenced = std::make_unique<Fenced>(size);
    return fenced->Start();
}

TEST_F(AudioConvert, Odd130NumberOfWholeChunksDecidesAndNothingOutsideTheBuffersIsTouched) {
    const struct {
        int compress;
        unsigned long source; ///< bytes of it
        unsigned long room;   ///< for so many bytes of source
        unsigned long whole;  ///< bytes that the whole blocks make
        unsigned long done;   ///< bytes that are really made
    } cases[] = {
        {1, 7999, 8000, 4 * 325, 0},                    // less than a chunk
        {1, 36000, 40000, 22 * 325, 6500 + 780},        // 4.5
        {1, 44000, 48000, 27 * 325, 8125},              // 5.5
        {1, 48000, 9700, 9750, 1625 + 325},             // room for 1.2
        {0, 8937, 9750, 27 * 1600, 40000},              // 5.5
        {0, 10562, 11375, 32 * 1600, 48000 + 12 * 320}, // 6.5
        {0, 3250, 400, 16000, 1600},                    // room for a block
    };
    const std::string sound = tone::Sine(440, 8 * tone::kSecond);
    const std::string gsm = Converted(1, sound);
    const ImportPatch fenced(L"Tessel.dll", "GlobalAlloc", AllocateFenced);
    for (const auto& sizes : cases) {
        SCOPED_TRACE(sizes.source);
        const Fenced source(sizes.source);
        (sizes.compress ? sound : gsm).copy(source.Start(), sizes.source);
        CAudioConvert converter(sizes.compress);
        char* made = nullptr;
        unsigned long whole = 0;
        unsigned long room = 0;
        converter.Convert(source.Start(), made, sizes.source, whole, sizes.room, room);
        EXPECT_EQ(whole, sizes.whole);
        EXPECT_EQ(room, sizes.compress ? sizes.room / 1600 * 325 : sizes.room / 325 * 1600);
        EXPECT_EQ(std::string(made, room).find_last_not_of('\0') + 1, sizes.done);
    }
}

TEST_F(AudioConvert, Odd131FailuresAreNotToldAndLeaveZeros) {
    const std::string sound = tone::Sine(440, 3 * tone::kSecond);
    {
        const ImportPatch second(Failing("acmStreamConvert", &acmStreamConvert, MMSYSERR_ERROR, 0, 2));
        const std::string gsm = Converted(1, sound);
        EXPECT_EQ(gsm.substr(1625, 1625), std::string(1625, '\0'));
        EXPECT_NE(gsm.substr(3250), std::string(1625, '\0'));
    }
    const ImportPatch patch(Failing("acmStreamOpen", &acmStreamOpen, ACMERR_NOTPOSSIBLE));
    EXPECT_EQ(Converted(1, sound), std::string(3 * 1625, '\0'));
}

TEST(AudioConvertAlone, SizesThatExceed32BitsAndMissingSourcesConvertNothing) {
    CAudioConvert decompress(0);
    char byte = 0;
    const Result unallocated(decompress, &byte, 1, 0xFFFFFFFF);
    EXPECT_EQ(unallocated.buffer, nullptr);
    EXPECT_EQ(unallocated.ulAllocDst, 0u);
    const Result missing(decompress, nullptr, 0xFFFFFFFF, 325);
    EXPECT_EQ(missing.ulDst, 0u);
    EXPECT_EQ(missing.Text(), std::string(1600, '\0'));
}

/// Opens the protected steps.
struct Steps : CAudioConvert {
    using CAudioConvert::CAudioConvert;
    using CAudioConvert::CloseStream;
    using CAudioConvert::ConvertBuffer;
    using CAudioConvert::InitStreamHeader;
    using CAudioConvert::OpenStream;
    using CAudioConvert::PrepareStreamHeader;
    using CAudioConvert::UnprepareStreamHeader;
};

TEST_F(AudioConvert, CopiesShareAnOpenStreamThatTheLastOneCloses) {
    Steps second(0);
    {
        Steps first(1);
        ASSERT_EQ(first.OpenStream(), 0u);
        EXPECT_EQ(first.OpenStream(), 1u);
        second = first;
        const Steps third(first);
        EXPECT_EQ(first.CloseStream(), 0u);
    }
    std::string sound = tone::Sine(440, 8000);
    std::string gsm(1625, '\0');
    ACMSTREAMHEADER header;
    second.InitStreamHeader(&header);
    header.pbSrc = reinterpret_cast<BYTE*>(sound.data());
    header.pbDst = reinterpret_cast<BYTE*>(gsm.data());
    EXPECT_EQ(second.PrepareStreamHeader(&header), 0u);
    EXPECT_EQ(second.ConvertBuffer(&header), 0u);
    EXPECT_EQ(header.cbDstLengthUsed, 1625u);
    EXPECT_EQ(second.UnprepareStreamHeader(&header), 0u);
    EXPECT_EQ(second.UnprepareStreamHeader(&header), 0u);
    EXPECT_EQ(second.CloseStream(), 0u);
    EXPECT_EQ(second.CloseStream(), 1u);
}

} // namespace
