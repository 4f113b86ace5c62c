#include "Recorder.h"
#include "Tone.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/TemporaryFolder.h"
#include "support/UnixTool.h"

#include <tesselgsm/driver.h>

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace {

namespace fs = std::filesystem;

/// A kind of file and its sizes.
struct Kind {
    int convert;
    unsigned long block, maximum;
};
constexpr Kind kKinds[] = {{0, 1600, 2400000}, {1, 325, 487500}};

template <class Function, class Tag = decltype([] {})> Stub Refusing(const char* name, Function* real) {
    return Failing<MMRESULT, Function, Tag>(name, real, MMSYSERR_NODRIVER);
}

const Stub kStartCalls[] = {Refusing("waveInOpen", &waveInOpen),
                            Refusing("acmStreamOpen", &acmStreamOpen),
                            Refusing("waveInPrepareHeader", &waveInPrepareHeader),
                            Refusing("acmStreamPrepareHeader", &acmStreamPrepareHeader),
                            Refusing("waveInAddBuffer", &waveInAddBuffer),
                            Refusing("waveInStart", &waveInStart),
                            Refusing("waveOutOpen", &waveOutOpen),
                            Refusing("waveOutPause", &waveOutPause),
                            Refusing("waveOutPrepareHeader", &waveOutPrepareHeader),
                            Refusing("waveOutWrite", &waveOutWrite),
                            Refusing("waveOutRestart", &waveOutRestart),
                            Refusing("acmStreamConvert", &acmStreamConvert)};

struct Audio : testing::Test {
    TemporaryFolder folder;
    Reports reports;

    Audio() { EXPECT_EQ(TesselGsmInstall(), 0u); }
    ~Audio() override { EXPECT_EQ(TesselGsmRemove(), 0u); }
    fs::path File(const std::string& name, const std::string& bytes = {}) const {
        std::ofstream(folder / name, std::ios::binary) << bytes;
        return folder / name;
    }
    fs::path File(const std::string& name, unsigned long size) const { return File(name, std::string(size, '\0')); }
    /// Records while a player plays the rest of its sound, again and again until the recording holds a tone: a busy
    /// machine may swallow it. @return the recording as another program understands it
    std::string Listen(Recorder& recorder, Recorder& player, double hertz) const {
        const fs::path wave = folder / "recorded.wav";
        const unsigned long start = player->m_ulDataRead;
        std::string heard;
        while (tone::Held(hertz, heard) < tone::kSecond / 5) {
            recorder->m_ulDataRead = 0;
            player->m_ulDataRead = start;
            EXPECT_EQ(recorder.Record(), 0u);
            recorder.WaitFor(1600);
            EXPECT_EQ(player.Play(), 0u);
            player.Finish();
            recorder.End();
            const std::string recorded = BytesOf(recorder.GetPath());
            EXPECT_EQ(recorded.size(), recorder->m_ulDataWrite);
            EXPECT_EQ(CAudio::CreateWAV(wave.c_str(), recorded.data(), recorder->m_ulDataWrite, recorder->m_bConvert),
                      0u);
            heard = RunUnix(L"sox '" + UnixPath(wave) + L"' -t raw -e unsigned -b 8 -").output;
        }
        return heard;
    }
};

bool IsIdle(Recorder& recorder) {
    return recorder->m_nMode == CAudio::MODE_IDLE && !recorder->m_bTimer && !recorder->m_bStop &&
           recorder->m_hFile == nullptr && recorder->m_hStream == nullptr && recorder->m_hWaveIn == nullptr &&
           recorder->m_hWaveOut == nullptr && (recorder->m_WaveHeader[0].dwFlags & WHDR_PREPARED) == 0 &&
           (recorder->m_StreamHeader[0].fdwStatus & ACMSTREAMHEADER_STATUSF_PREPARED) == 0;
}

} // namespace

TEST_F(Audio, AToneIsRecordedPlayedAndUnderstoodByOtherPrograms) {
    for (const Kind& kind : kKinds) {
        Recorder player(0, File("tone", tone::Sine(1000, 9600)));
        Recorder recorder(kind.convert, File("recorded"));
        Listen(recorder, player, 1000);
        EXPECT_EQ(recorder->m_ulDataWrite % kind.block, 0u) << kind.convert;
        EXPECT_EQ(recorder.GetMod(), 1);
    }
    Recorder player(1, folder / "recorded");
    Recorder recorder(0, File("heard"));
    Listen(recorder, player, 1000);
    EXPECT_EQ(player->m_ulDataRead, player->m_ulDataWrite);
}

