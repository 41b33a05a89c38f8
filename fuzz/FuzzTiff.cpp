// Reads any bytes as a TIFF file in every way that the codec has, and rates it. The first byte chooses scale
// and flags. A file that could be rated carries the rating, and its picture is the same as before.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "fuzz/FuzzFile.h"
#include "imaging/codecs/XpImageIoTIFF.h"

namespace {

constexpr std::int64_t kMostPixels = 1 << 20;  // so that a run stays short

bool IsSame(const XpImageIo::Picture& a, const XpImageIo::Picture& b) {
  return b != nullptr && a->size == b->size && std::memcmp(a->data, b->data, a->size) == 0;
}

void Rate(const XpString& path, const XpImageIo::Picture& before) {
  XpImageIoTIFF codec;
  if (codec.SetRating(path, 3) != XpOk) return;
  const auto tags = codec.LoadTags(path);
  if (tags.Get() == nullptr || tags->GetMakerIfd() == nullptr) std::abort();
  if (tags->GetMakerIfd()->GetLong(0x2002, 0, false) != 3) std::abort();
  // A strip that reached past the end may lie within the longer file.
  if (before != nullptr && !IsSame(before, codec.Load(path, 1, {}))) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const FuzzFile file("a.tif");
  if (size == 0) return 0;
  const std::uint8_t choice = data[0];
  const XpString path = file.Write(data + 1, size - 1);
  XpImageIoTIFF codec;
  XpImageSize whole;
  if (codec.GetStoredImageSize(path, whole, false) != XpOk) return 0;
  if (std::int64_t{whole.width} * whole.height > kMostPixels) return 0;
  const XpImageReading reading{.toSrgb = (choice & 4) != 0, .applyOrientation = (choice & 8) != 0};
  if ((codec.Load(path, 1 << (choice & 3), reading) != nullptr) != (codec.status == XpOk)) std::abort();
  if (codec.LoadFitted(path, {40, 30}, reading) == nullptr && codec.status == XpOk) std::abort();
  if ((choice & 16) != 0) Rate(path, codec.Load(path, 1, {}));  // the slowest, since it is flushed
  return 0;
}
