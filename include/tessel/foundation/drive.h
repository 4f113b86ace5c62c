#pragma once

#include <tessel/foundation/platform.h>

/// @name Files and drives
/// Any thread may call these functions.
///@{

/// The low 16 bits of a word.
/// @param word  32 bits
/// @return the low half
TESSEL_API unsigned short LOFROMWORD(unsigned long word);

/// Deletes a file (DeleteFileW).
/// @param name  the file
/// @return not 0: deleted; 0: failure (GetLastError())
TESSEL_API int FileDelete(const wchar_t* name);

/// Writes to a file whose handle is passed as a window handle (WriteFile).
/// @param target  a file handle, whatever its declared type
/// @param buffer  what to write
/// @param count   bytes, not characters
/// @return 0: all bytes written; 1: fewer, or failure (GetLastError())
TESSEL_API int WriteTarget(HWND target, const wchar_t* buffer, unsigned long count);

/// Serial number of the volume that contains a path.
/// @param path  a path that starts with a drive letter
/// @return the number; 0: failure (GetLastError())
TESSEL_API unsigned long GetVolumeSerialNumber(const wchar_t* path);

/// Space on a drive (GetDiskFreeSpaceExW). An empty removable drive does not bring up a system dialog.
/// @param path          a folder on the drive
/// @param freeToCaller  receives the bytes available to the caller; unchanged after a failure
/// @param total         receives the bytes of the drive; unchanged after a failure
/// @return not 0: success; 0: failure (GetLastError())
TESSEL_API int GetDriveFreeSpace(const wchar_t* path, unsigned long long* freeToCaller, unsigned long long* total);
///@}
