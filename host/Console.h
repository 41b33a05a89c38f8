// How the command line speaks: one place for the form of its messages.
#pragma once

#include <string>
#include <string_view>

#include "src/check/ProjectReport.h"

namespace vrx::host {

/// Exit statuses of the program.
enum ExitStatus : int { kDone = 0, kFailed = 1, kWrongUse = 2, kCancelled = 130 };

std::string Utf8(const XpString& text);

/// "error: FILE: VideoTrack clip 2: SourceFile /a/b.mp4 does not exist"
std::string ProblemLine(const check::Problem& problem);
std::string_view SeverityName(check::Severity severity);

/// Writes "vrx: " and the line to stderr.
void Say(std::string_view line);

/// "1:02:03" or "4:05".
std::string ClockText(double seconds);

}  // namespace vrx::host
