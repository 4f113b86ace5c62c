#include "support/ChildProcess.h"
#include "support/MessageWindow.h"
#include "support/PostOfficeObserver.h"
#include "support/UnixTool.h"

#include <gtest/gtest.h>
#include <tessel/messaging/mail.h>

namespace {

namespace fs = std::filesystem;

class WorkstationRun : public PostOfficeObserver {
protected:
    std::wstring Command(const std::wstring& options) {
        return Quoted(Beside(L"workstation.exe")) + L"--hidden --folder " + Quoted(folder) + options;
    }
    /// The output of a Unix tool for a file in the folder.
    std::string Ask(const std::wstring& tool, const wchar_t* file, const std::wstring& what) {
        return RunUnix(tool + L" -v error -i '" + UnixPath(folder / file) + L"' " + what).output;
    }
};

} // namespace

TEST_F(WorkstationRun, SavesWhatWasAcquiredAndLeavesNothingBehind) {
    ChildProcess workstation(Command(L"--run 2 --movie " + Quoted(folder / L"movie.avi")));
    EXPECT_EQ(workstation.WaitUntil("workstation: 2048 lines sent"),
              ", 1024 received by the archive, 1024 by the screen, 0 lost");
    EXPECT_EQ(workstation.WaitUntil("workstation: 2 images saved"), ", 0 of them different from what was generated");
    EXPECT_EQ(workstation.WaitUntil("workstation: 2 images in the movie"), "");
    EXPECT_EQ(workstation.ExitCode(), 0u);
    EXPECT_EQ(Ask(L"ffprobe", L"movie.avi", L"-of csv=p=0 -show_entries frame=width,height,pts_time"),
              "0.000000,512,512\n0.100000,512,512\n");
    const std::wstring pixels = L"-fps_mode passthrough -f rawvideo -pix_fmt rgb24 -";
    const std::string images = Ask(L"ffmpeg", L"image-1.bmp", pixels) + Ask(L"ffmpeg", L"image-2.bmp", pixels);
    EXPECT_TRUE(Ask(L"ffmpeg", L"movie.avi", pixels) == images) << "too long to be printed";
    EXPECT_EQ(fs::file_size(folder / L"image-2.bmp"), 1078u + 512 * 512);
    ExpectNothingLeft();
}

TEST_F(WorkstationRun, SavesWhileAllBlocksHoldLines) {
    const MessageWindow window;
    observer.RegisterMailbox(window.Get());
    ChildProcess workstation(Command(L"--run 3"));
    workstation.WaitUntil("workstation: image 1 saved");
    while (observer.GetFreeBlockCount() > 3) observer.Send(ORCAOBJID{1}, 1, 0, nullptr, 0, nullptr);
    EXPECT_EQ(workstation.ExitCode(), 0u);
    observer.UnregisterMailbox();
    CMail::ReleaseWaiting(observer, ORCAOBJID{1}, window.Get());
    ExpectNothingLeft();
}

TEST_F(WorkstationRun, ObeysAConsoleAndRunsOnceOnAMachine) {
    ChildProcess workstation(Command(L""));
    unsigned short slot = 0;
    while (observer.GetMailBox(ORCAOBJID{3002}, slot) == nullptr) Sleep(1); // the last to be loaded
    EXPECT_EQ(ChildProcess(Command(L"")).ExitCode(), 1u);
    EXPECT_EQ(observer.Send(ORCAOBJID{3002}, 3, 0, nullptr, 0, nullptr), 0) << "an end that nobody ordered";
    const auto console = [](const wchar_t* order) {
        return ChildProcess(Quoted(Beside(L"console.exe")) + order).ExitCode();
    };
    for (const wchar_t* order : {L"start abc", L"run -1", L"stop 1"}) EXPECT_EQ(console(order), 1u) << order;
    for (const wchar_t* order : {L"start 1", L"start", L"stop", L"exit"}) EXPECT_EQ(console(order), 0u) << order;
    EXPECT_EQ(workstation.ExitCode(), 0u);
    ExpectNothingLeft();
}

TEST_F(WorkstationRun, EndsWithALineWhenTheConsoleIsMissingOrFails) {
    for (const std::wstring& console : {std::wstring(L"no-such.exe"), Quoted(Beside(L"hello.exe"))}) {
        ChildProcess workstation(Command(L"--run 1 --console " + console));
        EXPECT_EQ(workstation.ExitCode(), 1u);
        ExpectNothingLeft();
    }
    EXPECT_EQ(ChildProcess(Quoted(Beside(L"console.exe")) + L"exit").ExitCode(), 1u) << "there is no workstation";
}
