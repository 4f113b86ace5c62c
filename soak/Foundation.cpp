#include "Subject.h"

#include <tessel/foundation/event.h>
#include <tessel/foundation/identifier.h>
#include <tessel/foundation/memory.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/foundation/wait.h>
#include <tessel/system/file.h>

#include <cstring>

namespace {

const unsigned char kData[1000] = "soak";

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

void UseMemory(int kind, const wchar_t* name) {
    CMemory memory(kind, 4096, name, CMemory::OPENTYPE_CREATE_ALWAYS, 0);
    Require(memory.GetStatus() == 0 && memory.WriteMemory(kData, sizeof kData, 0) == 0, "memory is written");
    const CMemory copy(memory);
    unsigned char* read = nullptr;
    Require(memory.ReadMemory(&read, sizeof kData, 0) == 0 && std::memcmp(read, kData, sizeof kData) == 0,
            "memory is read");
}

void UseAllMemory() {
    UseMemory(CMemory::KIND_HEAP, nullptr);
    CMemMappedFile mapping(L"Tessel soak mapping", 4096, PAGE_READWRITE, 0, nullptr);
    Require(mapping.MapView(FILE_MAP_WRITE, 0, 0, 0) != nullptr, "there is a mapping");
    UseMemory(CMemory::KIND_MAPPING, L"Tessel soak mapping");
    UseMemory(CMemory::KIND_FILE, L"soak.tmp");
    CMemory::RemoveFile(L"soak.tmp");
    CMemory global(CMemory::KIND_GLOBAL, 0, nullptr, CMemory::OPENTYPE_CREATE_ALWAYS, 0);
    Require(global.GetBuffer(1000) != nullptr, "there is global memory");
}

void MakeIdentifiers() {
    COCuid made;
    Require(made.Create() == 0, "an identifier is created");
    COCuid read;
    read = made.GetString();
    Require(read == made, "its text reads as the same identifier");
}

const Subject locks("locks", UseLocks);
const Subject waits("waits", Wait);
const Subject memory("memory", UseAllMemory);
const Subject identifiers("identifiers", MakeIdentifiers);

} // namespace
