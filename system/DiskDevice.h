#pragma once

#include <tessel/foundation/platform.h>

#include <winioctl.h>

#include <cstddef>
#include <memory>

namespace tessel {

/// A disk that is spoken to through an aligned block, as unbuffered devices ask for. It is closed with the object.
///
/// An operation that gives false, except HasBlock(), leaves the cause in GetLastError().
class DiskDevice {
public:
    /// Bytes of the block.
    static constexpr DWORD kBlockSize = 2048;

    /// Allocates the block and opens nothing.
    DiskDevice();
    ~DiskDevice();
    DiskDevice(const DiskDevice&) = delete;
    DiskDevice& operator=(const DiskDevice&) = delete;

    /// Whether there was memory for the block, without which only opening is allowed.
    /// @return true: there is a block
    bool HasBlock() const { return m_block != nullptr; }

    /// What the disk said last.
    /// @return the block, aligned to its size
    const unsigned char* Block() const { return m_block; }

    /// Opens the disk, which is closed, unbuffered.
    /// @param path    device or volume
    /// @param access  as CreateFileW takes it
    /// @param share   as CreateFileW takes it
    /// @return true: open
    bool Open(const wchar_t* path, DWORD access, DWORD share);

    /// Closes the disk, if it is open.
    void Close();

    /// Locks the medium in the drive, or frees it.
    /// @param prevent  whether it is locked
    /// @return true: done
    bool PreventRemoval(bool prevent);

    /// Asks whether a medium is there.
    /// @return true: it is
    bool HasMedium();

    /// Fetches the partition table into the block.
    /// @param bytes  receives its length
    /// @return true: fetched
    bool ReadLayout(DWORD& bytes);

    /// Fetches the geometry.
    /// @param geometry  receives it
    /// @return true: fetched
    bool ReadGeometry(DISK_GEOMETRY& geometry);

    /// Writes a partition table with one FAT partition, which begins with the second track and ends with the medium.
    /// @param geometry  the medium's
    /// @return true: written
    bool WriteOnePartition(const DISK_GEOMETRY& geometry);

private:
    bool Control(DWORD code, DWORD inSize, DWORD outSize, DWORD& returned);

    std::unique_ptr<unsigned char[]> m_memory;
    unsigned char* m_block;
    HANDLE m_device;
};

/// How much a medium holds.
/// @param geometry  the medium's
/// @return bytes
LONGLONG MediumSize(const DISK_GEOMETRY& geometry);

} // namespace tessel
