// Where the tennis layouts put things: the stated rectangles, fonts and zones, and the same at other sizes.
#include <gtest/gtest.h>

#include "overlay/tennis/KVSTennisMetaPainterLayoutLight.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutNormal.h"
#include "tests/drawing/PrintGeometry.h"

namespace {

using vrx::drawing::Rect;
using vrx::overlay::FrameSet;
using Layout = KVSTennisMetaPainterLayoutBase;

constexpr std::pair<std::int32_t, std::int32_t> kSizes[] = {{1920, 1080}, {1280, 720},  {1440, 1080},
                                                            {640, 340},   {7680, 4320}, {17, 33}};

std::unique_ptr<Layout> Make(std::int32_t type, std::int32_t width = 1920, std::int32_t height = 1080) {
  return MakeTennisLayout(type, nullptr, width, height, u"Face");
}

Rect Scaled(const Rect& r, std::int32_t width, std::int32_t height) {
  return {r.left * width / 1920, r.top * height / 1080, r.right * width / 1920, r.bottom * height / 1080};
}

TEST(TennisLayoutTest, RectanglesAreTheStatedOnesScaledInEachDirection) {
  struct Row {
    Rect (Layout::*get)() const;
    Rect normal, light;
  };
  const Row rows[] = {
      {&Layout::GetPanelRect, {0, 916, 1920, 1080}, {16, 926, 1096, 1064}},
      {&Layout::GetSwingPanelRect, {0, 916, 450, 1080}, {16, 926, 332, 1056}},
      {&Layout::GetNameRect, {30, 1026, 420, 1064}, {}},
      {&Layout::GetCountRect, {1046, 916, 1306, 1080}, {316, 926, 574, 1056}},
      {&Layout::GetSecondSpeedRect, {1306, 916, 1606, 1080}, {574, 926, 832, 1056}},
      {&Layout::GetThirdSpeedRect, {1606, 916, 1914, 1080}, {832, 926, 1090, 1056}},
      {&Layout::GetSwingRect, {80, 734, 380, 1034}, {16, 780, 316, 1080}},
      {&Layout::GetDateRect, {450, 916, 960, 1080}, {}},
      {&Layout::GetDateLeftRect, {450, 916, 705, 1080}, {}},
      {&Layout::GetDateRightRect, {705, 916, 960, 1080}, {}},
      {&Layout::GetLabelRect, {0, 920, 240, 976}, {0, 930, 214, 978}},
  };
  for (const auto& [width, height] : kSizes) {
    const auto normal = Make(1, width, height), light = Make(2, width, height);
    for (const Row& row : rows) {
      EXPECT_EQ((normal.get()->*row.get)(), Scaled(row.normal, width, height))
          << &row - rows << " at " << width;
      EXPECT_EQ((light.get()->*row.get)(), Scaled(row.light, width, height))
          << &row - rows << " at " << width;
    }
  }
  EXPECT_EQ(Make(1, 1280, 720)->GetCountRect(), (Rect{697, 610, 870, 720}));
  EXPECT_EQ(Make(1, 640, 340)->GetTimeLineRect(), (Rect{150, 325, 320, 335}));
  EXPECT_EQ(Make(1)->GetTimeLineRect(), (Rect{450, 1034, 960, 1064}));
  EXPECT_EQ(Make(1, 1920, 170)->GetTimeLineRect().Height(), 10);
}

TEST(TennisLayoutTest, MarginsColoursAndFlags) {
  const auto normal = Make(1), light = Make(2);
  EXPECT_EQ(std::tuple(normal->GetKind(), normal->HasTimeLine(), normal->HasSeparator(),
                       normal->GetUnitMargin(), normal->GetRollHeight()),
            std::tuple(1, true, false, 16, 90));
  EXPECT_EQ(std::tuple(light->GetKind(), light->HasTimeLine(), light->HasSeparator(), light->GetUnitMargin(),
                       light->GetRollHeight()),
            std::tuple(2, false, true, 8, 60));
  for (const Layout* layout : {normal.get(), light.get()}) {
    EXPECT_EQ(std::tuple(layout->GetValueColor(), layout->GetNameColor(), layout->GetDateColor()),
              std::tuple(0xFFFFFFu, 0xAFAFAFu, 0xC8C8C8u));
  }
  for (const std::int32_t type : {-1, 0, 3, INT32_MAX}) EXPECT_EQ(Make(type), nullptr);
  const auto small = Make(1, 1280, 720);
  EXPECT_EQ(std::tuple(normal->ScaleY(10), small->ScaleX(10), small->ScaleY(-10), small->GetUnitMargin()),
            std::tuple(10, 6, -6, 10));
}

TEST(TennisLayoutTest, FontsScaleWithTheTighterDirection) {
  const auto heights = [](const Layout& layout) {
    return std::vector{layout.GetNameFont().height,  layout.GetSmallNameFont().height,
                       layout.GetLabelFont().height, layout.GetDigitFont().height,
                       layout.GetUnitFont().height,  layout.GetSignFont().height};
  };
  const std::vector normal{-36, -28, -24, -86, -26, -42}, light{-36, -28, -22, -60, -26, -42};
  for (const auto& [width, height, factor] :
       {std::tuple{1920, 1080, 1.0}, {1280, 720, 2.0 / 3}, {1440, 1080, 0.75}, {640, 340, 340 / 1080.0}}) {
    const auto scaled = [factor = factor](std::vector<std::int32_t> values) {
      for (std::int32_t& value : values) value = static_cast<std::int32_t>(value * factor);
      return values;
    };
    EXPECT_EQ(heights(*Make(1, width, height)), scaled(normal)) << width;
    EXPECT_EQ(heights(*Make(2, width, height)), scaled(light)) << width;
  }
  auto layout = Make(1);
  layout->SetOutputSize(1280, 720);
  EXPECT_EQ(layout->GetDigitFont().height, -57);
  EXPECT_EQ(std::tuple(layout->GetLabelFont().weight, layout->GetDigitFont().weight), std::tuple(400, 700));
  EXPECT_EQ(layout->GetUnitFont().face, XpString(u"Face"));
}

TEST(TennisLayoutTest, ZonesAreTheGridOfTheRacketTurnedAboutTheMiddleOfTheBox) {
  struct Example {
    std::int32_t type, zone;
    Rect racket, fore, back;
  };
  for (const Example& e : {Example{1, 0, {54, 130, 144, 220}, {86, 158, 176, 248}, {51, 86, 141, 176}},
                           Example{1, 12, {104, 105, 194, 195}, {104, 105, 194, 195}, {104, 104, 194, 194}},
                           Example{1, 25, {154, 55, 244, 145}, {104, 34, 194, 124}, {175, 104, 265, 194}},
                           Example{2, 0, {65, 95, 155, 185}, {126, 69, 216, 159}, {140, 126, 230, 216}},
                           Example{2, 12, {105, 75, 195, 165}, {83, 83, 173, 173}, {126, 83, 216, 173}},
                           Example{2, 25, {145, 35, 235, 125}, {27, 83, 117, 173}, {126, 27, 216, 117}}}) {
    const auto layout = Make(e.type);
    EXPECT_EQ(layout->GetZoneRect(FrameSet::Racket, e.zone), e.racket) << e.type << " " << e.zone;
    EXPECT_EQ(layout->GetZoneRect(FrameSet::Fore, e.zone), e.fore) << e.type << " " << e.zone;
    EXPECT_EQ(layout->GetZoneRect(FrameSet::Back, e.zone), e.back) << e.type << " " << e.zone;
  }
  // Six rows by five columns without the corners, and nothing beyond.
  for (const std::int32_t type : {1, 2}) {
    const auto layout = Make(type, 960, 540);
    const std::int32_t step = type == 1 ? 25 : 20;
    const auto at = [&](std::int32_t zone) { return Make(type)->GetZoneRect(FrameSet::Racket, zone); };
    EXPECT_EQ(at(4).left, at(3).left + step);
    EXPECT_EQ(at(4).top, at(0).top + step);  // the inner columns begin a row lower
    EXPECT_EQ(at(1).top, at(0).top - step);
    EXPECT_EQ(layout->GetZoneRect(FrameSet::Racket, 7), Scaled(at(7), 960, 540));
    for (const std::int32_t zone : {-1, 26, INT32_MIN, INT32_MAX}) {
      for (const FrameSet set : {FrameSet::Racket, FrameSet::Fore, FrameSet::Back}) {
        EXPECT_EQ(layout->GetZoneRect(set, zone), Rect{});
      }
    }
  }
}

TEST(TennisLayoutTest, MarkersRunFromTheEndOfTheTimeLineToItsStart) {
  const auto layout = Make(1);
  EXPECT_EQ(layout->GetTimeMarkerRect(0, 10000, 14), (Rect{450, 1035, 478, 1063}));
  EXPECT_EQ(layout->GetTimeMarkerRect(10000, 10000, 10), (Rect{936, 1039, 956, 1059}));
  EXPECT_EQ(layout->GetTimeMarkerRect(2500, 10000, 10), (Rect{574, 1039, 594, 1059}));
  EXPECT_EQ(layout->GetTimeMarkerRect(2500, 0, 10), Rect{});
  EXPECT_EQ(Make(1, 960, 540)->GetTimeMarkerRect(0, 10000, 14), (Rect{225, 517, 239, 531}));
}

TEST(TennisLayoutTest, PicturesAreEmptyWithoutTheirSet) {
  const auto without = Make(1);
  EXPECT_EQ(without->GetRacketFrameCount(), 0);
  EXPECT_FALSE(without->GetShade() || without->GetBlue() || without->GetYellow());
  auto set = std::make_shared<TennisMetaResource>();
  set->backFrames = {PainterPicture(new XpPixmap32), PainterPicture(new XpPixmap32)};
  const auto with = MakeTennisLayout(2, set, 100, 100, u"");
  EXPECT_EQ(with->GetFrame(FrameSet::Back, 1), set->backFrames[1]);
  for (const std::int32_t index : {-1, 2, INT32_MAX})
    EXPECT_FALSE(with->GetFrame(FrameSet::Back, index)) << index;
  EXPECT_FALSE(with->GetFrame(FrameSet::Fore, 0));
}

}  // namespace
