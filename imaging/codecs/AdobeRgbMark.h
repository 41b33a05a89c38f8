// Whether a picture says that its colours are those of Adobe RGB. The codecs ask before they convert.
#pragma once

#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::imaging {

/// The colour space is marked as uncalibrated and the profile in IFD 0, if there is one, has the name that
/// the cameras give it.
bool HasAdobeRgbMark(const XpTiffTagManager& tags);

}  // namespace vrx::imaging
