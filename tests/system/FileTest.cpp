#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/TemporaryFolder.h"
#include "support/UnixTool.h"

#include <gtest/gtest.h>
#include <tessel/system/file.h>

#include <io.h>

#include <optional>
#include <set>
#include <tuple>

namespace {

namespace fs = std::filesystem;

struct Files : testing::Test {
    TemporaryFolder folder;
    fs::path path = folder / L"image.v1.raw";

    static void Make(const fs::path& file, const char* text = "text") { std::ofstream(file, std::ios::binary) << text; }
};

std::string ReadAll(CFile& file) {
    char text[100];
    return {text, file.ReadFile(text, sizeof text)};
}

using FileFinder = Files;
using MappedFile = Files;
using Directories = Files;

} // namespace

TEST_F(Files, AreWrittenReadAndPositionedAndKeepTheSizeOfOpeningOdd200) {
    CFile file(path.c_str(), CFile::READ_WRITE);
    EXPECT_EQ(file.WriteFile("abcdef", 6), 6u);
    EXPECT_EQ(file.TellFile(), 6);
    unsigned long position = 9, size = 9;
    EXPECT_EQ(file.SeekFile(-4, SEEK_END, &position), 0u);
    EXPECT_EQ(ReadAll(file), "cdef");
    EXPECT_EQ(ReadAll(file), "");
    EXPECT_EQ(file.SeekFile(-1, SEEK_SET, &position), CFile::SEEK_FAILED);
    EXPECT_EQ(position, 2u);
    EXPECT_EQ(file.OpenFile(path.c_str(), CFile::READ_ONLY), CFile::ALREADY_OPEN);
    EXPECT_EQ(file.Rewind(), 0u);
    EXPECT_EQ(ReadAll(file), "abcdef");
    EXPECT_EQ(file.SizeFile(&size), 0u);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(file.CloseFile(), 0u);
    EXPECT_EQ(file.OpenFile(path.c_str(), CFile::READ_ONLY), 0u);
    EXPECT_EQ(file.GetSize(), 6u);
    EXPECT_EQ(file.WriteFile("x", 1), 0u);
    EXPECT_EQ(file.GetLastStatus(), CFile::WRITE_FAILED);
}

TEST_F(Files, AreAppendedToEmptiedAndConvertedAsTheyAreOpened) {
    const std::pair<CFile::OPENTYPE, const char*> rows[] = {
        {CFile::READ_WRITE, "\nbcd"},
        {CFile::SEQUENTIAL | CFile::TEXT, "\r\ncd"},
        {CFile::APPEND, "abcd\n"},
        {CFile::TRUNCATE, "\n"},
        {CFile::APPEND | CFile::TRUNCATE, "\n"},
        {CFile::READ_ONLY | CFile::APPEND | CFile::TRUNCATE, "abcd"}};
    for (const auto& [type, contents] : rows) {
        Make(path, "abcd");
        CFile(path.c_str(), type).WriteFile("\n", 1);
        EXPECT_EQ(BytesOf(path), contents) << type;
    }
}

TEST_F(Files, ReportWhatFailedAndKeepWhatCannotBeClosedWithoutItsPathOdd203) {
    CFile file(path.c_str(), CFile::READ_WRITE);
    {
        const ImportPatch patches[] = {ImportPatch(Failing("_read", &_read, -1)),
                                       ImportPatch(Failing("_tell", &_tell, -1)),
                                       ImportPatch(Failing("_close", &_close, -1)),
                                       ImportPatch("_write", &_write, [](int to, auto* data, unsigned int size) {
                                           return _write(to, data, size / 2);
                                       })};
        EXPECT_EQ(file.WriteFile("abcd", 4), 2u);
        EXPECT_EQ(file.GetLastStatus(), CFile::WRITE_FAILED);
        EXPECT_EQ(ReadAll(file), "");
        EXPECT_EQ(file.GetLastStatus(), CFile::READ_FAILED);
        EXPECT_EQ(file.TellFile(), -1);
        EXPECT_EQ(file.GetLastStatus(), CFile::TELL_FAILED);
        EXPECT_EQ(file.CloseFile(), CFile::CLOSE_FAILED);
    }
    EXPECT_STREQ(file.GetFullPath(), L"");
    EXPECT_EQ(file.TellFile(), 2);
}

