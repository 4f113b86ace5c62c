#include <messaging/office/Identity.h>

#include <atomic>
#include <bit>

namespace tessel {

namespace {

constexpr int kStampShift = 44;
constexpr std::uint64_t kStamps = (1U << 20) - 1; // 0 says that the time is not known
constexpr std::uint64_t kStampUnits = 10000;      // of a FILETIME: one millisecond

using GetTimes = BOOL(WINAPI*)(HANDLE, LPFILETIME, LPFILETIME, LPFILETIME, LPFILETIME);

/// The stamp of a process or thread, at its place in the record; 0 if the system does not give the time.
Identity Stamp(HANDLE object, GetTimes times) {
    FILETIME created{};
    FILETIME unused{};
    if (!times(object, &created, &unused, &unused, &unused)) return 0;
    return (std::bit_cast<std::uint64_t>(created) / kStampUnits % kStamps + 1) << kStampShift;
}

/// @param error  what the system said if there is no handle
Watched Watch(HANDLE opened, unsigned long error, std::uint64_t record, GetTimes times) {
    Handle handle(opened);
    if (!handle) return {Handle(), error == ERROR_INVALID_PARAMETER}; // else it runs, but access is denied
    const Identity recorded = IdentityIn(record) >> kStampShift;
    const Identity actual = Stamp(opened, times) >> kStampShift;
    const bool another = recorded != 0 && actual != 0 && recorded != actual;
    if (another || WaitForSingleObject(opened, 0) == WAIT_OBJECT_0) return {Handle(), true};
    return {std::move(handle), false};
}

/// Keeps the stamp of each thread, so that only its first call asks for the time.
class ThreadStamps {
public:
    ThreadStamps() : m_slot(TlsAlloc()) {}
    ~ThreadStamps() { (void)TlsFree(m_slot); } // fails only if there was no slot
    ThreadStamps(const ThreadStamps&) = delete;
    ThreadStamps& operator=(const ThreadStamps&) = delete;

    Identity OfThisThread() const {
        auto stamp = reinterpret_cast<std::uintptr_t>(TlsGetValue(m_slot)); // 0 also without a slot
        if (stamp == 0) {
            stamp = static_cast<std::uintptr_t>(Stamp(GetCurrentThread(), &GetThreadTimes) >> kStampShift);
            (void)TlsSetValue(m_slot, reinterpret_cast<void*>(stamp)); // without a slot the next call asks again
        }
        return static_cast<Identity>(stamp) << kStampShift;
    }

private:
    DWORD m_slot;
};

const ThreadStamps threadStamps;

// No lock guards it, as a thread that is ended inside would never release it; all threads compute the same value.
std::atomic<Identity> ownProcess = 0;

} // namespace

Identity ThisThread() {
    return threadStamps.OfThisThread() | GetCurrentThreadId();
}

Identity ThisProcess() {
    Identity self = ownProcess;
    if (self == 0) ownProcess = self = Stamp(GetCurrentProcess(), &GetProcessTimes) | GetCurrentProcessId();
    return self;
}

Watched WatchThread(std::uint64_t thread) {
    HANDLE const opened = OpenThread(SYNCHRONIZE | THREAD_QUERY_LIMITED_INFORMATION, FALSE, IdIn(thread));
    return Watch(opened, GetLastError(), thread, &GetThreadTimes);
}

Watched WatchProcess(std::uint64_t process) {
    HANDLE const opened = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, IdIn(process));
    return Watch(opened, GetLastError(), process, &GetProcessTimes);
}

} // namespace tessel
