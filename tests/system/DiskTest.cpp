#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"

#include <gtest/gtest.h>
#include <tessel/disk.h>

#include <winioctl.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <new>

namespace {

namespace fs = std::filesystem;
using Calls = std::vector<std::string>;
using Bytes = std::vector<unsigned char>;

const std::map<DWORD, std::string> kOrders = {{IOCTL_STORAGE_MEDIA_REMOVAL, "removal"},
                                              {IOCTL_STORAGE_CHECK_VERIFY, "verify"},
                                              {IOCTL_DISK_GET_DRIVE_LAYOUT, "layout"},
                                              {IOCTL_DISK_GET_DRIVE_GEOMETRY, "geometry"},
                                              {IOCTL_DISK_SET_DRIVE_LAYOUT, "write"}};

/// The device that the library finds instead of the machine's.
struct FakeDisk {
    Calls calls;
    std::map<std::string, DWORD> errors; ///< by order or path
    Bytes layout = Bytes(136);
    DWORD layoutBytes = 136;
    DISK_GEOMETRY geometry{{{1000, 0}}, RemovableMedia, 64, 32, 512};
    Bytes written;
    HANDLE open = nullptr;

    bool Succeeds(const std::string& what) {
        const auto error = errors.find(what);
        if (error != errors.end()) SetLastError(error->second);
        return error == errors.end();
    }
};

FakeDisk* disk = nullptr;

std::string Narrow(const std::wstring& text) {
    return {text.begin(), text.end()};
}

std::string Number(DWORD number) {
    char text[12];
    std::snprintf(text, sizeof text, " %lX", number);
    return text;
}

HANDLE WINAPI Open(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD flags, HANDLE pattern) {
    const std::string name = Narrow(path);
    const bool inherited = security != nullptr && security->bInheritHandle;
    disk->calls.push_back(name + Number(access) + Number(share) + Number(disposition) + Number(flags) +
                          (inherited ? " inherited" : ""));
    if (name.substr(0, 4) != "\\\\.\\") return CreateFileW(path, access, share, security, disposition, flags, pattern);
    EXPECT_EQ(disk->open, nullptr) << "one at a time";
    if (!disk->Succeeds(name)) return INVALID_HANDLE_VALUE;
    return disk->open = CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

BOOL WINAPI Close(HANDLE handle) {
    if (handle == disk->open) disk->open = nullptr;
    return CloseHandle(handle);
}

BOOL WINAPI Control(HANDLE device, DWORD code, LPVOID in, DWORD inSize, LPVOID out, DWORD outSize, LPDWORD returned,
                    LPOVERLAPPED) {
    EXPECT_EQ(device, disk->open);
    EXPECT_EQ((reinterpret_cast<std::uintptr_t>(in) | reinterpret_cast<std::uintptr_t>(out)) % 2048, 0u);
    const std::string& order = kOrders.at(code);
    const auto* const bytes = static_cast<unsigned char*>(in);
    disk->calls.push_back(order + Number(order == "removal" ? *bytes : inSize) + Number(outSize));
    if (!disk->Succeeds(order)) return FALSE;
    if (order == "write") disk->written.assign(bytes, bytes + inSize);
    if (order == "layout") std::memcpy(out, disk->layout.data(), disk->layout.size());
    if (order == "geometry") std::memcpy(out, &disk->geometry, sizeof disk->geometry);
    *returned = order == "layout" ? disk->layoutBytes : outSize;
    return TRUE;
}

void* __cdecl RefuseBlock(std::size_t size) {
    return size == 4096 ? nullptr : std::malloc(size);
}

/// What is written for the fake disk's geometry.
Bytes FatTable() {
    Bytes table(136);
    for (const std::size_t rewrite : {35, 67, 99, 131}) table[rewrite] = 1;
    table[0] = 4;
    table[9] = 0x40;                                                 // 16,384
    std::memcpy(&table[16], "\x00\xC0\x7F\x3E", 4);                  // 1,048,559,616
    std::memcpy(&table[24], "\x20\0\0\0\x01\0\0\0\x06\x01\x01", 11); // from hidden sectors to recognised
    return table;
}

struct Disk : testing::Test {
    FakeDisk device;
    OwnLocalMachine machine;
    ImportPatch open{L"Tessel.dll", "CreateFileW", Open};
    ImportPatch close{L"Tessel.dll", "CloseHandle", Close};
    ImportPatch control{L"Tessel.dll", "DeviceIoControl", Control};

    Disk() { disk = &device; }
    ~Disk() override { EXPECT_EQ(device.open, nullptr); }
};

struct DialogCall {
    HWND owner;
    UINT drive, format, options;
} dialog{};

DWORD WINAPI ShowDialog(HWND owner, UINT drive, UINT format, UINT options) {
    dialog = {owner, drive, format, options};
    return 0xFFFFFFFE;
}

constexpr wchar_t kSettings[] = L"Software\\Varda\\RunTime\\FileDefs";

struct MoDrive : Disk {
    ImportPatch show{L"Tessel.dll", "SHFormatDrive", ShowDialog};
    HWND owner = GetDesktopWindow();

    MoDrive() {
        machine.Set(kSettings, L"PathToMo", REG_SZ, {L"E:\\", 4});
        machine.Set(kSettings, L"MOPHYSICALDRIVE", REG_SZ, {L"\\\\.\\PHYSICALDRIVE1", 19});
    }
    UINT DriveOf(const std::wstring& setting) {
        machine.Set(kSettings, L"PathToMo", REG_SZ, {setting.c_str(), setting.size() + 1});
        FormatDisk(owner).ShowFormatDialog();
        return dialog.drive;
    }
};

} // namespace

TEST_F(MoDrive, Odd195TheDialogIsShownForTheDriveOfTheSettings) {
    EXPECT_EQ(FormatDisk(owner).ShowFormatDialog(), 0xFFFFFFFE);
    EXPECT_EQ(dialog.owner, owner);
    EXPECT_EQ(dialog.format, 0xFFFFu);
    EXPECT_EQ(dialog.options, 1u);
    const std::pair<std::wstring, int> drives[] = {{L"E:", 4},  {L"A", 0}, {L"Z:", 25}, {L"a:", 0},  {L"y:", 24},
                                                   {L"z:", -1}, {L"", -1}, {L"[", -1},  {L"1:", -1}, {L"@", -1}};
    for (const auto& [setting, drive] : drives) EXPECT_EQ(static_cast<int>(DriveOf(setting)), drive) << Narrow(setting);
    EXPECT_EQ(DriveOf(L"C" + std::wstring(300, L'x')), 2u) << "cut";
    machine.Set(kSettings, L"PathToMo", REG_DWORD, L"A:");
    FormatDisk(owner).ShowFormatDialog();
    EXPECT_EQ(dialog.drive, UINT_MAX) << "no text";
}

TEST_F(MoDrive, Odd196ADiskThatIsOpenedForReadingGetsOneFatPartition) {
    device.errors["removal"] = ERROR_NOT_SUPPORTED;
    const FormatDisk original(owner);
    FormatDisk copy(original);
    EXPECT_EQ(copy.PartitionAndFormatMo(), -2);
    EXPECT_EQ(dialog.drive, 4u);
    EXPECT_EQ(device.calls, (Calls{"\\\\.\\PHYSICALDRIVE1 80000000 0 3 20000000", "removal 1 0", "verify 0 0",
                                   "layout 0 800", "geometry 0 18", "write 88 0", "removal 0 0"}));
    EXPECT_EQ(device.written, FatTable());
}

TEST_F(MoDrive, AnyRefusalEndsTheAttemptAndFreesTheDisk) {
    dialog = {};
    for (const char* order : {"verify", "layout", "geometry", "write"}) {
        device.errors = {{order, ERROR_GEN_FAILURE}};
        device.calls.clear();
        EXPECT_EQ(FormatDisk(owner).PartitionAndFormatMo(), 1) << order;
        EXPECT_EQ(device.calls.back(), "removal 0 0");
        EXPECT_EQ(device.calls.at(device.calls.size() - 2).substr(0, 4), std::string(order).substr(0, 4));
        EXPECT_EQ(device.open, nullptr);
    }
    const ImportPatch memory(L"Tessel.dll", "malloc", RefuseBlock);
    EXPECT_EQ(FormatDisk(owner).Partition(), 0);
    EXPECT_EQ(dialog.owner, nullptr) << "no dialog";
}

TEST_F(MoDrive, WithoutADeviceNothingIsPartitioned) {
    device.errors["\\\\.\\PHYSICALDRIVE1"] = ERROR_FILE_NOT_FOUND;
    EXPECT_EQ(FormatDisk(owner).Partition(), 0);
    EXPECT_EQ(device.calls.size(), 1u);
    machine.Set(kSettings, L"MOPHYSICALDRIVE", REG_SZ, {(L"\\\\.\\" + std::wstring(200, L'x')).c_str(), 205});
    device.errors["\\\\.\\" + std::string(27, 'x')] = ERROR_FILE_NOT_FOUND;
    EXPECT_EQ(FormatDisk(owner).Partition(), 0) << "cut to 31 characters";
    machine.Remove(kSettings, L"MOPHYSICALDRIVE");
    EXPECT_EQ(FormatDisk(owner).Partition(), 0);
    EXPECT_EQ(device.calls.size(), 2u);
}

namespace {

BOOL WINAPI RefuseToStart(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCWSTR,
                          LPSTARTUPINFOW, LPPROCESS_INFORMATION) {
    SetLastError(ERROR_CANCELLED);
    return FALSE;
}

HANDLE started = nullptr;
HANDLE command = nullptr;

/// Waits until the command runs, and has its time-out come early then.
DWORD WINAPI WaitForCommand(HANDLE process, DWORD timeoutMs) {
    EXPECT_EQ(timeoutMs, 3000u);
    DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &command, 0, FALSE, DUPLICATE_SAME_ACCESS);
    WaitForSingleObject(started, INFINITE);
    return WaitForSingleObject(process, 1);
}

/// The stand-in of the format command lies beside this program, where it is found before the system's; no format
/// command accepts these drive letters.
struct PrepMo : Disk {
    CPrepMo prepMo;
    fs::path folder = fs::temp_directory_path() / ("tessel-disk-" + std::to_string(GetCurrentProcessId()));
    const std::string volumeOpened = "\\\\.\\7: C0000000 2 3 20000000";
    const std::string deviceOpened = "\\\\.\\PHYSICALDRIVE1 C0000000 2 3 20000000";

