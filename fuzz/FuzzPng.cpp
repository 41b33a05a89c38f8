// Reads any bytes as a PNG file, or another that the still-image loader knows, to sizes that the first two
// bytes choose.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "fuzz/FuzzFile.h"
#include "imaging/codecs/XpImageIoPNG.h"

namespace {

constexpr std::int64_t kMostPixels = 1 << 20;  // so that a run stays short

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const FuzzFile file("a.png");
  if (size < 2) return 0;
  const XpString path = file.Write(data + 2, size - 2);
  XpImageIoPNG codec;
  XpImageSize whole;
  if (codec.GetImageSize(path, whole, false) != XpOk) return 0;
  if (std::int64_t{whole.width} * whole.height > kMostPixels) return 0;
  const XpImageSize target{data[0], data[1]};
  const auto picture = codec.LoadFitted(path, target, {});
  if ((picture != nullptr) != (codec.status == XpOk)) std::abort();
  if (picture == nullptr || target.width == 0 || target.height == 0) return 0;
  if (picture->width > target.width || picture->height > target.height) std::abort();
  return 0;
}
