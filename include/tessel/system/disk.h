#pragma once

#include <tessel/foundation/platform.h>

/// Prepares the disk in the workstation's magneto-optical drive: one FAT partition, then the system's format dialog.
///
/// Drive and device are settings in `HKEY_LOCAL_MACHINE\Software\Varda\RunTime\FileDefs`: "PathToMo", whose first
/// character is the drive letter, and "MOPHYSICALDRIVE", the device's path. They are read when the object is made.
/// Unlike CPrepMo it partitions whatever is on the disk, and the user formats it.
/// Threads: one at a time; the dialog belongs to the thread of its owner window.
class TESSEL_API FormatDisk {
public:
    /// Reads the settings. A value that cannot be read counts as empty; of a longer one the first 7 characters (drive)
    /// or 31 (device) are taken. A missing key is created.
    /// @param owner  window that the format dialog belongs to; stays the caller's
    explicit FormatDisk(HWND owner);

    /// Copies window and settings.
    FormatDisk(const FormatDisk&) = default;

    /// Copies window and settings.
    /// @return this object
    FormatDisk& operator=(const FormatDisk&) = default;

    virtual ~FormatDisk() = default;

    /// Writes a partition table with one FAT partition that spans the disk. What was on the disk is lost. The disk is
    /// locked in the drive meanwhile.
    ///
    /// The device is opened for reading only, so a system that asks for more refuses the table.
    /// @return 1: written; 0: there is no device setting, the device cannot be opened, there is no disk in it, or it
    ///         refused
    int Partition();

    /// Shows the system's format dialog (SHFormatDrive) with a full format chosen, and waits for it. Without a drive
    /// letter in the settings, or with z in lower case, the system is given drive number -1.
    /// @return what the system says: SHFMT_ERROR, SHFMT_CANCEL, SHFMT_NOFORMAT, or the format that was made
    unsigned int ShowFormatDialog();

    /// Partitions the disk and, when that is done, shows the format dialog.
    /// @return as ShowFormatDialog(); 1: it was not partitioned
    int PartitionAndFormatMo();

private:
    friend struct FormatDiskLayout;

    int GetMoDriveLetter();
    int DriveLetterToNumber();

    HWND m_hOwner;
    wchar_t m_szDrive[8];
    wchar_t m_szDevice[32];
};

/// Prepares a magneto-optical disk without asking: partitions it unless it is partitioned already, and formats it
/// with the system's command.
///
/// Objects have no state: any thread may use any of them, but only one thread of all processes at a time a drive.
class TESSEL_API CPrepMo {
public:
    CPrepMo() = default;

    /// There is nothing to copy.
    CPrepMo(const CPrepMo&) = default;

    /// There is nothing to copy.
    /// @return this object
    CPrepMo& operator=(const CPrepMo&) = default;

    virtual ~CPrepMo() = default;

    /// Partitions the disk in a drive and formats it. What was on it is lost.
    /// @param driveLetter  the drive's letter, a character
    /// @param driveNumber  number of the physical drive: 1 for "\\.\PHYSICALDRIVE1"
    /// @return as the other form
    int PartitionAndFormat(unsigned short driveLetter, int driveNumber);

    /// Partitions the disk in a drive and formats it. What was on it is lost.
    ///
    /// A disk of a known size with a recognised partition that has a number and is shorter than the disk is not
    /// partitioned anew; a layout of a single entry does not count.
    /// @param driveLetter  the drive's letter, a character
    /// @param devicePath   path of the physical drive, opened only when a partition table is to be written
    /// @return as Reformat(); ERROR_INVALID_DRIVE (15): no letter or no path; ERROR_NOT_ENOUGH_MEMORY (8);
    ///         ERROR_DISK_OPERATION_FAILED (1127): the drive found the table wrong; else the Win32 error
    int PartitionAndFormat(unsigned short driveLetter, const wchar_t* devicePath);

    /// Formats the disk in a drive quickly, for the FAT file system, by the command "Format.com", which is given 3
    /// seconds. The system looks for the command beside the program first. One that is ended may still be ending when
    /// this returns.
    ///
    /// The command's input and output are the files $$Efmtin.txt and $$Efmtout.txt (for drive E) in the folder that
    /// the environment variable "TEMP" names, or in C:\. They stay there; where they cannot be made, the command does
    /// without. Its input is at its end: a command that waits for an answer finds none.
    /// @param driveLetter  the drive's letter, a character; 0: the command runs without arguments and decides
    /// @return the command's exit code; 259: it took too long and was ended; ERROR_NOT_ENOUGH_MEMORY (8); else the
    /// Win32 error that kept it from starting
    int Reformat(unsigned short driveLetter);
};
