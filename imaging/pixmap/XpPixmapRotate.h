// Turning and mirroring 24-bit pictures, for the codecs that follow a picture's orientation tag. The source
// stays as it is; null when it isn't 24-bit, is empty, or no memory is left for the result.
#pragma once

#include <memory>

#include "imaging/pixmap/XpPixmap.h"

std::unique_ptr<XpPixmap24NoHandle> RotatePixmap90CW(const XpPixmapBase& pixmap);
std::unique_ptr<XpPixmap24NoHandle> RotatePixmap180(const XpPixmapBase& pixmap);
std::unique_ptr<XpPixmap24NoHandle> RotatePixmap90CCW(const XpPixmapBase& pixmap);
std::unique_ptr<XpPixmap24NoHandle> MirrorPixmap(const XpPixmapBase& pixmap);
