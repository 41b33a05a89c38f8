#include "host/Inspection.h"

#include <algorithm>

#include "src/job/RenderJob.h"
#include "src/project/ProjectKeys.h"

namespace vrx::host {
namespace {

check::Severity SeverityOf(VRXLogSeverity severity) {
  switch (severity) {
    case VRXLogInfo:
      return check::Severity::Note;
    case VRXLogWarning:
      return check::Severity::Warning;
    case VRXLogError:
      break;
  }
  return check::Severity::Error;
}

/// Lets the engine open the whole job, which finds what only the engine can know.
void TryJob(const XpString& project, EngineModule& engine, check::ProjectReport& report) {
  job::RenderJob job;
  job.Load(project);
  if (!job.IsUsable()) return;
  engine.TakeLines();
  const std::int32_t result = engine.Try(*job.GetTimeline(), *job.GetSystemOutput());
  for (const EngineLine& line : engine.TakeLines()) {
    if (line.severity != VRXLogInfo) report.problems.push_back(ProblemOf(project, line));
  }
  if (result == VRXEngineOk || report.HasErrors()) return;
  report.problems.push_back({.severity = check::Severity::Error,
                             .file = project,
                             .message = u"the conversion engine refuses the project"});
}

}  // namespace

check::ProjectReport InspectQuickly(const XpString& project, const EngineModule& engine) {
  check::ProjectReport report = check::CheckProject(project, {});
  if (std::ranges::none_of(report.clips, &check::ClipRow::wholeSource)) return report;
  return check::CheckProject(project, [&](const XpString& path) { return engine.Probe(path); });
}

check::ProjectReport InspectWhole(const XpString& project, EngineModule& engine) {
  engine.Listen({});  // what it says of single sources is in the report already
  check::ProjectReport report = check::CheckProject(
      project, [&](const XpString& path) { return engine.Probe(path); }, check::StillLook::Whole);
  if (report.FindError(false) == nullptr) TryJob(project, engine, report);
  report.SortProblems();
  return report;
}

check::Problem ProblemOf(const XpString& project, const EngineLine& line) {
  check::Problem problem{
      .severity = SeverityOf(line.severity), .file = project, .message = XpNarrowString(line.text).ToWide()};
  if (line.track == VRXNoTrack || line.clip == 0) return problem;
  problem.track = line.track == VRXAudioTrack ? project::kAudioTrack.name : project::kVideoTrack.name;
  problem.clip = line.clip;
  problem.key = project::kSourceFile.name;
  return problem;
}

}  // namespace vrx::host
