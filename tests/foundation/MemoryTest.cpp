#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/memory.h>

#include <filesystem>
#include <fstream>
#include <memory>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Read(CMemory& memory, unsigned long count, unsigned long offset) {
    Bytes bytes(count, '#');
    EXPECT_EQ(memory.ReadMemoryDirect(bytes.data(), count, offset), 0);
    return bytes;
}

CMemory Heap() {
    return {CMemory::KIND_HEAP, 0, nullptr, CMemory::OPENTYPE_OPEN_ALWAYS, 0};
}

const Bytes kText{'t', 'e', 'x', 't'};

class FileMemory : public testing::Test {
protected:
    FileMemory() : path(std::filesystem::temp_directory_path() / L"tessel test.dat") { std::filesystem::remove(path); }
    ~FileMemory() override { std::filesystem::remove(path); }
    CMemory Open(unsigned int type, int readOnly = 0) {
        return {CMemory::KIND_FILE, 0, path.c_str(), static_cast<CMemory::OPENTYPE>(type), readOnly};
    }
    std::filesystem::path path;
};

/// A mapping of that name for as long as the object lives.
struct Mapping : std::unique_ptr<void, decltype(&CloseHandle)> {
    Mapping(const wchar_t* name, DWORD size)
        : unique_ptr(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name), &CloseHandle) {}
};

DWORD WINAPI SizeOver4Gb(HANDLE, DWORD* high) {
    *high = 1;
    return 5;
}

BOOL WINAPI WriteHalf(HANDLE file, const void* data, DWORD size, DWORD* written, OVERLAPPED*) {
    return WriteFile(file, data, size / 2, written, nullptr);
}

using Opened = std::vector<DWORD>; // access, share, disposition
std::vector<Opened> opened;

HANDLE WINAPI RefuseWriting(LPCWSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD disposition,
                            DWORD flags, HANDLE model) {
    opened.push_back({access, share, disposition});
    SetLastError(ERROR_ACCESS_DENIED);
    if (access & GENERIC_WRITE) return INVALID_HANDLE_VALUE;
    return CreateFileW(name, access, share, security, OPEN_ALWAYS, flags, model);
}

LPVOID WINAPI NoView(HANDLE, DWORD, DWORD, DWORD, SIZE_T) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

HGLOBAL WINAPI NoGlobalMemory(UINT, SIZE_T) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

constexpr wchar_t kMapping[] = L"Tessel test mapping";

CMemory Attach(unsigned long size) {
    return {CMemory::KIND_MAPPING, size, kMapping, CMemory::OPENTYPE_OPEN_ALWAYS, 0};
}

} // namespace

TEST(HeapMemory, GrowsWithZerosWhenReadAndKeepsCursors) {
    CMemory heap = Heap();
    EXPECT_EQ(Read(heap, 10, 100), Bytes(10, 0));
    EXPECT_EQ(heap.GetReadCursor(), 110u);
    EXPECT_EQ(heap.WriteMemory(kText.data(), 4, CMemory::AT_CURSOR), 0);
    EXPECT_EQ(heap.WriteMemory(kText.data(), 4, CMemory::AT_CURSOR), 0);
    EXPECT_EQ(heap.GetWriteCursor(), 8u);
    heap.SetReadCursor(4);
    unsigned char* copy = nullptr;
    EXPECT_EQ(heap.ReadMemory(&copy, 4, CMemory::AT_CURSOR), 0);
    EXPECT_STREQ(reinterpret_cast<char*>(copy), "text");
    EXPECT_EQ(heap.ReadMemory(&copy, 0, 0), 0);
    EXPECT_EQ(copy[0], 0);
    EXPECT_EQ(heap.GetFileLength(), 0u);
}