TEST_F(Audio, PlayingGoesOnWhereItWasStopped) {
    Recorder player(0, File("tones", tone::Sine(1000, 4800) + tone::Sine(2000, 9600)));
    do { // again if a busy machine stops it too late
        player->m_ulDataRead = 0;
        player.quits = player.controls = 0;
        ASSERT_EQ(player.Play(), 0u);
        player.WaitFor(4800);
        player.End();
        EXPECT_TRUE(player->m_ulDataRead >= 4800 && player->m_ulDataRead % 1600 == 0) << player->m_ulDataRead;
    } while (player->m_ulDataRead > 8000);
    EXPECT_TRUE(IsIdle(player));
    EXPECT_EQ(player.CompressBuffers(), 0u) << "nothing to do";
    EXPECT_EQ(player.drawn, "1 1");
    EXPECT_EQ(player.quits, 1);
    EXPECT_EQ(player.controls, 1);
    Recorder recorder(0, File("recorded"));
    EXPECT_EQ(tone::Held(1000, Listen(recorder, player, 2000)), 0u);
    EXPECT_EQ(player->m_ulDataRead, 14400u);
}

TEST_F(Audio, ARecordingReplacesWhatFollowsTheReadPositionAndStopsByItselfAtFiveMinutes) {
    for (const Kind& kind : kKinds) {
        const std::string before(kind.block, 'a');
        Recorder recorder(kind.convert, File("recorded", before + std::string(9 * kind.block, 'b')));
        recorder->m_ulDataRead = kind.block;
        ASSERT_EQ(recorder.Record(), 0u);
        recorder.WaitFor(3200);
        recorder.End();
        const std::string after = BytesOf(folder / "recorded");
        EXPECT_EQ(after.substr(0, kind.block), before);
        EXPECT_EQ(after.find(std::string(65, 'b')), std::string::npos) << kind.convert;
        EXPECT_EQ(recorder->m_ulDataRead, after.size());

        Recorder longest(kind.convert, File("long", kind.maximum - kind.block));
        longest->m_ulDataRead = longest->m_ulDataWrite;
        ASSERT_EQ(longest.Record(), 0u);
        longest.Finish();
        EXPECT_EQ(fs::file_size(folder / "long"), kind.maximum);
        EXPECT_EQ(longest.stops, 1);
    }
}

TEST_F(Audio, Odd117AStepPlaysOneBlockAndItsPositionStays) {
    for (const Kind& kind : kKinds) {
        Recorder player(kind.convert, File("steps", 2 * kind.block));
        for (const unsigned long step : {1ul, 2ul}) {
            ASSERT_EQ(player.PlayStep(), 0u);
            player.Finish();
            EXPECT_EQ(player.stops, static_cast<int>(step));
            EXPECT_EQ(player->m_ulDataRead, step * kind.block);
            EXPECT_EQ(player->m_Play.ulPosition, step * 1600);
            EXPECT_TRUE(IsIdle(player));
        }
    }
}

TEST_F(Audio, Odd114WhatComesFromTheDeviceBecomesWholeBlocksOfTheFile) {
    constexpr unsigned long kCases[][5] = {{0, 0, 1601, 1601, 3200},       {3200, 4800, 0, 1600, 4800},
                                           {4800, 3200, 0, 0, 4800},       {0, 2400000, 0, 8000, 8000},
                                           {0, 0, 0xFFFFFFFF, 8000, 8000}, {2398400, 0, 8000, 1600, 2400000}};
    for (const auto& [before, reached, recorded, used, after] : kCases) {
        Recorder recorder(0, File("blocks", before));
        recorder->m_Record.ulPosition = reached;
        std::fill_n(recorder->m_cAudio[1], 8000, 'x');
        recorder.Receive(1, recorded);
        recorder.ProcessWimClose(nullptr);
        std::string blocks = std::string(before, '\0') + std::string(used, 'x');
        blocks.resize(after);
        EXPECT_TRUE(BytesOf(folder / "blocks") == blocks) << before << " " << reached << " " << recorded;
        EXPECT_EQ(recorder->m_ulDataRead, after);
        EXPECT_EQ(recorder.stops, 0);
    }
}

