// A project as the command line names it: a file, or standard input for "-". The commands `check` and
// `render` take theirs from it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/platform/MemoryFile.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

class ProjectSource {
 public:
  /// Reads standard input for "-".
  explicit ProjectSource(const std::string& argument);

  /// What an inspection reads. A project from standard input has its relative paths from the working folder.
  check::ProjectInput GetInput() const { return {m_path, m_isInput ? &m_bytes : nullptr}; }
  /// What problems of the document name: its native path, or "standard input".
  const XpString& GetName() const { return m_name; }
  /// A path for code that opens the document itself. A project from standard input lies there with absolute
  /// paths, for as long as this object lives; empty when that cannot be done.
  const XpString& GetPath() const { return m_isInput ? m_copy->GetPath() : m_path; }

  /// Gives the problems of the document its name.
  void NameProblems(check::ProjectReport& report) const;

 private:
  bool m_isInput = false;
  XpString m_path;  // native; for standard input, of a file that there is not
  XpString m_name;
  std::vector<char> m_bytes;
  std::unique_ptr<platform::MemoryFile> m_copy;
};

}  // namespace vrx::host
