// Reads any bytes as a GIF file. Whether a picture is made or not, the format is the same for files that are
// not damaged, and a picture comes exactly with XpOk.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/codecs/XpImageIoGIF.h"

namespace {

constexpr std::int64_t kMostPixels = 1 << 20;  // so that a run stays short

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data), static_cast<std::int64_t>(size), false);
  XpImageIoGIF codec;
  vrx::formats::FormatCode format = 0;
  if (codec.ReadGif(file, 0, true, format) != nullptr) std::abort();
  XpImageSize screen;
  if ((codec.ReadImageSize(file, 0, screen, false) == XpOk) != (format != vrx::formats::kUnknown))
    std::abort();
  if (std::int64_t{screen.width} * screen.height > kMostPixels) return 0;
  const auto picture = codec.Read(file, 0, 1, {});
  if ((picture != nullptr) != (codec.status == XpOk)) std::abort();
  if (picture != nullptr && XpImageSize{picture->width, picture->height} != screen) std::abort();
  codec.ReadFitted(file, 0, {40, 30}, {});
  return 0;
}
