#include <fenestra/assertlog.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

// A lock that needs no construction: reports may arrive while other DLLs are still initialising.
SRWLOCK lock = SRWLOCK_INIT;
WND_ASSERT_RECORD ring[WND_ASSERT_RING_SIZE];
unsigned long reported = 0;
WND_ASSERT_SINK installedSink = nullptr;
void* installedContext = nullptr;
thread_local bool inSink = false;

struct Sink {
    WND_ASSERT_SINK function;
    void* context;
};

/// Holds the lock for a scope. A thread may have been ended while it held the lock, as when the program returns from
/// main() while threads report: after a second the report is made without it.
class LockGuard {
public:
    LockGuard() : m_held(TryAcquireSRWLockExclusive(&lock)) {
        for (int attempt = 0; !m_held && attempt < kAttempts; ++attempt) {
            Sleep(kAttemptPauseMs);
            m_held = TryAcquireSRWLockExclusive(&lock);
        }
    }
    ~LockGuard() {
        if (m_held) ReleaseSRWLockExclusive(&lock);
    }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    static constexpr int kAttempts = 1000;
    static constexpr DWORD kAttemptPauseMs = 1;
    bool m_held;
};

template <std::size_t Size> void CopyTruncated(char (&target)[Size], const char* text) {
    std::snprintf(target, Size, "%s", text == nullptr ? "" : text);
}

WND_ASSERT_RECORD MakeRecord(const char* expression, const char* file, unsigned int line) {
    WND_ASSERT_RECORD record{};
    record.ulLine = line;
    record.ulThreadId = GetCurrentThreadId();
    GetSystemTimeAsFileTime(&record.Time);
    CopyTruncated(record.szFile, file);
    CopyTruncated(record.szExpression, expression);
    return record;
}

Sink Store(WND_ASSERT_RECORD& record) {
    const LockGuard guard;
    record.ulNumber = ++reported;
    ring[(reported - 1) % WND_ASSERT_RING_SIZE] = record;
    return {installedSink, installedContext};
}

void WriteToDebugger(const WND_ASSERT_RECORD& record) {
    char text[sizeof record.szFile + sizeof record.szExpression + 32];
    std::snprintf(text, sizeof text, "%s(%lu): assertion: %s\n", record.szFile, record.ulLine, record.szExpression);
    OutputDebugStringA(text);
}

} // namespace

void WndLogAssert(const char* expression, const char* file, unsigned int line) {
    const DWORD lastError = GetLastError(); // a report must not change an error that its caller is about to read
    WND_ASSERT_RECORD record = MakeRecord(expression, file, line);
    const Sink sink = Store(record);
    WriteToDebugger(record);
    if (sink.function != nullptr && !inSink) {
        inSink = true;
        sink.function(record, sink.context);
        inSink = false;
    }
    SetLastError(lastError);
}

unsigned long WndGetAssertCount() {
    const LockGuard guard;
    return reported;
}

unsigned long WndReadAsserts(WND_ASSERT_RECORD* records, unsigned long maximum) {
    if (records == nullptr) return 0;
    const LockGuard guard;
    const unsigned long count = std::min({maximum, reported, WND_ASSERT_RING_SIZE});
    for (unsigned long i = 0; i < count; ++i) records[i] = ring[(reported - count + i) % WND_ASSERT_RING_SIZE];
    return count;
}

void WndSetAssertSink(WND_ASSERT_SINK sink, void* context) {
    const LockGuard guard;
    installedSink = sink;
    installedContext = context;
}
