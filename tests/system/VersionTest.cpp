#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <tessel/system/version.h>

#include <chrono>
#include <optional>
#include <tuple>

namespace {

namespace fs = std::filesystem;

/// One of the libraries beside this program: with version 1.2.10.7 or with 1.10.0.0.
fs::path Built(const char* name) {
    return Beside(std::string("version_") + name + ".dll");
}

/// Version, time and path of an entry, after the number of those that were not returned.
std::wstring Described(CSwVersion& version, int index = -1) {
    wchar_t text[100] = L"untouched", path[100] = L"untouched";
    const int missing = 2 - version.GetString(text, index) - version.GetPath(path, index);
    return std::to_wstring(missing) + L": " + text + L" " + path;
}

std::wstring TextOf(CSwVersion& version, const wchar_t* name = L"ProductName") {
    wchar_t text[20] = L"untouched";
    return version.GetVerStringInfo(name, text, 20) ? text : std::wstring(text) + L" false";
}

/// A folder with files of known times.
struct Version : testing::Test {
    TemporaryFolder folder;

    fs::path Dated(fs::path file) {
        using namespace std::chrono;
        fs::last_write_time(file, file_clock::from_sys(sys_days(2024y / 3 / 5) + 16h + 7min + 8s));
        return file;
    }

    fs::path Copied(const char* name) {
        const fs::path copy = folder / name;
        fs::copy_file(Built(name), copy);
        return Dated(copy);
    }

    /// A copy of the older version in which a byte is changed, counted from the start of the first block of a name.
    fs::path Damaged(std::wstring_view block, std::size_t offset, char byte) {
        constexpr std::size_t keyOffset = 6;
        std::string bytes = BytesOf(Built("older"));
        const std::string key(reinterpret_cast<const char*>(block.data()), block.size() * sizeof(wchar_t));
        bytes.at(bytes.find(key) - keyOffset + offset) = byte;
        fs::path file = folder / "damaged";
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }
};

} // namespace

TEST_F(Version, VersionTimeSizeAndTextsOfAFileAreRead) {
    const fs::path file = Copied("older");
    CSwVersion version(file.c_str());
    EXPECT_EQ(Described(version), L"0: 1.2.10.7 03/05/2024 16:07:08 " + file.wstring());
    unsigned int numbers[4] = {};
    ASSERT_EQ(version.GetBinary(&numbers[0], &numbers[1], &numbers[2], &numbers[3], -1), 1);
    EXPECT_EQ(std::vector(numbers, numbers + 4), (std::vector{1u, 2u, 10u, 7u}));
    unsigned short time[6] = {};
    ASSERT_EQ(version.GetFileTime(&time[0], &time[1], &time[2], &time[3], &time[4], &time[5], -1), 1);
    EXPECT_EQ(std::vector(time, time + 6), (std::vector<unsigned short>{3, 5, 2024, 16, 7, 8}));
    EXPECT_EQ(version.GetBinary(numbers, numbers, numbers, nullptr, -1), 0);
    EXPECT_EQ(version.GetFileTime(time, time, time, time, time, nullptr, -1), 0);
    EXPECT_EQ(TextOf(version), L"Older") << "the first language";
    EXPECT_EQ(TextOf(version, L"Comments"), L"untouched false");
    EXPECT_FALSE(version.GetVerStringInfo(L"ProductName", nullptr, 5) || version.GetFileSize(nullptr, -1));
}

TEST_F(Version, Odd193ATextThatIsLongerThanTheBufferIsNotTerminated) {
    CSwVersion version(Built("newer").c_str());
    wchar_t text[7] = L"xxxxxx";
    for (const unsigned long size : {0ul, 5ul}) EXPECT_TRUE(version.GetVerStringInfo(L"ProductName", text, size));
    EXPECT_STREQ(text, L"Newerx");
    EXPECT_TRUE(version.GetVerStringInfo(L"ProductName", text, 6));
    EXPECT_STREQ(text, L"Newer");
}

