#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <tessel/foundation/memory.h>

#include <fstream>
#include <memory>

namespace {

using Bytes = std::vector<unsigned char>;

const Bytes kText{'t', 'e', 'x', 't'};
constexpr wchar_t kMapping[] = L"Tessel test mapping";
constexpr wchar_t kNoFolder[] = L"Q:\\no such folder\\x";

CMemory Make(int kind, unsigned long size = 0, const wchar_t* name = nullptr) {
    return {kind, size, name, CMemory::OPENTYPE_OPEN_ALWAYS, 0};
}

CMemory Attach(unsigned long size) {
    return Make(CMemory::KIND_MAPPING, size, kMapping);
}

int Write(CMemory& memory, unsigned long offset) {
    return memory.WriteMemory(kText.data(), 4, offset);
}

Bytes Read(CMemory& memory, unsigned long count, unsigned long offset) {
    Bytes bytes(count, '#');
    EXPECT_EQ(memory.ReadMemoryDirect(bytes.data(), count, offset), 0);
    return bytes;
}

class FileMemory : public testing::Test {
protected:
    CMemory Open(unsigned int type = CMemory::OPENTYPE_OPEN_ALWAYS, int readOnly = 0) {
        return {CMemory::KIND_FILE, 0, path.c_str(), static_cast<CMemory::OPENTYPE>(type), readOnly};
    }
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / L"file";
    const std::filesystem::path renamed = folder / L"renamed";
};

/// A mapping that exists as long as the object.
class MappedMemory : public testing::Test {
protected:
    void Create(DWORD size) {
        mapping.reset(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, kMapping));
    }
    std::unique_ptr<void, decltype(&CloseHandle)> mapping{nullptr, &CloseHandle};
    unsigned char bytes[4] = {};
};

} // namespace

TEST(HeapMemory, GrowsWithZerosWhenReadAndKeepsCursors) {
    CMemory heap = Make(CMemory::KIND_HEAP);
    EXPECT_EQ(Read(heap, 10, 100), Bytes(10, 0));
    EXPECT_EQ(CMemory(heap).GetReadCursor(), 110u);
    EXPECT_EQ(Write(heap, CMemory::AT_CURSOR) + Write(heap, CMemory::AT_CURSOR), 0);
    EXPECT_EQ(CMemory(heap).GetWriteCursor(), 8u);
    heap.SetReadCursor(4);
    unsigned char* copy = nullptr;
    EXPECT_EQ(heap.ReadMemory(&copy, 300, CMemory::AT_CURSOR), 0);
    EXPECT_STREQ(reinterpret_cast<char*>(copy), "text");
}

