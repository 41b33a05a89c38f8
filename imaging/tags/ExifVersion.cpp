#include "imaging/tags/ExifVersion.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "imaging/tags/TagNames.h"

namespace vrx::imaging {
namespace {

constexpr std::string_view kNewVersion = "0231";
constexpr std::string_view kLeastVersion = "0221";
constexpr std::size_t kVersionSize = 4;

/// The first four bytes of a version, with zeros for those that are missing.
std::string_view VersionBytes(const XpTiffTagDataBase& value, std::array<char, kVersionSize>& bytes) {
  bytes.fill('\0');
  const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(value.GetByteSize(), kVersionSize));
  if (size != 0) std::memcpy(bytes.data(), value.GetData(), size);
  return {bytes.data(), bytes.size()};
}

void SetVersion(XpTiffTagIFD& exif, std::string_view version) {
  exif.SetUndefined(kTagExifVersion, version.data(), kVersionSize);
}

XpTiffTagDataBase* FindGpsVersion(const XpTiffTagManager& manager) {
  XpTiffTagDataBase* pointer = manager.GetIfd(0)->FindTag(kTagGpsIfd, false);
  if (pointer == nullptr || pointer->GetType() != XpTiffIfd) return nullptr;
  for (const auto& gps : static_cast<XpTiffTagDataIFD*>(pointer)->ifds) {
    if (XpTiffTagDataBase* version = gps->FindTag(kTagGpsVersionId, false)) return version;
  }
  return nullptr;
}

void RaiseGpsVersion(XpTiffTagManager& manager) {
  const std::int32_t number = manager.GetExifVersionNumber();
  if (number != 221 && number < 230) return;
  XpTiffTagDataBase* version = FindGpsVersion(manager);
  if (version == nullptr || version->count != kVersionSize || version->GetElementSize() != 1) return;
  const std::array<std::uint8_t, kVersionSize> bytes{2, static_cast<std::uint8_t>(number == 221 ? 2 : 3), 0,
                                                     0};
  std::memcpy(version->GetData(), bytes.data(), bytes.size());
}

}  // namespace

void RaiseExifVersion(XpTiffTagManager& manager) {
  XpTiffTagIFD* exif = manager.GetExifIfd();
  if (exif == nullptr) return;
  if (const XpTiffTagDataBase* stored = exif->FindTag(kTagExifVersion, false)) {
    std::array<char, kVersionSize> bytes;
    const int order = VersionBytes(*stored, bytes).compare(kLeastVersion);
    if (order > 0) return;
    if (order < 0) SetVersion(*exif, kLeastVersion);
  } else {
    SetVersion(*exif, kNewVersion);
  }
  RaiseGpsVersion(manager);
}

}  // namespace vrx::imaging
