// A movie in numbers: which frames of which clip, which sound, which size and rate, and why. Made of a
// request and of what its sources are; the documents are written from it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/make/ClipSource.h"
#include "host/make/MovieRequest.h"

namespace vrx::host {

struct PlannedPicture {
  XpString path;              // empty for black
  std::int32_t rotation = 0;  // quarter turns to the left on the screen
  bool isMirrored = false;    // after the turn
  std::int64_t frames = 0;
};

/// A clip on the video track: a part of a movie file, or pictures one after the other. Frames are those of
/// the movie, also on the clip's own clock.
struct PlannedClip {
  XpString source;                       // empty for pictures
  std::vector<PlannedPicture> pictures;  // empty for a movie file
  std::int64_t sourceFrame = 0;          // the first that is shown
  std::int64_t frames = 0;
  double sourceSeconds = 0.0;  // length of the whole movie file

  bool IsMovie() const { return pictures.empty(); }
};

/// A clip on the audio track, likewise.
struct PlannedSound {
  XpString source;  // empty for silence
  std::int64_t sourceFrame = 0;
  std::int64_t frames = 0;
};

struct MoviePlan {
  PictureSize size;
  VRXTimeInfo frameDuration;
  std::optional<std::int32_t> bitrate;  // none: constant quality
  std::vector<PlannedClip> clips;
  std::vector<PlannedSound> sound;  // empty for a silent movie
  std::int32_t sampleRate = 0;      // Hz
  std::int64_t frames = 0;
  std::vector<std::string> choices;  // what was chosen and why, a line each

  double SecondsOf(std::int64_t count) const;
};

/// False, with the cause in one line, when the request cannot be met.
bool PlanMovie(const MovieRequest& request, ClipSources& sources, MoviePlan& plan, std::string& cause);

}  // namespace vrx::host
