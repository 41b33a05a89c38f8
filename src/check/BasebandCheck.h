// Checks the baseband document of a clip of still images: its pictures, and whether they fill the clip.
#pragma once

#include <cstdint>

#include "src/check/ProjectReport.h"

namespace vrx::check {

struct BasebandClip {
  std::uint32_t clip = 0;       // on the video track, counted from 1
  XpString document;            // native path
  std::int64_t firstFrame = 0;  // on the clip's own clock
  std::int64_t frames = 0;
};

/// Adds the document's images and problems to `report`. What leaves frames without a picture is a warning:
/// the movie is black there.
void CheckBasebandClip(const BasebandClip& clip, ProjectReport& report);

}  // namespace vrx::check
