#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/drive.h>

#include <string>

TEST(DriveFunctions, TellTheSpaceAndTheVolumeOfAPath) {
    unsigned long long free = 0;
    unsigned long long total = 0;
    EXPECT_NE(GetDriveFreeSpace(L"C:\\", &free, &total), 0);
    EXPECT_TRUE(total >= free && free > 0);
    total = 5;
    EXPECT_EQ(GetDriveFreeSpace(L"Q:\\nowhere", &free, &total), 0);
    EXPECT_EQ(total, 5u);
    std::wstring root;
    const ImportPatch volume("GetVolumeInformationW", &GetVolumeInformationW,
                             [&root](LPCWSTR asked, LPWSTR, DWORD, DWORD* serial, auto...) {
                                 root = asked;
                                 *serial = 1234;
                                 return TRUE;
                             });
    EXPECT_EQ(GetVolumeSerialNumber(L"c:\\folder\\file"), 1234u);
    EXPECT_EQ(root, L"c:\\");
    EXPECT_EQ(GetVolumeSerialNumber(L"no drive"), 1234u);
    EXPECT_EQ(root, L"\\");
    EXPECT_EQ(GetVolumeSerialNumber(nullptr), 0u);
}

TEST(DriveFunctions, AHandleIsWrittenToWhateverItsType) {
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    CreatePipe(&read, &write, nullptr, 0);
    EXPECT_EQ(WriteTarget(static_cast<HWND>(write), L"ab", 3), 0);
    char got[8] = {};
    DWORD size = 0;
    ReadFile(read, got, 8, &size, nullptr);
    EXPECT_EQ(std::string(got, size), std::string("a\0b", 3));
    for (const HANDLE end : {read, write}) CloseHandle(end);
    EXPECT_EQ(WriteTarget(static_cast<HWND>(write), L"ab", 3), 1);
}
