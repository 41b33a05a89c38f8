// A folder for files that are not kept, removed with all that it holds. The commands `make` and `render
// --jobs` use it.
#pragma once

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/text/XpPath.h"

namespace vrx::host {

class TemporaryFolder {
 public:
  /// In the temporary folder of the system.
  TemporaryFolder() : m_error(platform::MakeTemporaryFolder(m_path)) {}
  /// In this folder, hidden.
  explicit TemporaryFolder(const XpString& folder)
      : m_error(platform::MakeTemporaryFolderIn(folder, m_path)) {}
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { Remove(); }
  void Remove() const {
    if (!m_error) platform::RemoveEntry(XpPathParent(m_path), XpPathStem(m_path) + XpPathExtension(m_path));
  }

  /// Why there is none.
  const std::error_code& GetError() const { return m_error; }
  const XpString& GetPath() const { return m_path; }

 private:
  XpString m_path;
  std::error_code m_error;
};

}  // namespace vrx::host
