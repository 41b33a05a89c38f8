// The speed segments of a movie and the text that documents keep them in. The time generators and the caption
// set-up follow them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "vrx/XpString.h"

struct SlowInfoRecord {
  std::int32_t videoId = 0;      // the clip that the segment belongs to
  float speed = 0;               // source seconds a movie second; below 0 it is played backwards
  float startTime = 0;           // s in the movie, from the start of the drawn span
  float endTime = 0;             // s in the movie, likewise
  float sourceTime = 0;          // s on the log's axis at the start, counting kept parts only
  float sourceTimeWithTrim = 0;  // the same, counting trimmed parts too
};

namespace vrx::overlay {

/// Records beyond this number are not read; a movie has a handful.
inline constexpr std::size_t kMaxSpeedSections = 2048;

inline constexpr std::size_t kSlowInfoFields = 6;

/// Reads "id,speed,start,end,source,sourceWithTrim" up to the first field that cannot be read; that one and
/// those after it keep their values. Returns how many were read, and leaves in `text` what it did not read.
std::size_t ReadSlowInfoRecord(std::string_view& text, SlowInfoRecord& record);

}  // namespace vrx::overlay

/// Appends the records of "id,speed,start,end,source,sourceWithTrim|...": a field that cannot be read, and
/// those after it, keep the values of the record before. What follows the last bar is ignored. Integers
/// beyond 32 bits stay at the limit, and a number that is not finite cannot be read.
void ParseSlowInfoData(const XpString& text, std::vector<SlowInfoRecord>& list);
