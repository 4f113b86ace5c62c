#include <benchmark/benchmark.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/foundation/wait.h>

#include <algorithm>
#include <deque>
#include <vector>

// Names end in "/Tessel" and "/Bare": the report computes the ratio of each pair.

namespace {

void LockTessel(benchmark::State& state) {
    CThreadLock lock;
    for (auto _ : state) {
        lock.Lock(INFINITE);
        lock.Unlock();
    }
}

void LockBare(benchmark::State& state) {
    const HANDLE semaphore = CreateSemaphoreW(nullptr, 1, 1, nullptr);
    for (auto _ : state) {
        WaitForSingleObjectEx(semaphore, INFINITE, FALSE);
        ReleaseSemaphore(semaphore, 1, nullptr);
    }
    CloseHandle(semaphore);
}

void EventTessel(benchmark::State& state) {
    CEvent event;
    for (auto _ : state) {
        event.SetEvent();
        benchmark::DoNotOptimize(event.WaitOnEvent(INFINITE));
    }
}

void EventBare(benchmark::State& state) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (auto _ : state) {
        SetEvent(event);
        benchmark::DoNotOptimize(WaitForSingleObjectEx(event, INFINITE, FALSE));
    }
    CloseHandle(event);
}

void WaitTessel(benchmark::State& state) {
    std::deque<CEvent> events;
    CWait set;
    for (int64_t i = 0; i < state.range(0); ++i) set.AddObject(events.emplace_back(nullptr, 1, 1));
    for (auto _ : state) benchmark::DoNotOptimize(set.WaitOnAnyObject(INFINITE));
}

/// The same calls: a lock around the copy of the handles, then the wait.
void WaitBare(benchmark::State& state) {
    const auto count = static_cast<DWORD>(state.range(0));
    const HANDLE lock = CreateSemaphoreW(nullptr, 1, 1, nullptr);
    std::vector<HANDLE> handles;
    for (DWORD i = 0; i < count; ++i) handles.push_back(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    for (auto _ : state) {
        HANDLE copy[MAXIMUM_WAIT_OBJECTS];
        WaitForSingleObjectEx(lock, INFINITE, FALSE);
        std::copy_n(handles.begin(), count, copy);
        ReleaseSemaphore(lock, 1, nullptr);
        benchmark::DoNotOptimize(count == 1 ? WaitForSingleObjectEx(copy[0], INFINITE, FALSE)
                                            : WaitForMultipleObjectsEx(count, copy, FALSE, INFINITE, FALSE));
    }
    for (const HANDLE handle : handles) CloseHandle(handle);
    CloseHandle(lock);
}

BENCHMARK(LockTessel)->Name("Lock and unlock/Tessel")->UseRealTime();
BENCHMARK(LockBare)->Name("Lock and unlock/Bare")->UseRealTime();
BENCHMARK(EventTessel)->Name("Event set and wait/Tessel")->UseRealTime();
BENCHMARK(EventBare)->Name("Event set and wait/Bare")->UseRealTime();
BENCHMARK(WaitTessel)->Name("Wait on any/Tessel")->Arg(1)->Arg(8)->Arg(63)->UseRealTime();
BENCHMARK(WaitBare)->Name("Wait on any/Bare")->Arg(1)->Arg(8)->Arg(63)->UseRealTime();

} // namespace
