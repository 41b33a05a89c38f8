// The codec of PNG files, and of every other format that the still-image loader knows: it loads a file and
// brings it to the wanted size. No tags, thumbnails or profiles.
#pragma once

#include <cstdint>

#include "imaging/codecs/XpImageIo.h"

/// The loader reads whole files only: the stream has to be an XpFile, and the offset is not used. Of what is
/// asked about a reading nothing has an effect.
class XpImageIoPNG : public XpImageIo {
 public:
  /// At its own size, whatever the scale.
  Picture Read(XpAbstractFile& stream, std::int64_t offset, std::int32_t scale,
               const XpImageReading& reading) override;
  /// At its own size when a side of the target is below 1.
  Picture ReadFitted(XpAbstractFile& stream, std::int64_t offset, XpImageSize target,
                     const XpImageReading& reading) override;
  /// XpErrFailed when it cannot be loaded.
  XpResult GetImageSize(XpString path, XpImageSize& size, bool forceStereo) override;
  Picture ReadThumbnail(XpAbstractFile& stream, std::int64_t offset, const XpImageReading& reading) override;
};
