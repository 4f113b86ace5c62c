#include "Subject.h"

#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/foundation/wait.h>

namespace {

void UseLocks() {
    CThreadLock own;
    const CThreadLock shared(L"Tessel soak lock");
    CThreadLock copy(shared);
    Require(own.Lock(0) == 0 && own.Unlock() == 1, "an own lock is free");
    Require(copy.Lock(0) == 0 && copy.Unlock() == 1, "a shared lock is free");
}

void Wait() {
    CEvent event(L"Tessel soak event", 1);
    CSemaphore semaphore(nullptr, 0, 10);
    CWait either;
    either.AddObject(event);
    either.AddObject(semaphore);
    CWait copy(either);
    void* signalled = nullptr;
    event.SetEvent();
    Require(copy.WaitOnAnyObject(signalled, 1000) == 0 && signalled == event.GetHandle(), "the event is signalled");
    event.ResetEvent();
    semaphore.ReleaseSemaphore(1);
    Require(either.WaitOnAnyObject(signalled, 1000) == 0 && signalled == semaphore.GetHandle(), "there is a permit");
}

const Subject locks("locks", UseLocks);
const Subject waits("waits", Wait);

} // namespace