TEST(HeapMemory, RefusesRangesThatWrapNullPointersAndUnknownKinds) {
    CMemory heap = Make(CMemory::KIND_HEAP);
    unsigned char one = 7;
    unsigned char* copy = nullptr;
    for (const unsigned long count : {0xFFFFFFFFUL, 0xFFFFFFF0UL, 0xFFFFFFEFUL}) {
        EXPECT_EQ(heap.ReadMemoryDirect(&one, count, 16), ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(heap.ReadMemory(&copy, count, 16), ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(heap.WriteMemory(&one, count, 16), ERROR_NOT_ENOUGH_MEMORY);
    }
    EXPECT_EQ(heap.ReadMemory(&copy, 0xFFFFFFFF, 0), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(heap.ReadMemoryDirect(nullptr, 1, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(heap.ReadMemory(nullptr, 1, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(heap.WriteMemory(nullptr, 1, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(heap.GetStatus(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(heap.ReadMemoryDirect(nullptr, 0, 0) + heap.WriteMemory(nullptr, 0, 0), 0);
    EXPECT_TRUE(heap.GetReadCursor() == 0 && copy == nullptr && one == 7);
    EXPECT_EQ(Make(4).GetStatus(), 1) << "an unknown kind";
}

TEST(HeapMemory, ASourceInsideTheBufferMovesWithIt) {
    CMemory heap = Make(CMemory::KIND_HEAP);
    const Bytes block(100000, 'x');
    heap.WriteMemory(block.data(), 100000, 0);
    EXPECT_EQ(heap.WriteMemory(static_cast<unsigned char*>(heap.GetBuffer(0)), 100000, 100000), 0);
    EXPECT_EQ(Read(heap, 100000, 100000), block);
}

TEST(HeapMemory, Odd22CopiesShareUntilOneGrowsAndAnAssignmentFreesNothing) {
    auto first = std::make_unique<CMemory>(Make(CMemory::KIND_HEAP));
    Write(*first, 0);
    CMemory second = *first;
    CMemory third = Make(CMemory::KIND_HEAP);
    Write(third, 0);
    const auto* const forgotten = static_cast<unsigned char*>(third.GetBuffer(0));
    third = second;
    EXPECT_EQ(forgotten[0], 't');
    first->WriteMemory(reinterpret_cast<const unsigned char*>("T"), 1, 0);
    EXPECT_EQ(Read(third, 1, 0), Bytes{'T'});
    Write(third, 100000);
    Write(third, 0);
    first.reset();
    EXPECT_EQ(Read(second, 4, 0), (Bytes{'T', 'e', 'x', 't'}));
}

TEST_F(MappedMemory, NeedsAMappingThatExistsAndAView) {
    EXPECT_EQ(Attach(100).GetStatus(), ERROR_INVALID_PARAMETER);
    Create(0x10000);
    CMemory memory = Attach(0x10000), other = Attach(0x10000);
    EXPECT_EQ(Write(memory, 500), 0);
    EXPECT_EQ(Read(other, 4, 500), kText);

    const ImportPatch view(Failing("MapViewOfFile", &MapViewOfFile, nullptr, ERROR_NOT_ENOUGH_MEMORY));
    CMemory unmapped = Attach(0x10000);
    EXPECT_EQ(unmapped.GetStatus(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Write(unmapped, 0), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(unmapped.GetFileLength(), 0x10000u);
    EXPECT_STREQ(unmapped.GetFileName(), kMapping);
}

TEST_F(MappedMemory, Odd10And14AReadMayNotEndAtTheVeryEndAndASizeThatIsNotThereIsNotFollowed) {
    Create(0x1000);
    CMemory memory = Attach(0x1000);
    EXPECT_EQ(Write(memory, 0xFFC), 0);
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 4, 0xFFC), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 3, 0xFFC), 0);
    EXPECT_EQ(Write(memory, 0xFFD), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.WriteMemory(kText.data(), 0xFFFFFFFE, 4), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.ReadMemoryDirect(bytes, 0xFFFFFFFE, 4), ERROR_NOT_ENOUGH_MEMORY);
    CMemory larger = Attach(0x10000000);
    EXPECT_EQ(larger.GetFileLength(), 0x10000000u);
    EXPECT_EQ(Write(larger, 0xFFE), ERROR_NOT_ENOUGH_MEMORY);
    std::fill(std::begin(bytes), std::end(bytes), '\0');
    EXPECT_EQ(larger.ReadMemoryDirect(bytes, 4, 0xFFE), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_STREQ(reinterpret_cast<char*>(bytes), "te") << "the part in bounds";
    EXPECT_EQ(larger.ReadMemoryDirect(bytes, 4, 0x8000000), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(MappedMemory, TheLastCopyUnmapsAndCloses) {
    Create(0x1000);
    auto first = std::make_unique<CMemory>(Attach(0x1000));
    auto second = std::make_unique<CMemory>(*first);
    { const CMemory third = *second; }
    *second = *first;
    EXPECT_EQ(Write(*first, 0), 0);
    first.reset();
    EXPECT_EQ(Read(*second, 4, 0), kText);
    const void* const view = second->GetBuffer(0);
    second.reset();
    mapping.reset();
    EXPECT_NE(Attach(0x1000).GetStatus(), 0) << "no handle is left";
    MEMORY_BASIC_INFORMATION region{};
    VirtualQuery(view, &region, sizeof region);
    EXPECT_EQ(region.State, DWORD{MEM_FREE});
}

TEST_F(FileMemory, ReadsAndWritesAndKnowsWhetherTheFileIsNew) {
    {
        CMemory file = Open(CMemory::OPENTYPE_CREATE_NEW);
        EXPECT_EQ(CMemory(file).IsVirginFile(), 1);
        EXPECT_EQ(Write(file, 2), 0);
        EXPECT_EQ(file.GetFileLength(), 6u);
    }
    EXPECT_EQ(Open(CMemory::OPENTYPE_CREATE_NEW).GetStatus(), ERROR_FILE_EXISTS);
    CMemory file = Open(CMemory::OPENTYPE_OPEN_EXISTING, 1);
    EXPECT_EQ(file.IsVirginFile(), 0);
    EXPECT_EQ(Read(file, 4, 2), kText);
    unsigned char* copy = nullptr;
    EXPECT_EQ(file.ReadMemory(&copy, 0xFFFFFFFF, 0), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(file.ReadMemory(&copy, 10, 2), ERROR_HANDLE_EOF);
    EXPECT_EQ(Bytes(copy, copy + 11), (Bytes{'t', 'e', 'x', 't', 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(file.GetReadCursor(), 12u);
    EXPECT_EQ(Write(file, 0), ERROR_ACCESS_DENIED);
    EXPECT_EQ(file.GetWriteCursor(), 0u);
}

TEST_F(FileMemory, AsksForWhatItsArgumentsSayAndAgainForReadingOnly) {
    std::vector<DWORD> requests; // access, share and disposition of each
    const ImportPatch create("CreateFileW", &CreateFileW,
                             [&](auto name, DWORD access, DWORD share, auto security, DWORD disposition, auto... more) {
                                 requests.insert(requests.end(), {access, share, disposition});
                                 SetLastError(ERROR_ACCESS_DENIED);
                                 if (access & GENERIC_WRITE) return INVALID_HANDLE_VALUE;
                                 return CreateFileW(name, access, share, security, OPEN_ALWAYS, more...);
                             });
    Reports reports;
    std::ofstream(path) << "x";
    CMemory file = Open(9);
    EXPECT_EQ(file.GetStatus() + file.IsVirginFile(), 0);
    const DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    EXPECT_EQ(requests, (std::vector<DWORD>{GENERIC_READ | GENERIC_WRITE, shareAll, OPEN_ALWAYS, GENERIC_READ,
                                            FILE_SHARE_READ, OPEN_ALWAYS}));
    EXPECT_EQ(reports.Take(), Texts(2, "CMemory:215 !_T(\"Invalid Open Type\")"));
}

TEST_F(FileMemory, CopiesCloseTheFileOnce) {
    {
        CMemory first = Open();
        { const CMemory second = first; }
        EXPECT_EQ(Write(first, 0), 0);
        const CMemory third = first;
        first.ReName(renamed.c_str());
        CMemory other = Open();
        const CMemory fourth = first;
    }
    EXPECT_TRUE(std::filesystem::remove(renamed));
    const HANDLE alone = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(alone, INVALID_HANDLE_VALUE) << "nobody has it open";
    CloseHandle(alone);
}

TEST_F(FileMemory, Odd13RenamingClosesTheFile) {
    CMemory file = Open();
    EXPECT_EQ(file.ReName(renamed.c_str()), 0);
    EXPECT_EQ(file.GetFileName(), renamed.wstring());
    EXPECT_EQ(Write(file, 0), ERROR_INVALID_HANDLE);
    for (const wchar_t* const name : {kNoFolder, LPCWSTR{}}) EXPECT_EQ(file.ReName(name), -1);
    EXPECT_EQ(file.GetFileName(), renamed.wstring());
    for (int time = 0; time < 2; ++time) EXPECT_EQ(CMemory::RemoveFile(renamed.c_str()), 0) << time;
    EXPECT_NE(CMemory::RemoveFile(kNoFolder), 0);
}

TEST_F(FileMemory, CarriesItsTimeOfTheLastWrite) {
    CMemory file = Open();
    const FILETIME set{0x10000000, 0x01D00000};
    FILETIME got{};
    EXPECT_FALSE(file.SetFileModificationTime(&set) || file.GetFileModificationTime(&got));
    EXPECT_EQ(CompareFileTime(&set, &got), 0);
}

TEST_F(FileMemory, Odd12AShortWriteGoesUnnoticedAndALengthOver4GbIsReported) {
    CMemory file = Open();
    Reports reports;
    const ImportPatch write("WriteFile", &WriteFile, [](HANDLE to, const void* data, DWORD size, auto... more) {
        return WriteFile(to, data, size / 2, more...);
    });
    EXPECT_EQ(Write(file, 0), 0);
    EXPECT_EQ(file.GetWriteCursor(), 4u);
    EXPECT_EQ(file.GetFileLength(), 2u);
    EXPECT_TRUE(reports.Take().empty());
    const ImportPatch size("GetFileSize", &GetFileSize, [](HANDLE, DWORD* high) { return *high = 1, 5; });
    EXPECT_EQ(file.GetFileLength(), 5u);
    EXPECT_EQ(reports.Take(), Texts{"CMemory:274 HighPart == 0"});
}

TEST(GlobalMemory, Odd11EachRequestAllocatesAndAccessStaysInBounds) {
    std::vector<HGLOBAL> freed;
    const ImportPatch free("GlobalFree", &GlobalFree, [&](HGLOBAL block) { return freed.push_back(block), nullptr; });
    void* block = nullptr;
    {
        CMemory memory = Make(CMemory::KIND_GLOBAL);
        unsigned char one = 7;
        EXPECT_EQ(memory.ReadMemoryDirect(&one, 1, 0), ERROR_NOT_ENOUGH_MEMORY) << "no block yet";
        void* const first = memory.GetBuffer(100);
        block = memory.GetBuffer(50);
        EXPECT_TRUE(first != nullptr && block != first && freed.empty()) << "the first block stays allocated";
        EXPECT_EQ(Write(memory, 10), 0);
        EXPECT_EQ(Read(memory, 4, 10), kText);
        EXPECT_EQ(Write(memory, 0x100000), ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(memory.ReadMemoryDirect(&one, 1, 0xFFFFFFFE), ERROR_NOT_ENOUGH_MEMORY);
        CMemory copy = memory;
        EXPECT_NE(copy.ReName(kNoFolder), 0) << "which closes no block";
        const ImportPatch allocate(Failing("GlobalAlloc", &GlobalAlloc, nullptr, ERROR_NOT_ENOUGH_MEMORY));
        EXPECT_EQ(memory.GetBuffer(1), block) << "the old block";
        EXPECT_EQ(memory.GetBuffer(1000), nullptr);
        EXPECT_EQ(memory.GetStatus(), ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(Write(memory, 0), ERROR_NOT_ENOUGH_MEMORY);
    }
    EXPECT_EQ(freed, std::vector<HGLOBAL>{block}) << "once";
}
