#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <tessel/foundation/drive.h>
#include <tessel/foundation/status.h>

#include <string>

TEST(DriveFunctions, TellTheSpaceAndTheVolumeOfAPath) {
    unsigned long long free = 0, total = 0;
    Reports reports;
    EXPECT_NE(GetDriveFreeSpace(L"C:\\", &free, &total), 0);
    EXPECT_TRUE(total >= free && free > 0);
    total = 5;
    EXPECT_EQ(GetDriveFreeSpace(L"Q:\\nowhere", &free, &total), 0);
    EXPECT_EQ(total, 5u);
    EXPECT_EQ(reports.Take(), Texts{}) << "the error mode is restored";
    std::wstring root;
    const ImportPatch volume(
        "GetVolumeInformationW", &GetVolumeInformationW,
        [&root](LPCWSTR asked, LPWSTR, DWORD, DWORD* serial, auto...) { return root = asked, *serial = 1234, TRUE; });
    EXPECT_EQ(GetVolumeSerialNumber(L"c:\\folder\\file"), 1234u);
    EXPECT_EQ(root, L"c:\\");
    EXPECT_EQ(GetVolumeSerialNumber(L"no drive"), 1234u);
    EXPECT_EQ(root, L"\\");
    SetLastError(0);
    EXPECT_EQ(GetVolumeSerialNumber(nullptr), 0u);
    EXPECT_EQ(GetError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(DriveFunctions, AFileIsDeleted) {
    const TemporaryFolder folder;
    std::ofstream(folder / "file").close();
    EXPECT_NE(FileDelete((folder / "file").c_str()), 0);
    EXPECT_EQ(FileDelete((folder / "file").c_str()), 0);
    EXPECT_EQ(LOFROMWORD(0x12345678), 0x5678);
}

TEST(DriveFunctions, AHandleIsWrittenToWhateverItsType) {
    std::string got;
    const ImportPatch write("WriteFile", &WriteFile,
                            [&got](HANDLE, const void* data, DWORD size, DWORD* written, void*) {
                                return got.assign(static_cast<const char*>(data), size), *written = 3, TRUE;
                            });
    EXPECT_EQ(WriteTarget(nullptr, L"ab", 3), 0);
    EXPECT_EQ(got, std::string("a\0b", 3));
    EXPECT_EQ(WriteTarget(nullptr, L"ab", 4), 1) << "not all of it";
}