TEST(HeapMemory, RefusesRangesThatWrapAndNullPointers) {
    CMemory heap = Heap();
    unsigned char one = 7;
    unsigned char* copy = nullptr;
    for (const unsigned long count : {0xFFFFFFFFUL, 0xFFFFFFF0UL, 0xFFFFFFEFUL}) {
        EXPECT_EQ(heap.ReadMemoryDirect(&one, count, 16), ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(heap.ReadMemory(&copy, count, 16), ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(heap.WriteMemory(&one, count, 16), ERROR_NOT_ENOUGH_MEMORY);
    }
    EXPECT_EQ(heap.ReadMemory(&copy, 0xFFFFFFFF, 0), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(heap.GetStatus(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(heap.WriteMemory(nullptr, 1, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(heap.ReadMemoryDirect(nullptr, 1, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(heap.ReadMemory(nullptr, 1, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(heap.GetReadCursor(), 0u);
    EXPECT_EQ(heap.WriteMemory(nullptr, 0, 0), 0);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(one, 7);
}

TEST(HeapMemory, ASourceInsideTheBufferMovesWithIt) {
    CMemory heap = Heap();
    const Bytes block(100000, 'x');
    heap.WriteMemory(block.data(), 100000, 0);
    EXPECT_EQ(heap.WriteMemory(static_cast<unsigned char*>(heap.GetBuffer(0)), 100000, 100000), 0);
    EXPECT_EQ(Read(heap, 100000, 100000), block);
}

TEST(HeapMemory, Odd22CopiesShareUntilOneGrowsAndAnAssignmentFreesNothing) {
    auto first = std::make_unique<CMemory>(Heap());
    first->WriteMemory(kText.data(), 4, 0);
    CMemory second = *first;
    CMemory third = Heap();
    third.WriteMemory(kText.data(), 4, 0);
    const auto* const forgotten = static_cast<unsigned char*>(third.GetBuffer(0));
    third = second;
    EXPECT_EQ(forgotten[0], 't');
    first->WriteMemory(reinterpret_cast<const unsigned char*>("T"), 1, 0);
    EXPECT_EQ(Read(third, 1, 0), Bytes{'T'});
    third.WriteMemory(kText.data(), 4, 100000);
    third.WriteMemory(kText.data(), 4, 0);
    EXPECT_EQ(Read(second, 1, 0), Bytes{'T'});
    first.reset();
    EXPECT_EQ(Read(second, 4, 0), (Bytes{'T', 'e', 'x', 't'}));
}

TEST(MappedMemory, NeedsAMappingThatExistsAndAView) {
    EXPECT_EQ(Attach(100).GetStatus(), ERROR_INVALID_PARAMETER);
    const Mapping mapping(kMapping, 0x10000);
    CMemory memory = Attach(0x10000);
    EXPECT_EQ(memory.GetStatus(), 0);
    CMemory other = Attach(0x10000);
    EXPECT_EQ(memory.WriteMemory(kText.data(), 4, 500), 0);
    EXPECT_EQ(Read(other, 4, 500), kText);

    const ImportPatch view(L"Tessel.dll", "MapViewOfFile", NoView);
    CMemory unmapped = Attach(0x10000);
    EXPECT_EQ(unmapped.GetStatus(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(unmapped.WriteMemory(kText.data(), 4, 0), ERROR_NOT_ENOUGH_MEMORY);
    for (CMemory* each : {&memory, &unmapped}) {
        EXPECT_EQ(each->GetFileLength(), 0x10000u);
        EXPECT_STREQ(each->GetFileName(), kMapping);
    }
}

TEST(MappedMemory, Odd10AReadMayNotEndAtTheVeryEnd) {
    const Mapping mapping(kMapping, 0x1000);
    CMemory memory = Attach(0x1000);
    unsigned char bytes[4];
    EXPECT_EQ(memory.WriteMemory(kText.data(), 4, 0xFFC), 0);
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 4, 0xFFC), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 3, 0xFFC), 0);
    EXPECT_EQ(memory.WriteMemory(kText.data(), 4, 0xFFD), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.WriteMemory(kText.data(), 0xFFFFFFFE, 4), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 0xFFFFFFFE, 4), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(MappedMemory, Odd14ASizeThatTheMappingDoesNotHaveIsNotFollowedOverItsEnd) {
    const Mapping mapping(kMapping, 0x1000);
    CMemory memory = Attach(0x10000000);
    EXPECT_EQ(memory.GetFileLength(), 0x10000000u);
    unsigned char bytes[4] = {};
    EXPECT_EQ(memory.WriteMemory(kText.data(), 4, 0xFFE), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 4, 0xFFE), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_STREQ(reinterpret_cast<char*>(bytes), "te") << "the part in bounds";
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 4, 0x8000000), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(FileMemory, ReadsAndWritesAndKnowsWhetherTheFileIsNew) {
    {
        CMemory file = Open(CMemory::OPENTYPE_CREATE_NEW);
        EXPECT_EQ(file.GetStatus(), 0);
        EXPECT_EQ(file.IsVirginFile(), 1);
        EXPECT_EQ(file.WriteMemory(kText.data(), 4, 2), 0);
        EXPECT_EQ(file.GetFileLength(), 6u);
    }
    EXPECT_EQ(Open(CMemory::OPENTYPE_CREATE_NEW).GetStatus(), ERROR_FILE_EXISTS);
    CMemory file = Open(CMemory::OPENTYPE_OPEN_EXISTING, 1);
    EXPECT_EQ(file.IsVirginFile(), 0);
    EXPECT_EQ(Read(file, 4, 2), kText);
    unsigned char* copy = nullptr;
    EXPECT_EQ(file.ReadMemory(&copy, 10, 2), ERROR_HANDLE_EOF);
    EXPECT_EQ(Bytes(copy, copy + 11), (Bytes{'t', 'e', 'x', 't', 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(file.GetReadCursor(), 12u);
    EXPECT_EQ(file.WriteMemory(kText.data(), 4, 0), ERROR_ACCESS_DENIED);
    EXPECT_EQ(file.GetWriteCursor(), 0u);
}

TEST_F(FileMemory, AsksForWhatItsArgumentsSayAndAgainForReadingOnly) {
    const ImportPatch create(L"Tessel.dll", "CreateFileW", RefuseWriting);
    Reports reports;
    std::ofstream(path) << "x";
    EXPECT_EQ(Open(CMemory::OPENTYPE_CREATE_ALWAYS, 1).GetStatus(), 0);
    CMemory file = Open(9);
    EXPECT_EQ(file.GetStatus(), 0);
    EXPECT_EQ(file.IsVirginFile(), 0);
    Open(CMemory::OPENTYPE_TRUNCATE_EXISTING);
    const DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const std::vector<Opened> expected{{GENERIC_READ, FILE_SHARE_READ, CREATE_ALWAYS},
                                       {GENERIC_READ | GENERIC_WRITE, shareAll, OPEN_ALWAYS},
                                       {GENERIC_READ, FILE_SHARE_READ, OPEN_ALWAYS},
                                       {GENERIC_READ | GENERIC_WRITE, shareAll, TRUNCATE_EXISTING},
                                       {GENERIC_READ, FILE_SHARE_READ, TRUNCATE_EXISTING}};
    EXPECT_EQ(opened, expected);
    EXPECT_EQ(reports.Take(), Texts(2, "CMemory:215 !_T(\"Invalid Open Type\")"));
}

TEST_F(FileMemory, CopiesCloseTheFileOnce) {
    {
        CMemory first = Open(CMemory::OPENTYPE_OPEN_ALWAYS);
        { const CMemory second = first; }
        EXPECT_EQ(first.WriteMemory(kText.data(), 4, 0), 0);
        const CMemory third = first;
        first.ReName((path.wstring() + L"2").c_str());
        CMemory other = Open(CMemory::OPENTYPE_OPEN_ALWAYS);
        const CMemory fourth = first;
    }
    EXPECT_TRUE(std::filesystem::remove(path.wstring() + L"2"));
    const HANDLE alone = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(alone, INVALID_HANDLE_VALUE) << "nobody has it open";
    CloseHandle(alone);
}

TEST_F(FileMemory, Odd13RenamingClosesTheFile) {
    const auto renamed = path.parent_path() / L"tessel renamed.dat";
    CMemory file = Open(CMemory::OPENTYPE_OPEN_ALWAYS);
    EXPECT_EQ(file.ReName(nullptr), -1);
    EXPECT_EQ(file.ReName(renamed.c_str()), 0);
    EXPECT_EQ(file.GetFileName(), renamed.wstring());
    EXPECT_EQ(file.WriteMemory(kText.data(), 4, 0), ERROR_INVALID_HANDLE);
    EXPECT_NE(file.ReName(L"Q:\\no such folder\\x"), 0);
    EXPECT_EQ(file.GetFileName(), renamed.wstring());
    EXPECT_EQ(CMemory::RemoveFile(renamed.c_str()), 0);
    EXPECT_EQ(CMemory::RemoveFile(renamed.c_str()), 0);
    EXPECT_NE(CMemory::RemoveFile(L"Q:\\no such folder\\x"), 0);
}

TEST_F(FileMemory, CarriesItsTimeOfTheLastWrite) {
    CMemory file = Open(CMemory::OPENTYPE_OPEN_ALWAYS);
    const FILETIME set{0x10000000, 0x01D00000};
    FILETIME got{};
    EXPECT_EQ(file.SetFileModificationTime(&set), 0);
    EXPECT_EQ(file.GetFileModificationTime(&got), 0);
    EXPECT_EQ(CompareFileTime(&set, &got), 0);
    CMemory heap = Heap();
    EXPECT_EQ(heap.GetFileModificationTime(&got), ERROR_INVALID_HANDLE);
    EXPECT_EQ(heap.SetFileModificationTime(&set), ERROR_INVALID_HANDLE);
}

TEST_F(FileMemory, ALengthOver4GbIsReported) {
    CMemory file = Open(CMemory::OPENTYPE_OPEN_ALWAYS);
    const ImportPatch size(L"Tessel.dll", "GetFileSize", SizeOver4Gb);
    Reports reports;
    EXPECT_EQ(file.GetFileLength(), 5u);
    EXPECT_EQ(reports.Take(), Texts{"CMemory:274 HighPart == 0"});
}

TEST_F(FileMemory, Odd12AShortWriteGoesUnnoticed) {
    CMemory file = Open(CMemory::OPENTYPE_OPEN_ALWAYS);
    const ImportPatch write(L"Tessel.dll", "WriteFile", WriteHalf);
    EXPECT_EQ(file.WriteMemory(kText.data(), 4, 0), 0);
    EXPECT_EQ(file.GetWriteCursor(), 4u);
    EXPECT_EQ(file.GetFileLength(), 2u);
}

TEST(GlobalMemory, Odd11EachRequestAllocatesAndAccessStaysInBounds) {
    CMemory memory(CMemory::KIND_GLOBAL, 0, nullptr, CMemory::OPENTYPE_OPEN_ALWAYS, 0);
    unsigned char one = 7;
    EXPECT_EQ(memory.ReadMemoryDirect(&one, 1, 0), ERROR_NOT_ENOUGH_MEMORY) << "no block yet";
    void* const block = memory.GetBuffer(100);
    ASSERT_NE(block, nullptr);
    EXPECT_NE(memory.GetBuffer(50), block);
    EXPECT_EQ(memory.WriteMemory(kText.data(), 4, 10), 0);
    EXPECT_EQ(Read(memory, 4, 10), kText);
    EXPECT_EQ(memory.WriteMemory(kText.data(), 4, 0x100000), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.ReadMemoryDirect(&one, 1, 0xFFFFFFFE), ERROR_NOT_ENOUGH_MEMORY);
    const CMemory copy = memory;
    {
        const ImportPatch allocate(L"Tessel.dll", "GlobalAlloc", NoGlobalMemory);
        EXPECT_NE(memory.GetBuffer(1), nullptr) << "the old block";
        EXPECT_EQ(memory.GetBuffer(1000), nullptr);
        EXPECT_EQ(memory.WriteMemory(kText.data(), 4, 0), ERROR_NOT_ENOUGH_MEMORY);
    }
    EXPECT_NE(memory.GetBuffer(1000), nullptr);
    EXPECT_EQ(GlobalFree(block), nullptr) << "the first block stayed allocated";
}

int globalFrees = 0;

HGLOBAL WINAPI CountGlobalFree(HGLOBAL block) {
    ++globalFrees;
    return GlobalFree(block);
}

TEST(GlobalMemory, IsFreedOnceAlsoWhenACopyWasToBeRenamed) {
    const ImportPatch free(L"Tessel.dll", "GlobalFree", CountGlobalFree);
    {
        CMemory memory(CMemory::KIND_GLOBAL, 0, nullptr, CMemory::OPENTYPE_OPEN_ALWAYS, 0);
        ASSERT_NE(memory.GetBuffer(100), nullptr);
        const CMemory copy = memory;
        EXPECT_NE(memory.ReName(L"Q:\\no such folder\\x"), 0);
    }
    EXPECT_EQ(globalFrees, 1);
}

TEST(MappedMemory, TheLastCopyUnmapsAndCloses) {
    void* view = nullptr;
    {
        const Mapping mapping(kMapping, 0x1000);
        auto first = std::make_unique<CMemory>(Attach(0x1000));
        CMemory second = *first;
        { const CMemory third = second; }
        EXPECT_EQ(first->WriteMemory(kText.data(), 4, 0), 0);
        first.reset();
        EXPECT_EQ(Read(second, 4, 0), kText);
        view = second.GetBuffer(0);
    }
    EXPECT_NE(Attach(0x1000).GetStatus(), 0) << "no handle is left";
    MEMORY_BASIC_INFORMATION region{};
    VirtualQuery(view, &region, sizeof region);
    EXPECT_EQ(region.State, DWORD{MEM_FREE});
}

TEST(Memory, AnUnknownKindHasStatus1) {
    CMemory memory(4, 0, nullptr, CMemory::OPENTYPE_OPEN_ALWAYS, 0);
    EXPECT_EQ(memory.GetStatus(), 1);
    EXPECT_EQ(memory.GetBuffer(10), nullptr);
}
