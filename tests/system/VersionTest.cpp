#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/version.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace {

namespace fs = std::filesystem;

/// One of the libraries beside this program: with version 1.2.10.0, with 1.10.0.0 or without a version.
fs::path Built(const char* name) {
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    return fs::path(program).replace_filename(std::string("version_") + name + ".dll");
}

std::wstring Described(CSwVersion& version, int index = -1) {
    wchar_t text[100] = L"untouched";
    return version.GetString(text, index) == 1 ? text : std::wstring(text) + L" 0";
}

std::wstring PathOf(CSwVersion& version, int index = -1) {
    wchar_t path[100] = L"untouched";
    return version.GetPath(path, index) == 1 ? path : std::wstring(path) + L" 0";
}

std::wstring TextOf(CSwVersion& version, const wchar_t* name = L"ProductName") {
    wchar_t text[20] = L"untouched";
    return version.GetVerStringInfo(name, text, 20) ? text : std::wstring(text) + L" false";
}

/// A folder with files whose times the test knows.
struct Version : testing::Test {
    fs::path folder = fs::temp_directory_path() / ("tessel-version-" + std::to_string(GetCurrentProcessId()));

    Version() { fs::create_directory(folder); }
    ~Version() override { fs::remove_all(folder); }

    fs::path Dated(fs::path file) {
        const SYSTEMTIME time{2024, 3, 0, 5, 16, 7, 8, 0};
        FILETIME written;
        SystemTimeToFileTime(&time, &written);
        const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_TRUE(SetFileTime(handle, nullptr, nullptr, &written));
        CloseHandle(handle);
        return file;
    }

    fs::path Copied(const char* name) {
        const fs::path copy = folder / name;
        fs::copy_file(Built(name), copy);
        return Dated(copy);
    }
};

} // namespace

TEST_F(Version, AFileTellsItsVersionTimeSizeAndTexts) {
    const fs::path file = Copied("older");
    CSwVersion version(file.c_str());
    EXPECT_EQ(Described(version), L"1.2.10.0 03/05/2024 16:07:08");
    EXPECT_EQ(PathOf(version), file.wstring());
    unsigned int numbers[4] = {};
    ASSERT_EQ(version.GetBinary(&numbers[0], &numbers[1], &numbers[2], &numbers[3], -1), 1);
    EXPECT_EQ(std::vector(numbers, numbers + 4), (std::vector{1u, 2u, 10u, 0u}));
    unsigned short time[6] = {};
    ASSERT_EQ(version.GetFileTime(&time[0], &time[1], &time[2], &time[3], &time[4], &time[5], -1), 1);
    EXPECT_EQ(std::vector(time, time + 6), (std::vector<unsigned short>{3, 5, 2024, 16, 7, 8}));
    EXPECT_EQ(TextOf(version), L"Older") << "the first language";
    EXPECT_EQ(TextOf(version, L"Comments"), L"untouched false");
    EXPECT_EQ(version.GetBinary(&numbers[0], &numbers[1], &numbers[2], nullptr, -1), 0);
    EXPECT_EQ(version.GetFileTime(&time[0], &time[1], &time[2], nullptr, &time[4], &time[5], -1), 0);
    EXPECT_EQ(version.GetFileSize(nullptr, -1), 0);
    EXPECT_FALSE(version.GetVerStringInfo(L"ProductName", nullptr, 5));
    EXPECT_EQ(TextOf(version, std::wstring(5000, L'x').c_str()), L"untouched false");
}

TEST_F(Version, Odd193ATextThatIsLongerThanTheRoomIsNotTerminated) {
    CSwVersion version(Built("newer").c_str());
    wchar_t text[7] = L"xxxxxx";
    EXPECT_TRUE(version.GetVerStringInfo(L"ProductName", text, 0));
    EXPECT_TRUE(version.GetVerStringInfo(L"ProductName", text, 5));
    EXPECT_STREQ(text, L"Newerx");
    EXPECT_TRUE(version.GetVerStringInfo(L"ProductName", text, 6));
    EXPECT_STREQ(text, L"Newer");
}

