#include "src/check/ProjectReport.h"

#include <algorithm>
#include <map>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpFormat.h"
#include "src/check/Checks.h"
#include "src/check/DocumentParts.h"
#include "src/check/FollowUps.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::check {
namespace {

/// Why a document could not be read.
Problem ReadFailure(const XpString& path, XpResult result, const xml::XmlProblem& problem) {
  Problem failure{.severity = Severity::Error, .file = path, .line = problem.line};
  bool isDirectory = false;
  if (!problem.message.empty()) {
    failure.message = u"is no readable project document: " + XpNarrowString(problem.message).ToWide();
    if (problem.column != 0) XpAppendFormat(failure.message, u" (column %I64u)", problem.column);
  } else if (!XpPathExists(path, &isDirectory)) {
    failure.message = u"does not exist";
  } else if (isDirectory) {
    failure.message = u"is a folder";
  } else if (result == XpErrAccessDenied) {
    failure.message = u"cannot be read: no permission";
  } else {
    XpFormat(failure.message, u"cannot be read (error 0x%04x)", result);
  }
  return failure;
}

/// Everything that the project names.
void CheckParts(const XpString& file, TKLXOutputXml& project, const SourceLook& look, ProjectReport& report) {
  report.videoSettings = std::move(project.videoSettings);
  report.audioSettings = std::move(project.audioSettings);
  report.outputPath = project::ResolvePath(file, project.outputFilePath);
  report.inputs = project::ListInputFiles(file, project);
  CheckClips(file, project, look, report);
  const plist::Key& output = project::kOutputSettings;
  const XpIniElement* wrapper = project::Find(project.document.get(), project::kRoot);
  if (project::Find(wrapper, output) != nullptr) CheckOutput(file, report);
  CheckOverlays(file, project, report);
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

bool ProjectReport::HasWarnings() const {
  return std::ranges::find(problems, Severity::Warning, &Problem::severity) != problems.end();
}

void ProjectReport::SortProblems() {
  std::map<XpString, std::size_t> documents;  // in the order in which the inspection came to them
  for (const Problem& problem : problems) documents.try_emplace(problem.file, documents.size());
  std::ranges::stable_sort(problems, [&](const Problem& a, const Problem& b) {
    if (a.severity != b.severity) return a.severity > b.severity;
    return std::pair(documents[a.file], a.line) < std::pair(documents[b.file], b.line);
  });
}

Problem RemarkOf(const XpString& file, const plist::Remark& remark) {
  return {.severity = Severity::Warning,
          .file = file,
          .key = remark.key,
          .message = remark.message,
          .line = remark.line,
          .meant = remark.key,
          .dictLine = remark.dictLine};
}

ProjectReport CheckProject(const ProjectInput& input, const SourceProbe& probe, StillLook stills) {
  ProjectReport report;
  const XpString file = platform::AbsolutePath(input.path);
  TKLXOutputXml project;
  plist::Findings findings;
  const XpResult result = input.bytes != nullptr ? project.LoadXmlBytes(*input.bytes, &findings)
                                                 : project.LoadXmlFile(file, &findings);
  // A document that lacks a part was read all the same; what it lacks is reported below.
  const bool wasRead = result == XpOk || result == XpErrNoObject || result == XpErrFileNotFound;
  if (!wasRead || (input.bytes == nullptr && !XpPathIsFile(file))) {
    report.problems.push_back(ReadFailure(file, result, findings.problem));
    return report;
  }
  const XpIniDict& document = *project.document;
  const DocumentLines lines(document, ProjectParts());
  for (const plist::Remark& remark : findings.remarks) {
    report.problems.push_back(RemarkOf(file, remark));
    lines.FindClipOf(report.problems.back());
  }
  CheckDocument(document, file, report.problems);
  if (project::Find(&document, project::kRoot) != nullptr) {
    CheckParts(file, project, {probe, stills}, report);
  }
  for (ClipRow& row : report.clips) {
    row.line = lines.LineOf({.track = row.track, .clip = row.clip, .key = project::kSourceFile.name});
  }
  lines.Fill(file, report.problems);
  DropFollowUps(report.problems);
  report.SortProblems();
  return report;
}

}  // namespace vrx::check
