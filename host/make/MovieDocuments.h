// Writes the documents of a planned movie: the project, its overlays and its pictures, with comments for
// those who go on by hand.
#pragma once

#include <string>
#include <vector>

#include "host/make/CaptionText.h"
#include "host/make/GpsOverlay.h"
#include "host/make/MoviePlan.h"

namespace vrx::host {

struct MovieOverlays {
  std::vector<MovieCaption> captions;
  GpsOverlay gps;

  bool IsEmpty() const { return captions.empty() && gps.clips.empty(); }
};

/// `project` is the path of the project document; the others lie beside it under names that begin with its
/// stem, and media in its folder or below get relative paths. `output` is the movie that the project names.
/// False with the cause, which names the file, when one cannot be written.
bool WriteDocuments(const MoviePlan& plan, const MovieOverlays& overlays, const XpString& project,
                    const XpString& output, std::string& cause);

}  // namespace vrx::host
