#pragma once

#include "TestImage.h"

#include <windows.h>

#include <filesystem>
#include <optional>

/// The system's description of an Image: 8 bits per pixel, 256 greys, top line first.
struct GreyBitmapInfo {
    BITMAPINFOHEADER header;
    RGBQUAD greys[256];
};

/// Describes an image of kImageWidth by kImageHeight.
GreyBitmapInfo DescribeImage();

/// Where an image is saved.
std::filesystem::path ImagePath(const std::filesystem::path& folder, std::uint32_t image);

/// Saves an image as a Windows bitmap.
/// @return whether it was written in full
bool SaveImage(const std::filesystem::path& path, const Image& image);

/// Reads an image that SaveImage() wrote.
/// @return nothing when there is no such file or it is another kind of bitmap
std::optional<Image> LoadImageFile(const std::filesystem::path& path);
