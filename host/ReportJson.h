// The report of `vrx check` as one JSON document.
#pragma once

#include <string>

#include "host/EngineSpans.h"
#include "host/ProblemText.h"

namespace vrx::host {

/// `project` is the path as the user gave it. What the document does not set, and what is unknown, is null.
/// `spans` may be empty: then nothing is said of them.
Json ReportJson(const std::string& project, const check::ProjectReport& report, const EngineSpans& spans);

}  // namespace vrx::host
