#include "overlay/resources/PictureFile.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include <png.h>

#include "foundation/file/XpFile.h"
#include "foundation/text/XpPath.h"

namespace vrx::overlay {
namespace {

constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::size_t kInfoHeaderBytes = 40;
constexpr std::size_t kMaskBytes = 12;
constexpr std::uint32_t kBitFields = 3;  // BI_BITFIELDS
constexpr std::int64_t kMaxDeflateRatio = 1032;

OwnedPicture Fail(XpString* problem, const char16_t* words) {
  if (problem != nullptr) *problem = words;
  return nullptr;
}

struct BitmapHead {
  std::uint32_t headerBytes;
  std::int32_t width;
  std::int32_t height;
  std::uint16_t bitCount;
  std::uint32_t compression;
};

template <class Number>
Number NumberAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
  std::uint64_t value = 0;
  for (std::size_t i = sizeof(Number); i-- > 0;) value = value << 8 | bytes[offset + i];
  return static_cast<Number>(value);
}

BitmapHead ReadHead(std::span<const std::uint8_t> header) {
  return {.headerBytes = NumberAt<std::uint32_t>(header, 0),
          .width = NumberAt<std::int32_t>(header, 4),
          .height = NumberAt<std::int32_t>(header, 8),
          .bitCount = NumberAt<std::uint16_t>(header, 14),
          .compression = NumberAt<std::uint32_t>(header, 16)};
}

OwnedPicture MakePicture(bool hasAlpha, std::int64_t width, std::int64_t height, XpString* problem) {
  OwnedPicture picture;
  if (hasAlpha) {
    picture = std::make_unique<XpPixmap32>();
  } else {
    picture = std::make_unique<XpPixmap24>();
  }
  const XpResult result =
      picture->Allocate(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
  return result == XpOk ? std::move(picture) : Fail(problem, u"there is no memory for the picture");
}

bool IsWithinLimits(std::int64_t width, std::int64_t height) {
  return width <= kMaxPictureSide && height <= kMaxPictureSide && width * height <= kMaxPicturePixels;
}

/// The rest of the stream; false beyond the limit and when it cannot be read.
bool ReadRest(XpAbstractFile& stream, std::vector<std::uint8_t>& bytes, XpString* problem) {
  const std::int64_t size = stream.GetSize() - std::max<std::int64_t>(stream.Tell(), 0);
  if (size <= 0) {
    Fail(problem, u"the file is empty");
    return false;
  }
  if (size > kMaxPictureFileBytes) {
    Fail(problem, u"the file is too large");
    return false;
  }
  bytes.resize(static_cast<std::size_t>(size));
  std::uint64_t read = 0;
  const XpResult result = stream.Read(bytes.data(), bytes.size(), &read);
  bytes.resize(static_cast<std::size_t>(read));
  if (result == XpOk || result == XpErrEndOfFile) return true;
  Fail(problem, u"the file cannot be read");
  return false;
}

struct PngRelease {
  png_image* image;
  ~PngRelease() { png_image_free(image); }
};

}  // namespace

OwnedPicture ReadBitmapFromMemory(const void* bytes, std::size_t size, XpString* problem) {
  const std::span file(static_cast<const std::uint8_t*>(bytes), size);
  const bool hasFileHeader = size >= 2 && file[0] == 'B' && file[1] == 'M';
  const std::size_t start = hasFileHeader ? kFileHeaderBytes : 0;
  if (size < start + kInfoHeaderBytes) return Fail(problem, u"the file is too short for a bitmap");
  const BitmapHead head = ReadHead(file.subspan(start, kInfoHeaderBytes));
  if (head.headerBytes < kInfoHeaderBytes || head.width <= 0 || head.height <= 0 || head.bitCount == 0) {
    return Fail(problem, u"it is no bitmap with rows from the bottom up");
  }
  if (!IsWithinLimits(head.width, head.height)) return Fail(problem, u"the picture is too large");
  if (head.bitCount != 24 && head.bitCount != 32)
    return Fail(problem, u"it has neither 24 nor 32 bits a pixel");
  const std::int64_t rowBytes = (std::int64_t{head.bitCount} * head.width + 31) / 32 * 4;
  const std::size_t first = start + kInfoHeaderBytes + (head.compression == kBitFields ? kMaskBytes : 0);
  if (static_cast<std::int64_t>(first) + rowBytes * head.height > static_cast<std::int64_t>(size)) {
    return Fail(problem, u"the file ends within the picture");
  }
  OwnedPicture picture = MakePicture(head.bitCount == 32, head.width, head.height, problem);
  if (picture == nullptr) return nullptr;
  // Rows in memory are padded to four bytes as those of the file are.
  const auto rowSize = static_cast<std::size_t>(rowBytes);
  for (std::int32_t row = 0; row < head.height; ++row) {
    std::memcpy(picture->data + static_cast<std::size_t>(head.height - 1 - row) * rowSize,
                file.data() + first + static_cast<std::size_t>(row) * rowSize, rowSize);
  }
  return picture;
}

OwnedPicture ReadPngFromStream(XpAbstractFile& stream, XpString* problem) {
  std::vector<std::uint8_t> bytes;
  if (!ReadRest(stream, bytes, problem)) return nullptr;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  const PngRelease release{&image};
  if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
    return Fail(problem, u"it is no PNG picture");
  }
  if (!IsWithinLimits(image.width, image.height)) return Fail(problem, u"the picture is too large");
  const std::uint32_t form = image.format & ~static_cast<std::uint32_t>(PNG_FORMAT_FLAG_ALPHA);
  if (form != PNG_FORMAT_RGB) return Fail(problem, u"it is not colour of 8 bits a channel");
  const bool hasAlpha = (image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
  const std::int64_t rowBytes = std::int64_t{image.width} * (hasAlpha ? 4 : 3);
  if (rowBytes * image.height / kMaxDeflateRatio > static_cast<std::int64_t>(bytes.size())) {
    return Fail(problem, u"the file ends within the picture");
  }
  OwnedPicture picture = MakePicture(hasAlpha, image.width, image.height, problem);
  if (picture == nullptr) return nullptr;
  image.format = hasAlpha ? PNG_FORMAT_BGRA : PNG_FORMAT_BGR;
  const std::int32_t stride = picture->GetPlane(0)->rowBytes;
  if (png_image_finish_read(&image, nullptr, picture->data, stride, nullptr) == 0) {
    return Fail(problem, u"the picture is damaged");
  }
  return picture;
}

OwnedPicture LoadPictureFile(const XpString& path, XpString* problem) {
  XpFile file(path);
  const XpResult opened = file.Open(XpOpenRead | XpOpenSequential, XpShareRead);
  if (opened == XpErrFileNotFound || opened == XpErrPathNotFound || opened == XpErrNoSuchFile) {
    return Fail(problem, u"the file does not exist");
  }
  if (opened != XpOk) return Fail(problem, u"the file cannot be opened");
  if (XpCompareNoCase(path.Right(4), u".png") == 0) return ReadPngFromStream(file, problem);
  std::vector<std::uint8_t> bytes;
  if (!ReadRest(file, bytes, problem)) return nullptr;
  return ReadBitmapFromMemory(bytes.data(), bytes.size(), problem);
}

}  // namespace vrx::overlay
