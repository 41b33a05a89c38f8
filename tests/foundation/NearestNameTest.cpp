// Which name a mistyped one is taken for.
#include "foundation/text/NearestName.h"

#include <gtest/gtest.h>

namespace {

using View = std::u16string_view;

TEST(NearestNameTest, SlipsOfTheHandFindTheirNameAndOtherWordsNone) {
  constexpr View kNames[] = {u"Width",     u"Height",    u"StartTime", u"SamplingRate",
                             u"TimeScale", u"TimeValue", u"Box"};
  struct Case {
    View name;
    View nearest;  // empty for none
  };
  for (const Case& c :
       {Case{u"Widht", u"Width"}, Case{u"width", u"Width"}, Case{u"Widt", u"Width"},
        Case{u"Widthh", u"Width"}, Case{u"Wdit", u""}, Case{u"heigth", u"Height"},
        Case{u"Start_Time", u"StartTime"}, Case{u"TimeScael", u"TimeScale"}, Case{u"TimeValeu", u"TimeValue"},
        Case{u"SampleRate", u"SamplingRate"}, Case{u"SxartTixy", u""}, Case{u"Bx", u""}, Case{u"Bax", u"Box"},
        Case{u"SamplRt", u""}, Case{u"Bitrate", u""}, Case{u"W", u""}, Case{u"", u""},
        Case{View(u"Width", 5), u"Width"}}) {
    EXPECT_EQ(vrx::NearestName(c.name, kNames).value_or(u""), c.nearest);
  }
  const std::u16string huge(1'000'000, u'x');
  EXPECT_FALSE(vrx::NearestName(huge, kNames));
  const View hugeNames[] = {huge};
  EXPECT_FALSE(vrx::NearestName(u"Width", hugeNames));
}

}  // namespace