    PrepMo() {
        fs::create_directory(folder);
        SetEnvironmentVariableW(L"TEMP", folder.c_str());
    }
    ~PrepMo() override { fs::remove_all(folder); }

    static std::string Contents(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// @return whether a partition table was written on the way to the format command
    bool Writes() {
        device.written.clear();
        const ImportPatch start(L"Tessel.dll", "CreateProcessW", RefuseToStart);
        EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), ERROR_CANCELLED);
        return !device.written.empty();
    }
    PARTITION_INFORMATION& Entry(int index) {
        device.layout[0] = static_cast<unsigned char>(index + 1);
        return reinterpret_cast<PARTITION_INFORMATION*>(&device.layout[8])[index];
    }
};

} // namespace

TEST_F(PrepMo, Odd197ADiskIsPartitionedAndFormattedByACommandThatFindsNoAnswer) {
    EXPECT_EQ(prepMo.PartitionAndFormat('7', L"\\\\.\\PHYSICALDRIVE1"), 7);
    const std::string start = folder.string() + "\\$$7";
    EXPECT_EQ(device.calls,
              (Calls{volumeOpened, "layout 0 800", "geometry 0 18", deviceOpened, "write 88 0",
                     start + "fmtout.txt C0000000 3 2 80 inherited", start + "fmtin.txt C0000000 3 2 80 inherited"}));
    EXPECT_EQ(device.written, FatTable());
    EXPECT_EQ(Contents(start + "fmtin.txt"), std::string("\n\0\0\0", 4));
    EXPECT_EQ(Contents(start + "fmtout.txt"), "Format.com 7: /fs:FAT /q|read 1 0 at 4|show 0|class 20");
}

