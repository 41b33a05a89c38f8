#include "foundation/registry/SfRegistry.h"

#include <array>

#include "foundation/text/XpPath.h"

namespace {

constexpr char16_t kCompanyKey[] = u"Software\\Kelo Corporation\\";
constexpr char16_t kProduct[] = u"LBR";
constexpr char16_t kFirstVersion[] = u"1.0";
constexpr std::array<const char16_t*, 3> kSharedSections{u"Common", u"StatisticsInformation",
                                                         u"TranscodeSettings"};

bool IsShared(const XpString& section) {
  for (const char16_t* shared : kSharedSections) {
    if (section == shared) return true;
  }
  return false;
}

XpSharedPtr<SfRegistry> OpenSection(const XpString& section, const XpString& sub, std::uint32_t access) {
  XpSharedPtr<SfRegistry> key(new SfRegistry);
  const bool opened =
      key->Open(SfRegistryKeyPath(kProduct, section, sub), XpRegistryCurrentUser, access) == XpOk;
  return opened ? key : XpSharedPtr<SfRegistry>();
}

}  // namespace

XpString SfRegistryKeyPath(const XpString& product, const XpString& section, const XpString& sub) {
  XpString path = kCompanyKey + product;
  if (!section.IsEmpty()) path = path + u"\\" + section;
  if (!section.IsEmpty() && !IsShared(section)) path = path + u"\\" + SfSectionVersion(section);
  return sub.IsEmpty() ? path : path + u"\\" + sub;
}

XpSharedPtr<SfRegistry> SfRegistryOpenRead(const XpString& section, const XpString& sub) {
  return OpenSection(section, sub, XpRegistryRead);
}

XpSharedPtr<SfRegistry> SfRegistryOpenWrite(const XpString& section, const XpString& sub) {
  return OpenSection(section, sub, XpRegistryRead | XpRegistryWrite);
}

XpString SfSectionVersion(const XpString& section) {
  const auto key =
      XpRegistryOpen(kCompanyKey + XpPathJoin(kProduct, section), XpRegistryLocalMachine, XpRegistryRead);
  const XpString version = key ? key->GetString(u"CurrentVersion", XpString()) : XpString();
  return version.IsEmpty() ? XpString(kFirstVersion) : version;
}

XpString SfSectionVersionPath(const XpString& section) {
  return XpPathJoin(XpPathJoin(XpString(kCompanyKey) + kProduct, section), SfSectionVersion(section));
}