TEST_F(Files, ThatAreNotOpenReportIt) {
    EXPECT_EQ(CFile().Rewind(), CFile::NOT_OPEN);
    EXPECT_EQ(CFile().SizeFile(nullptr), CFile::NOT_OPEN);
    CFile none(L"no such folder\\file", CFile::READ_WRITE);
    EXPECT_EQ(none.CloseFile(), CFile::OPEN_FAILED);
    EXPECT_EQ(none.ReadFile(nullptr, 0) + none.WriteFile(nullptr, 0), 0u);
    EXPECT_EQ(none.TellFile(), -1);
    EXPECT_EQ(none.GetLastStatus(), CFile::NOT_OPEN);
}

TEST_F(Files, KnowNameAndExtensionWithDotsOfFoldersOdd201) {
    CFile file(path.c_str(), CFile::READ_WRITE);
    EXPECT_EQ(file.GetFullPath(), path);
    EXPECT_STREQ(file.GetName(), L"image.v1.raw");
    EXPECT_STREQ(file.GetExt(), L"raw");
    file.CloseFile();
    EXPECT_STREQ(file.GetExt(), L"");
    fs::create_directory(folder / L"v.2");
    file.OpenFile((folder / L"v.2" / L"plain").c_str(), CFile::READ_WRITE);
    EXPECT_STREQ(file.GetExt(), L"2\\plain");
}

TEST_F(Files, WithLongPathsAndLargeSizesAreOpened) {
    const std::wstring name = L"\\\\?\\" + (folder / std::wstring(250, L'n')).wstring();
    Reports reports;
    const ImportPatch size("GetFileAttributesExW", &GetFileAttributesExW, [](auto, auto, void* info) {
        *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(info) = {0, {}, {}, {}, 1, 7};
        return TRUE;
    });
    CFile file(name.c_str(), CFile::READ_WRITE);
    EXPECT_EQ(file.GetFullPath(), name.substr(0, 259));
    EXPECT_EQ(file.GetSize(), 7u);
    EXPECT_EQ(reports.Take(), Texts{"CFile:71 FileInfo.nFileSizeHigh == 0"});
}

TEST_F(Files, AreSharedByCopiesOfWhichTheLastCloses) {
    CFile other((folder / L"other.raw").c_str(), CFile::READ_WRITE);
    {
        std::optional<CFile> file(std::in_place, path.c_str(), CFile::READ_WRITE);
        const CFile copy(*file);
        other = *file;
        file->WriteFile("abc", 3);
        EXPECT_EQ(file->CloseFile(), 0u);
    }
    EXPECT_TRUE(fs::remove(folder / L"other.raw")) << "the assignment closed it";
    EXPECT_EQ(other.TellFile(), 3);
    other.CloseFile();
    EXPECT_TRUE(fs::remove(path));
}

TEST_F(Files, AreOpenAlsoInAProgramWithoutStandardInput) {
    _close(0);
    CFile file(path.c_str(), CFile::READ_WRITE);
    EXPECT_EQ(file.WriteFile("abc", 3), 3u);
}

TEST_F(FileFinder, ListsTheEntriesAndSharesTheSearchWithCopies) {
    Make(path);
    fs::create_directory(folder / L"sub");
    CFileFinder finder;
    EXPECT_FALSE(finder.Next() || finder.First(nullptr));
    std::set<std::wstring> found;
    for (int more = finder.First((folder / L"*").c_str()); more; more = CFileFinder(finder).Next() && finder.Next()) {
        found.insert(finder.GetFileName());
    }
    EXPECT_EQ(found.size(), 2u) << "the copies passed every second one of the four";

    EXPECT_TRUE(finder.First((folder / L"s*").c_str()));
    CFileFinder copy;
    copy = finder;
    finder.Close();
    EXPECT_FALSE(finder.IsDirectory());
    EXPECT_TRUE(copy.IsDirectory());
    EXPECT_STREQ(copy.GetFileName(), L"sub");
    EXPECT_FALSE(finder.First((folder / L"x*").c_str()));
}

