#include "host/ProblemText.h"

namespace vrx::host {

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

std::string ProblemText(const check::Problem& problem) {
  if (problem.file.IsEmpty()) return Plain(problem.message);
  std::string line = Plain(problem.file);
  if (problem.line != 0) line += ":" + std::to_string(problem.line);
  if (!problem.track.IsEmpty()) line += ": " + Plain(problem.track);
  if (problem.clip != 0) line += " clip " + std::to_string(problem.clip);
  line += problem.key.IsEmpty() ? ":" : ": " + Plain(problem.key);
  return line + " " + Plain(problem.message);
}

std::string ProblemLine(const check::Problem& problem) {
  return std::string(SeverityName(problem.severity)) + ": " + ProblemText(problem);
}

Json ProblemJson(const check::Problem& problem) {
  Json entry{{"severity", SeverityName(problem.severity)}};
  if (!problem.file.IsEmpty()) entry["file"] = Utf8(problem.file);
  if (problem.line != 0) entry["line"] = problem.line;
  if (!problem.track.IsEmpty()) entry["track"] = Utf8(problem.track);
  if (problem.clip != 0) entry["clip"] = problem.clip;
  if (!problem.key.IsEmpty()) entry["key"] = Utf8(problem.key);
  entry["message"] = Utf8(problem.message);
  return entry;
}

}  // namespace vrx::host
