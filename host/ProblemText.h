// How the command line shows what is wrong with a project, for people and as JSON.
#pragma once

#include <string>
#include <string_view>

#include "host/Console.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

/// "FILE:12: VideoTrack clip 2: SourceFile /a/b.mp4 does not exist"; masked.
std::string ProblemText(const check::Problem& problem);
/// The same after its severity: "error: FILE: ...".
std::string ProblemLine(const check::Problem& problem);
/// One with what is known: severity, file, line, track, clip, key and message.
Json ProblemJson(const check::Problem& problem);
/// What ProblemJson gave; what is missing or of another type stays empty.
check::Problem ProblemOfJson(const Json& entry);
/// Whether both are of the same place, or without a place say the same.
bool IsSameProblem(const check::Problem& a, const check::Problem& b);
std::string_view SeverityName(check::Severity severity);

}  // namespace vrx::host
