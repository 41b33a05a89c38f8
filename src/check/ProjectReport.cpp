#include "src/check/ProjectReport.h"

#include <algorithm>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpFormat.h"
#include "src/check/Checks.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::check {
namespace {

/// Why a document could not be read, for people.
XpString ReadFailure(const XpString& path, XpResult result, const xml::XmlProblem& problem) {
  XpString message;
  if (!problem.message.empty()) {
    message = u"is no readable project document: " + XpNarrowString(problem.message).ToWide();
    if (problem.line != 0)
      XpAppendFormat(message, u" (line %I64u, column %I64u)", problem.line, problem.column);
    return message;
  }
  bool isDirectory = false;
  if (!XpPathExists(path, &isDirectory)) return u"does not exist";
  if (isDirectory) return u"is a folder";
  if (result == XpErrAccessDenied) return u"cannot be read: no permission";
  XpFormat(message, u"cannot be read (error 0x%04x)", result);
  return message;
}

}  // namespace

const Problem* ProjectReport::FindError(bool withMissingPictures) const {
  const auto found = std::ranges::find_if(problems, [=](const Problem& problem) {
    return problem.severity == Severity::Error && (withMissingPictures || !problem.isMissingPicture);
  });
  return found == problems.end() ? nullptr : &*found;
}

void ProjectReport::AllowMissingPictures() {
  for (Problem& problem : problems) {
    if (problem.isMissingPicture) problem.severity = Severity::Warning;
  }
  SortProblems();
}

void ProjectReport::SortProblems() {
  std::ranges::stable_sort(problems, std::ranges::greater(), &Problem::severity);
}

ProjectReport CheckProject(const XpString& path, const SourceProbe& probe, StillLook stills) {
  ProjectReport report;
  const XpString file = platform::AbsolutePath(path);
  TKLXOutputXml project;
  xml::XmlProblem problem;
  const XpResult result = project.LoadXmlFile(file, &problem);
  // A document that lacks a part was read all the same; what it lacks is reported below.
  const bool wasRead = result == XpOk || result == XpErrNoObject || result == XpErrFileNotFound;
  if (!wasRead || !XpPathIsFile(file)) {
    report.problems.push_back(
        {Severity::Error, file, XpString(), 0, XpString(), ReadFailure(file, result, problem)});
    return report;
  }
  CheckDocument(*project.document, file, report.problems);
  report.SortProblems();
  if (project::Find(project.document.get(), project::kRoot) == nullptr) return report;
  report.videoSettings = std::move(project.videoSettings);
  report.audioSettings = std::move(project.audioSettings);
  report.outputPath = project::ResolvePath(file, project.outputFilePath);
  report.inputs = project::ListInputFiles(file, project);
  CheckClips(file, project, {probe, stills}, report);
  CheckOutput(file, report);
  CheckOverlays(file, project, report);
  report.SortProblems();
  return report;
}

}  // namespace vrx::check
