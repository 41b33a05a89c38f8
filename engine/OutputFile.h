// The file that the movie is written to, or one picture after the other: a hidden temporary file in the
// output's folder, which is renamed to the final name when all is written. Used by the movie writer and where
// overlays are written as pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/EngineResult.h"

namespace vrx::engine {

/// Belongs to one thread. Destruction without Commit removes the temporary file and touches nothing else.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  /// Makes the temporary file, and removes those that killed renders of the same movie left. A link at
  /// `path` is followed: the file that it leads to will be replaced. The movie takes over the rights of the
  /// older file. kOutputFailed or kDiskFull with a logged line. For a series of files that are written one
  /// after the other, `series` names all of them: then what killed renders of the series left is removed
  /// once.
  Result Create(const std::string& path, const std::string& series = {});

  /// False on failure; the cause is kept.
  bool Write(const std::uint8_t* data, std::size_t size);
  /// The new position in bytes, or a negated errno.
  std::int64_t Seek(std::int64_t offset, int whence);
  std::int64_t GetSize() const;

  /// Brings everything to the disk and gives the file its final name. Logs its failures and removes the file.
  Result Commit();
  /// Removes the temporary file; does nothing when there is none.
  void Discard();

  /// The first failure of a write: kOk, kDiskFull or kOutputFailed.
  Result GetError() const;
  /// Logs the kept cause, and returns GetError().
  Result ReportError() const;

 private:
  void Remember(int systemError);

  std::string m_path;       // as it was given
  std::string m_finalPath;  // with links followed
  std::string m_temporaryPath;
  std::string m_tidied;  // temporary names without their letters that have no leftovers any more
  int m_descriptor = -1;
  int m_systemError = 0;  // errno of the first failure
};

}  // namespace vrx::engine
