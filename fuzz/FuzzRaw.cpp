// Reads any bytes as a RAW file in every way that the codec has, and makes each edit on a copy. The first
// byte chooses the kind of file, scale and flags. No edit may change the size, and a new position only its
// place.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/codecs/GpsReplacement.h"
#include "imaging/codecs/RawPreview.h"
#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/codecs/XpImageIoRAW.h"
#include "imaging/tags/TagNames.h"

namespace {

using namespace vrx::imaging;
using Data = std::vector<std::uint8_t>;

constexpr std::int64_t kMostPixels = 1 << 20;  // so that a run stays short

void Require(bool holds) {
  if (!holds) std::abort();
}

class NamedFile : public XpMemoryFile {
 public:
  NamedFile(Data& data, std::uint8_t choice) {
    constexpr std::array kNames{u"/a.krw", u"/a.krf", u"/a.kr2", u"/a.tif"};
    SetPathText(kNames[choice & 3]);
    Attach(data.data(), static_cast<std::int64_t>(data.size()), false);
  }
};

bool IsSmall(XpAbstractFile& file, const XpTiffTagManager& tags) {
  RawPreview preview;
  XpImageSize size;
  if (FindRawPreview(tags, preview) != XpOk) return true;
  if (XpImageIoJpeg().ReadStoredImageSize(file, preview.offset, size, false) != XpOk) return true;
  return std::int64_t{size.width} * size.height <= kMostPixels;
}

void ReadAll(XpAbstractFile& file, XpImageIoRAW& codec, std::uint8_t choice) {
  const XpImageReading reading{.toSrgb = (choice & 4) != 0, .applyOrientation = (choice & 8) != 0};
  const auto picture = codec.Read(file, 0, 1 << (choice >> 6), reading);
  Require((picture != nullptr) == (codec.status == XpOk));
  const auto fitted = codec.ReadFitted(file, 0, {40, 30}, reading);
  Require((fitted != nullptr) == (codec.status == XpOk));
  codec.ReadThumbnail(file, 0, reading);
  XpMemoryFile out;
  Require(codec.CopyPreview(file, out) != XpOk || out.GetSize() < file.GetSize());
}

void Edit(const Data& data, std::uint8_t choice) {
  using Change = XpResult (*)(XpImageIoRAW&, XpAbstractFile&);
  XpDateTime date;
  date.SetDateTime(2024, 5, 1, 10, 11, 12);
  constexpr std::array<Change, 3> kEdits{
      [](XpImageIoRAW& codec, XpAbstractFile& file) { return codec.WriteRotation(file, 0, 1); },
      [](XpImageIoRAW& codec, XpAbstractFile& file) { return codec.WriteStrippedGps(file, 0); },
      [](XpImageIoRAW& codec, XpAbstractFile& file) {
        const auto tags = codec.ReadTags(file, 0);
        const XpTiffTagIFD* gps = tags.Get() == nullptr ? nullptr : tags->GetGpsIfd();
        return codec.WriteGps(file, 0, gps == nullptr ? XpGPSRecord() : ReadGpsTags(*gps));
      }};
  for (const Change edit : kEdits) {
    Data copy = data;
    NamedFile file(copy, choice);
    XpImageIoRAW codec;
    edit(codec, file);
    codec.WriteOriginalDate(file, 0, date);
    Require(file.GetSize() == static_cast<std::int64_t>(data.size()));
  }
}

void Move(const Data& data, const XpTiffTagManager& tags, std::uint8_t choice) {
  const XpTiffTagIFD* gps = tags.GetGpsIfd();
  if (gps == nullptr) return;
  XpGPSRecord record = ReadGpsTags(*gps);
  record.latitude.values[0] = {choice, 1};
  Data copy = data;
  NamedFile file(copy, choice);
  const bool isDone = ReplaceGpsIfd(file, 0, tags, record) == XpOk;
  const auto& pointer = static_cast<const XpTiffTagDataIFD&>(*tags.GetIfd(0)->FindTag(kTagGpsIfd, false));
  const std::uint64_t start = pointer.elements[0], end = isDone ? start + gps->GetStoredSize(false) : 0;
  for (std::size_t i = 0; i < data.size(); ++i) Require(copy[i] == data[i] || (i >= start && i < end));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  if (size == 0) return 0;
  const std::uint8_t choice = input[0];
  Data data(input + 1, input + size);
  NamedFile file(data, choice);
  XpImageIoRAW codec;
  XpImageSize whole;
  const XpResult sized = codec.ReadImageSize(file, 0, whole, false);
  Require((sized == XpOk) == (whole.width > 0 && whole.height > 0));
  const auto tags = codec.ReadTags(file, 0);
  if (tags.Get() == nullptr) return 0;
  if (IsSmall(file, *tags)) ReadAll(file, codec, choice);
  Edit(data, choice);
  Move(data, *tags, choice);
  return 0;
}
