#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <tessel/mailbox.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

class Courier : public testing::Test {
protected:
    Courier() { fs::create_directories(folder); }
    ~Courier() override { fs::remove_all(folder); }

    std::wstring Command(const std::wstring& options = L"") {
        wchar_t program[MAX_PATH];
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        const fs::path courier = fs::path(program).parent_path() / COURIER;
        return L"\"" + courier.wstring() + L"\" \"" + file.wstring() + L"\" \"" + copy.wstring() + L"\" " + options;
    }
    void MakeFile(std::size_t size) { std::ofstream(file, std::ios::binary) << std::string(size, 'x'); }

    fs::path folder = fs::temp_directory_path() / L"tessel courier";
    fs::path file = folder / L"file";
    fs::path copy = folder / L"copy";
};

/// The process that receives from a courier; 0 until it has registered.
DWORD ReceiverOf(DWORD courier) {
    MAILBOX record{};
    (void)CPostOffice::GetManagerInfo(ORCAOBJID{0x52000000 | courier}, &record);
    return record.ProcessId;
}

void KillReceiverOf(DWORD courier) {
    while (ReceiverOf(courier) == 0) Sleep(1);
    const HANDLE receiver = OpenProcess(PROCESS_TERMINATE, FALSE, ReceiverOf(courier));
    TerminateProcess(receiver, 1);
    CloseHandle(receiver);
}

} // namespace

TEST_F(Courier, CarriesFilesOfAnySize) {
    for (const std::size_t size : {0, 1, 5119, 5120, 3000000}) {
        MakeFile(size);
        ChildProcess courier(Command());
        EXPECT_NE(courier.WaitUntil("courier: " + std::to_string(size) + " bytes"), "(ended)");
        EXPECT_EQ(courier.WaitUntil("courier: identical"), "");
        EXPECT_EQ(courier.ExitCode(), 0u);
        EXPECT_EQ(fs::file_size(copy), size);
    }
}

TEST_F(Courier, SaysInOneLineThatAFileCannotBeRead) {
    ChildProcess missing(Command());
    EXPECT_NE(missing.WaitUntil("courier: cannot read "), "(ended)");
    EXPECT_EQ(missing.ExitCode(), 1u);
}

TEST_F(Courier, StopsWhenItsReceiverDiesAndLeavesThePoolAsItWas) {
    CPostOffice::CreateGlobalPostOffice(); // keeps the region when the processes end
    CMailBox observer(ORCAOBJID{1});
    MakeFile(5000000);
    ChildProcess courier(Command(L"--stall 60000"));
    while (observer.GetFreeBlockCount() > 1) Sleep(1);
    KillReceiverOf(courier.Id());
    EXPECT_NE(courier.WaitUntil("courier: the receiver has ended"), "(ended)");
    EXPECT_EQ(courier.ExitCode(), 1u);
    EXPECT_EQ(observer.GetFreeBlockCount(), 500u);

    ChildProcess next(Command());
    EXPECT_EQ(next.WaitUntil("courier: identical"), "");
    CPostOffice::DestroyGlobalPostOffice();
}

TEST_F(Courier, IgnoresForgedNotifications) {
    CPostOffice::CreateGlobalPostOffice();
    MakeFile(3000000);
    ChildProcess courier(Command(L"--stall 300"));
    while (ReceiverOf(courier.Id()) == 0) Sleep(1);
    MAILBOX record{};
    (void)CPostOffice::GetManagerInfo(ORCAOBJID{0x52000000 | courier.Id()}, &record);
    const HWND window = static_cast<HWND>(ULongToHandle(record.hWnd));
    for (const LPARAM number : {LPARAM{0}, LPARAM{500}, LPARAM{0xFFFF}, LPARAM{-1}, LPARAM{0x7FFFFFFF}}) {
        EXPECT_TRUE(PostMessageW(window, MAILBOX_NOTIFICATION, 0, number));
    }
    EXPECT_EQ(courier.WaitUntil("courier: identical"), "");
    EXPECT_EQ(courier.ExitCode(), 0u);
    CPostOffice::DestroyGlobalPostOffice();
}
