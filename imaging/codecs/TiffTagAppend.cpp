#include "imaging/codecs/TiffTagAppend.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>

#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagReading.h"
#include "imaging/tags/TagSearch.h"
#include "imaging/tags/TagWriting.h"

namespace vrx::imaging {

namespace {

constexpr std::int64_t kFirstIfdAt = 4;  // in the header, its offset
constexpr std::int64_t kMostOffset = std::numeric_limits<std::uint32_t>::max();

/// The offset of the IFD after the first one; 0 for none, or none that can be read.
std::uint32_t SecondIfd(XpFile& file, bool bigEndian) {
  StreamWindow window(file);
  TiffHeader header;
  if (!ReadTiffHeader(window, 0, header)) return 0;
  std::array<std::uint8_t, 2> count{};
  if (!window.Read(header.ifd, count)) return 0;
  const std::int64_t at =
      header.ifd + kIfdCountSize + std::int64_t{Get16(count.data(), bigEndian)} * kEntrySize;
  std::array<std::uint8_t, 4> next{};
  return window.Read(at, next) ? Get32(next.data(), bigEndian) : 0;
}

/// A large preview is no value of the tree. Its bytes stay where they are, and the written maker note leads
/// there as the old one does.
XpResult KeepPreview(XpFile& file, const XpTiffTagManager& tags, std::int64_t first) {
  const XpTiffTagIFD* maker = tags.GetMakerIfd();
  const XpTiffTagDataBase* preview = maker == nullptr ? nullptr : maker->FindTag(kTagMakerPreview, false);
  if (preview == nullptr || preview->count == tags.previewSize) return XpOk;
  StreamWindow window(file);
  const std::optional<StoredIfd> stored = MakerIfd(window, {first, 0, tags.bigEndian}, true);
  const EntryQuery query{.tag = kTagMakerPreview,
                         .type = preview->GetType(),
                         .leastCount = 0,
                         .greatestCount = 0,
                         .noRangeCheck = true};
  const auto found = stored ? SearchEntry(window, *stored, query) : std::nullopt;
  if (!found) return XpErrImageInvalid;
  std::array<std::uint8_t, 2 * kEntryValueSize> fields{};
  Put32(fields.data(), tags.previewSize, tags.bigEndian);
  Put32(fields.data() + kEntryValueSize, tags.previewOffset, tags.bigEndian);
  if (const XpResult result = file.Seek(stored->CountOf(found->index), XpSeekStart)) return result;
  return file.Write(fields.data(), fields.size(), nullptr);
}

XpResult WriteAtEnd(XpFile& file, XpTiffTagManager& tags, std::int64_t& position) {
  if (const XpResult result = file.Seek(0, XpSeekEnd)) return result;
  position = file.Tell();
  const std::uint32_t next = SecondIfd(file, tags.bigEndian);
  if (const XpResult result = file.Seek(0, XpSeekEnd)) return result;
  if (position % 2 != 0) {  // values begin at even offsets
    const std::uint8_t padding = 0;
    if (const XpResult result = file.Write(&padding, 1, nullptr)) return result;
    ++position;
  }
  if (position > kMostOffset) return XpErrValueDoesNotFit;
  std::int64_t written = 0;
  const auto place = static_cast<std::uint32_t>(position);
  if (const XpResult result = WriteIfd(file, *tags.GetIfd(0), tags.bigEndian, place, next, written))
    return result;
  if (const XpResult result = KeepPreview(file, tags, position)) return result;
  return file.FlushToDisk();
}

}  // namespace

XpResult AppendFirstIfd(XpFile& file, XpTiffTagManager& tags) {
  std::int64_t size = 0, position = 0;
  if (const XpResult result = file.Stat(nullptr, nullptr, nullptr, &size)) return result;
  if (const XpResult result = WriteAtEnd(file, tags, position)) {
    file.SetSize(size);
    return result;
  }
  if (const XpResult result = file.Seek(kFirstIfdAt, XpSeekStart)) return result;
  return file.WriteUInt32(static_cast<std::uint32_t>(position),
                          tags.bigEndian ? XpBigEndian : XpLittleEndian);
}

}  // namespace vrx::imaging
