// What the commands for pictures share: how a file is opened, which format it has, and why something failed.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/file/XpFile.h"
#include "imaging/codecs/PictureFormats.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::host {

/// "it is damaged, or no picture of a format that this command reads (0x8602)".
std::string PictureCause(XpResult result);

/// A picture file that is open for reading, with the codec of its format.
class PictureFile {
 public:
  explicit PictureFile(const std::string& path);

  /// Why it could not be opened or has no known format; empty otherwise. The functions below may be used only
  /// then.
  const std::string& Cause() const { return m_cause; }
  XpFile& File() { return m_file; }
  const XpString& Path() const { return m_path; }
  const imaging::PictureFormat& Format() const { return *m_format; }
  XpImageIo& Codec() { return *m_codec; }
  /// Why the codec's last reading failed.
  std::string CodecCause() const;

 private:
  void FindFormat();

  XpString m_path;  // absolute
  XpFile m_file;
  const imaging::PictureFormat* m_format = nullptr;
  std::unique_ptr<XpImageIo> m_codec;
  std::string m_cause;
};

/// Runs `command` on each file, which gives the cause of a failure or nothing. Says each cause with its file,
/// goes on with the next file, and gives the exit status.
int ForEachPicture(const std::vector<std::string>& files,
                   const std::function<std::string(const std::string& file)>& command);

}  // namespace vrx::host
