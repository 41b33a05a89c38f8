// Reads the lines that say when a caption is shown, and where. The reader of subtitles uses it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "content/subtitles/Subtitles.h"

namespace vrx::subtitles {

struct CueTimes {
  std::int64_t startMs = 0;
  std::int64_t endMs = 0;
  std::string_view settings;  // what comes after the times
};

/// True for lines with an arrow that begin as a time does, whether or not they can be read.
bool LooksLikeTimes(std::string_view line);

/// "00:01:02,500 --> 00:01:04,000": hours and milliseconds may be left out, and blanks may come before each
/// number.
std::optional<CueTimes> ReadCueTimes(std::string_view line);

/// What the settings of a WebVTT cue say.
struct CueSettings {
  std::optional<Place> place;
  bool hasSidePlace = false;  // a place or an alignment to the left or right, which is not kept
  bool isVertical = false;
  bool hasRegion = false;
};
CueSettings ReadCueSettings(std::string_view settings);

}  // namespace vrx::subtitles
