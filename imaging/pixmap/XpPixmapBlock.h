// Filling pixmaps and copying blocks between 24-bit pixmaps. Used by the codecs, the still-image source and
// the painters.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/pixmap/XpPixmap.h"

/// Sets every pixel; the padding of a row stays as it is. An empty pixmap stays empty.
void FillPixmap(XpPixmap32& pixmap, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                std::uint8_t alpha);
void FillPixmap(XpPixmap24& pixmap, std::uint8_t red, std::uint8_t green, std::uint8_t blue);
void FillPixmap(XpPixmap24NoHandle& pixmap, std::uint8_t red, std::uint8_t green, std::uint8_t blue);

/// A 1 by 1 picture of one colour; null when there is no memory for it.
std::unique_ptr<XpPixmap32> MakeSolidPixmap(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                                            std::uint8_t alpha);

/// Copies a block 1 to 1, clipped to both pixmaps. Both must be 24-bit, else nothing happens. Blocks of one
/// and the same pixmap may overlap only when the copy goes upwards or sideways.
void CopyPixmapBlock(XpPixmapBase& destination, std::int32_t destX, std::int32_t destY,
                     const XpPixmapBase& source, std::int32_t sourceX, std::int32_t sourceY,
                     std::int32_t width, std::int32_t height);
/// The same for the whole of `source`, to (0, 0).
void CopyPixmapBlock(XpPixmapBase& destination, const XpPixmapBase& source);

/// Copies a block scaled by nearest neighbour, clipped to both pixmaps. Both must be 24-bit and not the same
/// pixmap, else nothing happens. Where the source block begins left of or above the source, rounding can
/// ask for a pixel before the first: the first is taken.
void StretchPixmapBlock(XpPixmapBase& destination, std::int32_t destX, std::int32_t destY,
                        std::int32_t destWidth, std::int32_t destHeight, const XpPixmapBase& source,
                        std::int32_t sourceX, std::int32_t sourceY, std::int32_t sourceWidth,
                        std::int32_t sourceHeight);
