#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <tessel/system/disk.h>

#include <shlobj.h>
#include <winioctl.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Calls = std::vector<std::string>;
using Bytes = std::vector<unsigned char>;

/// A call, with numbers in hexadecimal.
std::string Line(const std::string& name, std::initializer_list<DWORD> numbers) {
    std::ostringstream line;
    line << name << std::hex << std::uppercase;
    for (const DWORD number : numbers) line << ' ' << number;
    return line.str();
}

/// The table that is written for the geometry of the disk below.
Bytes FatTable() {
    Bytes table(136);
    for (const std::size_t rewrite : {35u, 67u, 99u, 131u}) table[rewrite] = 1;
    table[0] = 4;
    table[9] = 0x40;                                                 // 16,384
    std::memcpy(&table[16], "\x00\xC0\x7F\x3E", 4);                  // 1,048,559,616
    std::memcpy(&table[24], "\x20\0\0\0\x01\0\0\0\x06\x01\x01", 11); // from hidden sectors to recognised
    return table;
}

/// The library finds this disk instead of the machine's; files are real.
struct Disk : testing::Test {
    Calls calls;
    std::map<std::string, DWORD> errors; ///< by control code or path
    Bytes layout = Bytes(136);
    DWORD layoutBytes = 136;
    DISK_GEOMETRY geometry{{{1000, 0}}, RemovableMedia, 64, 32, 512};
    Bytes written;
    HANDLE device = nullptr;
    int closed = 0;
    OwnLocalMachine machine;

    ~Disk() override { EXPECT_EQ(device, nullptr) << "left open"; }

    bool Succeeds(const std::string& what) {
        SetLastError(errors[what]);
        return errors[what] == 0;
    }
    HANDLE Open(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                HANDLE pattern) {
        const std::string name = fs::path(path).string();
        const bool inherited = security != nullptr && security->bInheritHandle;
        calls.push_back(Line(name, {access, share, disposition, flags}) + (inherited ? " inherited" : ""));
        if (!name.starts_with("\\\\.\\"))
            return CreateFileW(path, access, share, security, disposition, flags, pattern);
        EXPECT_EQ(device, nullptr) << "one at a time";
        return Succeeds(name) ? device = CreateEventW(nullptr, FALSE, FALSE, nullptr) : INVALID_HANDLE_VALUE;
    }
    BOOL Control(HANDLE handle, DWORD code, void* in, DWORD inSize, void* out, DWORD outSize, DWORD* returned, void*) {
        static const std::map<DWORD, std::string> orders = {{IOCTL_STORAGE_MEDIA_REMOVAL, "removal"},
                                                            {IOCTL_STORAGE_CHECK_VERIFY, "verify"},
                                                            {IOCTL_DISK_GET_DRIVE_LAYOUT, "layout"},
                                                            {IOCTL_DISK_GET_DRIVE_GEOMETRY, "geometry"},
                                                            {IOCTL_DISK_SET_DRIVE_LAYOUT, "write"}};
        EXPECT_EQ(handle, device);
        EXPECT_EQ((reinterpret_cast<std::uintptr_t>(in) | reinterpret_cast<std::uintptr_t>(out)) % 2048, 0u);
        const std::string& order = orders.at(code);
        const auto* const bytes = static_cast<unsigned char*>(in);
        calls.push_back(Line(order, {order == "removal" ? *bytes : inSize, outSize}));
        if (!Succeeds(order)) return FALSE;
        if (order == "write") written.assign(bytes, bytes + inSize);
        if (order == "layout") std::memcpy(out, layout.data(), layout.size());
        if (order == "geometry") std::memcpy(out, &geometry, sizeof geometry);
        *returned = order == "layout" ? layoutBytes : outSize;
        return TRUE;
    }

    ImportPatch open{"CreateFileW", &CreateFileW, [this](auto... a) { return Open(a...); }};
    ImportPatch control{"DeviceIoControl", &DeviceIoControl, [this](auto... a) { return Control(a...); }};
    ImportPatch close{"CloseHandle", &CloseHandle, [this](HANDLE handle) {
                          ++closed;
                          if (handle == device) device = nullptr;
                          return CloseHandle(handle);
                      }};
};

constexpr wchar_t kSettings[] = L"Software\\Varda\\RunTime\\FileDefs";

struct MoDrive : Disk {
    HWND const owner = GetDesktopWindow();
    int drive = 99; ///< of the last dialog
    ImportPatch show{"SHFormatDrive", &SHFormatDrive, [this](HWND parent, UINT number, UINT format, UINT options) {
                         EXPECT_TRUE(parent == owner && format == SHFMT_ID_DEFAULT && options == SHFMT_OPT_FULL);
                         drive = static_cast<int>(number);
                         return SHFMT_CANCEL;
                     }};