TEST_F(Audio, Odd111And112AFullDiskStopsTheRunAndDataBeyondTheLimitAreReported) {
    Recorder recorder(0, File("full"));
    {
        const ImportPatch disk("WriteFile", &WriteFile, [](HANDLE file, LPCVOID data, DWORD, DWORD* written, auto...) {
            return WriteFile(file, data, 2000, written, nullptr);
        });
        recorder.Receive(0, 8000);
    }
    EXPECT_EQ(recorder.stops, 1);
    EXPECT_EQ(recorder->m_ulDataWrite, 2000u);
    EXPECT_EQ(recorder.GetMod(), 0);

    Recorder beyond(0, File("beyond", 2400001));
    beyond.Receive(0, 8000);
    EXPECT_EQ(beyond->m_ulDataWrite, 2408001u);
    EXPECT_EQ(reports.Take(), Texts{"CAudio:478 m_ulDataWrite <= m_ulMaxCompress"});
}

TEST_F(Audio, Odd113WhatIsReadEndsWithTheDataAndIsFilledUp) {
    Recorder player(0, File("short", std::string(9700, 'x')));
    std::fill_n(player->m_cAudio[1], 8000, 'y');
    player.Pretend(CAudio::MODE_PLAY);
    EXPECT_EQ(player.ReadBuffers(), 0u);
    EXPECT_EQ(reports.Take(), Texts{"CAudio:646 (dwUse % m_ulBlockCompress) == 0"});
    EXPECT_EQ(std::string(player->m_cAudio[1], 8000), std::string(1700, 'x') + std::string(6300, '\0'));
    player->m_cAudio[1][0] = 'z';
    EXPECT_EQ(player.ReadBuffers(), 0u);
    EXPECT_EQ(player->m_cAudio[1][0], 'z') << "at the end nothing is read";
    player->m_ulDataWrite = 12000;
    EXPECT_EQ(player.ReadBuffer(nullptr), 1u);
    EXPECT_EQ(player.ReadBuffers(), 1u) << "the file is shorter than it was";
    EXPECT_EQ(player->m_ulDataRead, 9700u);
}

TEST_F(Audio, NotificationsWithForeignRecordsStopTheRun) {
    Recorder other(0, File("other"));
    Recorder recorder(0, File("recorded"));
    recorder.Pretend(CAudio::MODE_RECORD);
    recorder->m_WaveHeader[0].dwUser = 2;
    recorder->m_WaveHeader[1].dwBytesRecorded = 1600;
    int stops = 0;
    for (WAVEHDR* header : {static_cast<WAVEHDR*>(nullptr), reinterpret_cast<WAVEHDR*>(8), &other->m_WaveHeader[0],
                            &recorder->m_WaveHeaderStep, &recorder->m_WaveHeader[0]}) {
        recorder.ProcessWimData(nullptr, header);
        EXPECT_EQ(recorder.stops, ++stops);
    }
    EXPECT_EQ(recorder->m_ulDataWrite, 0u);
    ACMSTREAMHEADER& header = recorder->m_StreamHeader[0];
    header.dwDstUser = 0xFFFFFFFF;
    recorder->m_StreamHeader[1].dwDstUser = 1600;
    EXPECT_EQ(recorder.WriteBuffers(), 0u);
    EXPECT_EQ(recorder.WriteBuffer(nullptr), 1u);
    EXPECT_EQ(recorder->m_ulDataWrite, 9600u);
    recorder.SetUncompressUse(&header, 0xFFFFFFFF);
    EXPECT_EQ(header.dwSrcUser, 8000u);

    Recorder player(0, File("played", 16000ul));
    ASSERT_EQ(player.Play(), 0u);
    player->m_ulDataRead = 0;
    player.ProcessWomDone(nullptr, &other->m_WaveHeader[0]);
    EXPECT_EQ(player.stops, 1);
    player.Finish();
}

