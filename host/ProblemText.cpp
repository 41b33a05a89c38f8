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

check::Problem ProblemOfJson(const Json& entry) {
  const auto text = [&](const char* name) {
    const auto found = entry.find(name);
    return found != entry.end() && found->is_string() ? found->get<std::string>() : std::string();
  };
  const auto number = [&](const char* name) {
    const auto found = entry.find(name);
    return found != entry.end() && found->is_number_unsigned() ? found->get<std::uint64_t>() : 0;
  };
  const auto wide = [&](const char* name) { return XpString(textcodec::ToUtf16(text(name))); };
  const std::string severity = text("severity");
  check::Problem problem{.severity = severity == "note"      ? check::Severity::Note
                                     : severity == "warning" ? check::Severity::Warning
                                                             : check::Severity::Error};
  problem.file = wide("file");
  problem.line = number("line");
  problem.track = wide("track");
  problem.clip = static_cast<std::uint32_t>(number("clip"));
  problem.key = wide("key");
  problem.message = wide("message");
  return problem;
}

bool IsSameProblem(const check::Problem& a, const check::Problem& b) {
  return a.line == b.line && a.file == b.file && a.key == b.key && (a.line != 0 || a.message == b.message);
}

}  // namespace vrx::host
