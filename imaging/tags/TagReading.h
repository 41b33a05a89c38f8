// Reads a tag tree from any stream. XpTiffTagManager::Load is this with the defaults; the listing of tags
// asks for as much as can be saved from a damaged block.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/tags/StreamWindow.h"
#include "imaging/tags/TagFault.h"
#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::imaging {

enum class OnBadTag {
  EndIfd,   // nothing after it is read in this IFD, nor what the IFD leads to
  SkipTag,  // only the tag itself is lost
};

/// Real files stay far below these. Values together are also never larger than the stream.
struct TagLimits {
  std::uint32_t depth = 16;        // IFDs below one another
  std::uint32_t entries = 65536;   // of the whole tree
  std::uint64_t bytes = 1u << 28;  // of all values that stand outside their entries
  std::uint32_t ifds = 4096;       // IFDs, and offsets to them
};

struct TagReadOptions {
  std::int32_t mode = XpTagModeKnownNotes;
  OnBadTag onBadTag = OnBadTag::EndIfd;
  TagLimits limits = {};
};

/// Replaces the tree of `manager` by the one whose TIFF header stands at the position of `stream`. False when
/// there is no header. Everything that is left out is a fault. An IFD that was read before in this tree is
/// not read again.
bool ReadTagTree(XpAbstractFile& stream, const TagReadOptions& options, XpTiffTagManager& manager);

/// What the header of TIFF 6.0 says. `ifd` is a position of the stream.
struct TiffHeader {
  bool bigEndian = false;
  std::int64_t ifd = 0;
};
/// Reads the eight bytes at `base`. False unless they are a header whose first IFD lies within the stream.
bool ReadTiffHeader(StreamWindow& window, std::int64_t base, TiffHeader& header);

}  // namespace vrx::imaging
