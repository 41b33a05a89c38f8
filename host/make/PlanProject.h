// From what somebody wants of a movie to the documents of its project. The commands `make` and `new` share
// it.
#pragma once

#include <string>
#include <vector>

#include "host/make/MovieRequest.h"

namespace vrx::host {

/// Writes the project at `project`, which makes the movie at `output`, and the documents beside it. Gives in
/// `choices` what was chosen and why, a line each. False with the cause in one line.
bool WriteProject(const MovieRequest& request, const XpString& project, const XpString& output,
                  std::vector<std::string>& choices, std::string& cause);

}  // namespace vrx::host
