#include <benchmark/benchmark.h>
#include <tessel/system/file.h>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// A temporary folder.
struct Folder {
    Folder() { fs::create_directories(path); }
    ~Folder() { fs::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    fs::path path = fs::temp_directory_path() / L"tessel benchmark";
    std::wstring file = (path / L"file").wstring();
};

void TransferTessel(benchmark::State& state) {
    const Folder folder;
    std::vector<char> data(static_cast<std::size_t>(state.range(0)));
    const auto size = static_cast<unsigned long>(data.size());
    CFile file(folder.file.c_str(), CFile::READ_WRITE);
    for (auto _ : state) {
        file.Rewind();
        file.WriteFile(data.data(), size);
        file.Rewind();
        if (file.ReadFile(data.data(), size) != size) state.SkipWithError("not read");
    }
}

void TransferBare(benchmark::State& state) {
    const Folder folder;
    std::vector<char> data(static_cast<std::size_t>(state.range(0)));
    const auto size = static_cast<unsigned int>(data.size());
    const int file = _wopen(folder.file.c_str(), _O_CREAT | _O_RDWR | _O_BINARY | _O_RANDOM, _S_IWRITE);
    for (auto _ : state) {
        _lseek(file, 0, SEEK_SET);
        _write(file, data.data(), size);
        _lseek(file, 0, SEEK_SET);
        if (_read(file, data.data(), size) != static_cast<int>(size)) state.SkipWithError("not read");
    }
    _close(file);
}

constexpr int kBlock = 4096;
constexpr int kImage = 1 << 20;

/// Makes the file that is copied, block by block, to `target`.
struct Source : Folder {
    Source() { std::ofstream(path / L"file", std::ios::binary) << std::string(kImage, 'x'); }

    std::wstring target = (path / L"target").wstring();
    char block[kBlock];
};

void CopyTessel(benchmark::State& state) {
    Source source;
    for (auto _ : state) {
        CFile from(source.file.c_str(), CFile::READ_ONLY);
        CFile to(source.target.c_str(), CFile::TRUNCATE);
        while (const unsigned long count = from.ReadFile(source.block, kBlock)) to.WriteFile(source.block, count);
    }
    if (fs::file_size(source.target) != kImage) state.SkipWithError("not copied");
}

void CopyBare(benchmark::State& state) {
    constexpr int kFlags = _O_BINARY | _O_RANDOM;
    Source source;
    for (auto _ : state) {
        const int from = _wopen(source.file.c_str(), kFlags | _O_RDONLY);
        const int to = _wopen(source.target.c_str(), kFlags | _O_CREAT | _O_RDWR | _O_TRUNC, _S_IWRITE);
        while (const int count = _read(from, source.block, kBlock)) {
            _write(to, source.block, static_cast<unsigned int>(count));
        }
        _close(from);
        _close(to);
    }
    if (fs::file_size(source.target) != kImage) state.SkipWithError("not copied");
}

/// 100 directories of 100 files each.
void MakeTree(const fs::path& tree) {
    constexpr int count = 100;
    for (int directory = 0; directory < count; ++directory) {
        const fs::path path = tree / std::to_wstring(directory);
        fs::create_directories(path);
        for (int file = 0; file < count; ++file) std::ofstream(path / std::to_wstring(file));
    }
}

bool RemoveBare(const std::wstring& path) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &entry);
    do {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..") continue;
        const bool directory = entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
        const std::wstring below = path + L"\\" + name;
        if (directory ? !RemoveBare(below) : !DeleteFileW(below.c_str())) break;
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    return RemoveDirectoryW(path.c_str()) != 0;
}

bool RemoveTessel(const std::wstring& path) {
    return RemoveDirAndFiles(path.c_str(), true) == 0;
}

void RemoveTree(benchmark::State& state, bool (*remove)(const std::wstring&)) {
    const Folder folder;
    for (auto _ : state) {
        state.PauseTiming();
        MakeTree(folder.path / L"tree");
        state.ResumeTiming();
        if (!remove((folder.path / L"tree").wstring())) state.SkipWithError("not removed");
    }
}

constexpr int kTreeRepetitions = 5; // each creates its 10,000 files first, which takes seconds

BENCHMARK(TransferTessel)->Name("File, write and read/Tessel")->Arg(kBlock)->Arg(kImage)->UseRealTime();
BENCHMARK(TransferBare)->Name("File, write and read/Bare")->Arg(kBlock)->Arg(kImage)->UseRealTime();
BENCHMARK(CopyTessel)->Name("File, copy 1 MB by 4 KB/Tessel")->UseRealTime();
BENCHMARK(CopyBare)->Name("File, copy 1 MB by 4 KB/Bare")->UseRealTime();
BENCHMARK_CAPTURE(RemoveTree, Tessel, RemoveTessel)
    ->Name("Tree of 10,000 files, remove/Tessel")
    ->Iterations(1)
    ->Repetitions(kTreeRepetitions)
    ->UseRealTime();
BENCHMARK_CAPTURE(RemoveTree, Bare, RemoveBare)
    ->Name("Tree of 10,000 files, remove/Bare")
    ->Iterations(1)
    ->Repetitions(kTreeRepetitions)
    ->UseRealTime();

} // namespace
