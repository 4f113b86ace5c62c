#include "Bitmap.h"

#include <cstring>
#include <fstream>

namespace {

constexpr DWORD kPixels = kImageWidth * kImageHeight;

/// Everything before the pixels.
#pragma pack(push, 1)
struct FileHead {
    BITMAPFILEHEADER file;
    GreyBitmapInfo info;
};
#pragma pack(pop)
static_assert(sizeof(FileHead) == 14 + 40 + 1024);

FileHead MakeHead() {
    FileHead head{};
    head.file.bfType = 0x4D42;
    head.file.bfOffBits = sizeof head;
    head.file.bfSize = sizeof head + kPixels;
    head.info = DescribeImage();
    return head;
}

} // namespace

GreyBitmapInfo DescribeImage() {
    GreyBitmapInfo info{};
    info.header.biSize = sizeof info.header;
    info.header.biWidth = kImageWidth;
    info.header.biHeight = -LONG{kImageHeight};
    info.header.biPlanes = 1;
    info.header.biBitCount = 8;
    info.header.biSizeImage = kPixels;
    info.header.biClrUsed = 256;
    for (int i = 0; i < 256; ++i) {
        const auto grey = static_cast<BYTE>(i);
        info.greys[i] = {grey, grey, grey, 0};
    }
    return info;
}

std::filesystem::path ImagePath(const std::filesystem::path& folder, std::uint32_t image) {
    return folder / ("image-" + std::to_string(image) + ".bmp");
}

bool SaveImage(const std::filesystem::path& path, const Image& image) {
    const FileHead head = MakeHead();
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(&head), sizeof head);
    file.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
    file.close();
    return !file.fail();
}

std::optional<Image> LoadImageFile(const std::filesystem::path& path) {
    const FileHead expected = MakeHead();
    FileHead head;
    Image image(kPixels);
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(&head), sizeof head);
    file.read(reinterpret_cast<char*>(image.data()), std::streamsize{kPixels});
    if (!file || std::memcmp(&head, &expected, sizeof head) != 0) return std::nullopt;
    return image;
}
