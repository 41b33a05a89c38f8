// Which video an AVI file holds, by the handler of its first video stream. The deep check uses it.
#pragma once

#include "content/formats/FormatCodes.h"
#include "foundation/file/XpAbstractFile.h"

namespace vrx::formats {

/// kAviDv, kAviMotionJpeg, or kUnknown for other video and for what is no AVI file.
FormatCode CheckAvi(XpAbstractFile& file);

}  // namespace vrx::formats
