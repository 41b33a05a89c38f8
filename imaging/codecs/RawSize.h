// How large the picture is that the sensor data of a RAW file hold, which not every camera says in the tags
// for it.
#pragma once

#include "imaging/codecs/XpImageIo.h"
#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::imaging {

/// As stored, before any turn. False when the tags do not say, or when a side passes 2,147,483,647 pixels.
bool FindRawSize(const XpTiffTagManager& tags, XpImageSize& size);

}  // namespace vrx::imaging
