// Which .moff container belongs to a media file, and which media file to a container.
#pragma once

#include "content/moff/MoffRecords.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::moff {

/// The container of the content at `path`: the path itself when it ends in ".moff"; then that of all files of
/// one stem, clip.moff, when it exists; else that of the one file, clip.mp4.moff.
XpString MoffPathFor(const XpString& path);

/// The media file of the container at `moffPath`: its path without ".moff", or a still picture or video of
/// that stem. Of several, the one that the header names, or else the first in the order of the table of
/// extensions. Empty when there is none.
XpString FindSource(const XpString& moffPath, const FileHeader& header);

enum class SourceFit {
  Same,             // the size is that of the header
  ChangedAccepted,  // it is another, but files of this format are edited in place
  Changed,
  Missing,
};
struct SourceCheck {
  XpString path;  // empty when it is missing
  std::int64_t size = 0;
  SourceFit fit = SourceFit::Missing;

  /// XpErrFileNotFound unless the container still belongs to the source.
  XpResult Result() const;
};
SourceCheck CheckSource(const XpString& moffPath, const FileHeader& header);

/// Name, times and size of the file at `path`. The code of the file layer when it cannot be asked.
XpResult DescribeSource(const XpString& path, FileHeader& header);

/// The name in a header.
XpString SourceName(const FileHeader& header);

}  // namespace vrx::moff
