#include "host/TimeRange.h"

namespace vrx::host {
namespace {

bool ReadTime(const std::string& text, std::optional<MovieTime>& time) {
  if (text.empty()) return true;
  time = ParseMovieTime(text);
  return time.has_value();
}

/// False as well where only the length of a frame could tell.
bool EndsEarly(const TimeRange& range) {
  if (!range.from || !range.to || range.from->frame.has_value() != range.to->frame.has_value()) return false;
  return range.from->frame ? *range.to->frame <= *range.from->frame
                           : range.to->seconds <= range.from->seconds;
}

std::string FramesText(std::int64_t frames) {
  return frames == 1 ? "only frame 0" : "frames 0 to " + std::to_string(frames - 1);
}

}  // namespace

std::optional<TimeRange> ParseTimeRange(const std::string& text) {
  const std::size_t dash = text.find('-');
  TimeRange range;
  if (dash == text.npos || !ReadTime(text.substr(0, dash), range.from) ||
      !ReadTime(text.substr(dash + 1), range.to) || range.IsWhole())
    return {};
  return range;
}

std::string CheckTimeRange(const std::string& text) {
  const auto range = ParseTimeRange(text);
  if (!range) {
    const std::size_t dash = text.find('-');
    if (dash == text.npos) return text + " is no range such as 12.5-1:02, 310f-600f or 0:30-";
    for (const std::string& time : {text.substr(0, dash), text.substr(dash + 1)}) {
      if (std::string cause; !time.empty() && !(cause = CheckMovieTime(time)).empty()) return cause;
    }
    return text + " names neither a start nor an end";
  }
  return EndsEarly(*range) ? text + " ends before it begins" : std::string();
}

FrameRange FramesOf(const TimeRange& range, const VRXTimeInfo& frameDuration, std::int64_t frames,
                    std::string& cause) {
  FrameRange found{0, frames};
  if (range.from) found.first = FrameAt(*range.from, frameDuration);
  if (range.to) found.end = FrameAt(*range.to, frameDuration);
  cause.clear();
  if (found.first >= frames) {
    cause = "has " + FramesText(frames) + ", and the range begins with frame " + std::to_string(found.first);
  } else if (found.end > frames) {
    cause = "has " + FramesText(frames) + ", and the range goes on to frame " + std::to_string(found.end - 1);
  } else if (found.end <= found.first) {
    cause = "has no frame in the range: it ends before it begins";
  }
  return found;
}

}  // namespace vrx::host