    MoDrive() {
        Set(L"PathToMo", L"E:\\");
        Set(L"MOPHYSICALDRIVE", L"\\\\.\\PHYSICALDRIVE1");
    }
    void Set(const wchar_t* name, const std::wstring& text) {
        machine.Set(kSettings, name, REG_SZ, {text.c_str(), text.size() + 1});
    }
};

TEST_F(MoDrive, Odd195TheDialogIsShownForTheDriveOfTheSettings) {
    const std::pair<std::wstring, int> rows[] = {{L"A", 0},   {L"Z:", 25}, {L"a:", 0},
                                                 {L"y:", 24}, {L"z:", -1}, {L"", -1},
                                                 {L"[", -1},  {L"@", -1},  {L"C" + std::wstring(300, L'x'), 2}};
    for (const auto& [setting, expected] : rows) {
        Set(L"PathToMo", setting);
        EXPECT_EQ(FormatDisk(owner).ShowFormatDialog(), static_cast<UINT>(SHFMT_CANCEL));
        EXPECT_EQ(drive, expected) << setting;
    }
}

TEST_F(MoDrive, Odd196ADiskThatIsOpenedForReadingGetsOneFatPartition) {
    errors["removal"] = ERROR_NOT_SUPPORTED;
    EXPECT_EQ(FormatDisk(owner).PartitionAndFormatMo(), static_cast<int>(SHFMT_CANCEL));
    EXPECT_EQ(drive, 4);
    EXPECT_EQ(calls, (Calls{"\\\\.\\PHYSICALDRIVE1 80000000 0 3 20000000", "removal 1 0", "verify 0 0", "layout 0 800",
                            "geometry 0 18", "write 88 0", "removal 0 0"}));
    EXPECT_EQ(written, FatTable());
}

TEST_F(MoDrive, AnyRefusalEndsTheAttemptAndFreesTheDisk) {
    for (const char* order : {"verify", "layout", "geometry", "write"}) {
        errors = {{order, ERROR_GEN_FAILURE}};
        calls.clear();
        EXPECT_EQ(FormatDisk(owner).PartitionAndFormatMo(), 1) << order;
        EXPECT_EQ(calls.back(), "removal 0 0");
        EXPECT_TRUE(calls.at(calls.size() - 2).starts_with(order));
    }
    EXPECT_EQ(drive, 99) << "no dialog";
}

TEST_F(MoDrive, WithoutADeviceNothingIsPartitioned) {
    errors["\\\\.\\PHYSICALDRIVE1"] = errors["\\\\.\\" + std::string(27, 'x')] = ERROR_FILE_NOT_FOUND;
    EXPECT_EQ(FormatDisk(owner).Partition(), 0);
    Set(L"MOPHYSICALDRIVE", L"\\\\.\\" + std::wstring(200, L'x'));
    EXPECT_EQ(FormatDisk(owner).Partition(), 0) << "truncated to 31 characters";
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Varda");
    EXPECT_EQ(FormatDisk(owner).Partition(), 0);
    EXPECT_EQ(calls.size(), 2u);
    EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, kSettings), 0) << "created";
}

/// The stand-in for the format command is in this program's folder, where it is found before the system's; no format
/// command accepts these drive letters.
struct PrepMo : Disk {
    CPrepMo prepMo;
    TemporaryFolder folder;

    PrepMo() { SetEnvironmentVariableW(L"TEMP", static_cast<const fs::path&>(folder).c_str()); }

    /// @return whether a partition table was written on the way to the format command
    bool Writes() {
        written.clear();
        const ImportPatch start(Failing("CreateProcessW", &CreateProcessW, FALSE, ERROR_CANCELLED));
        EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), ERROR_CANCELLED);
        return !written.empty();
    }
};

TEST_F(PrepMo, Odd197ADiskIsPartitionedAndFormattedByACommandThatFindsNoAnswer) {
    EXPECT_EQ(prepMo.PartitionAndFormat('7', L"\\\\.\\PHYSICALDRIVE1"), 7);
    const std::string start = (folder / "$$7").string();
    EXPECT_EQ(calls,
              (Calls{"\\\\.\\7: C0000000 2 3 20000000", "layout 0 800", "geometry 0 18",
                     "\\\\.\\PHYSICALDRIVE1 C0000000 2 3 20000000", "write 88 0",
                     start + "fmtout.txt C0000000 3 2 80 inherited", start + "fmtin.txt C0000000 3 2 80 inherited"}));
    EXPECT_EQ(written, FatTable());
    EXPECT_EQ(BytesOf(start + "fmtin.txt"), std::string("\n\0\0\0", 4));
    EXPECT_EQ(BytesOf(start + "fmtout.txt"), "Format.com 7: /fs:FAT /q|read 1 0 at 4|show 0");
    EXPECT_EQ(closed, 6) << "volume, device, two files, thread and process";
}

