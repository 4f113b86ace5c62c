#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"

#include <gtest/gtest.h>
#include <tessel/system/disk.h>

#include <winioctl.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

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
    int closed = 0;

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

/// A call with its numbers in hexadecimal digits.
std::string Line(const std::string& name, std::initializer_list<DWORD> numbers) {
    std::ostringstream line;
    line << name << std::hex << std::uppercase;
    for (const DWORD number : numbers) line << ' ' << number;
    return line.str();
}

HANDLE WINAPI Open(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD flags, HANDLE pattern) {
    const std::string name = Narrow(path);
    const bool inherited = security != nullptr && security->bInheritHandle;
    disk->calls.push_back(Line(name, {access, share, disposition, flags}) + (inherited ? " inherited" : ""));
    if (name.substr(0, 4) != "\\\\.\\") return CreateFileW(path, access, share, security, disposition, flags, pattern);
    EXPECT_EQ(disk->open, nullptr) << "one at a time";
    if (!disk->Succeeds(name)) return INVALID_HANDLE_VALUE;
    return disk->open = CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

BOOL WINAPI Close(HANDLE handle) {
    ++disk->closed;
    if (handle == disk->open) disk->open = nullptr;
    return CloseHandle(handle);
}

BOOL WINAPI Control(HANDLE device, DWORD code, LPVOID in, DWORD inSize, LPVOID out, DWORD outSize, LPDWORD returned,
                    LPOVERLAPPED) {
    EXPECT_EQ(device, disk->open);
    EXPECT_EQ((reinterpret_cast<std::uintptr_t>(in) | reinterpret_cast<std::uintptr_t>(out)) % 2048, 0u);
    const std::string& order = kOrders.at(code);
    const auto* const bytes = static_cast<unsigned char*>(in);
    disk->calls.push_back(Line(order, {order == "removal" ? *bytes : inSize, outSize}));
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
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Varda");
    EXPECT_EQ(FormatDisk(owner).Partition(), 0);
    EXPECT_EQ(device.calls.size(), 2u);
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyW(HKEY_LOCAL_MACHINE, kSettings, &key), 0) << "made";
    RegCloseKey(key);
}

namespace {

BOOL WINAPI RefuseToStart(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD flags, LPVOID,
                          LPCWSTR, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION) {
    EXPECT_EQ(flags, DWORD{NORMAL_PRIORITY_CLASS});
    EXPECT_EQ(startup->hStdError, nullptr);
    SetLastError(ERROR_CANCELLED);
    return FALSE;
}

DWORD WINAPI WaitLess(HANDLE process, DWORD timeoutMs) {
    EXPECT_EQ(timeoutMs, 3000u);
    return WaitForSingleObject(process, 100);
}

DWORD exitCode = 0;

/// Ends the command and waits until it has its files no more.
BOOL WINAPI End(HANDLE process, UINT code) {
    return TerminateProcess(process, code) && WaitForSingleObject(process, INFINITE) == WAIT_OBJECT_0 &&
           GetExitCodeProcess(process, &exitCode);
}

/// The stand-in of the format command lies beside this program, where it is found before the system's; no format
/// command accepts these drive letters.
struct PrepMo : Disk {
    CPrepMo prepMo;
    fs::path folder = fs::temp_directory_path() / ("tessel-disk-" + std::to_string(GetCurrentProcessId()));

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
};

} // namespace

TEST_F(PrepMo, Odd197ADiskIsPartitionedAndFormattedByACommandThatFindsNoAnswer) {
    EXPECT_EQ(prepMo.PartitionAndFormat('7', L"\\\\.\\PHYSICALDRIVE1"), 7);
    const std::string start = folder.string() + "\\$$7";
    EXPECT_EQ(device.calls,
              (Calls{"\\\\.\\7: C0000000 2 3 20000000", "layout 0 800", "geometry 0 18",
                     "\\\\.\\PHYSICALDRIVE1 C0000000 2 3 20000000", "write 88 0",
                     start + "fmtout.txt C0000000 3 2 80 inherited", start + "fmtin.txt C0000000 3 2 80 inherited"}));
    EXPECT_EQ(device.written, FatTable());
    EXPECT_EQ(Contents(start + "fmtin.txt"), std::string("\n\0\0\0", 4));
    EXPECT_EQ(Contents(start + "fmtout.txt"), "Format.com 7: /fs:FAT /q|read 1 0 at 4|show 0");
    EXPECT_EQ(device.closed, 6) << "volume, device, two files, thread and process";
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
    EXPECT_EQ(device.calls, Calls());
    for (const wchar_t* none : {L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(prepMo.PartitionAndFormat('7', none), ERROR_INVALID_DRIVE);
    }
    const ImportPatch memory(L"Tessel.dll", "malloc", RefuseBlock);
    EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(PrepMo, Odd194AMediumWithAUsablePartitionIsNotPartitionedAnew) {
    constexpr LONGLONG kSize = 1'048'576'000; // of 1,000 cylinders
    const struct {
        const char* why;
        bool writes;
        std::size_t entry;
        BOOLEAN recognised;
        DWORD number;
        LONGLONG length;
        DWORD bytes = 136;
        LONGLONG cylinders = 1000;
    } rows[] = {
        {"shorter than the medium", false, 3, TRUE, 2, kSize - 1},
        {"as long as the medium", true, 3, TRUE, 2, kSize},
        {"without a number", true, 3, TRUE, 0, 0},
        {"unrecognised", true, 3, FALSE, 1, 0},
        {"a layout of one entry", true, 0, TRUE, 1, 0, 40},
        {"a layout of two", false, 0, TRUE, 1, 0, 72},
        {"more than there is room for", true, 0, TRUE, 1, 0, 2049},
        {"counted but not there", true, 3, TRUE, 1, 0, 104},
        {"of no size", true, 3, TRUE, 1, 0, 136, 0},
        {"beyond 4 GB", false, 3, TRUE, 1, 10 * kSize - 1, 136, 10'000},
        {"as long as a large medium", true, 3, TRUE, 1, 10 * kSize, 136, 10'000},
    };
    for (const auto& row : rows) {
        const DWORD count = 0xFF000004;
        PARTITION_INFORMATION entry{{}, {}, 0, row.number, 0, 0, row.recognised, 0};
        entry.PartitionLength.QuadPart = row.length;
        device.layout.assign(136, 0);
        std::memcpy(device.layout.data(), &count, sizeof count);
        std::memcpy(&device.layout[8 + row.entry * sizeof entry], &entry, sizeof entry);
        device.layoutBytes = row.bytes;
        device.geometry.Cylinders.QuadPart = row.cylinders;
        EXPECT_EQ(Writes(), row.writes) << row.why;
    }
    device.layout.assign(136, 0);
    device.geometry = {{{2, 0}}, RemovableMedia, 1, 0xFFFFFFFF, 0x80000001};
    EXPECT_TRUE(Writes()) << "a device that talks nonsense";
}

TEST_F(PrepMo, ACommandThatDoesNotEndIsEnded) {
    const ImportPatch wait(L"Tessel.dll", "WaitForSingleObject", WaitLess);
    const ImportPatch end(L"Tessel.dll", "TerminateProcess", End);
    EXPECT_EQ(prepMo.Reformat('8'), 259);
    EXPECT_EQ(exitCode, 259u);
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
