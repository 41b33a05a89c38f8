// Composing one picture on another by its alpha. Painters lay their pictures and text on the frame's overlay
// with these. Colours are not premultiplied; source and destination must be two pixmaps.
#pragma once

#include <cstdint>

#include "imaging/pixmap/XpPixmap.h"
#include "imaging/pixmap/XpRowRange.h"

/// Composes the top-left `sourceWidth` by `sourceHeight` pixels of `source`, scaled by nearest neighbour,
/// over `destWidth` by `destHeight` pixels of `destination`, clipped to both. A size below 1 draws nothing.
/// Alpha 0 leaves a pixel alone, 255 replaces it; between, each colour moves by ((s - d) * a) >> 8 and the
/// destination's alpha by ((255 - da) * a) >> 8. Source rows outside `drawn` are known to be clear and not
/// looked at.
void OverlayPixmap(XpPixmap32& destination, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                   std::int32_t destHeight, const XpPixmap32& source, std::int32_t sourceWidth,
                   std::int32_t sourceHeight, XpRowRange drawn = {});

/// For pictures with smooth edges: the exact "over" of straight alpha, rounded, so that an edge on an empty
/// destination keeps its colour. The same as OverlayPixmap where the source's alpha is 0 or 255.
void OverlaySmoothPixmap(XpPixmap32& destination, std::int32_t destX, std::int32_t destY,
                         std::int32_t destWidth, std::int32_t destHeight, const XpPixmap32& source,
                         std::int32_t sourceWidth, std::int32_t sourceHeight, XpRowRange drawn = {});

/// OverlayPixmap with a further constant alpha, w = a * alpha, and >> 16. A destination of alpha 0 takes the
/// source's colours and w >> 8 as alpha, also when w is 0.
void OverlayPixmapWithAlpha(XpPixmap32& destination, std::int32_t destX, std::int32_t destY,
                            std::int32_t destWidth, std::int32_t destHeight, const XpPixmap32& source,
                            std::int32_t sourceWidth, std::int32_t sourceHeight, std::uint8_t alpha,
                            XpRowRange drawn = {});

/// A block of `source` from its column 0 and row `sourceY`, unscaled.
void OverlayPixmapBlock(XpPixmap32& destination, std::int32_t destX, std::int32_t destY, std::int32_t width,
                        std::int32_t height, const XpPixmap32& source, std::int32_t sourceY);
void OverlaySmoothPixmapBlock(XpPixmap32& destination, std::int32_t destX, std::int32_t destY,
                              std::int32_t width, std::int32_t height, const XpPixmap32& source,
                              std::int32_t sourceY);