TEST_F(Audio, Odd116ThePositionIsRoundedDownAndReachesOnlyWholeLimits) {
    constexpr unsigned long kCases[][7] = {
        {0, 16000, 1599, TIME_BYTES, 0, 0, 0},         {1600, 16000, 3201, TIME_BYTES, 0, 4800, 0},
        {0, 3200, 0xFFFFFFFF, TIME_BYTES, 0, 3200, 1}, {0xFFFFFFFF, 3200, 9, TIME_BYTES, 0, 3200, 1},
        {0, 4000, 16000, TIME_BYTES, 0, 3200, 0},      {1600, 16000, 1600, TIME_MS, 1, 77, 0}};
    MMTIME position{};
    const auto answer = [&](auto, MMTIME* time, UINT) { return *time = position, MMRESULT{MMSYSERR_NOERROR}; };
    const ImportPatch input("waveInGetPosition", &waveInGetPosition, answer);
    const ImportPatch output("waveOutGetPosition", &waveOutGetPosition, answer);
    Recorder recorder(0, File("times", 16000ul));
    for (const auto& [base, limit, bytes, type, result, reached, stops] : kCases) {
        for (const auto mode : {CAudio::MODE_RECORD, CAudio::MODE_PLAY}) {
            recorder->m_nMode = mode;
            recorder.stops = 0;
            position.wType = type;
            position.u.cb = bytes;
            AUDIO_TIME& time = mode == CAudio::MODE_RECORD ? recorder->m_Record : recorder->m_Play;
            time = {77, base, limit};
            EXPECT_EQ(recorder.UpdateDeviceTime(), result);
            EXPECT_EQ(time.ulPosition, reached) << limit << " " << bytes;
            EXPECT_EQ(recorder.stops, static_cast<int>(stops));
        }
    }
    recorder.ProcessTimer(CAudio::TIMER_ID);
    EXPECT_EQ(recorder.drawn, "") << "the timer does not run";
}

TEST_F(Audio, TimesAreInSecondsOfTheMode) {
    Recorder recorder(0, File("times", 6500ul));
    recorder->m_ulDataRead = 3250;
    recorder->m_Record.ulPosition = 48000;
    recorder->m_Play.ulPosition = 40000;
    constexpr std::tuple<int, int, double, double> kCases[] = {
        {0, 0, 0.40625, 0.8125}, {0, 1, 2, 4}, {1, 0, 6, 300}, {1, 1, 6, 300}, {2, 0, 5, 0.8125}, {3, 1, 5, 4}};
    for (const auto& [mode, convert, current, total] : kCases) {
        recorder->m_nMode = mode;
        recorder.SetConvert(convert);
        std::pair<double, double> times;
        EXPECT_EQ(recorder.GetTimeCurrent(times.first) + recorder.GetTimeTotal(times.second), 0u);
        EXPECT_EQ(times, std::pair(current, total)) << mode;
    }
}

TEST_F(Audio, Odd110And118And119AStartThatFailsLeavesNothingOpenAndATruncatedFile) {
    Recorder recorder(1, File("gsm", 3250ul));
    const auto expectFailure = [&](unsigned long (Recorder::*start)(), unsigned long from) {
        recorder->m_ulDataRead = from;
        EXPECT_EQ((recorder.*start)(), 1u);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        EXPECT_TRUE(IsIdle(recorder));
    };
    for (const Stub& stub : kStartCalls) {
        SCOPED_TRACE(stub.name);
        const ImportPatch patch(stub);
        const bool plays = stub.name.starts_with("waveOut") || stub.name == "acmStreamConvert";
        if (!plays) expectFailure(&Recorder::Record, 3250);
        if (stub.name.starts_with("waveIn")) continue;
        expectFailure(&Recorder::PlayStep, 1625);
        expectFailure(&Recorder::Play, 1625);
    }
    EXPECT_EQ(recorder->m_ulDataRead, 0u) << "by the close of the device that was open";
    EXPECT_EQ(recorder.CompressBuffers() + recorder.WriteBuffers() + recorder.UnprepareStreamHeader(nullptr), 3u);
    unsigned int error = 77;
    wchar_t text[] = L"text";
    recorder.GetError(error, text);
    EXPECT_EQ(std::to_wstring(error) + text, L"77text");
    EXPECT_EQ(fs::file_size(folder / "gsm"), 3250u);
    for (const auto second : {&Recorder::Play, &Recorder::Record}) {
        recorder->m_ulDataRead = 0;
        EXPECT_EQ(recorder.Play(), 0u);
        EXPECT_EQ(recorder.OpenWaveDevice() + recorder.OpenStream(), 2u) << "both are open";
        expectFailure(second, 3250);
    }
    const ImportPatch none(Refusing("waveInOpen", &waveInOpen));
    expectFailure(&Recorder::Record, 1625);
    EXPECT_EQ(fs::file_size(folder / "gsm"), 1625u);
}

