#include <tessel/tessel.h>

#include <cstdio>
#include <thread>

int main() {
    CSemaphore work(nullptr, 0, 100);
    CEvent stop(nullptr, 1);
    std::thread worker([&work, &stop] {
        CWait either;
        either.AddObject(work); // of several signalled objects, the first is taken
        either.AddObject(stop);
        void* signalled = nullptr;
        while (either.WaitOnAnyObject(signalled, INFINITE) == STATUS_OK && signalled == work.GetHandle()) {
            std::puts("one piece of work done");
        }
    });
    work.ReleaseSemaphore(3);
    stop.SetEvent();
    worker.join();
}
