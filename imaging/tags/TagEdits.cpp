#include "imaging/tags/TagEdits.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/platform/LocalTime.h"
#include "foundation/text/XpFormat.h"
#include "imaging/tags/TagLayout.h"
#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagSearch.h"
#include "imaging/tags/XpTiffTagData.h"

namespace vrx::imaging {
namespace {

constexpr std::uint32_t kDateSize = 20;       // "YYYY:MM:DD HH:MM:SS" and a zero
constexpr std::uint32_t kOffsetTimeSize = 7;  // "+09:00" and a zero
constexpr std::int32_t kMinutesPerHour = 60;
constexpr std::int32_t kMostOffsetMinutes = 100 * kMinutesPerHour - 1;
constexpr std::uint32_t kNoteDatesSize = 72;
constexpr std::int64_t kNoteDateAt = 6;
constexpr std::uint32_t kMostNoteBytes = 0x40000000;
constexpr std::uint16_t kMostGpsEditEntries = 1000;
constexpr std::int64_t kJpegTiffBase = 12;  // after SOI, the head of the segment and its six bytes "Exif"

using DateBytes = std::array<std::uint8_t, kDateSize>;

bool DateText(const XpDateTime& date, DateBytes& bytes) {
  const std::string text = ExifDate(date);
  if (text.size() != kDateSize - 1) return false;
  std::copy_n(text.c_str(), kDateSize, bytes.begin());
  return true;
}

XpResult WriteAt(XpAbstractFile& stream, std::int64_t position, std::span<const std::uint8_t> bytes) {
  if (const XpResult result = stream.Seek(position, XpSeekStart)) return result;
  std::uint64_t written = 0;
  const XpResult result = stream.Write(bytes.data(), bytes.size(), &written);
  return result == XpOk && written < bytes.size() ? XpErrDiskFull : result;
}

/// Where a text of exactly this size with its terminator stands. Nothing for one that the file does not hold
/// completely, and none in the header.
std::optional<std::int64_t> FindText(StreamWindow& window, const StoredIfd& ifd, std::uint16_t tag,
                                     std::uint32_t size) {
  const auto found =
      SearchEntry(window, ifd, {.tag = tag, .type = XpTiffAscii, .leastCount = size, .greatestCount = size});
  if (!found || found->target < ifd.base + kTiffHeaderSize || !window.Holds(found->target, size)) return {};
  return found->target;
}

std::uint8_t Folded(std::uint8_t c) { return c >= 'a' && c <= 'z' ? static_cast<std::uint8_t>(c - 32) : c; }

/// Where the maker note repeats the date that stands at `datePosition`.
std::optional<std::int64_t> FindSameNoteDate(StreamWindow& window, const StoredIfd& first,
                                             std::int64_t datePosition) {
  const std::optional<StoredIfd> maker = MakerIfd(window, first, true);
  if (!maker) return {};
  const auto dates = SearchEntry(window, *maker,
                                 {.tag = kTagMakerDates,
                                  .type = XpTiffUndefined,
                                  .leastCount = kNoteDatesSize,
                                  .greatestCount = kMostNoteBytes});
  if (!dates || dates->target < first.base + kTiffHeaderSize ||
      !window.Holds(dates->target, kNoteDatesSize)) {
    return {};
  }
  DateBytes date, noted;
  if (!window.Read(datePosition, date) || !window.Read(dates->target + kNoteDateAt, noted)) return {};
  const bool isSame = std::equal(date.begin(), date.end(), noted.begin(),
                                 [](auto a, auto b) { return Folded(a) == Folded(b); });
  return isSame ? std::optional(dates->target + kNoteDateAt) : std::nullopt;
}

/// The status of an edit that finds nothing to change and need not.
XpResult NothingUnlessNoHeader(const std::optional<StoredIfd>& first) {
  return first ? XpResult{XpOk} : XpResult{XpErrImageInvalid};
}

XpResult TurnIn(XpAbstractFile& stream, StreamWindow& window, const StoredIfd& ifd,
                std::uint32_t quarterTurns) {
  const auto found =
      SearchEntry(window, ifd, {.tag = kTagOrientation, .type = XpTiffShort, .noRangeCheck = true});
  if (!found) return XpErrImageNoData;
  std::array<std::uint8_t, sizeof(std::uint16_t)> value;
  if (!window.Read(ifd.ValueFieldOf(found->index), value)) return XpErrImageNoData;
  constexpr std::array<std::uint16_t, 4> kOrientations{1, 8, 3, 6};
  const std::size_t turns = quarterTurns % 4 + QuarterTurnsOf(Get16(value.data(), ifd.bigEndian));
  Put16(value.data(), kOrientations[turns % 4], ifd.bigEndian);
  return WriteAt(stream, ifd.ValueFieldOf(found->index), value);
}

/// Cuts the entries with this tag out of the bytes of an IFD; zeros take their place after the next-IFD
/// field.
bool CutEntries(std::vector<std::uint8_t>& block, std::uint16_t tag, bool bigEndian) {
  const std::size_t size = block.size();
  std::uint16_t count = Get16(block.data(), bigEndian);
  for (std::uint32_t i = count; i-- > 0;) {
    const auto at = block.begin() + kIfdCountSize + std::ptrdiff_t{i} * kEntrySize;
    if (Get16(&*at, bigEndian) != tag) continue;
    block.erase(at, at + kEntrySize);
    --count;
  }
  if (block.size() == size) return false;
  Put16(block.data(), count, bigEndian);
  block.resize(size);
  return true;
}

}  // namespace

std::string ExifDate(const XpDateTime& date) {
  std::int32_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, weekday = 0;
  if (!date.IsValid() || !date.GetDateTimeFields(year, month, day, hour, minute, second, weekday)) return {};
  XpNarrowString text;
  XpFormat(text, "%04ld:%02ld:%02ld %02ld:%02ld:%02ld", year, month, day, hour, minute, second);
  return text.c_str();
}

std::uint32_t QuarterTurnsOf(std::uint16_t orientation) {
  switch (orientation) {
    case 3:
      return 2;
    case 6:
      return 3;
    case 8:
      return 1;
    default:
      return 0;
  }
}

XpResult PatchDateTime(XpAbstractFile& stream, std::int64_t base, const XpDateTime& date, bool setFileTime) {
  DateBytes bytes;
  if (!DateText(date, bytes)) return XpErrImageArgument;
  StreamWindow window(stream);
  const std::optional<StoredIfd> first = FirstIfd(window, base);
  if (!first) return XpErrImageInvalid;
  const auto target = FindText(window, *first, kTagDateTime, kDateSize);
  if (!target) return XpErrImageNoData;
  // All is found before anything is written.
  const auto noted = FindSameNoteDate(window, *first, *target);
  const std::optional<StoredIfd> second = NextIfd(window, *first);
  const auto secondTarget = second ? FindText(window, *second, kTagDateTime, kDateSize) : std::nullopt;
  for (const auto& place : {target, secondTarget, noted}) {
    if (!place) continue;
    if (const XpResult result = WriteAt(stream, *place, bytes)) return result;
  }
  if (!setFileTime) return XpOk;
  const XpResult result = stream.SetTimes(nullptr, &date, nullptr);
  return result == XpErrNotSupported ? XpResult{XpOk} : result;  // a file in memory has no time to set
}

XpResult PatchOriginalDate(XpAbstractFile& stream, std::int64_t base, const XpDateTime& date) {
  DateBytes bytes;
  if (!DateText(date, bytes)) return XpErrImageArgument;
  StreamWindow window(stream);
  const std::optional<StoredIfd> first = FirstIfd(window, base);
  const std::optional<StoredIfd> exif = first ? ExifIfd(window, *first) : std::nullopt;
  const auto target = exif ? FindText(window, *exif, kTagDateTimeOriginal, kDateSize) : std::nullopt;
  return target ? WriteAt(stream, *target, bytes) : NothingUnlessNoHeader(first);
}

XpResult PatchOffsetTime(XpAbstractFile& stream, std::int64_t base) {
  return PatchOffsetTime(stream, base, platform::UtcOffsetMinutes());
}

XpResult PatchOffsetTime(XpAbstractFile& stream, std::int64_t base, std::int32_t minutesAheadOfUtc) {
  if (minutesAheadOfUtc < -kMostOffsetMinutes || minutesAheadOfUtc > kMostOffsetMinutes) {
    return XpErrImageArgument;
  }
  const std::int32_t minutes = std::abs(minutesAheadOfUtc);
  XpNarrowString text;
  XpFormat(text, minutesAheadOfUtc < 0 ? "-%02d:%02d" : "+%02d:%02d", minutes / kMinutesPerHour,
           minutes % kMinutesPerHour);
  std::array<std::uint8_t, kOffsetTimeSize> bytes{};
  std::copy_n(text.c_str(), kOffsetTimeSize, bytes.begin());
  StreamWindow window(stream);
  const std::optional<StoredIfd> first = FirstIfd(window, base);
  const std::optional<StoredIfd> exif = first ? ExifIfd(window, *first) : std::nullopt;
  const auto target = exif ? FindText(window, *exif, kTagOffsetTime, kOffsetTimeSize) : std::nullopt;
  return target ? WriteAt(stream, *target, bytes) : NothingUnlessNoHeader(first);
}

XpResult PatchOrientation(XpAbstractFile& stream, std::int64_t base, std::uint32_t quarterTurns) {
  StreamWindow window(stream);
  const std::optional<StoredIfd> first = FirstIfd(window, base);
  if (!first) return XpErrImageInvalid;
  const std::optional<StoredIfd> second = NextIfd(window, *first);
  if (const XpResult result = TurnIn(stream, window, *first, quarterTurns)) return result;
  if (!second) return XpOk;
  const XpResult result = TurnIn(stream, window, *second, quarterTurns);
  return result == XpErrImageNoData ? XpResult{XpOk} : result;
}

XpResult PatchRating(XpAbstractFile& stream, std::int64_t base, std::uint32_t rating, bool requireSignature) {
  StreamWindow window(stream);
  const std::optional<StoredIfd> first = FirstIfd(window, base);
  if (!first) return XpErrImageInvalid;
  const std::optional<StoredIfd> maker = MakerIfd(window, *first, requireSignature);
  const auto found =
      maker ? SearchEntry(window, *maker, {.tag = kTagMakerRating, .type = XpTiffLong, .noRangeCheck = true})
            : std::nullopt;
  if (!found) return XpErrImageNoData;
  std::array<std::uint8_t, kEntryValueSize> value;
  Put32(value.data(), rating, maker->bigEndian);
  return WriteAt(stream, maker->ValueFieldOf(found->index), value);
}

XpResult PatchPreviewRef(XpAbstractFile& stream, std::uint32_t offset, std::uint32_t size) {
  StreamWindow window(stream);
  const std::optional<StoredIfd> first = FirstIfd(window, kJpegTiffBase);
  if (!first) return XpErrImageInvalid;
  const std::optional<StoredIfd> maker = MakerIfd(window, *first, true);
  const auto found = maker ? SearchEntry(window, *maker,
                                         {.tag = kTagMakerPreview,
                                          .type = XpTiffUndefined,
                                          .leastCount = 0,
                                          .greatestCount = kMostNoteBytes,
                                          .noRangeCheck = true})
                           : std::nullopt;
  if (!found) return XpOk;
  std::array<std::uint8_t, 2 * kEntryValueSize> fields;
  Put32(fields.data(), size, maker->bigEndian);
  Put32(fields.data() + kEntryValueSize, offset, maker->bigEndian);
  return WriteAt(stream, maker->CountOf(found->index), fields);
}

XpResult RemoveGpsPointer(XpAbstractFile& stream, std::int64_t base) {
  StreamWindow window(stream);
  const std::optional<StoredIfd> first = FirstIfd(window, base);
  std::array<std::uint8_t, kIfdCountSize> head;
  if (!first || !window.Read(first->position, head)) return XpErrImageInvalid;
  const std::uint16_t count = Get16(head.data(), first->bigEndian);
  if (count > kMostGpsEditEntries) return XpErrImageInvalid;
  if (count == 0) return XpOk;
  std::vector<std::uint8_t> block(static_cast<std::size_t>(IfdHeadSize(count)));
  if (!window.Read(first->position, block)) return XpErrImageInvalid;
  if (!CutEntries(block, kTagGpsIfd, first->bigEndian)) return XpOk;
  return WriteAt(stream, first->position, block);
}

XpResult TouchDates(XpAbstractFile& stream, XpResult status, std::int64_t base) {
  return status == XpOk ? TouchDates(stream, status, base, XpDateTime::GetCurrentTime()) : status;
}

XpResult TouchDates(XpAbstractFile& stream, XpResult status, std::int64_t base, const XpDateTime& now) {
  if (status != XpOk) return status;
  const XpResult result = PatchDateTime(stream, base, now, true);
  // A picture without such a date was still edited.
  if (result != XpOk && result != XpErrImageNoData) return result;
  return PatchOffsetTime(stream, base);
}

}  // namespace vrx::imaging
