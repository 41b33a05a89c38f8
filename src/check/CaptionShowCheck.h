// Checks which captions of a movie show: when each is drawn, and what keeps it from being seen.
#pragma once

#include "src/check/CaptionTextCheck.h"
#include "src/check/ProjectReport.h"
#include "src/overlayplan/OverlayRanges.h"

namespace vrx::check {

struct CaptionShow {
  const PainterInfo& info;  // adopted
  const overlayplan::OverlayPlan& plan;
  VRXTimeInfo frame;
  const CaptionPlaces& places;
  bool areClipsPlaced = true;  // false: where clips lie is not known, nor what of the captions shows
};

/// Adds a row for each caption, and names those that never show, or only in part. `report` holds the movie's
/// length and the painter document's path.
void CheckCaptionsShow(const CaptionShow& show, ProjectReport& report);

}  // namespace vrx::check
