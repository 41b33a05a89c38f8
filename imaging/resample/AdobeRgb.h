// Brings pictures of wide colour spaces to sRGB (IEC 61966-2-1), in place. The codecs use it for pictures
// whose profile or tags name such a space.
#pragma once

#include "imaging/pixmap/XpPixmap.h"

/// From Adobe RGB (1998). Grey stays grey.
void ConvertAdobeRgbToSrgb(XpPixmap24NoHandle& pixmap);

/// From the primaries of profiles with the name "Wide Gamut RGB", with the transfer curve of Adobe RGB.
void ConvertWideGamutRgbToSrgb(XpPixmap24NoHandle& pixmap);
