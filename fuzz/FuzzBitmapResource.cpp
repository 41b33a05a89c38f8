// Reads any bytes as a picture of an overlay, as a bitmap and as a PNG. A picture has its size within the
// limits and all its memory; where there is none, there is a cause.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/file/XpMemoryFile.h"
#include "overlay/resources/PictureFile.h"

namespace {

using namespace vrx::overlay;

void Check(const OwnedPicture& picture, const XpString& problem) {
  if (problem.IsEmpty() != (picture != nullptr)) std::abort();
  if (picture == nullptr) return;
  if (picture->width < 1 || picture->width > kMaxPictureSide) std::abort();
  if (picture->height < 1 || picture->height > kMaxPictureSide) std::abort();
  if (std::int64_t{picture->width} * picture->height > kMaxPicturePixels) std::abort();
  unsigned sum = 0;
  for (std::uint32_t i = 0; i < picture->size; ++i) sum += picture->data[i];
  static volatile unsigned kept;
  kept = sum;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  XpString problem;
  Check(ReadBitmapFromMemory(data, size, &problem), problem);
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data), static_cast<std::int64_t>(size), false);
  problem = XpString();
  Check(ReadPngFromStream(file, &problem), problem);
  return 0;
}
