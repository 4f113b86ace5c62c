#include <tessel/foundation/process.h>

#include <process.h>

#include <algorithm>
#include <iterator>

namespace {

struct ClassOfPriority {
    int priority;
    DWORD priorityClass;
};

constexpr ClassOfPriority kClasses[] = {{PRIORITY_LOWEST, IDLE_PRIORITY_CLASS},
                                        {PRIORITY_BELOW_NORMAL, IDLE_PRIORITY_CLASS},
                                        {PRIORITY_ABOVE_NORMAL, HIGH_PRIORITY_CLASS},
                                        {PRIORITY_HIGHEST, REALTIME_PRIORITY_CLASS}};

} // namespace

unsigned long GetMyProcess() {
    return GetCurrentProcessId();
}

unsigned long GetMyThread() {
    return GetCurrentThreadId();
}

void Sleeper(int ms) {
    Sleep(static_cast<DWORD>(ms));
}

unsigned long BeginThread(void (*entry)(void*), unsigned int stackSize, void* argument) {
    const auto thread = static_cast<unsigned long>(_beginthread(entry, stackSize, argument));
    Sleep(0);
    return thread;
}

void EndThread() {
    _endthread();
}

int GetPriority() {
    return GetThreadPriority(GetCurrentThread());
}

int SetPriority(PRIORITY priority) {
    return SetThreadPriority(GetCurrentThread(), priority) ? 0 : static_cast<int>(GetLastError());
}

unsigned long GetPriorityOfClass(HANDLE process) {
    return GetPriorityClass(process);
}

int SetProcess(PRIORITY priority) {
    const auto* const found = std::find_if(std::begin(kClasses), std::end(kClasses),
                                           [priority](ClassOfPriority entry) { return entry.priority == priority; });
    return SetPriorityClass(GetCurrentProcess(),
                            found == std::end(kClasses) ? NORMAL_PRIORITY_CLASS : found->priorityClass);
}

int SingleInstance(const wchar_t* name) {
    // The handle is never closed: it marks the process as running until it ends.
    if (CreateMutexW(nullptr, FALSE, name) == nullptr) return 1;
    return GetLastError() == ERROR_ALREADY_EXISTS ? 1 : 0;
}