TEST_F(Audio, ADeviceThatVanishesStopsTheRun) {
    for (const Stub& stub :
         {Refusing("waveInAddBuffer", &waveInAddBuffer), Refusing("acmStreamConvert", &acmStreamConvert)}) {
        Recorder recorder(1, File("recorded"));
        ASSERT_EQ(recorder.Record(), 0u);
        EXPECT_EQ(recorder.CompressBuffers(), 0u);
        const ImportPatch patch(stub);
        recorder.Finish();
        EXPECT_TRUE(IsIdle(recorder)) << stub.name;
        EXPECT_EQ(fs::file_size(folder / "recorded") % 325, 0u);
    }
    Recorder player(0, File("played", 24000ul));
    ASSERT_EQ(player.Play(), 0u);
    {
        const ImportPatch reset(Refusing("waveOutReset", &waveOutReset));
        const ImportPatch close(Failing("waveOutClose", &waveOutClose, WAVERR_STILLPLAYING));
        player.OnStop();
        EXPECT_NE(player->m_hWaveOut, nullptr) << "it still has the buffers";
        player.ProcessWomDone(nullptr, &player->m_WaveHeader[0]);
        EXPECT_EQ(player->m_ulDataRead, 16000u) << "it gets no more";
    }
    player.StopWave();
    player.Finish();
    EXPECT_TRUE(IsIdle(player));
    player->m_WaveHeader[0].dwFlags = WHDR_PREPARED | WHDR_INQUEUE; // as an unplugged device leaves it
    EXPECT_EQ(player.Play(), 0u);
    player.End();
}

TEST_F(Audio, FilesAreNeverSharedAndStayAsTheyAreWhenTheyCannotBeOpened) {
    DWORD refused = 0;
    const ImportPatch patch("CreateFileW", &CreateFileW, [&](LPCWSTR path, DWORD access, auto... more) {
        return access & refused ? INVALID_HANDLE_VALUE : CreateFileW(path, access, more...);
    });
    Recorder recorder(0, File("opened", 3200ul));
    for (const auto& [access, failures] :
         {std::pair{GENERIC_WRITE, "11001"}, {GENERIC_READ, "10111"}, {0UL, "00001"}}) {
        refused = static_cast<DWORD>(access);
        for (int mode = CAudio::MODE_IDLE; mode <= CAudio::MODE_PLAY_STEP + 1; ++mode) {
            recorder->m_nMode = mode;
            EXPECT_EQ(recorder.OpenFile(), static_cast<unsigned long>(failures[mode] - '0')) << access << " " << mode;
            EXPECT_EQ(recorder.OpenFile(), 1u) << "it is open";
            EXPECT_EQ(recorder->m_hFile, nullptr);
        }
    }

    recorder->m_ulDataRead = 1600;
    refused = GENERIC_WRITE;
    EXPECT_EQ(recorder.Record() + recorder.ClearFile(), 2u);
    EXPECT_EQ(reports.Take(), Texts{"CAudio:412 m_ulDataRead == m_ulDataWrite"});
    EXPECT_EQ(recorder->m_ulDataWrite, 3200u);
    EXPECT_EQ(recorder.AttachToFile(), 1u);
    EXPECT_EQ(recorder->m_ulDataWrite, 0u);
    refused = 0;
    EXPECT_EQ(recorder.AttachToFile(), 0u);
    EXPECT_EQ(recorder->m_ulDataWrite - recorder->m_ulDataRead, 3200u);
    EXPECT_EQ(recorder.ClearFile(), 0u);
    EXPECT_EQ(recorder.GetMod(), 1);
    EXPECT_EQ(fs::file_size(folder / "opened"), 0u);
    std::fill_n(recorder.GetPath(), MAX_PATH, L'x');
    EXPECT_EQ(recorder.AttachToFile(), 1u);
    recorder->m_ulDataWrite = recorder->m_ulDataRead = 7;
    EXPECT_EQ(recorder.DetachFromFile(), 0u);
    EXPECT_EQ(recorder->m_ulDataWrite + recorder->m_ulDataRead, 0u);
    recorder.SetMod(0);
    recorder.SetModeIdle();
    EXPECT_EQ(recorder.GetMod() + recorder->m_nMode, CAudio::MODE_IDLE);
}

