#include "imaging/loader/StillImage.h"

#include <array>
#include <memory>
#include <new>
#include <string>

#include "foundation/file/XpFile.h"
#include "imaging/loader/ImageFormats.h"
#include "imaging/source/PictureSignatures.h"

namespace vrx::imaging {

namespace {

const ImageFormat* FindFormat(ImageSource& source) {
  std::array<char, kSignatureBytes> head{};
  return FindImageFormat({head.data(), source.Read(head.data(), head.size())});
}

/// "the file is no A, B or C picture"
std::string UnknownFormatWords() {
  const std::span<const ImageFormat> formats = ImageFormats();
  std::string words = "the file is no ";
  for (std::size_t i = 0; i < formats.size(); ++i) {
    if (i > 0) words += i + 1 < formats.size() ? ", " : " or ";
    words += formats[i].name;
  }
  return words + " picture";
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
    reading.Damaged(UnknownFormatWords().c_str());
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

XpResult ReadStillImage(XpAbstractFile& file, const StillImageRequest& request, StillImage* image,
                        std::int32_t& width, std::int32_t& height, XpString* problem) {
  const auto source = std::make_unique<ImageSource>(file, request.cancel);  // its block is large for a stack
  ImageReading reading(*source, request, image);
  ReadAny(reading);
  const XpResult result = reading.Result();
  if (result != XpOk && (!reading.IsPartial() || request.IsCancelled())) {
    if (image != nullptr) *image = StillImage();
    return Report(result, reading.Words(), problem);
  }
  width = reading.Width();
  height = reading.Height();
  if (result == XpOk) return XpOk;
  image->isPartial = true;
  return Report(XpOk, reading.Words(), problem);
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
