// The codec of GIF files: the first image on the background of the logical screen, and whether the file is an
// animation. No tags, thumbnails or profiles.
#pragma once

#include <cstdint>

#include "content/formats/FormatCodes.h"
#include "imaging/codecs/XpImageIo.h"

class XpImageIoGIF : public XpImageIo {
 public:
  /// At its own size, whatever the scale.
  Picture Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
               const XpImageReading& reading) override;
  /// At its own size when a side of the target is 0.
  Picture ReadFitted(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                     const XpImageReading& reading) override;
  Picture ReadThumbnail(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading) override;
  /// Of the logical screen.
  XpResult ReadDimensions(XpAbstractFile& stream, std::int64_t offset, XpImageSize& size, bool stored,
                          bool forceStereo) override;

  /// kGif, or kGifAnimation for several images of which one before the second has a delay; kUnknown when it
  /// is no GIF. With `headerOnly` no picture is made. A damaged file gives what was drawn before the damage.
  Picture ReadGif(XpAbstractFile& stream, std::int64_t offset, bool headerOnly,
                  vrx::formats::FormatCode& format);
  /// kUnknown for a file that cannot be opened, with the cause in `status`.
  vrx::formats::FormatCode GetGifFormat(XpString path);
};
