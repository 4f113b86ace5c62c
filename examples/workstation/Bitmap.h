#pragma once

#include "TestImage.h"

#include <windows.h>

#include <filesystem>
#include <optional>

/// What the system needs to know to show an Image: 8 bits a pixel, 256 greys, the top line first.
struct GreyBitmapInfo {
    BITMAPINFOHEADER header;
    RGBQUAD greys[256];
};

/// Describes an image of kImageWidth by kImageHeight.
GreyBitmapInfo DescribeImage();

/// Where an image is saved.
std::filesystem::path ImagePath(const std::filesystem::path& folder, std::uint32_t image);

/// Saves an image as a Windows bitmap, which every viewer shows.
/// @return whether it was written in full
bool SaveImage(const std::filesystem::path& path, const Image& image);

/// Reads an image that SaveImage() wrote.
/// @return nothing when there is no such file or it is another kind of bitmap
std::optional<Image> LoadImageFile(const std::filesystem::path& path);