TEST_F(Audio, CopiesHaveTheirOwnBuffersAndNoRun) {
    Recorder recorder(1, File("recorded"));
    ASSERT_EQ(recorder.Record(), 0u);
    recorder->m_cAudio[0][5] = 'x';
    recorder->m_ulMaxCompress = 1625;
    {
        Recorder copy(recorder);
        EXPECT_EQ(copy->m_cAudio[0][5], 'x');
        EXPECT_EQ(copy->m_ulMaxCompress, 1625u);
        // The records are packed: a reference to a field of one might be misaligned.
        EXPECT_TRUE(copy->m_WaveHeader[1].lpData == copy->m_cAudio[1]);
        EXPECT_TRUE(copy->m_StreamHeaderStep.pbDst == reinterpret_cast<BYTE*>(copy->m_cAudioStep));
        EXPECT_EQ(copy->m_pCompress[0], copy->m_cCompress[0]);
        EXPECT_TRUE(copy->m_StreamHeader[0].pbSrc == nullptr);
        EXPECT_EQ(copy.Record(), 1u) << "the file is not shared";
    }
    recorder.WaitFor(1600);
    EXPECT_EQ(recorder.stops, 0) << "the copy did not disturb it";
    const CAudio idle;
    recorder.CAudio::operator=(idle);
    EXPECT_TRUE(IsIdle(recorder));
    int closed = 0;
    const ImportPatch close("waveOutClose", &waveOutClose,
                            [&](HWAVEOUT device) { return ++closed, waveOutClose(device); });
    {
        Recorder gone(0, File("gone", 24000ul));
        ASSERT_EQ(gone.Play(), 0u);
    }
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(fs::remove(folder / "gone")) << "it is closed";
}

TEST_F(Audio, WaveFilesAreCompleteOrMissing) {
    const auto number = [](unsigned int value) { return std::string(reinterpret_cast<const char*>(&value), 4); };
    const fs::path path = folder / "made.wav";
    const std::string sound(130, 'x');
    const auto create = [&](unsigned long size, int gsm = 0) {
        return CAudio::CreateWAV(path.c_str(), sound.data(), size, gsm);
    };
    EXPECT_EQ(create(3), 0u);
    EXPECT_EQ(BytesOf(path), "RIFF" + number(54) + "WAVEfmt " + number(18) +
                                 std::string("\1\0\1\0\x40\x1F\0\0\x40\x1F\0\0\1\0\x8\0\0\0", 18) + "fact" + number(4) +
                                 number(3) + "data" + number(3) + std::string("xxx\0", 4));
    EXPECT_EQ(create(130, 1), 0u);
    EXPECT_EQ(BytesOf(path), "RIFF" + number(182) + "WAVEfmt " + number(20) +
                                 std::string("\x31\0\1\0\x40\x1F\0\0\x59\6\0\0\x41\0\0\0\2\0\x40\1", 20) + "fact" +
                                 number(4) + number(640) + "data" + number(130) + sound);
    for (const Stub& stub :
         {Failing("mmioCreateChunk", &mmioCreateChunk, MMIOERR_CANNOTWRITE), Failing("mmioWrite", &mmioWrite, -1),
          Failing("mmioAscend", &mmioAscend, MMIOERR_CANNOTWRITE, 0, 3),
          Failing("mmioAscend", &mmioAscend, MMIOERR_CANNOTWRITE, 0, 4),
          Replacing("mmioClose", &mmioClose, [](auto... a) { return mmioClose(a...), MMIOERR_CANNOTWRITE; })}) {
        const ImportPatch patch(stub);
        EXPECT_EQ(create(130), 1u);
        EXPECT_FALSE(fs::exists(path)) << stub.name;
    }
    EXPECT_EQ(create(0), 0u);
    EXPECT_EQ(create(0x80000000), 1u);
    EXPECT_EQ(CAudio::CreateWAV(nullptr, sound.data(), 5, 0), 1u);
    EXPECT_EQ(create(100, 1), 1u);
    EXPECT_EQ(reports.Take(), Texts{"CAudio:1287 (ulSizeAudio % ulBlockAlign) == 0"});
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(Audio, Odd115TheVolumeIsReadAndNeverSet) {
    Recorder audio(0, File("none"));
    unsigned long volume = 77, after = 78;
    EXPECT_EQ(audio.GetSystemVolume(volume), 0u);
    EXPECT_EQ(audio.SetSystemVolume(volume ^ 0x00FF00FF), 0u);
    EXPECT_EQ(audio.GetSystemVolume(after), 0u);
    EXPECT_EQ(after, volume);
    const ImportPatch patch(Refusing("waveOutOpen", &waveOutOpen));
    EXPECT_EQ(audio.GetSystemVolume(volume) + audio.SetSystemVolume(0), 2u);
    EXPECT_EQ(volume, 0u);
}
