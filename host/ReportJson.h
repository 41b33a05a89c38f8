// The report of `vrx check` as one JSON document.
#pragma once

#include <string>

#include "host/ProblemText.h"

namespace vrx::host {

/// `project` is the path as the user gave it. What the document does not set, and what is unknown, is null.
Json ReportJson(const std::string& project, const check::ProjectReport& report);

}  // namespace vrx::host
