#include "imaging/codecs/MpSummary.h"

#include <algorithm>

#include "imaging/codecs/XpImageIoJpeg.h"
#include "imaging/codecs/XpImageIoMPO.h"
#include "imaging/jpeg/JpegSegments.h"

namespace vrx::imaging {

namespace {

class Summarizer {
 public:
  Summarizer(XpAbstractFile& stream, std::int64_t header)
      : m_stream(stream), m_header(header), m_fileSize(stream.GetSize()) {}

  MpPictureSummary Summarize(const MpEntry& entry) {
    MpPictureSummary picture{.entry = entry, .frame = entry.IsChild() ? -1 : m_frames++};
    std::int64_t start = 0;
    picture.result = FindMpPicture(m_stream, 0, m_header, entry, start);
    if (picture.result == XpOk && (entry.size == 0 || !IsJpegAt(start))) picture.result = XpErrImageInvalid;
    if (picture.result != XpOk) return picture;
    picture.start = start;
    picture.size = std::min<std::int64_t>(entry.size, m_fileSize - start);
    if (m_heads.Spend(start)) {
      XpImageIoJpeg().ReadStoredImageSize(m_stream, start, picture.storedSize, false);
    }
    return picture;
  }

 private:
  bool IsJpegAt(std::int64_t start) {
    std::uint8_t marker[2] = {};
    return m_stream.Seek(start, XpSeekStart) == XpOk &&
           ReadExactly(m_stream, marker, sizeof(marker)) == XpOk && marker[0] == 0xFF && marker[1] == 0xD8;
  }

  XpAbstractFile& m_stream;
  std::int64_t m_header;
  std::int64_t m_fileSize;
  std::int64_t m_frames = 0;
  MpHeadBudget m_heads{m_stream};
};

}  // namespace

XpResult SummarizeMpFile(XpAbstractFile& stream, std::vector<MpPictureSummary>& pictures) {
  pictures.clear();
  XpImageIoMPO codec;
  const XpSharedPtr<XpTiffTagManager> index = codec.ReadIndexTags(stream, 0);
  if (index.Get() == nullptr) return codec.status;
  const MpTable table = ReadMpTable(*index);
  if (table.entries.empty()) return XpErrImageUnusable;
  std::int64_t header = 0;
  if (const XpResult result = FindMpHeader(stream, 0, header)) return result;
  Summarizer summarizer(stream, header);
  for (const MpEntry& entry : table.entries) pictures.push_back(summarizer.Summarize(entry));
  return XpOk;
}

}  // namespace vrx::imaging
