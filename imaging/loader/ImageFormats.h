// The still-picture formats, each with the way its files are known. The loader walks the table.
#pragma once

#include <span>
#include <string_view>

#include "imaging/loader/ImageReading.h"

namespace vrx::imaging {

struct ImageFormat {
  const char* name;
  /// Whether a file of this format can begin with `start`, which is shorter than kSignatureBytes only when
  /// the file is.
  bool (*isStartOf)(std::string_view start);
  /// Reads from the start of the file. False with the failure noted in the reading.
  bool (*read)(ImageReading& reading);
};

std::span<const ImageFormat> ImageFormats() noexcept;
/// The format of a file that begins with `start`; null when it is none of these.
const ImageFormat* FindImageFormat(std::string_view start) noexcept;

/// Reads the picture in an open file as LoadStillImage does, or without an `image` only its size.
XpResult ReadStillImage(XpAbstractFile& file, const StillImageRequest& request, StillImage* image,
                        std::int32_t& width, std::int32_t& height, XpString* problem);

bool ReadBmp(ImageReading& reading);
bool ReadGif(ImageReading& reading);
bool ReadJpeg(ImageReading& reading);
bool ReadPng(ImageReading& reading);
bool ReadTiff(ImageReading& reading);

}  // namespace vrx::imaging
