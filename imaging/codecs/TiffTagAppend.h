// Gives a TIFF file changed tags without moving what it holds. The rating of a TIFF file is stored so, where
// there was none.
#pragma once

#include "foundation/file/XpFile.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// Writes IFD 0 of `tags`, with all below it, after the end of the file whose tags they are, and lets the
/// TIFF header at its start lead there once they are on the disk. The old ones stay where they are, unused;
/// IFD 1 and those after it stay in use. Leaves the tags sorted. XpErrValueDoesNotFit when the file would
/// become too large for 32-bit offsets; else the failure of the file. The file is as it was then.
XpResult AppendFirstIfd(XpFile& file, XpTiffTagManager& tags);

}  // namespace vrx::imaging
