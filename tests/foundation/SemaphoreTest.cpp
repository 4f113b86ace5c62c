#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>

#include <thread>

TEST(Semaphore, Odd05ResultConventionsDifferFromOperationToOperation) {
    CSemaphore semaphore(nullptr, 1, 2);
    EXPECT_EQ(semaphore.WaitOnSemaphore(0), 0);
    EXPECT_EQ(semaphore.WaitOnSemaphore(0), 1);
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, nullptr), WAIT_TIMEOUT);
    EXPECT_EQ(semaphore.ReleaseSemaphore(2), 1);
    EXPECT_EQ(semaphore.ReleaseSemaphore(1), 0);
    EXPECT_EQ(semaphore.GetKeptError(), static_cast<unsigned long>(ERROR_TOO_MANY_POSTS));
    EXPECT_EQ(semaphore.ReleaseSemaphoreA(), ERROR_TOO_MANY_POSTS);
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, nullptr), 0);
    EXPECT_EQ(semaphore.ReleaseSemaphoreA(), 0);

    HANDLE abandoned = nullptr;
    std::thread([&abandoned] { abandoned = CreateMutexW(nullptr, TRUE, nullptr); }).join();
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, abandoned), 0);
    CloseHandle(abandoned);
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, ULongToHandle(0xDEAD)), ERROR_INVALID_HANDLE);
    CSemaphore impossible(nullptr, 2, 1);
    EXPECT_EQ(impossible.GetKeptError(), static_cast<unsigned long>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(impossible.WaitOnSemaphore(0), 1);
    EXPECT_EQ(impossible.GetKeptError(), static_cast<unsigned long>(ERROR_INVALID_HANDLE));
}

TEST(Semaphore, TheSignallingFormGivesItsPermitOnlyWhenItCreates) {
    CSemaphore first(L"Tessel test signal", 1);
    CSemaphore second(L"Tessel test signal", 1);
    EXPECT_EQ(second.WaitOnSemaphore(0), 0);
    EXPECT_EQ(first.WaitOnSemaphore(0), 1);
    EXPECT_EQ(CSemaphore(L"Tessel test signal", 5, 5).WaitOnSemaphore(0), 1) << "opened, not created";
    CSemaphore large(L"Tessel test maximum", 1);
    EXPECT_EQ(large.ReleaseSemaphore(9999), 1);
    EXPECT_EQ(large.ReleaseSemaphore(1), 0) << "the form's maximum";
    const ImportPatch open(Failing("OpenSemaphoreW", &OpenSemaphoreW, nullptr));
    const CSemaphore between(L"Tessel test signal", 5, 5);
    EXPECT_EQ(between.GetKeptError(), static_cast<unsigned long>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(CSemaphore(L"Tessel test signal", 1).WaitOnSemaphore(0), 1) << "made by another in between";
}

TEST(ThreadLock, TellsWhetherItIsLockedAndLeavesItSo) {
    CThreadLock lock;
    for (const int locked : {0, 1}) {
        EXPECT_EQ(lock.IsLocked(), locked);
        EXPECT_EQ(lock.Lock(0), locked);
    }
    EXPECT_EQ(lock.Unlock(), 1);
    EXPECT_EQ(lock.Unlock(), 0);
}
