// Reads the timelines that editors write as OpenTimelineIO documents (.otio). The commands that make a
// project of an edit use it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "vrx/XpResult.h"

namespace vrx::otio {

inline constexpr std::size_t kMostBytes = std::size_t{128} << 20;
inline constexpr std::size_t kMostValues = 1'000'000;  // of JSON, without metadata
inline constexpr int kDeepest = 64;
inline constexpr double kMostSeconds = 10'000'000;  // of any time; some hundred days
inline constexpr double kHighestRate = 1'000'000;
inline constexpr std::size_t kMostLeftOut = 1000;

/// A stretch of a media file, or of nothing.
struct Item {
  enum class Kind { Clip, Gap };

  Kind kind = Kind::Gap;
  std::string name;
  std::string url;   // of clips, as it is written
  std::string path;  // of clips: what the URL names; relative ones are relative to the document's folder
  /// On a clock that is 0 at the beginning of the media. A document that does not say where that is gives its
  /// time code as it is.
  double startSeconds = 0.0;
  double seconds = 0.0;  // 0 only for clips: from the start to the end of the media, however long that is
  double rate =
      0.0;  // frames or samples a second that the document counts the times in; 0 when it counts none
  bool isEnabled = true;
};

/// Items one after the other, from the beginning of the timeline.
struct Track {
  enum class Kind { Video, Audio };

  Kind kind = Kind::Video;
  std::string name;
  bool isEnabled = true;
  std::vector<Item> items;
};

struct Timeline {
  std::string name;
  std::vector<Track> tracks;        // the bottom one first
  double globalStartSeconds = 0.0;  // what editors show as the time of the first frame
  /// One line in English for everything that a list of clips has no place for, with its track and item.
  std::vector<std::string> leftOut;
  std::size_t furtherLeftOut = 0;  // how many lines there would be beyond kMostLeftOut
};

/// Replaces `timeline` by the one in `bytes`, a timeline, a stack, a track, or a collection whose first
/// timeline is taken. Nested stacks and tracks become plain items where that shows the same, and gaps
/// elsewhere; so do clips without a media file. Transitions, effects and time warps change no times: clips
/// keep the ranges that the document gives. On failure `timeline` is empty and `cause` names the place in
/// English: XpErrNotWellFormed when the bytes are no JSON, XpErrWrongRoot when it holds no timeline,
/// XpErrInvalidFile for values that cannot be, as negative durations, and for documents beyond the limits.
XpResult ReadTimeline(std::span<const char> bytes, Timeline& timeline, std::string& cause);

}  // namespace vrx::otio