TEST_F(Version, UnknownValuesOfAFileAreZero) {
    const fs::path large = folder / "large";
    std::ofstream(large).close();
    fs::resize_file(large, 5'000'000'001);
    CSwVersion plain(Dated(large).c_str());
    const CSwVersion missing((folder / "missing").c_str());
    CSwVersion nameless(nullptr);
    EXPECT_EQ(Described(plain), L"0: 0.0.0.0 03/05/2024 16:07:08 " + large.wstring());
    EXPECT_EQ(TextOf(plain), L"untouched false");
    std::uint64_t size = 1;
    EXPECT_EQ(plain.GetFileSize(&size, -1), 1);
    EXPECT_EQ(size, 5'000'000'001u);
    EXPECT_EQ(Described(nameless), L"0: 0.0.0.0 00/00/0000 00:00:00 ");
    EXPECT_EQ(Described(nameless, CSwVersion::GetFileCount() - 2),
              L"0: 0.0.0.0 00/00/0000 00:00:00 " + (folder / "missing").wstring());
}

TEST_F(Version, ALongPathIsReadAndStoredTruncated) {
    const fs::path deep = folder / std::wstring(100, L'd');
    fs::create_directories(deep);
    fs::copy_file(Built("older"), deep / "older");
    CSwVersion version((deep / "older").c_str());
    EXPECT_EQ(TextOf(version), L"Older");
    EXPECT_TRUE(Described(version).ends_with(L" " + deep.wstring().substr(0, 99)));
}

TEST_F(Version, Odd192AnyObjectListsTheTableButKeepsItsOwnTexts) {
    const int first = CSwVersion::GetFileCount();
    CSwVersion older(Copied("older").c_str());
    const CSwVersion newer(Copied("newer").c_str());
    ASSERT_EQ(CSwVersion::GetFileCount(), first + 2);
    unsigned int number = 99;
    unsigned short part = 99;
    std::uint64_t size = 99;
    EXPECT_EQ(Described(older, first + 2), L"2: untouched untouched");
    EXPECT_EQ(older.GetFileSize(&size, first), 1);
    EXPECT_EQ(size, fs::file_size(folder / "older"));
    for (const int found : {0, 1}) { // behind the last, the last
        const int index = first + 2 - found;
        EXPECT_EQ(older.GetBinary(&number, &number, &number, &number, index), found);
        EXPECT_EQ(older.GetFileTime(&part, &part, &part, &part, &part, &part, index), found);
    }
    EXPECT_EQ(number + part, 0u + 8u) << "revision and second";
    EXPECT_TRUE(older == newer) << "taken over";
    EXPECT_EQ(Described(older), L"0: 1.10.0.0 03/05/2024 16:07:08 " + (folder / "newer").wstring());
    EXPECT_EQ(TextOf(older), L"Older");
    CSwVersion listed(first);
    EXPECT_EQ(Described(listed), L"0: 1.2.10.7 03/05/2024 16:07:08 " + (folder / "older").wstring());
    EXPECT_EQ(TextOf(listed), L"untouched false") << "it read no file";
    EXPECT_EQ(CSwVersion(-1) == CSwVersion(first + 2), true) << "empty";
}

TEST_F(Version, VersionsAreComparedNumberByNumber) {
    VS_FIXEDFILEINFO fixedInfo{};
    const ImportPatch find("VerQueryValueW", &VerQueryValueW, [&](auto, auto, void** value, UINT* size) {
        return *value = &fixedInfo, *size = sizeof fixedInfo, TRUE;
    });
    std::vector<CSwVersion> versions;
    constexpr DWORD kRows[][2] = {{0, 1}, {0, 0x10000}, {1, 0}, {0x10002, 0xA0000}, {0x1000A, 0}, {0x1000A, 1}};
    for (const auto& [most, least] : kRows) {
        fixedInfo.dwFileVersionMS = most;
        fixedInfo.dwFileVersionLS = least;
        versions.emplace_back(Built("older").c_str());
    }
    for (const CSwVersion& left : versions) {
        for (const CSwVersion& right : versions) {
            const auto order = &left - &right;
            EXPECT_TRUE((left < right) == (order < 0) && (left <= right) == (order <= 0) &&
                        (left > right) == (order > 0) && (left >= right) == (order >= 0) &&
                        (left == right) == (order == 0) && (left != right) == (order != 0))
                << &left - versions.data() << ' ' << &right - versions.data();
        }
    }
}

TEST_F(Version, Odd191TheTableIsEmptiedWithTheLastObjectAfterRemoveTable) {
    const int first = CSwVersion::GetFileCount();
    { const CSwVersion alone(Built("older").c_str()); }
    EXPECT_EQ(CSwVersion::GetFileCount(), first + 1) << "RemoveTable() was not called";
    CSwVersion::RemoveTable();
    EXPECT_EQ(CSwVersion::GetFileCount(), 0) << "no object exists";
    std::optional<CSwVersion> original(std::in_place, Built("newer").c_str());
    std::optional<CSwVersion> copy(*original);
    std::optional<CSwVersion> assigned(std::in_place, 0);
    *assigned = *copy;
    CSwVersion::RemoveTable();
    original.reset();
    copy.reset();
    EXPECT_EQ(CSwVersion::GetFileCount(), 1) << "an object exists";
    EXPECT_EQ(TextOf(*assigned), L"Newer");
    assigned.reset();
    EXPECT_EQ(CSwVersion::GetFileCount(), 0);
}

TEST_F(Version, Odd190ObjectsAreCountedUnderALockThatAllProcessesShareAndThatMayBeStuck) {
    CThreadLock lock(L"CSwVersionRefLock");
    ASSERT_EQ(lock.Lock(0), 0);
    int waits = 0;
    {
        // The first wait times out; before the second one the other process releases the lock.
        const ImportPatch wait("WaitForSingleObjectEx", &WaitForSingleObjectEx, [&](HANDLE handle, DWORD ms, auto) {
            EXPECT_EQ(ms, 5000u);
            if (++waits == 2) lock.Unlock();
            return WaitForSingleObject(handle, 0);
        });
        { const CSwVersion counted(Built("older").c_str()); }
        CSwVersion::RemoveTable();
    }
    EXPECT_EQ(waits, 3) << "of the object's begin and end, and of the removal";
    EXPECT_EQ(lock.IsLocked(), 0) << "given back";
    EXPECT_EQ(CSwVersion::GetFileCount(), 0);
}

TEST_F(Version, ADamagedResourceIsReadAsFarAsItIsSafe) {
    enum : std::size_t { length, lengthHigh, valueLength, type = 4 }; // offsets in a block
    constexpr const wchar_t* none = L"untouched false";
    const std::tuple<std::wstring_view, std::size_t, char, const wchar_t*, const wchar_t*> rows[] = {
        {L"VS_VERSION_INFO", lengthHigh, '\xFF', L"0: 0.0.0.0 ", none},
        {L"VS_VERSION_INFO", valueLength, 51, L"0: 0.0.0.0 ", L"Older"},
        {L"VS_VERSION_INFO", type, ' ', L"", none},
        {L"VS_VERSION_INFO", type, '\x80', L"0: 0.0.0.0 ", none},
        {L"StringFileInfo", lengthHigh, '\xFF', L"0: 1.2.10.7 ", none},
        {L"040904B0", lengthHigh, '\x7F', L"0: 1.2.10.7 ", none},
        {L"ProductName", lengthHigh, '\x7F', L"0: 1.2.10.7 ", none},
        {L"ProductName", length, 8, L"0: 1.2.10.7 ", none},
        {L"VarFileInfo", lengthHigh, '\xFF', L"0: 1.2.10.7 ", none},
        {L"Translation", valueLength, 3, L"0: 1.2.10.7 ", none}};
    for (const auto& [block, offset, value, numbers, text] : rows) {
        CSwVersion version(Damaged(block, offset, value).c_str());
        EXPECT_TRUE(Described(version).starts_with(numbers)) << Described(version);
        EXPECT_EQ(TextOf(version), text) << block.data() << " at " << offset;
    }
}