TEST_F(Version, WhatIsNotKnownOfAFileStaysZero) {
    const fs::path large = folder / "large";
    std::ofstream(large).close();
    fs::resize_file(large, 5'000'000'001);
    CSwVersion plain(Dated(large).c_str());
    CSwVersion missing((folder / "missing").c_str());
    CSwVersion nameless(nullptr);
    EXPECT_EQ(Described(plain), L"0.0.0.0 03/05/2024 16:07:08");
    EXPECT_EQ(TextOf(plain), L"untouched false");
    std::uint64_t size = 1;
    EXPECT_EQ(plain.GetFileSize(&size, -1), 1);
    EXPECT_EQ(size, 5'000'000'001u);
    EXPECT_EQ(missing.GetFileSize(&size, -1), 1);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(Described(missing), L"0.0.0.0 00/00/0000 00:00:00");
    EXPECT_EQ(PathOf(nameless, CSwVersion::GetFileCount() - 2), (folder / "missing").wstring());
    CSwVersion library(Built("none").c_str());
    EXPECT_EQ(Described(library).substr(0, 8), L"0.0.0.0 ");
}

TEST_F(Version, APathBeyondTheRecordIsReadAndKeptInPart) {
    fs::path deep = folder;
    while (deep.wstring().size() < 100) deep /= "deeper";
    fs::create_directories(deep);
    deep /= "older";
    fs::copy_file(Built("older"), deep);
    CSwVersion version(deep.c_str());
    EXPECT_EQ(TextOf(version), L"Older");
    EXPECT_EQ(PathOf(version), deep.wstring().substr(0, 99));
    CSwVersion absent(std::wstring(40000, L'x').c_str());
    EXPECT_EQ(PathOf(absent), std::wstring(99, L'x'));
}

TEST_F(Version, Odd192AnyObjectListsTheTableButKeepsItsOwnTexts) {
    const int first = CSwVersion::GetFileCount();
    CSwVersion older(Copied("older").c_str());
    const CSwVersion newer(Copied("newer").c_str());
    const CSwVersion again((folder / "newer").c_str());
    EXPECT_EQ(CSwVersion::GetFileCount(), first + 3);
    EXPECT_EQ(Described(older, first + 3), L"untouched 0");
    EXPECT_EQ(PathOf(older, first + 3), L"untouched 0");
    EXPECT_EQ(Described(older, first + 2), L"1.10.0.0 03/05/2024 16:07:08");
    EXPECT_TRUE(older == newer) << "taken over";
    EXPECT_EQ(PathOf(older), (folder / "newer").wstring());
    EXPECT_EQ(TextOf(older), L"Older");
    CSwVersion listed(first);
    EXPECT_EQ(PathOf(listed), (folder / "older").wstring());
    EXPECT_EQ(TextOf(listed), L"untouched false") << "it read no file";
    for (const int none : {-1, first + 3}) {
        CSwVersion empty(none);
        EXPECT_EQ(PathOf(empty), L"");
    }
}

TEST_F(Version, VersionsAreComparedNumberByNumber) {
    const CSwVersion older(Built("older").c_str());
    const CSwVersion newer(Built("newer").c_str());
    const CSwVersion same(older);
    EXPECT_TRUE(older < newer && older <= newer && older != newer);
    EXPECT_FALSE(older > newer || older >= newer || older == newer);
    EXPECT_TRUE(newer > older && newer >= older);
    EXPECT_TRUE(same == older && same <= older && same >= older);
    EXPECT_FALSE(same != older || same < older || same > older);
}

TEST_F(Version, Odd191TheTableGoesWithTheLastObjectOnceItWasGivenUp) {
    const int first = CSwVersion::GetFileCount();
    { const CSwVersion alone(Built("older").c_str()); }
    EXPECT_EQ(CSwVersion::GetFileCount(), first + 1) << "still wanted";
    std::optional<CSwVersion> original(std::in_place, Built("newer").c_str());
    std::optional<CSwVersion> copy(*original);
    std::optional<CSwVersion> assigned(std::in_place, 0);
    *assigned = *copy;
    CSwVersion::RemoveTable();
    original.reset();
    copy.reset();
    EXPECT_EQ(CSwVersion::GetFileCount(), first + 2) << "an object is alive";
    EXPECT_EQ(TextOf(*assigned), L"Newer");
    assigned.reset();
    EXPECT_EQ(CSwVersion::GetFileCount(), 0);
    { const CSwVersion later(Built("older").c_str()); }
    EXPECT_EQ(CSwVersion::GetFileCount(), 0);
}

TEST_F(Version, RemoveTableEmptiesItAtOnceWhenNoObjectIsAlive) {
    { const CSwVersion alone(Built("older").c_str()); }
    CSwVersion::RemoveTable();
    EXPECT_EQ(CSwVersion::GetFileCount(), 0);
}

namespace {

CThreadLock* heldElsewhere = nullptr;
bool waitedForIt = false;

DWORD WINAPI WaitForTheHeld(HANDLE handle, DWORD timeoutMs, BOOL alertable) {
    if (heldElsewhere != nullptr) {
        waitedForIt = timeoutMs == INFINITE && WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
        heldElsewhere->Unlock();
        heldElsewhere = nullptr;
    }
    return WaitForSingleObjectEx(handle, timeoutMs, alertable);
}

} // namespace

TEST_F(Version, Odd190ObjectsOfAllProcessesAreCountedUnderOneLock) {
    CThreadLock lock(L"CSwVersionRefLock");
    const ImportPatch wait(L"Tessel.dll", "WaitForSingleObjectEx", WaitForTheHeld);
    ASSERT_EQ(lock.Lock(0), 0);
    heldElsewhere = &lock;
    const CSwVersion waits(-1);
    EXPECT_TRUE(waitedForIt);
    EXPECT_EQ(lock.IsLocked(), 0) << "given back";
}

namespace {

BOOL WINAPI FindCutOff(LPCVOID, LPCWSTR, LPVOID* value, PUINT size) {
    static const wchar_t text[] = L"\x1234\x5678\x9ABC";
    *value = const_cast<wchar_t*>(text);
    *size = 3;
    return TRUE;
}

} // namespace

TEST_F(Version, AResourceThatIsCutOffGivesNoVersion) {
    const ImportPatch cut(L"Tessel.dll", "VerQueryValueW", FindCutOff);
    CSwVersion cutOff(Built("older").c_str());
    EXPECT_EQ(Described(cutOff).substr(0, 8), L"0.0.0.0 ");
    EXPECT_EQ(TextOf(cutOff), L"untouched false");
}

TEST(Array, GrowsToWhereAnElementIsSet) {
    CArray<int> array;
    array.SetSize(1, 4);
    EXPECT_EQ(array.Add(7), 1);
    array.SetAtGrow(3, 9);
    array.SetAtGrow(1, 8);
    CArray<int> copy;
    copy = array;
    array.RemoveAll();
    ASSERT_EQ(copy.GetSize() - array.GetSize(), 4);
    copy.ElementAt(2) += 1;
    EXPECT_EQ((std::vector{copy[0], copy[1], copy[2], copy[3]}), (std::vector{0, 8, 1, 9}));
}
