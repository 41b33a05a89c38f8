// Which kind of picture a .jpg file is. The deep check uses it, and for multi-picture files what it knows of
// panoramas.
#pragma once

#include "content/formats/FormatCodes.h"
#include "foundation/file/XpAbstractFile.h"
#include "foundation/memory/XpSharedPtr.h"
#include "imaging/codecs/XpImageIo.h"
#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::formats {

/// kJpegPlain unless its maker note, an SPF segment or its size say more, in this order. `tags`, which may be
/// empty, are those of the picture.
FormatCode CheckJpeg(XpAbstractFile& file, XpSharedPtr<XpTiffTagManager> tags);

/// IsPanorama of a picture whose size `codec` reads from the start of the file.
bool HoldsPanorama(XpImageIo& codec, XpAbstractFile& file, const XpTiffTagManager& tags);

}  // namespace vrx::formats
