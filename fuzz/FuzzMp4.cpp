// Reads any bytes as an MP4 file: the movie's description, and every box that the walker finds. The boxes
// must lie inside each other and follow each other, and what was read must not depend on the limits unless
// one was reached.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "content/mp4/MovieInfo.h"
#include "foundation/file/XpMemoryFile.h"
#include "mp4sift/MovieClass.h"

namespace {

using namespace vrx::mp4;

void WalkAll(BoxFile& boxes, BoxList list, std::uint64_t from, std::uint64_t to) {
  for (Box box; list.Next(box); from = box.end) {
    if (box.start != from || box.payload < box.start + 8 || box.end < box.payload || box.end > to)
      std::abort();
    BoxPayload payload(boxes, box);
    payload.ReadUInt64();
    payload.Skip(payload.GetLeft());
    if (payload.GetLeft() != 0 && !payload.HasFailed()) std::abort();
    WalkAll(boxes, boxes.Children(box), box.payload, box.end);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data), static_cast<std::int64_t>(size), false);
  const BoxLimits limits{.depth = 12, .boxes = 3000, .bytes = 1 << 18};
  BoxFile boxes(file, limits);
  WalkAll(boxes, boxes.Boxes(), 0, size);

  MovieInfo info, again;
  const XpResult result = ReadMovieInfo(file, info, limits);
  if (info.duration && info.duration->timescale == 0) std::abort();
  const auto offset = info.recording.offsetMinutes;
  if (offset && (*offset < -720 || *offset > 840)) std::abort();
  if (info.recording.date.IsValid() && info.recording.date.GetYear() < 100) std::abort();
  if (result == XpOk && (ReadMovieInfo(file, again) != XpOk || again.creationTime != info.creationTime))
    std::abort();
  FileType type;
  const bool hasBrands = ReadFileType(file, type, limits) == XpOk;
  if (hasBrands && result == XpOk && (!info.fileType || info.fileType->majorBrand != type.majorBrand))
    std::abort();
  const auto movieClass = vrx::mp4sift::ClassOf(type);
  if (movieClass < 0 || movieClass > 6) std::abort();
  return 0;
}
