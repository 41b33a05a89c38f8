// What somebody wants of a movie without a document of their own: the clips, and what comes with them. Filled
// from the command line or from an editor's timeline.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gps/receiver/LogAlignment.h"
#include "host/MovieFormat.h"
#include "host/TimeRange.h"
#include "vrx/XpString.h"

namespace vrx::host {

/// A movie or a picture; a picture lasts as long as the range says, else as long as all pictures.
struct ClipRequest {
  std::string name;  // what messages call it
  XpString path;     // native; empty for black
  TimeRange range;   // on the clip's own clock, its frames counted at its own rate
};

/// A stretch of a file's sound; without a path of silence.
struct SoundRequest {
  std::string name;
  XpString path;
  double startSeconds = 0.0;
  double seconds = 0.0;  // 0: all of it
};

/// The looks of the GPS instruments, as documents number them.
enum class GpsTemplate : std::int32_t { Drive = 1, Sports = 2, Walk = 3, Graph = 4 };
/// Units of speeds and distances, as documents number them.
enum class GpsUnit : std::int32_t { Kilometres = 0, Miles = 1, Knots = 2 };

struct GpsRequest {
  XpString log;  // NMEA 0183 or GPX; empty for none
  GpsTemplate look = GpsTemplate::Drive;
  GpsUnit unit = GpsUnit::Kilometres;
  receiver::AlignRequest align;
  bool correctWeekRollover = false;
};

struct MovieRequest {
  std::vector<ClipRequest> clips;
  std::optional<std::vector<SoundRequest>> sound;  // in place of the sound of the clips
  XpString music;                                  // likewise, again and again; empty for none
  XpString captions;                               // SubRip or WebVTT; empty for none
  GpsRequest gps;
  std::optional<PictureSize> size;
  std::optional<VRXTimeInfo> frameDuration;
  std::optional<std::int32_t> bitrate;
  double photoSeconds = 5.0;
};

}  // namespace vrx::host
