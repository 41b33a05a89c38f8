// `vrx render`: renders a project through the library as any other host would.
#pragma once

#include <string>

#include "host/RenderProgress.h"

namespace vrx::host {

struct RenderOptions {
  std::string project;
  ProgressStyle progress = ProgressStyle::Auto;
  bool quiet = false;
};

/// Returns the exit status.
int RunRender(const RenderOptions& options);

}  // namespace vrx::host
