#include <foundation/Report.h>
#include <foundation/SharedOwners.h>
#include <media/MovieFiles.h>
#include <media/NarrowPath.h>
#include <tessel/media/avifile.h>

#include <vfw.h>

#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

namespace {

constexpr tessel::ReportSite kOtherSize{"AviFile", 184};
constexpr unsigned long kRefused = static_cast<unsigned long>(-1);
constexpr unsigned int kColours = 256;
constexpr DWORD kMillisecondRate = 1000;
constexpr DWORD kBestQuality = 10000;
constexpr DWORD kQualityPerCent = 100;
constexpr DWORD kCodecParameter = 75;
constexpr std::int64_t kRowAlignment = 4; // of the rows of a bitmap, in bytes
constexpr WORD kBitsPerPixel = 8;

/// Start of the header buffer; the pixels follow.
struct Head {
    BITMAPINFOHEADER info;
    RGBQUAD palette[kColours];
};
constexpr LONG kFormatSize = sizeof(Head);
static_assert(kFormatSize == 1064 && offsetof(Head, palette) == 40);

struct ReleaseStream {
    void operator()(IAVIStream* stream) const { (void)AVIStreamRelease(stream); }
};
using OwnStream = std::unique_ptr<IAVIStream, ReleaseStream>;

unsigned long ResultOf(HRESULT result) {
    return static_cast<unsigned long>(result);
}

/// Size of an image in bytes.
std::int64_t SizeOf(int width, int height) {
    return std::int64_t{width} * height;
}

/// Size of a header buffer in bytes.
// GUARD-140: codecs expect rows that are padded to a multiple of 4 bytes, and read beyond unpadded ones.
std::int64_t RoomFor(int width, int height) {
    return kFormatSize + (std::int64_t{width} + kRowAlignment - 1) / kRowAlignment * kRowAlignment * height;
}

/// Whether an image of that size fits in memory and in the lengths of the AVI functions.
bool IsPossible(int width, int height) {
    return width > 0 && height > 0 && RoomFor(width, height) <= std::numeric_limits<LONG>::max();
}

BITMAPINFOHEADER Describe(int width, int height) {
    BITMAPINFOHEADER info{};
    info.biSize = sizeof info;
    info.biWidth = width;
    info.biHeight = height;
    info.biPlanes = 1;
    info.biBitCount = kBitsPerPixel;
    info.biCompression = BI_RGB;
    // ODD-150: the rows are not padded to a multiple of 4 bytes.
    info.biSizeImage = static_cast<DWORD>(SizeOf(width, height));
    info.biClrUsed = kColours;
    return info;
}

RGBQUAD ToQuad(unsigned long colour) {
    return {GetBValue(colour), GetGValue(colour), GetRValue(colour), 0};
}

unsigned long MakeStream(IAVIFile* file, const BITMAPINFOHEADER& header, DWORD rate, OwnStream& stream) {
    if (file == nullptr) return kRefused; // GUARD-144
    AVISTREAMINFOW info{};
    info.fccType = streamtypeVIDEO;
    info.dwScale = 1;
    info.dwRate = rate;
    info.dwSuggestedBufferSize = header.biSizeImage;
    info.rcFrame = {0, 0, header.biWidth, header.biHeight};
    IAVIStream* created = nullptr;
    const HRESULT result = AVIFileCreateStreamW(file, &created, &info);
    if (result == AVIERR_OK) {
        stream.reset(created);
        tessel::RecordStream(file);
    }
    return ResultOf(result);
}

unsigned long MakeCompressed(IAVIStream* stream, bool runLength, int quality, OwnStream& compressed) {
    DWORD parameter = kCodecParameter;
    AVICOMPRESSOPTIONS options{};
    options.fccHandler = runLength ? mmioFOURCC('M', 'R', 'L', 'E') : mmioFOURCC('M', 'S', 'V', 'C');
    options.dwQuality = runLength ? kBestQuality : static_cast<DWORD>(quality) * kQualityPerCent;
    options.dwFlags = AVICOMPRESSF_VALID;
    options.lpParms = &parameter;
    options.cbParms = sizeof parameter;
    IAVIStream* created = nullptr;
    const HRESULT result = AVIMakeCompressedStream(&created, stream, &options, nullptr);
    if (result == AVIERR_OK) compressed.reset(created);
    return ResultOf(result);
}

unsigned long SetFormat(IAVIStream* stream, BITMAPINFOHEADER* header) {
    return ResultOf(AVIStreamSetFormat(stream, 0, header, kFormatSize));
}

/// Allocates a zeroed buffer.
unsigned char* Allocate(std::int64_t size) {
    return static_cast<unsigned char*>(std::calloc(1, static_cast<std::size_t>(size)));
}

void Release(unsigned char* buffer) {
    if (buffer != nullptr && tessel::RemoveOwner(buffer)) std::free(buffer);
}

/// Whether a buffer holds that many bytes.
bool Holds(unsigned char* buffer, std::int64_t size) {
    return buffer != nullptr && static_cast<std::int64_t>(_msize(buffer)) >= size;
}

} // namespace

