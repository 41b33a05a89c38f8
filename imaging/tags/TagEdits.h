// Changes of single tags in a stored file, without reading the tree or moving a byte. The picture formats
// offer them as their edits.
//
// `base` is the stream position of the TIFF header. Every edit gives XpErrImageInvalid when there is none,
// and otherwise the first failure of the stream. None of them makes the file longer.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/file/XpAbstractFile.h"
#include "foundation/time/XpDateTime.h"

namespace vrx::imaging {

/// "YYYY:MM:DD HH:MM:SS", as Exif has dates. Empty for a date that is not valid.
std::string ExifDate(const XpDateTime& date);

/// The quarter turns, counter-clockwise, that bring a picture with this value of the orientation tag upright.
/// Mirrored pictures are not turned.
std::uint32_t QuarterTurnsOf(std::uint16_t orientation);

/// What an entry has to be like.
struct EntryQuery {
  std::uint16_t tag = 0;
  std::uint32_t type = 0;
  std::uint32_t secondType = 0;  // also accepted; 0 for none
  std::uint32_t leastCount = 1;
  std::uint32_t greatestCount = 1;
  bool noRangeCheck = false;  // the value field need not lead into the stream
};
/// The first matching entry of the IFD at `ifd`: where its value field leads, as a position of the stream,
/// and in `index`, which may be null, its number. 0 when there is none.
std::int64_t FindEntry(XpAbstractFile& stream, std::int64_t ifd, bool bigEndian, std::int64_t base,
                       const EntryQuery& query, std::uint32_t* index);

// Dates are local, as Exif has them. One that is not valid is XpErrImageArgument, and nothing is written.

/// The date of the last change in IFD 0 and IFD 1, and in the maker note if it was the same there.
/// XpErrImageNoData when IFD 0 has none. `setFileTime` also makes it the time of the file.
XpResult PatchDateTime(XpAbstractFile& stream, std::int64_t base, const XpDateTime& date, bool setFileTime);
/// The date when the picture was taken. Without such a tag XpOk, and nothing changes.
XpResult PatchOriginalDate(XpAbstractFile& stream, std::int64_t base, const XpDateTime& date);
/// How far the date of the last change is ahead of UTC: that of the system now, summer time included, or as
/// given, below 100 hours. Without such a tag XpOk, and nothing changes.
XpResult PatchOffsetTime(XpAbstractFile& stream, std::int64_t base);
XpResult PatchOffsetTime(XpAbstractFile& stream, std::int64_t base, std::int32_t minutesAheadOfUtc);
/// Turns the picture by quarter turns, counter-clockwise, in IFD 0 and IFD 1. XpErrImageNoData when IFD 0 has
/// no orientation.
XpResult PatchOrientation(XpAbstractFile& stream, std::int64_t base, std::uint32_t quarterTurns);
/// The rating in the maker note. XpErrImageNoData when there is none; also for a note without a signature,
/// when that is required.
XpResult PatchRating(XpAbstractFile& stream, std::int64_t base, std::uint32_t rating, bool requireSignature);
/// Where the preview of the maker note lies, in a JPEG file whose first segment is Exif. `offset` counts from
/// the TIFF header. Without such a tag XpOk, and nothing changes.
XpResult PatchPreviewRef(XpAbstractFile& stream, std::uint32_t offset, std::uint32_t size);
/// Cuts the entry of the GPS IFD out of IFD 0; its bytes stay in the file. XpErrImageInvalid beyond 1,000
/// entries.
XpResult RemoveGpsPointer(XpAbstractFile& stream, std::int64_t base);

/// To follow every other edit with its result: after a success, the date of the last change becomes now, and
/// the file's own time with it. Gives `status` back when that is a failure.
XpResult TouchDates(XpAbstractFile& stream, XpResult status, std::int64_t base);
XpResult TouchDates(XpAbstractFile& stream, XpResult status, std::int64_t base, const XpDateTime& now);

}  // namespace vrx::imaging
