// The system's side of XpReplaceFile: a new file is written beside the old one and renamed over it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <system_error>

#include "foundation/platform/FileSystem.h"

namespace vrx::platform {

/// One replacement of one file. Without Commit, the destructor removes the new file and the old one stays.
class FileReplacement {
 public:
  FileReplacement() = default;
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;
  ~FileReplacement();

  /// Follows the links of `path` and opens a file for the new content. EISDIR for a folder and EINVAL for
  /// anything else that is no regular file; EACCES for a file that its owner may not write, and for a link
  /// that another user placed in a folder which all may write to.
  std::error_code Begin(const XpString& path);
  /// True when a new file beside the old one, with the same owner, could not be made. The caller then passes
  /// the content to WriteInPlace, and uses none of the functions after it.
  bool IsInPlace() const { return m_new == kNoFile; }
  /// Overwrites the old file, which may be damaged when this fails; missing space is noticed before.
  std::error_code WriteInPlace(std::span<const std::byte> content);

  const std::string& GetNewPath() const { return m_newPath; }
  /// The new file, open for reading and writing; the caller closes it.
  FileHandle TakeNewFile();
  /// Renames the new file, which has been closed, into place.
  std::error_code Commit();

 private:
  std::error_code OpenTarget();
  std::error_code OpenNew();
  bool CarryOverState() const;
  void Discard();

  std::string m_target;  // no link
  std::string m_newPath;
  FileHandle m_old = kNoFile;
  FileHandle m_new = kNoFile;
};

}  // namespace vrx::platform
