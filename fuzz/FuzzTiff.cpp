// Reads any bytes as a TIFF file in every way that the codec has, and rates it. The first byte chooses scale
// and flags.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "fuzz/FuzzFile.h"
#include "imaging/codecs/XpImageIoTIFF.h"

namespace {

constexpr std::int64_t kMostPixels = 1 << 20;  // so that a run stays short

/// A damaged file may have its values on top of each other, so that the date of the edit can overwrite any of
/// them; but no edit makes a file shorter.
void Rate(const FuzzFile& file, const XpString& path) {
  const std::uintmax_t before = file.Size();
  XpImageIoTIFF codec;
  codec.SetRating(path, 3);
  if (file.Size() < before) std::abort();
  codec.LoadTags(path);
  codec.Load(path, 1, {});
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
  if ((choice & 16) != 0) Rate(file, path);  // the slowest, since it is flushed
  return 0;
}
