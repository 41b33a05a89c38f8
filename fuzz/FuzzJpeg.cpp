// Reads any bytes as a JPEG file in every way that the codec has, and writes it again with a rating. The
// first byte chooses scale and flags. A rebuilt file must be readable and carry its rating.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/codecs/JpegRebuild.h"
#include "imaging/codecs/PictureSummary.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/jpeg/JpegSegments.h"

namespace {

constexpr std::int64_t kMostPixels = 1 << 20;  // so that a run stays short

void ReadAll(XpMemoryFile& file, std::uint8_t choice) {
  using namespace vrx::imaging;
  XpImageIoJpeg codec;
  const XpImageReading reading{
      .forceStereo = (choice & 4) != 0, .toSrgb = (choice & 8) != 0, .applyOrientation = (choice & 16) != 0};
  const auto picture = codec.Read(file, 0, 1 << (choice & 3), reading);
  if ((picture != nullptr) != (codec.status == XpOk)) std::abort();
  if (codec.ReadFitted(file, 0, {40, 30}, reading) == nullptr && codec.status == XpOk) std::abort();
  codec.ReadThumbnail(file, 0, reading);
  bool found = false;
  std::uint32_t kind = 0;
  codec.FindSpfSegment(file, found, kind);
  PictureSummary summary;
  SummarizeJpeg(file, codec, summary);
}

void Rebuild(XpMemoryFile& file, std::uint32_t rating) {
  using namespace vrx::imaging;
  XpImageIoJpeg codec;
  if (SeekToExif(file, 0) != XpOk) return;
  const std::int64_t base = file.Tell();
  const auto tags = codec.XpImageIo::ReadTags(file, 0);
  if (tags.Get() == nullptr) return;
  XpMemoryFile target;
  XpDateTime now;
  now.SetDateTime(2024, 5, 1, 10, 11, 12);
  if (RebuildJpeg({file, base, *tags, rating, now}, target) != XpOk) return;
  const auto after = codec.ReadTags(target, 0);
  if (after.Get() == nullptr || after->GetMakerIfd() == nullptr) std::abort();
  if (after->GetMakerIfd()->GetLong(0x2002, 0, false) != rating) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data + 1), static_cast<std::int64_t>(size - 1), false);
  XpImageSize whole;
  XpImageIoJpeg codec;
  if (codec.ReadStoredImageSize(file, 0, whole, false) != XpOk) return 0;
  if (std::int64_t{whole.width} * whole.height > kMostPixels) return 0;
  ReadAll(file, data[0]);
  Rebuild(file, data[0]);
  return 0;
}
