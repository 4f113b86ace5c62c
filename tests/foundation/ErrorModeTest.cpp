#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/errormode.h>

TEST(ErrorMode, Odd01OnlyTheOutermostPairChangesItAndAnUnbalancedEndEatsTheNextBegin) {
    Reports reports;
    SetErrorMode(SEM_NOOPENFILEERRORBOX);
    BeginErrorModeFailCritical();
    EXPECT_EQ(SetErrorMode(SEM_NOGPFAULTERRORBOX), static_cast<UINT>(SEM_FAILCRITICALERRORS));
    BeginErrorModeFailCritical();
    EndErrorMode();
    EXPECT_EQ(GetErrorMode(), static_cast<UINT>(SEM_NOGPFAULTERRORBOX));
    EndErrorMode();
    EXPECT_EQ(GetErrorMode(), static_cast<UINT>(SEM_NOOPENFILEERRORBOX));
    EXPECT_TRUE(reports.Take().empty());
    EndErrorMode();
    EXPECT_EQ(reports.Take(), Texts{"ErrorMode:34 s_iCount > 0"});
    BeginErrorModeFailCritical();
    EXPECT_EQ(GetErrorMode(), static_cast<UINT>(SEM_NOOPENFILEERRORBOX));
    BeginErrorModeFailCritical();
    EXPECT_EQ(GetErrorMode(), static_cast<UINT>(SEM_FAILCRITICALERRORS));
}
