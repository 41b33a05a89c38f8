// A JPEG picture in a stream whose head has been read, with the application segments that were asked for. All
// operations of the JPEG codec begin with one.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "foundation/file/XpAbstractFile.h"
#include "imaging/jpeg/JpegDecoder.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// Of every kind, and comments.
inline constexpr int kAllSegments[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, kCommentSegment};

class OpenedJpeg {
 public:
  /// Borrows the stream, in which the picture begins at `offset`.
  OpenedJpeg(XpAbstractFile& stream, std::int64_t offset, std::span<const int> segments);

  /// XpErrImageInvalid when there is no picture whose head can be read; or the failure of the stream. The
  /// other functions may be used after XpOk only.
  XpResult Result() const { return m_result; }
  /// Why a later step of the decoder failed: XpErrImageInvalid, XpErrOutOfMemory or the failure of the
  /// stream.
  XpResult Failure() const;
  JpegDecoder& Decoder() { return *m_decoder; }
  const std::vector<JpegSegment>& Segments() const { return m_decoder->Segments(); }

 private:
  XpResult m_result;
  std::unique_ptr<ImageSource> m_source;
  std::unique_ptr<JpegDecoder> m_decoder;
};

}  // namespace vrx::imaging
