#include "foundation/registry/SystemSettings.h"

#include <array>
#include <string>

#include <unicode/locid.h>

#include "foundation/file/XpSpecialFolder.h"
#include "foundation/platform/Paths.h"
#include "foundation/registry/SfRegistry.h"

namespace vrx::registry {
namespace {

constexpr char16_t kProduct[] = u"LBR";

/// The numbers by which the setting names a language.
struct Language {
  std::uint32_t id;
  const char16_t* locale;
};
constexpr std::array kLanguages{Language{0x0404, u"zh-TW"}, Language{0x0407, u"de-DE"},
                                Language{0x0409, u"en-US"}, Language{0x040A, u"es-ES"},
                                Language{0x040C, u"fr-FR"}, Language{0x0410, u"it-IT"},
                                Language{0x0411, u"ja-JP"}, Language{0x0412, u"ko-KR"},
                                Language{0x0419, u"ru-RU"}, Language{0x0804, u"zh-CN"}};

void ReadDrives(std::uint32_t rootKind) {
  const auto key =
      XpRegistryOpen(SfRegistryKeyPath(kProduct, XpString(), u"Drives"), rootKind, XpRegistryRead);
  if (!key) return;
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    const char16_t name[] = {static_cast<char16_t>(letter), 0};
    if (!key->HasValue(name)) continue;
    const XpString folder = key->GetString(name, XpString());
    platform::SetDriveFolder(letter, std::string(folder.ToNarrow().AsView()));
  }
}

}  // namespace

XpString InstalledLocation() {
  const auto key = XpRegistryOpen(SfRegistryKeyPath(kProduct, XpString(), XpString()), XpRegistryLocalMachine,
                                  XpRegistryRead);
  return key ? key->GetString(u"InstalledLocation", XpString()) : XpString();
}

void ApplySystemSettings() {
  ReadDrives(XpRegistryLocalMachine);
  ReadDrives(XpRegistryCurrentUser);
  XpSetInstalledLocation(&InstalledLocation);
}

XpString InterfaceLanguage() {
  const auto settings = SfRegistryOpenRead(u"Common", u"Settings");
  const std::uint32_t id = settings ? settings->GetDword(u"UILanguageId", 0) : 0;
  for (const Language& language : kLanguages) {
    if (id == language.id) return language.locale;
  }
  if (id != 0) return XpString();  // chosen, but none that is treated differently
  const icu::Locale& system = icu::Locale::getDefault();
  return XpNarrowString(std::string(system.getLanguage()) + "-" + system.getCountry()).ToWide();
}

}  // namespace vrx::registry
