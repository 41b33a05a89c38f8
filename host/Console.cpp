#include "host/Console.h"

#include <cmath>
#include <cstdio>

namespace vrx::host {

std::string Utf8(const XpString& text) { return textcodec::ToUtf8(text.AsView()); }

std::string_view SeverityName(check::Severity severity) {
  switch (severity) {
    case check::Severity::Error:
      return "error";
    case check::Severity::Warning:
      return "warning";
    case check::Severity::Note:
      break;
  }
  return "note";
}

std::string ProblemLine(const check::Problem& problem) {
  std::string line(SeverityName(problem.severity));
  line += ": " + Utf8(problem.file);
  if (problem.line != 0) line += ":" + std::to_string(problem.line);
  if (!problem.track.IsEmpty()) line += ": " + Utf8(problem.track);
  if (problem.clip != 0) line += " clip " + std::to_string(problem.clip);
  line += problem.key.IsEmpty() ? ":" : ": " + Utf8(problem.key);
  return line + " " + Utf8(problem.message);
}

void Say(std::string_view line) {
  std::fprintf(stderr, "vrx: %.*s\n", static_cast<int>(line.size()), line.data());
}

std::string ClockText(double seconds) {
  constexpr long kPerMinute = 60;
  constexpr long kPerHour = 3600;
  const long whole = std::lround(std::fmax(seconds, 0.0));
  char text[32];
  if (whole >= kPerHour) {
    std::snprintf(text, sizeof(text), "%ld:%02ld:%02ld", whole / kPerHour, whole / kPerMinute % kPerMinute,
                  whole % kPerMinute);
  } else {
    std::snprintf(text, sizeof(text), "%ld:%02ld", whole / kPerMinute, whole % kPerMinute);
  }
  return text;
}

}  // namespace vrx::host
