#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/errormode.h>
#include <tessel/foundation/module.h>

TEST(Library, KnowsItsModuleAndReadsItsOwnTexts) {
    const HINSTANCE module = TesselGetModuleInstance();
    EXPECT_EQ(module, GetModuleHandleW(L"Tessel.dll"));
    EXPECT_EQ(TesselSetStringModule(GetModuleHandleW(nullptr)), STATUS_STRING_MODULE_SET);
    wchar_t text[16] = L"before";
    EXPECT_EQ(TesselLoadString(1, text, 16), 6);
    EXPECT_STREQ(text, L"Tessel");
    EXPECT_EQ(TesselLoadString(1, text, 0) + TesselLoadString(1, nullptr, 16), 0);
    EXPECT_STREQ(text, L"Tessel");
    EXPECT_EQ(TesselLoadString(1, text, 4), 3);
    EXPECT_STREQ(text, L"Tes");
    EXPECT_EQ(TesselLoadString(0, text, 16), 0);
    EXPECT_STREQ(text, L"");
    EXPECT_NE(FindResourceW(module, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16)), nullptr) << "its version";
}

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
