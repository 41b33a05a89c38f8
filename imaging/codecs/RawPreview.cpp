#include "imaging/codecs/RawPreview.h"

#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

constexpr std::size_t kPlaces = 2;  // IFDs that may name the preview, in their order

bool HasLong(const XpTiffTagIFD& ifd, std::uint16_t tag) {
  const XpTiffTagDataBase* value = ifd.FindTag(tag, false);
  return value != nullptr && value->GetType() == XpTiffLong && value->count > 0;
}

}  // namespace

XpResult FindRawPreview(const XpTiffTagManager& tags, RawPreview& preview) {
  for (std::size_t i = 0; i < kPlaces; ++i) {
    const XpTiffTagIFD* ifd = tags.GetIfd(i);
    if (ifd == nullptr) break;
    if (!HasLong(*ifd, kTagThumbnailOffset)) continue;
    preview = {ifd->GetLong(kTagThumbnailOffset, 0, false), ifd->GetLong(kTagThumbnailSize, 0, false)};
    return preview.offset == 0 ? XpErrImageNoData : XpOk;
  }
  return XpErrImageNoData;
}

}  // namespace vrx::imaging
