// `vrx check`: the timeline of a project, its output and everything that is wrong with it, without rendering.
#pragma once

#include <string>

namespace vrx::host {

struct CheckOptions {
  std::string project;
  bool json = false;
};

/// Returns the exit status: kFailed when a render could not succeed.
int RunCheck(const CheckOptions& options);

}  // namespace vrx::host