TEST_F(PrepMo, AnyFailureIsTheResult) {
    const std::pair<std::pair<std::string, DWORD>, int> failures[] = {
        {{"\\\\.\\7:", ERROR_NOT_READY}, ERROR_NOT_READY},
        {{"layout", ERROR_GEN_FAILURE}, ERROR_GEN_FAILURE},
        {{"geometry", ERROR_BAD_COMMAND}, ERROR_BAD_COMMAND},
        {{"\\\\.\\PHYSICALDRIVE1", ERROR_ACCESS_DENIED}, ERROR_ACCESS_DENIED},
        {{"write", ERROR_WRITE_PROTECT}, ERROR_WRITE_PROTECT},
        {{"write", ERROR_INVALID_PARAMETER}, ERROR_DISK_OPERATION_FAILED}};
    for (const auto& [error, result] : failures) {
        device.errors = {error};
        EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), result) << error.first;
        EXPECT_EQ(device.open, nullptr);
    }
    device.calls.clear();
    EXPECT_EQ(prepMo.PartitionAndFormat(0, 1), ERROR_INVALID_DRIVE);
    EXPECT_EQ(prepMo.Reformat(0), ERROR_INVALID_DRIVE);
    EXPECT_EQ(device.calls, Calls());
    for (const wchar_t* none : {L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(prepMo.PartitionAndFormat('7', none), ERROR_INVALID_DRIVE);
    }
    const ImportPatch memory(L"Tessel.dll", "malloc", RefuseBlock);
    EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(PrepMo, Odd194AMediumWithAUsablePartitionIsNotPartitionedAnew) {
    constexpr LONGLONG kSize = 1'048'576'000;
    Entry(3).RecognizedPartition = TRUE;
    Entry(3).PartitionNumber = 2;
    Entry(3).PartitionLength.QuadPart = kSize - 1;
    EXPECT_FALSE(Writes());
    Entry(3).PartitionLength.QuadPart = kSize;
    EXPECT_TRUE(Writes()) << "as long as the medium";
    Entry(3).PartitionLength.QuadPart = 0;
    Entry(3).PartitionNumber = 0;
    EXPECT_TRUE(Writes()) << "without a number";
    Entry(3).PartitionNumber = 1;
    Entry(3).RecognizedPartition = FALSE;
    EXPECT_TRUE(Writes()) << "unrecognised";
    Entry(0) = {{}, {}, 0, 1, 0, 0, TRUE, 0};
    EXPECT_FALSE(Writes());
    device.layoutBytes = 40;
    EXPECT_TRUE(Writes()) << "a layout of one entry";
    device.layoutBytes = 2049;
    EXPECT_TRUE(Writes()) << "more than there is room for";
    Entry(3) = {{}, {}, 0, 1, 0, 0, TRUE, 0};
    device.layoutBytes = 104;
    device.layout[3] = 0xFF; // a count of four thousand million
    Entry(0) = {};
    EXPECT_TRUE(Writes()) << "the usable one is counted but not there";
    device.layoutBytes = 136;
    EXPECT_FALSE(Writes());
    device.geometry.Cylinders.QuadPart = 0;
    EXPECT_TRUE(Writes()) << "no size";
}

TEST_F(PrepMo, ACommandThatDoesNotEndIsEnded) {
    const std::wstring name = L"tessel-format-" + std::to_wstring(GetCurrentProcessId());
    started = CreateEventW(nullptr, TRUE, FALSE, name.c_str());
    SetEnvironmentVariableW(L"TESSEL_FORMAT_STARTED", name.c_str());
    const ImportPatch wait(L"Tessel.dll", "WaitForSingleObject", WaitForCommand);
    EXPECT_EQ(prepMo.Reformat('7'), 259);
    DWORD exitCode = 0;
    EXPECT_EQ(WaitForSingleObject(command, 10000), WAIT_OBJECT_0);
    GetExitCodeProcess(command, &exitCode);
    EXPECT_EQ(exitCode, 259u);
    SetEnvironmentVariableW(L"TESSEL_FORMAT_STARTED", nullptr);
    CloseHandle(started);
    CloseHandle(command);
}

TEST_F(PrepMo, WithoutATemporaryFolderTheRootOfCIsUsed) {
    SetEnvironmentVariableW(L"TEMP", nullptr);
    EXPECT_EQ(prepMo.Reformat('7'), 7);
    EXPECT_EQ(device.calls,
              (Calls{"C:\\\\$$7fmtout.txt C0000000 3 2 80 inherited", "C:\\\\$$7fmtin.txt C0000000 3 2 80 inherited"}));
    for (const char* file : {"C:\\$$7fmtin.txt", "C:\\$$7fmtout.txt"}) EXPECT_TRUE(fs::remove(file));
    SetEnvironmentVariableW(L"TEMP", std::wstring(1000, L'x').c_str());
    EXPECT_EQ(prepMo.Reformat('7'), 7) << "the files cannot be made";
}
