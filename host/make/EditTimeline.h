// Turns the timeline of an editor into what somebody wants of a movie.
#pragma once

#include <string>
#include <vector>

#include "host/make/MovieRequest.h"

namespace vrx::host {

/// Adds the clips and the sound of the OpenTimelineIO document at `path` to `request`, with the rate of its
/// first clip. The lowest video track that has clips becomes the movie, and the first audio track its sound;
/// gaps are black and silent. What has no place in a project gives a line of `leftOut`. False with the cause,
/// which names the file.
bool ReadEdit(const XpString& path, MovieRequest& request, std::vector<std::string>& leftOut,
              std::string& cause);

}  // namespace vrx::host
