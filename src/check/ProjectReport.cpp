#include "src/check/ProjectReport.h"

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpFormat.h"
#include "src/check/ClipCheck.h"
#include "src/check/DocumentCheck.h"
#include "src/check/OutputCheck.h"
#include "src/check/OverlayCheck.h"
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
  XpFormat(message, u"cannot be read (error %04x)", result);
  return message;
}

}  // namespace

ProjectReport CheckProject(const XpString& path, const SourceProbe& probe) {
  ProjectReport report;
  const XpString file = platform::AbsolutePath(path);
  TKLXOutputXml project;
  xml::XmlProblem problem;
  const XpResult result = project.LoadXmlFile(file, &problem);
  // A document that lacks a part was read all the same, and is told apart by what it lacks.
  const bool wasRead = result == XpOk || result == XpErrNoObject || result == XpErrFileNotFound;
  if (!wasRead || !XpPathIsFile(file)) {
    report.problems.push_back(
        {Severity::Error, file, XpString(), 0, XpString(), ReadFailure(file, result, problem)});
    return report;
  }
  CheckDocument(*project.document, file, report.problems);
  if (project::Find(project.document.get(), project::kRoot) == nullptr) return report;
  report.videoSettings = std::move(project.videoSettings);
  report.audioSettings = std::move(project.audioSettings);
  report.outputPath = project::ResolvePath(file, project.outputFilePath);
  // The clips are checked with the settings at hand, which the project has handed over.
  if (report.audioSettings)
    project.audioSettings = std::make_unique<VRXAudioOutputSetting>(*report.audioSettings);
  CheckClips(file, project, probe, report);
  CheckOutput(file, report);
  CheckOverlays(file, project, report);
  return report;
}

}  // namespace vrx::check
