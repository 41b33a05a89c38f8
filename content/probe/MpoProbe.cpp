#include "content/probe/MpoProbe.h"

#include <algorithm>
#include <cstdint>

#include "content/probe/JpegProbe.h"
#include "imaging/codecs/MpIndex.h"
#include "imaging/codecs/XpImageIoMPO.h"
#include "imaging/tags/TagNames.h"

namespace vrx::formats {
namespace {

using imaging::MpEntry;
using imaging::MpTable;

constexpr std::int64_t kEyes = 2;

/// What the maker note says of the whole file; 0 when there is none.
enum Mode : std::uint32_t { kPanoramaMode = 1, kStereoMode = 2, kFramesMode = 5 };

/// Empty without a usable index, and when a picture would begin past the end of the file.
MpTable ReadWholeTable(XpAbstractFile& file) {
  const XpSharedPtr<XpTiffTagManager> index = XpImageIoMPO().ReadIndexTags(file, 0);
  std::int64_t header = 0;
  if (imaging::FindMpHeader(file, 0, header) != XpOk) return {};
  MpTable table = imaging::ReadUsableMpTable(index.Get());
  const bool isWhole = std::ranges::all_of(table.entries, [&](const MpEntry& entry) {
    std::int64_t start = 0;
    return imaging::FindMpPicture(file, 0, header, entry, start) == XpOk;
  });
  return isWhole ? table : MpTable();
}

bool HasDisparity(const MpTable& table) {
  return std::ranges::any_of(table.entries,
                             [](const MpEntry& entry) { return entry.Type() == imaging::MpType::Disparity; });
}

}  // namespace

FormatCode CheckMpo(XpAbstractFile& file) {
  const MpTable table = ReadWholeTable(file);
  if (!HasDisparity(table)) return kMpoOther;
  XpImageIoMPO codec;
  const XpSharedPtr<XpTiffTagManager> read = codec.ReadTags(file, 0);  // of the first picture
  const XpTiffTagManager none;
  const XpTiffTagManager& tags = read.Get() == nullptr ? none : *read;
  const XpTiffTagIFD* maker = tags.GetMakerIfd();
  switch (maker == nullptr ? 0 : maker->GetLong(imaging::kTagMakerPictureMode, 0, false)) {
    case kPanoramaMode:
      return kMpoPanorama;
    case kStereoMode:
      return kMpoStereo;
    case kFramesMode:
      return kMpoFrames;
    default:
      break;
  }
  const std::int64_t frames = table.CountFrames();
  if (frames > kEyes) return kMpoFrames;
  if (frames < kEyes) return kMpoOther;
  return HoldsPanorama(codec, file, tags) ? kMpoPanorama : kMpoStereo;
}

}  // namespace vrx::formats
