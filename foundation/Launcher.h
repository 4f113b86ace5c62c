#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// What a started program reads from and writes to.
struct StandardStreams {
    HANDLE input;  ///< inheritable
    HANDLE output; ///< inheritable
};

/// Starts a program with its window shown, without inheritance, then yields the processor once.
/// @param application  program file; null: the first word of the command line
/// @param commandLine  may be changed by the system
/// @param process      receives the open handles of process and thread, which the caller closes, and their ids
/// @return true: started; false: see GetLastError()
bool StartShown(const wchar_t* application, wchar_t* commandLine, PROCESS_INFORMATION& process);

/// Starts a program as the other form does, in a directory and without the start-up flags of this process.
/// @param commandLine  starts with the program; may be changed by the system
/// @param directory    working directory; empty: that of this process
/// @param process      receives the open handles of process and thread, which the caller closes, and their ids
/// @return true: started; false: see GetLastError()
bool StartShown(char* commandLine, const char* directory, PROCESS_INFORMATION& process);

/// Runs a program without a window. It inherits the inheritable handles of this process.
/// @param commandLine  starts with the program; may be changed by the system
/// @param streams      standard streams of the program; null: the default ones
/// @param timeoutMs    milliseconds, after which the program is terminated with STILL_ACTIVE
/// @param exitCode     receives the exit code; STILL_ACTIVE after a time-out. Unchanged after a failure
/// @return true: it ran; false: it could not be started, see GetLastError()
bool RunHidden(wchar_t* commandLine, const StandardStreams* streams, DWORD timeoutMs, DWORD& exitCode);

} // namespace tessel
