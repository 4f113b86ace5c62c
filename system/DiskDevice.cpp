#include <system/DiskDevice.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace tessel {

namespace {

constexpr std::size_t kMemorySize = 4096;

constexpr std::size_t kEntries = 4;

/// The partition table as the device takes it.
struct DriveLayout {
    DWORD count;
    DWORD signature;
    PARTITION_INFORMATION entries[kEntries];
};

static_assert(sizeof(DriveLayout) == 136 && offsetof(DriveLayout, entries) == 8);

// Unsigned, so that a faulty device's numbers wrap instead of overflowing.
DriveLayout OnePartition(const DISK_GEOMETRY& geometry) {
    DriveLayout layout{};
    layout.count = kEntries;
    for (PARTITION_INFORMATION& entry : layout.entries) entry.RewritePartition = TRUE;
    PARTITION_INFORMATION& first = layout.entries[0];
    const std::uint64_t start = std::uint64_t{geometry.SectorsPerTrack} * geometry.BytesPerSector;
    first.StartingOffset.QuadPart = static_cast<LONGLONG>(start);
    first.PartitionLength.QuadPart = static_cast<LONGLONG>(static_cast<std::uint64_t>(MediumSize(geometry)) - start);
    first.HiddenSectors = geometry.SectorsPerTrack;
    first.PartitionNumber = 1;
    first.PartitionType = PARTITION_HUGE;
    first.BootIndicator = TRUE;
    first.RecognizedPartition = TRUE;
    return layout;
}

} // namespace

// Unsigned, as in OnePartition().
LONGLONG MediumSize(const DISK_GEOMETRY& geometry) {
    return static_cast<LONGLONG>(static_cast<std::uint64_t>(geometry.Cylinders.QuadPart) * geometry.TracksPerCylinder *
                                 geometry.SectorsPerTrack * geometry.BytesPerSector);
}

DiskDevice::DiskDevice() : m_memory(new (std::nothrow) unsigned char[kMemorySize]{}), m_block(m_memory.get()) {
    if (m_block == nullptr) return;
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(m_block) % kBlockSize;
    if (beyond != 0) m_block += kBlockSize - beyond;
}

bool DiskDevice::Open(const wchar_t* path, DWORD access, DWORD share) {
    m_device.Reset(CreateFileW(path, access, share, nullptr, OPEN_EXISTING, FILE_FLAG_NO_BUFFERING, nullptr));
    return static_cast<bool>(m_device);
}

void DiskDevice::Close() {
    m_device.Reset();
}

bool DiskDevice::Control(DWORD code, DWORD inSize, DWORD outSize, DWORD& returned) {
    return DeviceIoControl(m_device.Get(), code, inSize != 0 ? m_block : nullptr, inSize,
                           outSize != 0 ? m_block : nullptr, outSize, &returned, nullptr) != 0;
}

bool DiskDevice::PreventRemoval(bool prevent) {
    DWORD returned = 0;
    const PREVENT_MEDIA_REMOVAL order{static_cast<BOOLEAN>(prevent)};
    std::memcpy(m_block, &order, sizeof order);
    return Control(IOCTL_STORAGE_MEDIA_REMOVAL, sizeof order, 0, returned);
}

bool DiskDevice::HasMedium() {
    DWORD returned = 0;
    return Control(IOCTL_STORAGE_CHECK_VERIFY, 0, 0, returned);
}

bool DiskDevice::ReadLayout(DWORD& bytes) {
    return Control(IOCTL_DISK_GET_DRIVE_LAYOUT, 0, kBlockSize, bytes);
}

bool DiskDevice::ReadGeometry(DISK_GEOMETRY& geometry) {
    DWORD returned = 0;
    std::memset(m_block, 0, sizeof geometry); // no rest of a partition table where the device returns less
    if (!Control(IOCTL_DISK_GET_DRIVE_GEOMETRY, 0, sizeof geometry, returned)) return false;
    std::memcpy(&geometry, m_block, sizeof geometry);
    return true;
}

bool DiskDevice::WriteOnePartition(const DISK_GEOMETRY& geometry) {
    DWORD returned = 0;
    const DriveLayout layout = OnePartition(geometry);
    std::memcpy(m_block, &layout, sizeof layout);
    return Control(IOCTL_DISK_SET_DRIVE_LAYOUT, sizeof layout, 0, returned);
}

} // namespace tessel
