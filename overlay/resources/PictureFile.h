// Reads one picture of an overlay from a file: BMP as its painters expect it, or PNG. The files may come from
// users, so their bytes are not trusted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/pixmap/XpPixmap.h"
#include "vrx/XpString.h"

namespace vrx::overlay {

/// Beyond what a picture of an overlay needs; checked before memory is taken.
inline constexpr std::int64_t kMaxPictureSide = 16'384;                   // pixels
inline constexpr std::int64_t kMaxPicturePixels = std::int64_t{1} << 25;  // a frame of 7680 by 4320
inline constexpr std::int64_t kMaxPictureFileBytes = std::int64_t{128} << 20;

/// Null when there is no picture; `problem`, when given, then says why in words without the path.
using OwnedPicture = std::unique_ptr<XpPixmapBase>;

/// A name that ends in ".png", in any case, is read as PNG and every other one as BMP, whatever the file
/// holds.
OwnedPicture LoadPictureFile(const XpString& path, XpString* problem = nullptr);

/// A BITMAPINFOHEADER of at least 40 bytes, after a file header or alone, with uncompressed rows from the
/// bottom up: 24 bits a pixel give an XpPixmap24, 32 an XpPixmap32 with the file's own alpha, others nothing.
/// The pixels are expected directly after 40 bytes of the header, with BI_BITFIELDS after its three masks,
/// which are not looked at; neither is the offset in the file header. Nothing is read past `size` bytes: a
/// picture that ends early gives null.
OwnedPicture ReadBitmapFromMemory(const void* bytes, std::size_t size, XpString* problem = nullptr);

/// From the stream's position to its end. Colour of 8 bits a channel gives an XpPixmap32 with straight alpha
/// or, without transparency, an XpPixmap24; palettes, grey and 16 bits a channel give null.
OwnedPicture ReadPngFromStream(XpAbstractFile& stream, XpString* problem = nullptr);

}  // namespace vrx::overlay
