// What the command line changes in a project's documents before a render, without touching their files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/MovieFormat.h"
#include "vrx/XpString.h"

namespace vrx::host {

struct ProjectChanges {
  XpString output;  // native path; empty: as the document says
  std::optional<PictureSize> size;
  std::optional<VRXTimeInfo> frameDuration;
  std::optional<std::int32_t> bitrate;  // bits a second; 0: constant quality
  std::int32_t soundCodec = 0;          // as documents count codecs; 0: as the document says

  bool IsEmpty() const { return output.IsEmpty() && !size && !frameDuration && !bitrate && soundCodec == 0; }
};

/// The project document `bytes`, which lies at `path`, with the changes and with absolute paths. One that
/// cannot be read stays as it is, so that its own reader says why. Overlays follow the size of the frames
/// that they are drawn on, so their document needs no change.
std::string ChangeProject(const std::vector<char>& bytes, const XpString& path,
                          const ProjectChanges& changes);

}  // namespace vrx::host
