#include "imaging/codecs/RawVersion.h"

#include <string_view>

#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

constexpr std::string_view kEarlySoftware = "KLX-Q1000 v";  // the number of its firmware follows

}  // namespace

bool IsFromEarlyBody(const XpTiffTagManager& tags) {
  const XpTiffTagIFD* first = tags.GetIfd(0);
  return first != nullptr && first->GetAscii(kTagSoftware).AsView().starts_with(kEarlySoftware);
}

std::uint32_t RawVersionOf(const XpTiffTagManager& tags) {
  if (IsFromEarlyBody(tags)) return kRawVersionEarly;
  const XpTiffTagIFD* maker = tags.GetMakerIfd();
  const XpTiffTagDataBase* value = maker == nullptr ? nullptr : maker->FindTag(kTagMakerFormatVersion, false);
  if (value == nullptr || value->GetType() != XpTiffByte) return 0;
  const auto* bytes = static_cast<const std::uint8_t*>(value->GetData());
  const std::uint32_t high = value->count > 0 ? bytes[0] : 0, low = value->count > 1 ? bytes[1] : 0;
  return high << 8 | low;
}

}  // namespace vrx::imaging
