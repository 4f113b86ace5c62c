#include <gtest/gtest.h>
#include <tessel/foundation/module.h>

TEST(Module, KnowsItsModuleAndReadsItsOwnTexts) {
    const HINSTANCE module = TesselGetModuleInstance();
    EXPECT_EQ(module, GetModuleHandleW(L"Tessel.dll"));
    EXPECT_EQ(TesselSetStringModule(GetModuleHandleW(nullptr)), STATUS_STRING_MODULE_SET);
    wchar_t text[16] = L"before";
    EXPECT_EQ(TesselLoadString(1, text, 0), 0);
    EXPECT_STREQ(text, L"before");
    EXPECT_EQ(TesselLoadString(1, text, 16), 6);
    EXPECT_STREQ(text, L"Tessel");
    EXPECT_EQ(TesselLoadString(0, text, 16), 0);
    EXPECT_STREQ(text, L"");
    EXPECT_NE(FindResourceW(module, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16)), nullptr) << "its version";
}

TEST(Module, Odd29IsLoadedByTheNameOfAnImageOrForRichEditControls) {
    const HINSTANCE loaded = LoadImageW(L"version.dll");
    EXPECT_NE(loaded, nullptr);
    EXPECT_NE(UnLoadImage(loaded), 0u);
    const HINSTANCE rich = InitRichEditControls();
    EXPECT_EQ(rich, GetModuleHandleW(L"Riched20.dll"));
    EXPECT_NE(ReleaseRichEditControls(rich), 0);
    EXPECT_EQ(GetModuleHandleW(L"Riched20.dll"), nullptr);
}
