#include "imaging/codecs/AdobeRgbMark.h"

#include "foundation/file/XpMemoryFile.h"
#include "foundation/text/XpPath.h"
#include "imaging/icc/IccProfile.h"
#include "imaging/tags/TagNames.h"

namespace vrx::imaging {

namespace {

constexpr char16_t kProfileName[] = u"Adobe RGB 1998 (Kelo Corporation)";

}  // namespace

bool HasUncalibratedColours(const XpTiffTagManager& tags) {
  const XpTiffTagIFD* exif = tags.GetExifIfd();
  return exif != nullptr && exif->GetShort(kTagColorSpace, false) == kUncalibrated;
}

bool HasAdobeRgbMark(const XpTiffTagManager& tags) {
  if (!HasUncalibratedColours(tags)) return false;
  XpTiffTagDataBase* profile = tags.GetIfd(0)->FindTag(kTagIccProfile, false);
  if (profile == nullptr) return true;
  XpMemoryFile bytes;
  bytes.Attach(profile->GetData(), static_cast<std::int64_t>(profile->GetByteSize()), false);
  icc_profile icc;
  if (icc.Read(bytes) != XpOk) return false;
  return XpCompareNoCase(icc.FindTag("desc").GetTextDescription().text.ToWide(), kProfileName) == 0;
}

}  // namespace vrx::imaging
