// When a movie was recorded, decided from all that the file says about it.
#pragma once

#include <cstdint>
#include <optional>

#include "content/mp4/MetadataItems.h"
#include "foundation/time/XpDateTime.h"

namespace vrx::mp4 {

/// With an offset, the date is local time at the place of the recording, and the offset says how many minutes
/// that is ahead of UTC. Without one, the date is the one in the file, unchanged. Not valid when the file
/// states none.
struct RecordingDate {
  XpDateTime date;
  std::optional<std::int32_t> offsetMinutes;
};

/// The date is the first of these that the file has:
///   1. the creation-date key, if it has a time of day (ISO 8601 text),
///   2. the text "©day", if it has a time of day,
///   3. the creation time of the movie header: seconds since 1904, UTC; 0 means that there is none,
///   4. one of the two texts with a day alone, which counts from midnight.
/// The offset is the one that the text of the date has itself, else that of the time-zone item. By the latter
/// a date in UTC (of the movie header, or a text that ends in Z) becomes local time.
RecordingDate DecideRecordingDate(const MetadataItems& items, std::uint64_t creationTime);

}  // namespace vrx::mp4
