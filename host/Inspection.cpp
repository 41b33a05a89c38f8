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

/// Whether the report has something of the same source of the same clip: the engine says it once more.
bool IsKnown(const check::ProjectReport& report, const check::Problem& problem) {
  return problem.clip != 0 && std::ranges::any_of(report.problems, [&](const check::Problem& other) {
           return other.severity == problem.severity && other.clip == problem.clip &&
                  other.track == problem.track && other.key == problem.key;
         });
}

/// Lets the engine open the whole job, which finds what only the engine can know.
void TryJob(const ProjectSource& project, EngineModule& engine, check::ProjectReport& report) {
  job::RenderJob job;
  job.Load(project.GetPath());
  if (!job.IsUsable()) return;
  engine.TakeLines();
  const std::int32_t result = engine.Try(*job.GetTimeline(), *job.GetSystemOutput());
  for (const EngineLine& line : engine.TakeLines()) {
    if (line.severity == VRXLogInfo) continue;
    const check::Problem problem = ProblemOf(project, report, line);
    if (!IsKnown(report, problem)) report.problems.push_back(problem);
  }
  if (result == VRXEngineOk || report.HasErrors()) return;
  report.problems.push_back({.severity = check::Severity::Error,
                             .file = project.GetName(),
                             .message = u"the conversion engine refuses the project"});
}

/// The movie has sound, but no clip that gives it any.
bool LacksSound(const check::ProjectReport& report) {
  return report.audioSettings && std::ranges::none_of(report.clips, [](const check::ClipRow& row) {
           return row.track == project::kAudioTrack.name;
         });
}

}  // namespace

check::ProjectReport InspectQuickly(const ProjectSource& project, const EngineModule& engine) {
  check::ProjectReport report = check::CheckProject(project.GetInput(), {});
  const bool hasLengths = std::ranges::none_of(report.clips, &check::ClipRow::wholeSource);
  if (!hasLengths || LacksSound(report)) {
    report =
        check::CheckProject(project.GetInput(), [&](const XpString& path) { return engine.Probe(path); });
  }
  project.NameFiles(report);
  return report;
}

check::ProjectReport InspectWhole(const ProjectSource& project, EngineModule& engine) {
  engine.Listen({});  // what it says of single sources is in the report already
  check::ProjectReport report = check::CheckProject(
      project.GetInput(), [&](const XpString& path) { return engine.Probe(path); }, check::StillLook::Whole);
  project.NameFiles(report);
  if (report.FindError(false) == nullptr) TryJob(project, engine, report);
  report.SortProblems();
  return report;
}

check::ProjectReport InspectSpans(const ProjectSource& project, EngineModule& engine, EngineSpans& spans) {
  engine.Listen({});  // what it says of single sources is in the report already
  check::ProjectReport report = InspectQuickly(project, engine);
  if (report.FindError(false) != nullptr) return report;
  engine.KeepSpans();
  TryJob(project, engine, report);
  spans = engine.TakeSpans();
  report.SortProblems();
  return report;
}

check::Problem ProblemOf(const ProjectSource& project, const check::ProjectReport& report,
                         const EngineLine& line) {
  check::Problem problem{.severity = SeverityOf(line.severity),
                         .file = project.GetName(),
                         .message = XpNarrowString(line.text).ToWide()};
  if (line.track == VRXNoTrack || line.clip == 0) return problem;
  problem.track = line.track == VRXAudioTrack ? project::kAudioTrack.name : project::kVideoTrack.name;
  problem.clip = line.clip;
  problem.key = project::kSourceFile.name;
  const auto isClip = [&](const check::ClipRow& row) {
    return row.track == problem.track && row.clip == problem.clip;
  };
  const auto row = std::ranges::find_if(report.clips, isClip);
  if (row != report.clips.end()) problem.line = row->line;
  return problem;
}

}  // namespace vrx::host
