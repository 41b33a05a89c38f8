// What the fonts of this machine, whichever they are, can do for a text.
#include "drawing/FontCheck.h"

#include <gmock/gmock.h>

namespace vrx::drawing {
namespace {

using testing::Contains;

TEST(FontCheckTest, FacesAreInstalledOrHaveAFamilyThatStandsIn) {
  const auto fonts = FontCheck::OfSystem();
  const std::vector<XpString> families = fonts->ListFamilies();
  ASSERT_FALSE(families.empty());
  for (const XpString& face : {families.front(), families.back(), XpString(u"Sans"), XpString(u"monospace"),
                               XpString(), families.front() + u",no such face"}) {
    EXPECT_EQ(fonts->FindFont(face).presence, FontPresence::Installed) << face.ToNarrow().c_str();
  }
  const FontFinding missing = fonts->FindFont(u"No such face of mine");
  EXPECT_EQ(missing.presence, FontPresence::Missing);
  EXPECT_THAT(families, Contains(missing.taken));
}

TEST(FontCheckTest, CharactersThatNoFontHasAreFoundOnceEach) {
  const auto fonts = FontCheck::OfSystem();
  EXPECT_EQ(fonts->MissingCharacters(u"Plain text.\n \u200D\uFE0F", u"Sans"), U"");
  // Nobody assigns the noncharacters at the ends of planes.
  EXPECT_EQ(fonts->MissingCharacters(u"a\U000FFFFEb\U0010FFFE\U000FFFFE", u"Sans"), U"\U000FFFFE\U0010FFFE");
}

}  // namespace
}  // namespace vrx::drawing
