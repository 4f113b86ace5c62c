#pragma once

#include <tessel/foundation/platform.h>

/// Prepares the disk in the workstation's magneto-optical drive: one FAT partition, then the system's format dialog.
///
/// Drive and device are settings in `HKEY_LOCAL_MACHINE\Software\Varda\RunTime\FileDefs`: "PathToMo", whose first
/// character is the drive letter, and "MOPHYSICALDRIVE", the path of the device. The constructor reads them.
/// Unlike CPrepMo, this class always partitions the disk and lets the user format it.
/// Threads: only one thread at a time may use an object; the dialog belongs to the thread of its owner window.
class TESSEL_API FormatDisk {
public:
    /// Reads the settings. A value that cannot be read counts as empty; a longer one is truncated to 7 (drive) or 31
    /// (device) characters. A missing key is created.
    /// @param owner  owner window of the format dialog
    explicit FormatDisk(HWND owner);

    /// Copies window and settings.
    FormatDisk(const FormatDisk&) = default;

    /// Copies window and settings.
    /// @return this object
    FormatDisk& operator=(const FormatDisk&) = default;

    virtual ~FormatDisk() = default;

    /// Writes a partition table with one FAT partition that spans the disk. All data on the disk are lost. Meanwhile
    /// the disk is locked in the drive.
    ///
    /// The device is opened for reading only: a system that requires write access refuses the table.
    /// @return 1: written; 0: there is no device setting, the device cannot be opened or has no disk, or it refused
    int Partition();

    /// Shows the system's format dialog (SHFormatDrive) with a full format selected, and waits for it. Without a drive
    /// letter in the settings, or with z in lower case, the drive number is -1.
    /// @return the result of the system: SHFMT_ERROR, SHFMT_CANCEL, SHFMT_NOFORMAT, or the format
    unsigned int ShowFormatDialog();

    /// Partitions the disk and, if that succeeds, shows the format dialog.
    /// @return as ShowFormatDialog(); 1: the disk was not partitioned
    int PartitionAndFormatMo();

private:
    friend struct FormatDiskLayout;

    int GetMoDriveLetter();
    int DriveLetterToNumber();

    HWND m_hOwner;
    wchar_t m_szDrive[8];
    wchar_t m_szDevice[32];
};

/// Prepares a magneto-optical disk without asking the user: partitions it if necessary, and formats it with the
/// system's command.
///
/// Threads: objects have no state and any thread may use them, but only one thread of all processes at a time may
/// prepare a drive.
class TESSEL_API CPrepMo {
public:
    CPrepMo() = default;

    /// Copies nothing.
    CPrepMo(const CPrepMo&) = default;

    /// Copies nothing.
    /// @return this object
    CPrepMo& operator=(const CPrepMo&) = default;

    virtual ~CPrepMo() = default;

    /// Partitions the disk in a drive and formats it. All data on it are lost.
    /// @param driveLetter  drive letter, as a character
    /// @param driveNumber  number of the physical drive: 1 for "\\.\PHYSICALDRIVE1"
    /// @return as the other form
    int PartitionAndFormat(unsigned short driveLetter, int driveNumber);

    /// Partitions the disk in a drive and formats it. All data on it are lost.
    ///
    /// A disk of known size with a recognised, numbered partition shorter than the disk is not partitioned again; a
    /// partition table with a single entry is ignored.
    /// @param driveLetter  drive letter, as a character
    /// @param devicePath   path of the physical drive; opened only to write a partition table
    /// @return as Reformat(); ERROR_INVALID_DRIVE (15): no letter or no path; ERROR_NOT_ENOUGH_MEMORY (8);
    ///         ERROR_DISK_OPERATION_FAILED (1127): the drive rejected the table; else the Win32 error
    int PartitionAndFormat(unsigned short driveLetter, const wchar_t* devicePath);

    /// Formats the disk in a drive with the command "Format.com": quick format, FAT file system. The command is
    /// terminated after 3 seconds and may still be ending when this returns. The system looks for the command in the
    /// program's own folder first.
    ///
    /// Input and output of the command are the files $$Efmtin.txt and $$Efmtout.txt (for drive E) in the folder of the
    /// environment variable "TEMP", or in C:\. They are not removed; if they cannot be created, the command runs
    /// without them. The input is positioned at its end: a command that waits for an answer gets none.
    /// @param driveLetter  drive letter, as a character; 0: the command runs without arguments
    /// @return exit code of the command; 259: it was terminated; ERROR_NOT_ENOUGH_MEMORY (8); else the Win32 error of
    ///         starting it
    int Reformat(unsigned short driveLetter);
};
