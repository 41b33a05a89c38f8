// Whether a picture says that its colours are those of Adobe RGB. The codecs ask before they convert.
#pragma once

#include <cstdint>

#include "imaging/tags/XpTiffTagManager.h"

namespace vrx::imaging {

/// The value of the colour space tag of a picture whose colours are not those of sRGB.
inline constexpr std::uint16_t kUncalibrated = 0xFFFF;

/// The colour space in the Exif IFD says so.
bool HasUncalibratedColours(const XpTiffTagManager& tags);

/// The colour space is marked as uncalibrated and the profile in IFD 0, if there is one, has the name that
/// the cameras give it.
bool HasAdobeRgbMark(const XpTiffTagManager& tags);

}  // namespace vrx::imaging
