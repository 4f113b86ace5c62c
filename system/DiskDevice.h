#pragma once

#include <foundation/Handle.h>
#include <tessel/foundation/platform.h>

#include <winioctl.h>

#include <cstddef>
#include <memory>

namespace tessel {

/// A disk that is read and written through an aligned block, as unbuffered devices require. Closed with the object.
///
/// When an operation other than HasBlock() returns false, GetLastError() has the reason.
class DiskDevice {
public:
    /// Bytes of the block.
    static constexpr DWORD kBlockSize = 2048;

    /// Allocates the block and opens nothing.
    DiskDevice();

    /// Whether the block could be allocated. Without it, only Open() and Close() may be called.
    /// @return true: there is a block
    bool HasBlock() const { return m_block != nullptr; }

    /// The last answer of the disk.
    /// @return the block, aligned to its size
    const unsigned char* Block() const { return m_block; }

    /// Opens the disk unbuffered.
    /// @param path    device or volume
    /// @param access  as CreateFileW takes it
    /// @param share   as CreateFileW takes it
    /// @return true: open
    bool Open(const wchar_t* path, DWORD access, DWORD share);

    /// Closes the disk, if it is open.
    void Close();

    /// Locks the medium in the drive, or releases it.
    /// @param prevent  true: lock
    /// @return true: done
    bool PreventRemoval(bool prevent);

    /// Checks for a medium.
    /// @return true: there is one
    bool HasMedium();

    /// Reads the partition table into the block.
    /// @param bytes  receives its length
    /// @return true: read
    bool ReadLayout(DWORD& bytes);

    /// Reads the geometry.
    /// @param geometry  receives it
    /// @return true: read
    bool ReadGeometry(DISK_GEOMETRY& geometry);

    /// Writes a partition table with one FAT partition from the second track to the end of the medium.
    /// @param geometry  the medium's
    /// @return true: written
    bool WriteOnePartition(const DISK_GEOMETRY& geometry);

private:
    bool Control(DWORD code, DWORD inSize, DWORD outSize, DWORD& returned);

    std::unique_ptr<unsigned char[]> m_memory;
    unsigned char* m_block;
    Handle m_device;
};

/// Capacity of a medium.
/// @param geometry  the medium's
/// @return bytes
LONGLONG MediumSize(const DISK_GEOMETRY& geometry);

} // namespace tessel
