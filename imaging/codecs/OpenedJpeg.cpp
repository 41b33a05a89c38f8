#include "imaging/codecs/OpenedJpeg.h"

#include "imaging/jpeg/JpegSegments.h"

namespace vrx::imaging {

OpenedJpeg::OpenedJpeg(XpAbstractFile& stream, std::int64_t offset, std::span<const int> segments)
    : m_result(stream.Seek(offset, XpSeekStart)) {
  if (m_result == XpOk) m_result = WalkAppSegments(stream);
  if (m_result != XpOk) return;
  m_source = std::make_unique<ImageSource>(stream);
  m_source->Seek(offset);
  m_decoder = std::make_unique<JpegDecoder>(*m_source, JpegShortage::IsFilledIn);
  for (const int number : segments) m_decoder->KeepSegments(number);
  if (!m_decoder->ReadHead()) m_result = Failure();
}

XpResult OpenedJpeg::Failure() const {
  if (m_source->Result() != XpOk) return m_source->Result();
  return m_decoder->Result() == XpErrOutOfMemory ? XpErrOutOfMemory : XpErrImageInvalid;
}

}  // namespace vrx::imaging
