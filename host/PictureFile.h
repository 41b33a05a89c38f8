// What the commands for pictures share: how a file is opened, which format it has, and why something failed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "foundation/file/XpFile.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::host {

/// "it is damaged, or no picture of a format that this command reads (0x8602)".
std::string PictureCause(XpResult result);

/// A picture file that is open for reading.
class PictureFile {
 public:
  explicit PictureFile(const std::string& path);

  /// Why it could not be opened or has no known format; empty otherwise.
  const std::string& Cause() const { return m_cause; }
  XpFile& File() { return m_file; }
  const XpString& Path() const { return m_path; }
  /// "JPEG" and its like.
  const std::string& Format() const { return m_format; }
  bool IsJpeg() const { return m_format == "JPEG"; }
  bool IsTiff() const { return m_format == "TIFF"; }

 private:
  void FindFormat();

  XpString m_path;  // absolute
  XpFile m_file;
  std::string m_format;
  std::string m_cause;
};

/// Runs `command` on each file, which gives the cause of a failure or nothing. Says each cause with its file,
/// goes on with the next file, and gives the exit status.
int ForEachPicture(const std::vector<std::string>& files,
                   const std::function<std::string(const std::string& file)>& command);

}  // namespace vrx::host
