#pragma once

#include "OpenPostOffice.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/mailbox.h>

/// A test of programs that communicate through the post office. Keeps the post office open while they start and end.
class PostOfficeObserver : public testing::Test {
protected:
    /// Expects that the programs have left no block, mailbox or lock behind.
    void ExpectNothingLeft() {
        MONITOR_LEVEL left;
        EXPECT_EQ(observer.BuildDirectoryList(&left, 1), 0);
        EXPECT_EQ(observer.GetFreeBlockCount(), 500u);
        EXPECT_EQ(CThreadLock(POST_OFFICE_LOCK_NAME).IsLocked(), 0);
    }

    OpenPostOffice office;
    CMailBox observer{ORCAOBJID{1}};
    TemporaryFolder folder;
};
