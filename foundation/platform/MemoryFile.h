// Files without a name in any folder: a program hands bytes with them to code that only opens paths.
#pragma once

#include <span>

#include "vrx/XpString.h"

namespace vrx::platform {

/// A file in memory that can be opened by its path in this process as long as the object lives. It leaves
/// nothing behind, however the process ends.
class MemoryFile {
 public:
  explicit MemoryFile(std::span<const char> bytes);
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile();

  /// Empty when the system could not make the file.
  const XpString& GetPath() const { return m_path; }

 private:
  int m_file = -1;
  XpString m_path;
};

}  // namespace vrx::platform
