#pragma once

#include <tessel/foundation/platform.h>

/// Thread priorities, as SetThreadPriority takes them.
enum PRIORITY : int {
    PRIORITY_LOWEST = -2,       ///< THREAD_PRIORITY_LOWEST
    PRIORITY_BELOW_NORMAL = -1, ///< THREAD_PRIORITY_BELOW_NORMAL
    PRIORITY_NORMAL = 0,        ///< THREAD_PRIORITY_NORMAL
    PRIORITY_ABOVE_NORMAL = 1,  ///< THREAD_PRIORITY_ABOVE_NORMAL
    PRIORITY_HIGHEST = 2        ///< THREAD_PRIORITY_HIGHEST
};

/// @name Processes and threads
/// Any thread may call these functions.
///@{

/// Id of the calling process (GetCurrentProcessId).
/// @return the Win32 process id
TESSEL_API unsigned long GetMyProcess();

/// Id of the calling thread (GetCurrentThreadId).
/// @return the Win32 thread id
TESSEL_API unsigned long GetMyThread();

/// Suspends the calling thread (Sleep).
/// @param ms  milliseconds
TESSEL_API void Sleeper(int ms);

/// Starts a thread of the C runtime (_beginthread) and yields the rest of the time slice.
/// @param entry      function to run; the runtime closes the thread's handle when it returns
/// @param stackSize  bytes of stack; 0 for the program's default
/// @param argument   passed to @p entry unchanged
/// @return the runtime's result, the low 32 bits of the handle; 0xFFFFFFFF: failure (errno)
TESSEL_API unsigned long BeginThread(void (*entry)(void*), unsigned int stackSize, void* argument);

/// Ends the calling thread, started by BeginThread() (_endthread). Destructors of its objects do not run.
TESSEL_API void EndThread();

/// Priority of the calling thread (GetThreadPriority).
/// @return the priority; THREAD_PRIORITY_ERROR_RETURN: failure
TESSEL_API int GetPriority();

/// Sets the priority of the calling thread (SetThreadPriority).
/// @param priority  the new one
/// @return 0: set; else the Win32 error
TESSEL_API int SetPriority(PRIORITY priority);

/// Priority class of a process (GetPriorityClass).
/// @param process  process handle, owned by the caller
/// @return the class; 0: failure (GetLastError())
TESSEL_API unsigned long GetPriorityOfClass(HANDLE process);

/// Sets the priority class of the calling process (SetPriorityClass).
/// @param priority  below 0, down to -2: idle; 1: high; 2: real-time; anything else: normal
/// @return not 0: set; 0: failure (GetLastError())
TESSEL_API int SetProcess(PRIORITY priority);

/// Whether another process already uses the name. Marks this process as running until it ends, even if another one
/// is found, and keeps a handle: call it once, and do not poll with it.
/// @param name  name of a mutex
/// @return 1: another instance is running, or the check failed; 0: this is the first
TESSEL_API int SingleInstance(const wchar_t* name);
///@}
