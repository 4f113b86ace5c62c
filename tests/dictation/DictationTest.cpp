#include "media/Tone.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "support/UnixTool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace {

namespace fs = std::filesystem;

class Dictating : public testing::Test {
protected:
    Dictating() {
        std::ofstream(folder / L"tone.pcm", std::ios::binary) << tone::Sine(700, 3 * tone::kSecond);
        std::ofstream(folder / L"long.pcm", std::ios::binary) << tone::Sine(700, 120 * tone::kSecond);
    }

    std::wstring Order(const wchar_t* order, const wchar_t* file, const std::wstring& more = L"") {
        return Quoted(Beside(L"dictation.exe")) + order + L" " + Quoted(folder / file) + more;
    }
    std::string Ask(const std::wstring& tool, const wchar_t* file, const wchar_t* options = L"") {
        const UnixAnswer answer = RunUnix(tool + L" '" + UnixPath(folder / file) + L"' " + options);
        EXPECT_EQ(answer.exitCode, 0) << answer.output;
        return answer.output;
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(Dictating, SoundIsRecordedCompressedAndExportedAsAWaveFile) {
    const ChildProcess player(Order(L"play", L"long.pcm"));
    std::string levels;
    unsigned long held = 0;
    while (held < tone::kSecond / 2) { // a busy machine may play later, or with gaps; the watchdog ends the wait
        ChildProcess recorder(Order(L"record", L"heard.gsm", L"3 0"));
        levels = recorder.WaitUntil("   0.0 s |");
        EXPECT_EQ(levels.size(), 11u) << "ten columns and the end of the display";
        for (std::string line; line != "(ended)"; levels += line) line = recorder.WaitUntil("");
        EXPECT_EQ(recorder.ExitCode(), 0u);
        EXPECT_EQ(ChildProcess(Order(L"convert", L"heard.gsm", Quoted(folder / L"heard.wav"))).ExitCode(), 0u);
        held = tone::Held(700, Ask(L"sox", L"heard.wav", L"-t raw -e unsigned -b 8 -"));
    }
    EXPECT_NE(levels.find('@'), std::string::npos) << levels;
    EXPECT_EQ(Ask(L"soxi -e", L"heard.wav"), "GSM\n");
    EXPECT_GE(std::atof(Ask(L"soxi -D", L"heard.wav").c_str()), 3.0);
}

TEST_F(Dictating, PlaysStepsAndConvertsThereAndBackAndReportsFailures) {
    ChildProcess player(Order(L"play", L"tone.pcm"));
    EXPECT_EQ(player.WaitUntil("3.0 of 3.0 s"), "");
    EXPECT_EQ(player.ExitCode(), 0u);
    ChildProcess steps(Order(L"step", L"tone.pcm", L"1.3 2"));
    EXPECT_EQ(steps.WaitUntil("1.4 s"), "");
    EXPECT_EQ(steps.WaitUntil("1.6 s"), "");
    EXPECT_EQ(steps.ExitCode(), 0u);

    EXPECT_EQ(ChildProcess(Order(L"convert", L"tone.pcm", Quoted(folder / L"tone.gsm"))).ExitCode(), 0u);
    EXPECT_EQ(fs::file_size(folder / L"tone.gsm"), 3u * 1625);
    EXPECT_EQ(ChildProcess(Order(L"convert", L"tone.gsm", Quoted(folder / L"back.pcm"))).ExitCode(), 0u);
    EXPECT_GT(tone::Held(700, Ask(L"cat", L"back.pcm")), 2 * tone::kSecond);

    EXPECT_EQ(ChildProcess(Order(L"play", L"missing/tone.pcm")).ExitCode(), 1u);
    EXPECT_EQ(ChildProcess(Order(L"play", L"mistyped.pcm")).ExitCode(), 1u);
    EXPECT_FALSE(fs::exists(folder / L"mistyped.pcm"));
    EXPECT_EQ(ChildProcess(Order(L"sing", L"tone.pcm")).ExitCode(), 1u);
    EXPECT_EQ(ChildProcess(Order(L"record", L"tone.pcm", L"1 2O")).ExitCode(), 1u) << "not a number";
    EXPECT_EQ(fs::file_size(folder / L"tone.pcm"), 3u * tone::kSecond);
}