TEST_F(MappedFile, IsSharedByNameAndByCopies) {
    constexpr wchar_t name[] = L"Tessel test view";
    std::optional<CMemMappedFile> first(std::in_place, name, 0x20000, PAGE_READWRITE, 0, nullptr);
    EXPECT_EQ(first->GetStatus(), 0u);
    auto* const text = static_cast<char*>(first->MapView(FILE_MAP_WRITE, 0, 0x10000, 0));
    ASSERT_NE(text, nullptr);
    *text = 'x';
    CMemMappedFile second(name, 0x20000, PAGE_READWRITE, 0, nullptr);
    EXPECT_EQ(second.GetStatus(), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(*static_cast<char*>(second.MapView(FILE_MAP_READ, 0, 0x10000, 0)), 'x');
    EXPECT_EQ(second.MapView(FILE_MAP_READ, 1, 0, 0), nullptr) << "4 GB behind its start";
    EXPECT_EQ(second.MapView(FILE_MAP_READ, 0, 0, 0x20001), nullptr) << "a byte too long";
    EXPECT_EQ(second.MapView(FILE_MAP_READ, 0, 1, 0), nullptr);
    EXPECT_EQ(second.GetStatus(), DWORD{ERROR_MAPPED_ALIGNMENT});

    second = *first;
    EXPECT_EQ(second.GetStatus(), 0u);
    { const CMemMappedFile copy(second); }
    first.reset();
    EXPECT_EQ(*text, 'x');
    CMemMappedFile adopted(OpenFileMappingW(FILE_MAP_READ, FALSE, name));
    EXPECT_NE(adopted.MapView(FILE_MAP_READ, 0, 0, 0), nullptr);
    adopted = second = CMemMappedFile(nullptr);
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, name), nullptr) << "no process has it open";
}

TEST_F(MappedFile, ShowsAFile) {
    Make(path);
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    CMemMappedFile mapped(file, nullptr, 0, PAGE_READONLY, 0, &inheritable);
    CloseHandle(file);
    DWORD flags = 0;
    GetHandleInformation(mapped.GetHandle(), &flags);
    EXPECT_EQ(flags, DWORD{HANDLE_FLAG_INHERIT});
    EXPECT_EQ(std::string(static_cast<char*>(mapped.MapView(FILE_MAP_READ, 0, 0, 0)), 4), "text");
}

TEST_F(Directories, AreCreatedUpToTheLastBackslashOdd202) {
    const std::tuple<const wchar_t*, unsigned long, std::vector<std::wstring>> rows[] = {
        {nullptr, 0xFFFFFFFF, {}},
        {L"C:\\a\\b\\file", 0, {L"C:\\a", L"C:\\a\\b"}},
        {L"C:a\\", 0, {L"C:a"}},
        {L"\\a\\", 0, {L"\\a"}},
        {L"a\\stop\\c\\", ERROR_ACCESS_DENIED, {L"a", L"a\\stop"}},
        {L"\\\\server", ERROR_PATH_NOT_FOUND, {}},
        {L"\\\\server\\share", ERROR_PATH_NOT_FOUND, {}},
        {L"\\\\server\\share\\a\\file", 0, {L"\\\\server\\share\\a"}}};
    std::vector<std::wstring> created;
    const ImportPatch create("CreateDirectoryW", &CreateDirectoryW, [&](const wchar_t* name, auto) {
        created.emplace_back(name);
        SetLastError(created.back() == L"a\\stop" ? ERROR_ACCESS_DENIED : ERROR_ALREADY_EXISTS);
        return FALSE;
    });
    for (const auto& [argument, result, expected] : rows) {
        EXPECT_EQ(CreateDir(argument), result);
        EXPECT_EQ(std::exchange(created, {}), expected);
    }
}

