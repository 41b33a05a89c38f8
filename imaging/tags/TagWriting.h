// Writes a tag tree, or one IFD of it, in the byte order of the tree. XpTiffTagManager::Store stands on it,
// and so does the replacement of single IFDs.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::imaging {

/// Writes the tree of `manager` at the position of `stream`, and leaves it sorted. `written` is 0 when there
/// is none. XpErrValueDoesNotFit, with nothing written, when the tree has more than 65,535 tags in an IFD or
/// does not fit 32-bit offsets; XpErrOutOfMemory; or the code of the failed write.
XpResult WriteTagTree(XpAbstractFile& stream, XpTiffTagManager& manager, std::int64_t& written);

/// Writes an IFD and all below it at the position of `stream`, which is `position` bytes after the TIFF
/// header. `next` is the offset of the next IFD, 0 for none. Sorts the tags. Errors as WriteTagTree.
XpResult WriteIfd(XpAbstractFile& stream, XpTiffTagIFD& ifd, bool bigEndian, std::uint32_t position,
                  std::uint32_t next, std::int64_t& written);

}  // namespace vrx::imaging
