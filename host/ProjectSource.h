// A project as the command line names it: a file, or standard input for "-", and what the command line
// changes in it. The commands `check`, `frame`, `render` and `make` take theirs from it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/platform/MemoryFile.h"
#include "host/ProjectChanges.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

class ProjectSource {
 public:
  /// Reads standard input for "-".
  explicit ProjectSource(const std::string& argument, const ProjectChanges& changes = {});

  /// What an inspection reads. A project from standard input has its relative paths from the working folder.
  check::ProjectInput GetInput() const { return {m_path, m_copy ? &m_bytes : nullptr}; }
  bool IsStandardInput() const { return m_isInput; }
  /// What problems of the document name: its native path, or "standard input".
  const XpString& GetName() const { return m_name; }
  /// A path for code that opens the document itself. A project from standard input, or with changes, lies
  /// there with absolute paths, for as long as this object lives; empty when that cannot be done.
  const XpString& GetPath() const { return m_copy ? m_copy->GetPath() : m_path; }

  /// For documents that are removed after the render: problems of those in the project's folder name `name`
  /// instead.
  void HideDocuments(const XpString& name);

  /// Gives what the report says of the documents their names. Lines of a changed one are dropped, since they
  /// are not those of its file.
  void NameFiles(check::ProjectReport& report) const;
  /// The same for a problem of the render.
  void NameFile(check::Problem& problem) const;

 private:
  bool m_isInput = false;
  bool m_isChanged = false;
  bool m_isHidden = false;
  XpString m_path;  // native; for standard input, of a file that there is not
  XpString m_name;
  std::vector<char> m_bytes;                     // of standard input, or with changes
  std::unique_ptr<platform::MemoryFile> m_copy;  // of standard input, or with changes
};

}  // namespace vrx::host
