// Reads any bytes as a multi-picture file in every way that the codec has, and makes each edit in a copy of
// them. What is found must lie in the file, and no edit may change its size.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/codecs/MpSummary.h"
#include "imaging/codecs/XpImageIoMPO.h"

namespace {

using vrx::imaging::MpPictureSummary;

constexpr std::int64_t kMostPixels = 1 << 18;  // of a picture, so that a run stays short

void Require(bool holds) {
  if (!holds) std::abort();
}

/// False when decoding would take too long.
bool CheckSummary(XpMemoryFile& file) {
  std::vector<MpPictureSummary> pictures;
  const XpResult result = vrx::imaging::SummarizeMpFile(file, pictures);
  Require((result == XpOk) == !pictures.empty());
  bool isSmall = true;
  for (const MpPictureSummary& picture : pictures) {
    Require(picture.start >= 0 && picture.size >= 0 && picture.start + picture.size <= file.GetSize());
    Require(picture.result != XpOk || picture.size >= 1);
    isSmall &= std::int64_t{picture.storedSize.width} * picture.storedSize.height <= kMostPixels;
  }
  return isSmall;
}

void ReadAll(XpMemoryFile& file) {
  XpImageIoMPO codec;
  const auto picture = codec.Read(file, 0, 8, {.toSrgb = true, .applyOrientation = true});
  Require((picture != nullptr) == (codec.status == XpOk));
  codec.ReadThumbnail(file, 0, {});
  codec.ReadTags(file, 0);
  XpImageSize size;
  codec.ReadImageSize(file, 0, size, false);
  const std::int64_t frames = codec.GetFrameCount(file, 0);
  for (const std::int64_t frame : {std::int64_t{-1}, std::int64_t{0}, frames - 1, frames}) {
    const XpResult result = codec.SeekToFrame(file, 0, frame, nullptr);
    Require(result != XpOk || (frame >= 0 && frame < frames && file.Tell() < file.GetSize()));
    codec.ReadThumbnailOfFrame(file, 0, frame, {});
  }
}

using Edit = XpResult (*)(XpImageIoMPO&, XpAbstractFile&, const XpDateTime&);
constexpr Edit kEdits[] = {
    [](XpImageIoMPO& io, XpAbstractFile& file, const XpDateTime&) { return io.WriteRotation(file, 0, 1); },
    [](XpImageIoMPO& io, XpAbstractFile& file, const XpDateTime& date) {
      return io.WriteModifyDate(file, 0, date, true);
    },
    [](XpImageIoMPO& io, XpAbstractFile& file, const XpDateTime& date) {
      return io.WriteOriginalDate(file, 0, date);
    },
    [](XpImageIoMPO& io, XpAbstractFile& file, const XpDateTime&) { return io.WriteStrippedGps(file, 0); }};

void EditAll(std::vector<std::uint8_t> bytes) {
  XpMemoryFile file;
  file.Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
  XpImageIoMPO codec;
  XpDateTime date;
  date.SetDateTime(2024, 5, 1, 10, 11, 12);
  for (const Edit edit : kEdits) {
    Require(edit(codec, file, date) == codec.status);
    Require(file.GetSize() == static_cast<std::int64_t>(bytes.size()) && file.GetData() == bytes.data());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data), static_cast<std::int64_t>(size), false);
  if (CheckSummary(file)) ReadAll(file);
  EditAll({data, data + size});
  return 0;
}
