#include "overlay/painter/PainterFontName.h"

#include <array>

#include "foundation/registry/SystemSettings.h"
#include "foundation/text/XpPath.h"

XpString ChoosePainterFontName() { return PainterFontNameFor(vrx::registry::InterfaceLanguage()); }

XpString PainterFontNameFor(const XpString& locale) {
  struct Face {
    const char16_t* locale;
    const char16_t* name;
  };
  constexpr std::array kFaces{Face{u"ja-JP", u"Meiryo"}, Face{u"ko-KR", u"Malgun Gothic"},
                              Face{u"zh-CN", u"Microsoft YaHei"}, Face{u"zh-TW", u"Microsoft JhengHei"}};
  for (const Face& face : kFaces) {
    if (XpCompareNoCase(locale, face.locale) == 0) return face.name;
  }
  return u"Segoe UI";
}
