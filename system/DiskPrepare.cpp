#include <foundation/Handle.h>
#include <foundation/Launcher.h>
#include <system/DiskDevice.h>
#include <tessel/system/disk.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <new>
#include <string>

namespace {

using tessel::DiskDevice;

constexpr DWORD kAccess = GENERIC_READ | GENERIC_WRITE;

/// Whether a partition table, as read from the device, has a usable partition for a medium of that size.
bool HasPartition(const unsigned char* table, DWORD bytes, LONGLONG mediumSize) {
    constexpr DWORD kHead = offsetof(DRIVE_LAYOUT_INFORMATION, PartitionEntry);
    DWORD count = 0;
    std::memcpy(&count, table + offsetof(DRIVE_LAYOUT_INFORMATION, PartitionCount), sizeof count);
    count = std::min<DWORD>(count, (bytes - kHead) / sizeof(PARTITION_INFORMATION)); // GUARD-184
    for (DWORD i = 0; i < count; ++i) {
        PARTITION_INFORMATION entry;
        std::memcpy(&entry, table + kHead + i * sizeof entry, sizeof entry);
        if (entry.RecognizedPartition && entry.PartitionNumber != 0 && entry.PartitionLength.QuadPart < mediumSize) {
            return true;
        }
    }
    return false;
}

/// A copy of the partition table of a medium, as the device's block is reused.
struct OldTable {
    DWORD bytes; ///< 0: there is none
    unsigned char data[DiskDevice::kBlockSize];

    void CopyFrom(const DiskDevice& disk, DWORD read) {
        // ODD-194: a table of one entry, as long as the smallest record, is ignored
        bytes = read > sizeof(DRIVE_LAYOUT_INFORMATION) && read <= sizeof data ? read : 0;
        std::memcpy(data, disk.Block(), bytes);
    }
    bool IsUsable(LONGLONG mediumSize) const {
        return bytes != 0 && mediumSize != 0 && HasPartition(data, bytes, mediumSize);
    }
};

DWORD WriteTable(DiskDevice& disk, const wchar_t* devicePath, const DISK_GEOMETRY& geometry) {
    if (devicePath == nullptr || *devicePath == L'\0') return ERROR_INVALID_DRIVE; // GUARD-09
    if (!disk.Open(devicePath, kAccess, FILE_SHARE_WRITE)) return GetLastError();
    if (disk.WriteOnePartition(geometry)) return ERROR_SUCCESS;
    const DWORD error = GetLastError();
    return error != ERROR_INVALID_PARAMETER ? error : ERROR_DISK_OPERATION_FAILED;
}

/// Partitions a medium unless it is partitioned already.
DWORD Partition(unsigned short driveLetter, const wchar_t* devicePath) {
    if (driveLetter == 0) return ERROR_INVALID_DRIVE;
    const wchar_t volume[] = {L'\\', L'\\', L'.', L'\\', static_cast<wchar_t>(driveLetter), L':', L'\0'};
    DiskDevice disk;
    if (!disk.Open(volume, kAccess, FILE_SHARE_WRITE)) return GetLastError();
    if (!disk.HasBlock()) return ERROR_NOT_ENOUGH_MEMORY;
    DWORD bytes = 0;
    if (!disk.ReadLayout(bytes)) return GetLastError();
    OldTable old;
    old.CopyFrom(disk, bytes);
    DISK_GEOMETRY geometry{};
    if (!disk.ReadGeometry(geometry)) return GetLastError();
    if (old.IsUsable(tessel::MediumSize(geometry))) return ERROR_SUCCESS;
    disk.Close();
    return WriteTable(disk, devicePath, geometry);
}

std::wstring TemporaryFolder() {
    std::wstring folder(GetEnvironmentVariableW(L"TEMP", nullptr, 0), L'\0');
    if (folder.empty()) return L"C:\\";
    const DWORD length = GetEnvironmentVariableW(L"TEMP", folder.data(), static_cast<DWORD>(folder.size()));
    folder.resize(std::min<std::size_t>(length, folder.size() - 1)); // without the terminator
    return folder;
}

/// Creates a file that the command inherits.
/// @return INVALID_HANDLE_VALUE: it cannot be created; the command gets that value, too
tessel::Handle CreateInheritedFile(const std::wstring& path) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return tessel::Handle(CreateFileW(path.c_str(), kAccess, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// Runs a command without a window for up to 3 seconds.
/// @return its exit code; STILL_ACTIVE (259): it was terminated; the system's error: it could not be started
DWORD Run(wchar_t* commandLine, const tessel::StandardStreams& streams) {
    constexpr DWORD kTimeoutMs = 3000;
    DWORD exitCode = 0;
    return tessel::RunHidden(commandLine, &streams, kTimeoutMs, exitCode) ? exitCode : GetLastError();
}

DWORD Format(wchar_t driveLetter) {
    const std::wstring start = TemporaryFolder() + L"\\$$" + driveLetter;
    const tessel::Handle output = CreateInheritedFile(start + L"fmtout.txt");
    const tessel::Handle input = CreateInheritedFile(start + L"fmtin.txt");
    DWORD written = 0;
    // ODD-197: the command inherits the position after the answer, so that it cannot read the answer. Whether it was
    // written makes no difference.
    (void)WriteFile(input.Get(), L"\n\0", 2 * sizeof(wchar_t), &written, nullptr);
    std::wstring commandLine = std::wstring(L"Format.com ") + driveLetter + L": /fs:FAT /q";
    return Run(commandLine.data(), {input.Get(), output.Get()});
}

} // namespace

int CPrepMo::PartitionAndFormat(unsigned short driveLetter, int driveNumber) {
    constexpr std::size_t kDevicePathSize = 40;
    wchar_t devicePath[kDevicePathSize];
    (void)std::swprintf(devicePath, kDevicePathSize, L"\\\\.\\PHYSICALDRIVE%d", driveNumber); // always fits
    return PartitionAndFormat(driveLetter, devicePath);
}

int CPrepMo::PartitionAndFormat(unsigned short driveLetter, const wchar_t* devicePath) {
    const DWORD status = Partition(driveLetter, devicePath);
    return status != ERROR_SUCCESS ? static_cast<int>(status) : Reformat(driveLetter);
}

int CPrepMo::Reformat(unsigned short driveLetter) {
    try {
        return static_cast<int>(Format(static_cast<wchar_t>(driveLetter)));
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}
