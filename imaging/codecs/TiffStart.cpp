#include "imaging/codecs/TiffStart.h"

#include <array>

namespace vrx::imaging {

XpResult SeekToTiffStart(XpAbstractFile& stream, std::int64_t offset) {
  if (const XpResult result = stream.Seek(offset, XpSeekStart)) return result;
  std::array<char, 2> mark{};
  std::uint64_t read = 0;
  const XpResult result = stream.Read(mark.data(), mark.size(), &read);
  if (result != XpOk && result != XpErrEndOfFile) return result;
  const bool isMark = mark[0] == mark[1] && (mark[0] == 'I' || mark[0] == 'M');
  if (read < mark.size() || !isMark) return XpErrImageInvalid;
  return stream.Seek(offset, XpSeekStart);
}

}  // namespace vrx::imaging