TEST_F(Directories, AreCreatedAndRemovedWithTheirContents) {
    std::wstring deep = L"\\\\?\\" + (folder / L"tree\\").wstring();
    for (int level = 0; level < 20; ++level) deep += std::wstring(60, L'd') + L"\\";
    for (int time = 0; time < 2; ++time) EXPECT_EQ(CreateDir(deep.c_str()), 0u);
    EXPECT_EQ(CFile((deep + L"file").c_str(), CFile::READ_WRITE).GetLastStatus(), 0u);
    const std::wstring tree = L"\\\\?\\" + (folder / L"tree").wstring();
    EXPECT_EQ(RemoveDir(tree.c_str()), DWORD{ERROR_DIR_NOT_EMPTY});
    EXPECT_EQ(RemoveDirAndFiles((tree + L"\\\\").c_str(), true), 0u);
    EXPECT_EQ(RemoveDir(tree.c_str()), DWORD{ERROR_FILE_NOT_FOUND});
    Make(path);
    for (const wchar_t* end : {L"\\", L"\\\\"})
        EXPECT_EQ(CreateDir((path.wstring() + end).c_str()), DWORD{ERROR_DIRECTORY}) << "a file";
}

TEST_F(Directories, BehindUnixLinksStayAsTheyAre) {
    if (UnixPath(folder / L"").empty()) GTEST_SKIP() << "no Unix under this system";
    const fs::path tree = folder / L"tree";
    for (const wchar_t* name : {L"empty", L"full", L"tree"}) fs::create_directories(folder / name);
    Make(folder / L"full" / L"kept");
    Make(tree / L"file");
    const std::wstring root = UnixPath(folder / L"");
    RunUnix(L"cd '" + root + L"'; ln -s ../full tree/full; ln -s ../empty tree/empty");
    EXPECT_EQ(RemoveDirAndFiles(tree.c_str(), true), DWORD{ERROR_DIR_NOT_EMPTY});
    EXPECT_TRUE(fs::exists(folder / L"full" / L"kept") && fs::exists(folder / L"empty"));
    EXPECT_FALSE(fs::exists(tree / L"file"));
    RunUnix(L"rm '" + root + L"'/tree/*"); // otherwise the clean-up would follow them
}

TEST_F(Directories, LoseOnlyWhatCanBeRemoved) {
    const fs::path tree = folder / L"tree";
    const fs::path kept = tree / L"link" / L"kept";
    for (const fs::path& made : {kept, tree / L"far" / L"file", tree / L"file"}) {
        fs::create_directories(made.parent_path());
        Make(made);
    }
    EXPECT_EQ(RemoveDirAndFiles(tree.c_str(), false), DWORD{ERROR_DIR_NOT_EMPTY});
    EXPECT_FALSE(fs::exists(tree / L"file"));
    {
        const ImportPatch next("FindNextFileW", &FindNextFileW, [](HANDLE search, WIN32_FIND_DATAW* entry) {
            if (!FindNextFileW(search, entry)) return FALSE;
            const std::wstring name = entry->cFileName;
            if (name == L"link" || name == L"far") entry->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
            entry->dwReserved0 = name == L"link" ? IO_REPARSE_TAG_MOUNT_POINT : IO_REPARSE_TAG_DEDUP;
            return TRUE;
        });
        EXPECT_EQ(RemoveDirAndFiles(tree.c_str(), true), DWORD{ERROR_DIR_NOT_EMPTY}) << "a link is not followed";
        EXPECT_FALSE(fs::exists(tree / L"far")) << "not a link";
    }
    SetFileAttributesW(kept.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(RemoveDirAndFiles(tree.c_str(), true), DWORD{ERROR_ACCESS_DENIED});
    SetFileAttributesW(kept.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(fs::exists(kept));
    EXPECT_EQ(RemoveDirAndFiles(tree.c_str(), true), 0u);
    EXPECT_EQ(RemoveDirAndFiles(L"", true), DWORD{ERROR_PATH_NOT_FOUND});
}
