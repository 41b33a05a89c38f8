// Checks the baseband document of a clip of still images: its pictures, and whether they fill the clip.
#pragma once

#include <cstdint>

#include "src/baseband/PictureProblems.h"
#include "src/check/ProjectReport.h"

namespace vrx::check {

struct BasebandClip {
  std::uint32_t clip = 0;       // on the video track, counted from 1
  XpString document;            // native path
  std::int64_t firstFrame = 0;  // on the clip's own clock
  std::int64_t frames = 0;
};

/// Adds the document's images and problems to `report`, which holds the output settings. A document that is
/// not used and a picture of which nothing can be decoded are missing pictures; all else is a warning.
void CheckBasebandClip(const BasebandClip& clip, StillLook look, ProjectReport& report);

/// What a render says of a picture, as the check says it.
Problem PictureProblemOf(const baseband::PictureProblem& problem);

}  // namespace vrx::check
