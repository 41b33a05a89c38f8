// Which kind of multi-picture file an .mpo file is. The deep check uses it.
#pragma once

#include "content/formats/FormatCodes.h"
#include "foundation/file/XpAbstractFile.h"

namespace vrx::formats {

/// kMpoOther unless its index has pictures for two eyes or more views, all of them in the file.
FormatCode CheckMpo(XpAbstractFile& file);

}  // namespace vrx::formats
