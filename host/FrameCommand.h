// `vrx frame`: what one frame of the movie will look like, without rendering the rest.
#pragma once

#include <cstdint>
#include <string>

namespace vrx::host {

struct FrameOptions {
  std::string project;
  std::string picture;       // PNG file to write
  std::int64_t frame = -1;   // of the movie; below 0: `seconds` counts
  double seconds = 0.0;      // on the movie's clock
  bool overlayOnly = false;  // the overlays alone, on a transparent ground
};

/// Returns the exit status.
int RunFrame(const FrameOptions& options);

}  // namespace vrx::host
