// Plans the GPS instruments of a movie that is made of clips: brings the log to each clip and says where in
// the movie each one counts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/time/XpDateTime.h"
#include "host/make/MoviePlan.h"

namespace vrx::host {

/// A clip with its log. Seconds on the clip's clock, and on the movie's.
struct ClipLog {
  std::int32_t videoId = 0;
  XpString movie;  // a link to the clip, with the sidecar beside it
  XpDateTime date;
  double clipSeconds = 0.0;
  double start = 0.0;
  double end = 0.0;
  double movieStart = 0.0;
  double movieEnd = 0.0;
};

struct GpsOverlay {
  std::vector<ClipLog> clips;  // empty for a movie without instruments
  GpsTemplate look = GpsTemplate::Drive;
  GpsUnit unit = GpsUnit::Kilometres;
};

/// Writes a link to each clip and its sidecar into `folder`, under names that begin with `stem`: the folders
/// of recordings stay as they are. Adds lines to the plan's choices. False with the cause when the log cannot
/// be used or overlaps none of the clips.
bool PlanGps(const GpsRequest& request, const XpString& folder, const XpString& stem, MoviePlan& plan,
             GpsOverlay& overlay, std::string& cause);

}  // namespace vrx::host
