#include <benchmark/benchmark.h>
#include <tessel/media/avifile.h>

#include <vfw.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// One whole movie per round: opened, its images flipped and written, and closed.

namespace {

constexpr int kSide = 1024;
constexpr int kImages = 25;
constexpr DWORD kSize = kSide * kSide;

std::filesystem::path Path() {
    return std::filesystem::temp_directory_path() / "tessel-bench.avi";
}

/// What both sides write: moving bars, wide ones because Wine's run-length codec has no room for many runs per row.
struct Source {
    Source() {
        for (unsigned long i = 0; i < 256; ++i) palette[i] = RGB(i, i, i);
        for (int i = 0; i < 2 * kSide * kSide; ++i) {
            pixels[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i % kSide / 128 + i / (kSide * kSide));
        }
    }
    unsigned char* Image(int number) { return pixels.data() + number % 2 * kSide * kSide; }

    std::vector<unsigned char> pixels = std::vector<unsigned char>(2 * kSize);
    unsigned long palette[256];
};

bool ByTessel(Source& source, bool runLength) {
    CAviFile movie;
    if (movie.Open(Path().c_str()) != 0) return false;
    void* frame = nullptr;
    unsigned long result = runLength ? movie.InitializeStream(kSide, kSide, source.palette, 25, 1, 0)
                                     : movie.InitializeStream(kSide, kSide, source.palette, frame);
    for (int i = 0; i < kImages && result == 0; ++i) result = movie.WriteFrame(i, source.Image(i), kSize);
    return result == 0;
}

/// The bitmap that the bare calls write.
struct Bitmap {
    explicit Bitmap(const Source& source) {
        header.biSize = sizeof header;
        header.biWidth = header.biHeight = kSide;
        header.biPlanes = 1;
        header.biBitCount = 8;
        header.biSizeImage = kSize;
        header.biClrUsed = 256;
        for (int i = 0; i < 256; ++i) {
            const auto grey = static_cast<BYTE>(source.palette[i]);
            palette[i] = {grey, grey, grey, 0};
        }
    }
    void TurnOver(const unsigned char* image) {
        for (int y = 0; y < kSide; ++y) std::memcpy(pixels + (kSide - 1 - y) * kSide, image + y * kSide, kSide);
    }
    BITMAPINFOHEADER header{};
    RGBQUAD palette[256];
    unsigned char pixels[kSize];
};

HRESULT MakeStream(PAVIFILE file, bool runLength, PAVISTREAM* made) {
    AVISTREAMINFOW info{};
    info.fccType = streamtypeVIDEO;
    info.dwScale = 1;
    info.dwRate = runLength ? 25 : 1000;
    info.dwSuggestedBufferSize = kSize;
    info.rcFrame = {0, 0, kSide, kSide};
    PAVISTREAM plain = nullptr;
    HRESULT result = AVIFileCreateStreamW(file, &plain, &info);
    if (result != 0 || !runLength) {
        *made = plain;
        return result;
    }
    AVICOMPRESSOPTIONS options{};
    options.fccHandler = mmioFOURCC('M', 'R', 'L', 'E');
    options.dwQuality = 10000;
    options.dwFlags = AVICOMPRESSF_VALID;
    result = AVIMakeCompressedStream(made, plain, &options, nullptr);
    AVIStreamRelease(plain);
    return result;
}

bool ByBareCalls(Source& source, bool runLength) {
    const auto bitmap = std::make_unique<Bitmap>(source);
    AVIFileInit();
    PAVIFILE file = nullptr;
    PAVISTREAM stream = nullptr;
    HRESULT result = AVIFileOpenW(&file, Path().c_str(), OF_CREATE | OF_WRITE, nullptr);
    if (result == 0) result = MakeStream(file, runLength, &stream);
    if (result == 0) result = AVIStreamSetFormat(stream, 0, &bitmap->header, offsetof(Bitmap, pixels));
    for (int i = 0; i < kImages && result == 0; ++i) {
        bitmap->TurnOver(source.Image(i));
        result = AVIStreamWrite(stream, i, 1, bitmap->pixels, kSize, AVIIF_KEYFRAME, nullptr, nullptr);
    }
    if (stream != nullptr) AVIStreamRelease(stream);
    if (file != nullptr) AVIFileRelease(file);
    AVIFileExit();
    return result == 0;
}

void WriteMovies(benchmark::State& state, bool (*write)(Source&, bool), bool runLength) {
    Source source;
    bool written = true;
    for (auto _ : state) written = write(source, runLength) && written;
    if (!written) state.SkipWithError("a movie was not written");
    state.SetItemsProcessed(state.iterations() * kImages);
    std::filesystem::remove(Path());
}

void Register(const std::string& name, bool runLength) {
    benchmark::RegisterBenchmark((name + "/Tessel").c_str(), WriteMovies, ByTessel, runLength)->UseRealTime();
    benchmark::RegisterBenchmark((name + "/Bare").c_str(), WriteMovies, ByBareCalls, runLength)->UseRealTime();
}

const bool registered = [] {
    Register("AVI file of 25 images of 1,024 by 1,024, uncompressed", false);
    Register("AVI file of 25 images of 1,024 by 1,024, run-length", true);
    return true;
}();

} // namespace
