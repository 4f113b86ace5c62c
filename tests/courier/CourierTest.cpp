#include "support/ChildProcess.h"
#include "support/PostOfficeObserver.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

namespace fs = std::filesystem;

class Courier : public PostOfficeObserver {
protected:
    std::wstring Command(const fs::path& to, const std::wstring& options = L"") {
        return Quoted(Beside(COURIER)) + Quoted(file) + Quoted(to) + options;
    }
    void MakeFile(std::size_t size) {
        std::string content;
        for (unsigned number = 0; content.size() < size; ++number) content += std::to_string(number) + ' ';
        std::ofstream(file, std::ios::binary) << content.substr(0, size);
    }
    /// Waits until a side of the run is registered: S, the sender, or R, the receiver.
    static const MAILBOX& RecordOf(char side) {
        for (;; Sleep(1)) {
            const MAILBOX* const table = CPostOffice().GetPostOfficeAddr();
            for (int slot = 1; slot < POST_OFFICE_MAILBOXES; ++slot) {
                if (table[slot].ObjId >> 24 == static_cast<unsigned>(side == 'S' ? 0x43 : 0x52)) return table[slot];
            }
        }
    }

    fs::path file = folder / L"file";
    fs::path copy = folder / L"copy";
};

} // namespace

TEST_F(Courier, CarriesFilesOfAnySizeAndLeavesNothingBehind) {
    for (const std::size_t size : {0u, 1u, 5119u, 5120u, 3000000u}) {
        MakeFile(size);
        ChildProcess courier(Command(copy, size == 3000000 ? L"--stall 1500" : L""));
        EXPECT_NE(courier.WaitUntil("courier: " + std::to_string(size) + " bytes"), "(ended)");
        const std::string full = courier.WaitUntil("courier: the pool was full ");
        EXPECT_EQ(full.substr(0, 2) != "0 ", size == 3000000) << full;
        EXPECT_EQ(courier.WaitUntil("courier: identical"), "");
        EXPECT_EQ(courier.ExitCode(), 0u);
        EXPECT_EQ(fs::file_size(copy), size);
        ExpectNothingLeft();
    }
}

TEST_F(Courier, SaysInOneLineWhatItCannotDo) {
    const std::pair<fs::path, std::string> rows[] = {
        {copy, "cannot read "},
        {file, "the copy would overwrite the file"},
        {folder / L"no such folder" / L"copy", "receiver: cannot write the copy"},
    };
    for (const auto& [to, line] : rows) {
        if (to != copy) MakeFile(10);
        ChildProcess courier(Command(to));
        EXPECT_NE(courier.WaitUntil("courier: " + line), "(ended)") << line;
        EXPECT_EQ(courier.ExitCode(), 1u) << line;
    }
    EXPECT_EQ(fs::file_size(file), 10u);
}

TEST_F(Courier, StopsWhenItsReceiverDiesAndTheNextRunWorks) {
    MakeFile(5000000);
    ChildProcess courier(Command(copy, L"--stall 60000"));
    while (observer.GetFreeBlockCount() > 1) Sleep(1);
    const HANDLE receiver = OpenProcess(PROCESS_TERMINATE, FALSE, RecordOf('R').ProcessId);
    TerminateProcess(receiver, 1);
    CloseHandle(receiver);
    EXPECT_NE(courier.WaitUntil("courier: the receiver has ended"), "(ended)");
    EXPECT_EQ(courier.ExitCode(), 1u);
    ExpectNothingLeft();
    ChildProcess next(Command(copy));
    EXPECT_EQ(next.WaitUntil("courier: identical"), "");
}

TEST_F(Courier, ForgedNotificationsChangeNothing) {
    MakeFile(3000000);
    ChildProcess courier(Command(copy, L"--stall 2000"));
    while (observer.GetFreeBlockCount() > 1) Sleep(1); // the receiver still waits, with the pool full
    const std::uint32_t windows[] = {RecordOf('S').hWnd, RecordOf('R').hWnd};
    for (const LPARAM number : {0L, 1L, 300L, 499L, 500L, 0xFFFFL, 0x10002L, -1L}) {
        for (const std::uint32_t window : windows) {
            EXPECT_TRUE(PostMessageW(static_cast<HWND>(ULongToHandle(window)), MAILBOX_NOTIFICATION, 0, number));
        }
    }
    EXPECT_EQ(courier.WaitUntil("courier: identical"), "");
    EXPECT_EQ(courier.ExitCode(), 0u);
    ExpectNothingLeft();
}
