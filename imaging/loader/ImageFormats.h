// The still-picture formats, each with the bytes by which its files are known. The loader walks the table,
// and so do its tests and the fuzz target.
#pragma once

#include <cstddef>
#include <span>

#include "imaging/loader/ImageReading.h"

namespace vrx::imaging {

/// Longest signature in the table, in bytes.
inline constexpr std::size_t kSignatureBytes = 8;

struct ImageFormat {
  const char* name;
  const char* signature;
  std::size_t signatureBytes;
  /// Reads from the start of the file. False with the failure noted in the reading.
  bool (*read)(ImageReading& reading);
};

/// A format with several signatures stands there once for each.
std::span<const ImageFormat> ImageFormats() noexcept;

/// The format of an open file, its size or its picture, as StillImage.h tells.
XpResult ReadStillImage(XpAbstractFile& file, const StillImageRequest& request, StillImage* image,
                        std::int32_t& width, std::int32_t& height, XpString* problem);

bool ReadBmp(ImageReading& reading);
bool ReadGif(ImageReading& reading);
bool ReadJpeg(ImageReading& reading);
bool ReadPng(ImageReading& reading);
bool ReadTiff(ImageReading& reading);

}  // namespace vrx::imaging