CAviFile::CAviFile()
    : m_pFile(nullptr), m_pStream(nullptr), m_pCompressed(nullptr), m_pHeader(nullptr), m_pPixels(nullptr),
      m_pFrame(nullptr), m_iHeight(0), m_iWidth(0) {}

CAviFile::CAviFile(const CAviFile& other) {
    ShareWith(other);
}

CAviFile& CAviFile::operator=(const CAviFile& other) {
    if (this == &other) return *this;
    Close();
    ShareWith(other);
    return *this;
}

CAviFile::~CAviFile() {
    Close();
}

// GUARD-141: copies hold file, streams and buffers by value, and would release them twice.
void CAviFile::ShareWith(const CAviFile& other) {
    m_pFile = tessel::Share(other.m_pFile);
    m_pStream = m_pFile != nullptr ? other.m_pStream : nullptr;
    m_pCompressed = m_pFile != nullptr ? other.m_pCompressed : nullptr;
    m_pHeader = tessel::Share(other.m_pHeader);
    m_pPixels = m_pHeader != nullptr ? other.m_pPixels : nullptr;
    m_pFrame = tessel::Share(other.m_pFrame);
    m_iHeight = other.m_iHeight;
    m_iWidth = other.m_iWidth;
    if (m_pStream != nullptr) (void)AVIStreamAddRef(m_pStream);
    if (m_pCompressed != nullptr) (void)AVIStreamAddRef(m_pCompressed);
}

unsigned long CAviFile::Open(const wchar_t* path) {
    Close();
    if (path == nullptr) return kRefused; // GUARD-09
    const tessel::NarrowPath narrow(path);
    if (narrow.Get() == nullptr) return ResultOf(AVIERR_FILEOPEN);
    AVIFileInit();
    const HRESULT result = AVIFileOpenW(&m_pFile, narrow.Get(), OF_CREATE | OF_WRITE, nullptr);
    if (result == AVIERR_OK) {
        tessel::RecordMovie(m_pFile, path);
    } else {
        m_pFile = nullptr;
        AVIFileExit();
        narrow.Discard();
    }
    return ResultOf(result);
}

void CAviFile::Close() {
    ReleaseFrame();
    ReleaseHeader();
    ReleaseStreams();
    IAVIFile* const closing = m_pFile;
    m_pFile = nullptr;
    if (closing == nullptr || !tessel::RemoveOwner(closing)) return;
    (void)AVIFileRelease(closing); // it returns a reference count
    AVIFileExit();
    // GUARD-252: the system does not report a full disk.
    tessel::ReportUnless(tessel::CheckMovie(closing), "!\"The file is incomplete\"", {"AviFile", __LINE__});
}

// GUARD-143: also before a new stream: a codec would read images of the earlier size from the new buffer.
void CAviFile::ReleaseStreams() {
    if (m_pStream != nullptr) (void)AVIStreamRelease(m_pStream);
    m_pStream = nullptr;
    if (m_pCompressed != nullptr) (void)AVIStreamRelease(m_pCompressed);
    m_pCompressed = nullptr;
}

void CAviFile::ReleaseHeader() {
    Release(m_pHeader);
    m_pHeader = m_pPixels = nullptr;
    m_iHeight = m_iWidth = 0;
}

void CAviFile::ReleaseFrame() {
    Release(m_pFrame);
    m_pFrame = nullptr;
}

