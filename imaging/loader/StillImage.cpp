#include "imaging/loader/StillImage.h"

#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "foundation/file/XpFile.h"
#include "imaging/loader/ImageFormats.h"

namespace vrx::imaging {

namespace {

// Signatures as the formats' standards give them; TIFF 6.0 in both byte orders and with 64-bit offsets.
constexpr ImageFormat kFormats[] = {
    {"BMP", "BM", 2, ReadBmp},
    {"GIF", "GIF87a", 6, ReadGif},
    {"GIF", "GIF89a", 6, ReadGif},
    {"JPEG", "\xFF\xD8\xFF", 3, ReadJpeg},
    {"PNG", "\x89PNG\r\n\x1A\n", 8, ReadPng},
    {"TIFF", "II*\0", 4, ReadTiff},
    {"TIFF", "MM\0*", 4, ReadTiff},
    {"TIFF", "II+\0", 4, ReadTiff},
    {"TIFF", "MM\0+", 4, ReadTiff},
};

const ImageFormat* FindFormat(ImageSource& source) {
  std::array<char, kSignatureBytes> head{};
  const std::size_t length = source.Read(head.data(), head.size());
  for (const ImageFormat& format : kFormats) {
    if (length >= format.signatureBytes &&
        std::memcmp(head.data(), format.signature, format.signatureBytes) == 0) {
      return &format;
    }
  }
  return nullptr;
}

void ReadAny(ImageReading& reading) {
  ImageSource& source = reading.Source();
  if (source.Result() != XpOk) {
    reading.Fail(source.Result(), "the file cannot be read");
    return;
  }
  if (source.Size() == 0) {
    reading.Damaged("the file is empty");
    return;
  }
  if (source.Size() > reading.Request().limits.fileBytes) {
    reading.Fail(XpErrOutOfMemory, "the file is too large for a picture");
    return;
  }
  const ImageFormat* format = FindFormat(source);
  if (format == nullptr) {
    reading.Damaged("the file is no BMP, GIF, JPEG, PNG or TIFF picture");
    return;
  }
  source.Seek(0);
  if (!format->read(reading)) reading.Damaged("the picture is damaged");
}

XpResult Report(XpResult result, const char* words, XpString* problem) {
  if (problem != nullptr) *problem = XpNarrowString(words).ToWide();
  return result;
}

XpResult OpenAndRead(const XpString& path, const StillImageRequest& request, StillImage* image,
                     std::int32_t& width, std::int32_t& height, XpString* problem) {
  try {
    XpFile file(path);
    const XpResult opened = file.Open(XpOpenRead | XpOpenSequential, XpShareRead);
    if (opened == XpErrFileNotFound || opened == XpErrPathNotFound || opened == XpErrNoSuchFile) {
      return Report(opened, "the file does not exist", problem);
    }
    if (opened != XpOk) return Report(opened, "the file cannot be opened", problem);
    return ReadStillImage(file, request, image, width, height, problem);
  } catch (const std::bad_alloc&) {
    if (image != nullptr) *image = StillImage();
    return XpErrOutOfMemory;
  }
}

}  // namespace

std::span<const ImageFormat> ImageFormats() noexcept { return kFormats; }

XpResult ReadStillImage(XpAbstractFile& file, const StillImageRequest& request, StillImage* image,
                        std::int32_t& width, std::int32_t& height, XpString* problem) {
  const auto source = std::make_unique<ImageSource>(file);  // its block is large for a stack
  ImageReading reading(*source, request, image);
  ReadAny(reading);
  const XpResult result = reading.Result();
  if (result != XpOk) {
    if (image != nullptr) *image = StillImage();
    return Report(result, reading.Words(), problem);
  }
  width = reading.Width();
  height = reading.Height();
  return XpOk;
}

XpResult LoadStillImage(const XpString& path, const StillImageRequest& request, StillImage& image,
                        XpString* problem) {
  image = StillImage();
  std::int32_t width = 0, height = 0;
  return OpenAndRead(path, request, &image, width, height, problem);
}

XpResult ReadStillImageSize(const XpString& path, const StillImageLimits& limits, std::int32_t& width,
                            std::int32_t& height, XpString* problem) {
  width = height = 0;
  const StillImageRequest request{.limits = limits};
  return OpenAndRead(path, request, nullptr, width, height, problem);
}

}  // namespace vrx::imaging