TEST_F(PrepMo, AnyFailureIsTheResult) {
    for (const char* what : {"\\\\.\\7:", "layout", "geometry", "\\\\.\\PHYSICALDRIVE1", "write"}) {
        errors = {{what, ERROR_BAD_COMMAND}};
        EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), ERROR_BAD_COMMAND) << what;
    }
    errors = {{"write", ERROR_INVALID_PARAMETER}};
    EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), ERROR_DISK_OPERATION_FAILED);
    EXPECT_EQ(prepMo.PartitionAndFormat('7', L""), ERROR_INVALID_DRIVE);
    EXPECT_EQ(prepMo.PartitionAndFormat(0, 1), ERROR_INVALID_DRIVE);
    const ImportPatch memory("malloc", &std::malloc,
                             [](std::size_t size) { return size == 4096 ? nullptr : std::malloc(size); });
    EXPECT_EQ(prepMo.PartitionAndFormat('7', 1), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(PrepMo, Odd194AMediumWithAUsablePartitionIsNotPartitionedAgain) {
    constexpr LONGLONG kSize = 1'048'576'000; // of 1,000 cylinders
    const struct {
        const char* why;
        std::size_t entry;
        DWORD number;
        bool writes;
        BOOLEAN recognised;
        LONGLONG length;
        DWORD bytes = 136;
        LONGLONG cylinders = 1000;
    } rows[] = {{"shorter than the medium", 3, 2, false, TRUE, kSize - 1},
                {"as long as the medium", 3, 2, true, TRUE, kSize},
                {"without a number", 3, 0, true, TRUE, 0},
                {"unrecognised", 3, 1, true, FALSE, 0},
                {"a layout of one entry", 0, 1, true, TRUE, 0, 40},
                {"a layout of two", 0, 1, false, TRUE, 0, 72},
                {"longer than the buffer", 0, 1, true, TRUE, 0, 2049},
                {"counted but not there", 3, 1, true, TRUE, 0, 104},
                {"of no size", 3, 1, true, TRUE, 0, 136, 0},
                {"beyond 4 GB", 3, 1, false, TRUE, 10 * kSize - 1, 136, 10'000}};
    for (const auto& row : rows) {
        const DWORD count = 0xFF000004;
        PARTITION_INFORMATION entry{{}, {}, 0, row.number, 0, 0, row.recognised, 0};
        entry.PartitionLength.QuadPart = row.length;
        layout.assign(136, 0);
        std::memcpy(layout.data(), &count, sizeof count);
        std::memcpy(&layout[8 + row.entry * sizeof entry], &entry, sizeof entry);
        layoutBytes = row.bytes;
        geometry.Cylinders.QuadPart = row.cylinders;
        EXPECT_EQ(Writes(), row.writes) << row.why;
    }
    layout.assign(136, 0);
    geometry = {{{2, 0}}, RemovableMedia, 1, 0xFFFFFFFF, 0x80000001};
    EXPECT_TRUE(Writes()) << "numbers that overflow";
}

TEST_F(PrepMo, ACommandThatDoesNotEndIsTerminated) {
    DWORD code = 0;
    const ImportPatch wait("WaitForSingleObject", &WaitForSingleObject, [](HANDLE process, DWORD timeoutMs) {
        EXPECT_EQ(timeoutMs, 3000u);
        return WaitForSingleObject(process, 100);
    });
    const ImportPatch end("TerminateProcess", &TerminateProcess, [&](HANDLE process, UINT exitCode) {
        return TerminateProcess(process, exitCode) && WaitForSingleObject(process, INFINITE) == WAIT_OBJECT_0 &&
               GetExitCodeProcess(process, &code);
    });
    EXPECT_EQ(prepMo.Reformat('8'), 259);
    EXPECT_EQ(code, 259u);
}

TEST_F(PrepMo, WithoutATemporaryFolderTheRootOfCIsUsed) {
    SetEnvironmentVariableW(L"TEMP", nullptr);
    EXPECT_EQ(prepMo.Reformat('7'), 7);
    EXPECT_EQ(calls,
              (Calls{"C:\\\\$$7fmtout.txt C0000000 3 2 80 inherited", "C:\\\\$$7fmtin.txt C0000000 3 2 80 inherited"}));
    for (const char* file : {"C:\\$$7fmtin.txt", "C:\\$$7fmtout.txt"}) EXPECT_TRUE(fs::remove(file));
    SetEnvironmentVariableW(L"TEMP", std::wstring(1000, L'x').c_str());
    EXPECT_EQ(prepMo.Reformat('7'), 7) << "the files cannot be created";
}

} // namespace
