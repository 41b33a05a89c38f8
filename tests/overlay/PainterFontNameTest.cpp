// Overlays are written in a face that has the letters of the user's language.
#include "overlay/painter/PainterFontName.h"

#include <gtest/gtest.h>

namespace {

TEST(PainterFontNameTest, TheFaceFollowsTheLanguageWhateverItsCase) {
  for (const auto& [locale, face] : {std::pair{u"ja-JP", u"Meiryo"},
                                     {u"KO-kr", u"Malgun Gothic"},
                                     {u"zh-CN", u"Microsoft YaHei"},
                                     {u"zh-TW", u"Microsoft JhengHei"},
                                     {u"en-US", u"Segoe UI"},
                                     {u"ja", u"Segoe UI"},
                                     {u"", u"Segoe UI"}}) {
    EXPECT_EQ(PainterFontNameFor(locale), face) << XpString(locale).ToNarrow().c_str();
  }
}

}  // namespace