/// A shared buffer holds the images of a copy.
bool CAviFile::CanKeepHeader(int width, int height) const {
    return SizeOf(width, height) <= SizeOf(m_iWidth, m_iHeight) && Holds(m_pHeader, RoomFor(width, height)) &&
           !tessel::IsShared(m_pHeader);
}

void CAviFile::CreateBitmapHeaderBuffer(int width, int height, unsigned long* palette, BITMAPINFOHEADER*& header) {
    header = nullptr;
    if (palette == nullptr) return;         // GUARD-09
    if (!IsPossible(width, height)) return; // GUARD-142
    if (CanKeepHeader(width, height)) {
        std::memset(m_pHeader, 0, static_cast<std::size_t>(RoomFor(width, height))); // pixels of an earlier stream
    } else {
        ReleaseHeader();
        m_pHeader = Allocate(RoomFor(width, height));
        if (m_pHeader == nullptr) return;
    }
    m_pPixels = m_pHeader + kFormatSize;
    m_iWidth = width;
    m_iHeight = height;
    Head& head = *reinterpret_cast<Head*>(m_pHeader);
    head.info = Describe(width, height);
    std::transform(palette, palette + kColours, head.palette, ToQuad);
    header = &head.info;
}

unsigned long CAviFile::InitializeStream(int width, int height, unsigned long* palette, void*& frame) {
    frame = nullptr;
    BITMAPINFOHEADER* header = nullptr;
    CreateBitmapHeaderBuffer(width, height, palette, header);
    if (header == nullptr) return kRefused;
    ReleaseStreams();
    ReleaseFrame();
    frame = m_pFrame = Allocate(SizeOf(width, height));
    if (m_pFrame == nullptr) return kRefused;
    OwnStream stream;
    unsigned long result = MakeStream(m_pFile, *header, kMillisecondRate, stream);
    if (result == 0) result = SetFormat(stream.get(), header);
    if (result == 0) m_pStream = stream.release();
    return result;
}

unsigned long CAviFile::InitializeStream(int width, int height, unsigned long* palette, int rate, int bRLE,
                                         int quality) {
    BITMAPINFOHEADER* header = nullptr;
    CreateBitmapHeaderBuffer(width, height, palette, header);
    if (header == nullptr) return kRefused;
    ReleaseStreams();
    OwnStream stream;
    OwnStream compressed;
    unsigned long result = MakeStream(m_pFile, *header, static_cast<DWORD>(rate), stream);
    if (result == 0) result = MakeCompressed(stream.get(), bRLE != 0, quality, compressed);
    if (result != 0) return result;
    m_pStream = stream.release(); // ODD-151: kept without a format if the codec refuses the images
    result = SetFormat(compressed.get(), header);
    if (result == 0) m_pCompressed = compressed.release();
    return result;
}

bool CAviFile::CanWrite() const {
    return m_pHeader != nullptr && (m_pCompressed != nullptr || m_pStream != nullptr);
}

unsigned long CAviFile::WriteFrame(long position) {
    if (!CanWrite()) return kRefused;
    const std::int64_t size = SizeOf(m_iWidth, m_iHeight);
    if (!Holds(m_pFrame, size)) return kRefused; // GUARD-145
    std::memcpy(m_pPixels, m_pFrame, static_cast<std::size_t>(size));
    return WritePixels(position);
}

unsigned long CAviFile::WriteFrame(long position, unsigned char* pixels, unsigned long size) {
    if (!CanWrite()) return kRefused;
    const auto width = static_cast<unsigned long>(m_iWidth);
    const auto height = static_cast<unsigned long>(m_iHeight);
    tessel::ReportUnless(size == width * height, "Size == (ULONG)(Width * Height)", kOtherSize);
    if (pixels == nullptr) return kRefused; // GUARD-09
    // GUARD-146: a smaller image has fewer rows; reading its last ones would go beyond its end.
    for (unsigned long row = std::min(size / width, height); row-- > 0;) {
        std::memcpy(m_pPixels + (height - 1 - row) * width, pixels + row * width, width);
    }
    return WritePixels(position);
}

unsigned long CAviFile::WritePixels(long position) const {
    return ResultOf(AVIStreamWrite(m_pCompressed != nullptr ? m_pCompressed : m_pStream, position, 1, m_pPixels,
                                   static_cast<LONG>(SizeOf(m_iWidth, m_iHeight)), AVIIF_KEYFRAME, nullptr, nullptr));
}
