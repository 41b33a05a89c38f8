// The looks and places of the GPS overlay: the stated rectangles, fonts, colours and needles, and the same at
// other sizes.
#include <gtest/gtest.h>
#include <cmath>
#include <limits>

#include "gps/templates/KorvoTemplate.h"
#include "tests/drawing/PrintGeometry.h"

namespace {

using vrx::drawing::Font;
using vrx::drawing::Rect;
using vrx::gps::MakeTemplateScenario;
using vrx::gps::MakeTemplateStructure;
using Scenario = KorvoTemplateScenario;
using Structure = KorvoTemplateStructure;

constexpr std::pair<std::int32_t, std::int32_t> kSizes[] = {
    {1920, 1080}, {1280, 720}, {960, 540}, {1920, 800}, {640, 360}};

Rect Scaled(const Rect& r, std::int32_t width, std::int32_t height) {
  return {r.left * width / 1920, r.top * height / 1080, r.right * width / 1920, r.bottom * height / 1080};
}

std::unique_ptr<Scenario> Make(std::int32_t type, std::int32_t width = 1920, std::int32_t height = 1080) {
  return MakeTemplateScenario(type, width, height, u"Face");
}

TEST(TemplateTest, SpeedRectanglesAreTheStatedOnesScaledInEachDirection) {
  struct Row {
    std::int32_t type;
    Rect label, value, unit, meter, log;
  };
  const Row rows[] = {
      {1, {108, 937, 266, 967}, {108, 972, 278, 1046}, {278, 999, 385, 1046}, {31, 826, 431, 1026}, {}},
      {2, {140, 901, 314, 931}, {140, 968, 314, 1020}, {314, 971, 419, 1010}, {61, 811, 271, 1071}, {}},
      {3, {114, 928, 288, 958}, {116, 1005, 304, 1065}, {304, 1016, 436, 1055}, {46, 928, 70, 1060}, {}},
      {4,
       {20, 840, 178, 890},
       {108, 875, 278, 925},
       {278, 860, 385, 910},
       {31, 826, 431, 1026},
       {8, 899, 430, 1074}},
      {5, {}, {}, {}, {}, {}},
  };
  for (const Row& row : rows) {
    const auto scenario = Make(row.type);
    for (const auto& [width, height] : kSizes) {
      SCOPED_TRACE(std::to_string(row.type) + " at " + std::to_string(width));
      scenario->SetSize(width, height);
      EXPECT_EQ(scenario->GetSpeedLabelRect(), Scaled(row.label, width, height));
      EXPECT_EQ(scenario->GetSpeedValueRect(), Scaled(row.value, width, height));
      EXPECT_EQ(scenario->GetSpeedUnitRect(), Scaled(row.unit, width, height));
      EXPECT_EQ(scenario->GetMeterRect(), Scaled(row.meter, width, height));
      EXPECT_EQ(scenario->GetSpeedLogRect(true), Scaled(row.log, width, height));
      EXPECT_EQ(scenario->GetSpeedLogRect(false), row.log);
    }
  }
  EXPECT_EQ(Make(1, 960, 540)->GetSpeedValueRect(), (Rect{54, 486, 139, 523}));
  EXPECT_EQ(Make(4, 1920, 800)->GetSpeedLogRect(true), (Rect{8, 665, 430, 795}));
  EXPECT_EQ(Make(4, 640, 360)->GetSpeedLogRect(true), (Rect{2, 299, 143, 358}));
}

TEST(TemplateTest, FontsScaleWithTheTighterDirection) {
  using Heights = std::array<std::int32_t, 7>;
  const auto heights = [](const Scenario& s) {
    return Heights{s.GetTitleFont().height,    s.GetTrackFont().height,      s.GetRowLabelFont().height,
                   s.GetRowValueFont().height, s.GetSpeedLabelFont().height, s.GetSpeedValueFont().height,
                   s.GetSpeedUnitFont().height};
  };
  // Rows as in kSizes; value and unit of the speed are those of each scenario.
  const std::array<std::int32_t, 5> common[] = {{-28, -18, -24, -36, -24},
                                                {-18, -12, -16, -24, -16},
                                                {-14, -9, -12, -18, -12},
                                                {-20, -13, -17, -26, -17},
                                                {-9, -6, -8, -12, -8}};
  const std::pair<std::int32_t, std::int32_t> speeds[][5] = {
      {{-60, -40}, {-40, -26}, {-30, -20}, {-44, -29}, {-20, -13}},
      {{-70, -30}, {-46, -20}, {-35, -15}, {-51, -22}, {-23, -10}},
      {{-80, -38}, {-53, -25}, {-40, -19}, {-59, -28}, {-26, -12}},
      {{-60, -24}, {-40, -16}, {-30, -12}, {-44, -17}, {-20, -8}}};
  for (std::int32_t type = 1; type <= 4; ++type) {
    const auto scenario = Make(type);
    for (std::size_t i = 0; i < std::size(kSizes); ++i) {
      const auto& c = common[i];
      const auto& [value, unit] = speeds[type - 1][i];
      scenario->SetSize(kSizes[i].first, kSizes[i].second);
      EXPECT_EQ(heights(*scenario), (Heights{c[0], c[1], c[2], c[3], c[4], value, unit}))
          << type << " at size " << i;
    }
    EXPECT_EQ(scenario->GetTitleFont(), (Font{.face = u"Face", .height = -9}));
    EXPECT_EQ(scenario->GetTrackFont(), (Font{.face = u"Face", .height = -6}));
    EXPECT_EQ(scenario->GetRowLabelFont(), (Font{.face = u"Face", .height = -8}));
    EXPECT_EQ(scenario->GetSpeedLabelFont(), (Font{.face = u"Face", .height = -8}));
  }
  const auto weights = [](const Scenario& scenario) {
    std::vector<std::pair<int, bool>> all;
    for (const Font* font :
         {&scenario.GetRowValueFont(), &scenario.GetSpeedValueFont(), &scenario.GetSpeedUnitFont()})
      all.emplace_back(font->weight, font->italic);
    return all;
  };
  using Weights = std::vector<std::pair<int, bool>>;
  const Weights boldItalic{{700, true}, {700, true}, {700, true}};
  EXPECT_EQ(weights(*Make(1)), boldItalic);
  EXPECT_EQ(weights(*Make(4)), boldItalic);
  EXPECT_EQ(weights(*Make(2)), (Weights{{400, false}, {700, false}, {400, false}}));
  EXPECT_EQ(weights(*Make(3)), (Weights{{400, false}, {400, false}, {400, false}}));
  EXPECT_EQ(Make(5)->GetSpeedValueFont(), Font());
}

TEST(TemplateTest, LinesScaleWithTheWiderDirectionAndStayVisible) {
  const auto widths = [](const Scenario& s) {
    return std::tuple(s.GetAheadLineWidth(), s.GetWalkedLineWidth(), s.GetShadowLineWidth());
  };
  const std::tuple<int, int, int> expected[] = {{6, 6, 10}, {4, 4, 6}, {3, 3, 5}, {6, 6, 10}, {2, 2, 3}};
  for (std::size_t i = 0; i < std::size(kSizes); ++i) {
    for (const std::int32_t type : {1, 2, 3, 4})
      EXPECT_EQ(widths(*Make(type, kSizes[i].first, kSizes[i].second)), expected[i]) << type << ", " << i;
    EXPECT_EQ(widths(*Make(5, kSizes[i].first, kSizes[i].second)), std::tuple(1, 1, 1));
  }
  for (const std::int32_t none : {0, -1920}) EXPECT_EQ(widths(*Make(1, none, none)), std::tuple(1, 1, 1));
}

TEST(TemplateTest, ColoursAndFlags) {
  const auto colors = [](const Scenario& s) {
    return std::vector{s.GetBaseColor(),       s.GetTitleColor(),    s.GetTrackColor(),
                       s.GetRowLabelColor(),   s.GetRowValueColor(), s.GetSpeedLabelColor(),
                       s.GetSpeedValueColor(), s.GetShadowColor(),   s.GetWalkedColor(0),
                       s.GetWalkedColor(6),    s.GetAheadColor(0),   s.GetAheadColor(6),
                       s.GetWalkedColor(-1),   s.GetWalkedColor(7),  s.GetAheadColor(7)};
  };
  for (const std::int32_t type : {1, 2, 3, 4}) {
    EXPECT_EQ(colors(*Make(type)),
              (std::vector{0xFEFEFEFEu, 0xFEB3B3B3u, 0xFE2789EEu, 0xFEB3B3B3u, 0xFEFEFEFEu, 0xFECCCCCCu,
                           0xFEFEFEFEu, 0x66333333u, 0xFE0073FFu, 0xFE0073FFu, 0xFEFEFEFEu, 0xFEFEFEFEu, 0u,
                           0u, 0u}));
  }
  std::vector<std::uint32_t> none(15);
  none[0] = 0xFEFEFEFE;
  EXPECT_EQ(colors(*Make(5)), none);

  const bool expected[][3] = {{true, false, true},
                              {true, false, false},
                              {true, false, false},
                              {false, true, true},
                              {true, false, false}};
  for (std::int32_t type = 1; type <= 5; ++type) {
    const auto s = Make(type);
    const bool* flags = expected[type - 1];
    EXPECT_EQ(
        std::tuple(s->GetType(), s->HasMeter(), s->HasSpeedLog(), s->HasTextShadow(), s->ShowsDateLabels()),
        std::tuple(type, flags[0], flags[1], flags[2], false));
  }
  for (const std::int32_t type : {-1, 0, 6, INT32_MAX}) EXPECT_EQ(Make(type), nullptr);
}

TEST(TemplateTest, TheNeedleFollowsTheSpeedAndStaysInItsFrames) {
  const auto resource = std::make_shared<TemplateResource>();
  for (int i = 0; i < 61; ++i) resource->meterFrames.emplace_back(new XpPixmap32);
  const auto frameOf = [&](std::int32_t type, double speed, double scale) {
    const std::size_t count = type == 2 ? 31 : type == 3 ? 7 : 61;
    const auto own = std::make_shared<TemplateResource>();
    own->meterFrames.assign(resource->meterFrames.begin(),
                            resource->meterFrames.begin() + static_cast<std::ptrdiff_t>(count));
    const auto scenario = Make(type);
    scenario->SetResource(own);
    const PainterPicture frame = scenario->GetMeterFrame(speed, scale);
    for (std::size_t i = 0; i < count; ++i) {
      if (own->meterFrames[i] == frame) return static_cast<int>(i);
    }
    return -1;
  };
  struct Row {
    std::int32_t type;
    double speed, scale;
    int frame;
  };
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN(), kInf = HUGE_VAL;
  for (const Row& row :
       {Row{1, 50, 50, 50},  Row{1, 0, 50, 0},     Row{1, 9.9, 50, 9}, Row{1, 70, 50, 60},
        Row{2, 30, 30, 30},  Row{2, 29.9, 30, 29}, Row{2, 0, 30, 0},   Row{3, 8, 8, 6},
        Row{3, 9, 8, 6},     Row{3, 7.9, 8, 5},    Row{4, 50, 50, 50}, Row{1, 5, 0, 0},
        Row{2, 5, 0, 0},     Row{3, 5, -1, 0},     Row{1, 5, -10, 0},  Row{1, -1, 50, 0},
        Row{2, kNan, 50, 0}, Row{2, 5, kNan, 0},   Row{3, kInf, 8, 6}, Row{3, 1e300, 1e-300, 6},
        Row{5, 1, 1, -1}}) {
    EXPECT_EQ(frameOf(row.type, row.speed, row.scale), row.frame)
        << row.type << ": " << row.speed << " of " << row.scale;
  }
}

TEST(TemplateTest, PicturesAreThoseOfTheResource) {
  const std::pair<PainterPicture TemplateResource::*, PainterPicture (Scenario::*)() const> pictures[] = {
      {&TemplateResource::meterBase, &Scenario::GetMeterBase},
      {&TemplateResource::meterBaseVertical, &Scenario::GetMeterBaseVertical},
      {&TemplateResource::gpsIcon, &Scenario::GetGpsIcon},
      {&TemplateResource::gpsNoPositionIcon, &Scenario::GetGpsNoPositionIcon},
      {&TemplateResource::startMarker, &Scenario::GetStartMarker},
      {&TemplateResource::goalMarker, &Scenario::GetGoalMarker},
      {&TemplateResource::startText, &Scenario::GetStartText},
      {&TemplateResource::goalText, &Scenario::GetGoalText},
      {&TemplateResource::positionMarker, &Scenario::GetPositionMarker},
      {&TemplateResource::speedLogScale1, &Scenario::GetSpeedLogScale1},
      {&TemplateResource::speedLogScale2, &Scenario::GetSpeedLogScale2}};
  const auto scenario = Make(4);
  const auto resource = std::make_shared<TemplateResource>();
  for (const auto& [field, get] : pictures) {
    EXPECT_FALSE((scenario.get()->*get)());
    (*resource).*field = PainterPicture(new XpPixmap32);
  }
  scenario->SetResource(resource);
  for (const auto& [field, get] : pictures) EXPECT_EQ((scenario.get()->*get)(), (*resource).*field);
  EXPECT_FALSE(scenario->GetMeterFrame(5, 10));
}

TEST(TemplateTest, PanelsAreTheStatedOnesScaledInEachDirection) {
  struct Row {
    Rect (Structure::*get)() const;
    Rect normal, stacked;
  };
  const Row rows[] = {
      {&Structure::GetTopRect, {0, 40, 1200, 240}, {0, 40, 1200, 240}},
      {&Structure::GetBaseRect, {0, 763, 1920, 1080}, {0, 763, 500, 1080}},
      {&Structure::GetMapRect, {1440, 560, 1920, 960}, {1520, 0, 1920, 440}},
      {&Structure::GetElapsedRect, {786, 960, 1106, 1080}, {1520, 810, 1920, 945}},
      {&Structure::GetTotalRect, {466, 960, 786, 1080}, {1520, 945, 1920, 1080}},
      {&Structure::GetClockRect, {766, 910, 926, 960}, {1520, 675, 1920, 810}},
      {&Structure::GetAverageRect, {1106, 960, 1426, 1080}, {0, 478, 400, 613}},
      {&Structure::GetDistanceRect, {1426, 960, 1746, 1080}, {0, 343, 400, 478}},
      {&Structure::GetDateRect, {506, 910, 766, 960}, {1520, 540, 1920, 675}},
  };
  for (std::int32_t type = -1; type <= 17; ++type) {
    const auto structure = MakeTemplateStructure(type, 1, 1, 960, 540);
    ASSERT_EQ(structure != nullptr, type >= 1 && type <= 15) << type;
    if (structure == nullptr) continue;
    EXPECT_EQ(structure->IsTopBottom(), type == 7);
    EXPECT_EQ(std::pair(structure->GetVideoWidth(), structure->GetVideoHeight()), std::pair(960, 540));
    for (const auto& [width, height] : kSizes) {
      structure->SetSize(width, height);
      for (const Row& row : rows) {
        EXPECT_EQ((structure.get()->*row.get)(), Scaled(type == 7 ? row.stacked : row.normal, width, height))
            << type << ", " << &row - rows << " at " << width;
      }
    }
  }
  EXPECT_EQ(MakeTemplateStructure(1, 1280, 720, 0, 0)->GetElapsedRect(), (Rect{524, 640, 737, 720}));
}

TEST(TemplateTest, DateAndClockGrowByOutputPixels) {
  const auto structure = MakeTemplateStructure(1, 960, 540, 0, 0);
  structure->GrowDateRect(0, 30, 0, 0);
  structure->GrowClockRect(-5, 0, 0, 0);
  structure->GrowClockRect(20, 30, 1, 2);
  structure->SetSize(1920, 1080);
  EXPECT_EQ(structure->GetDateRect(), (Rect{506, 910, 826, 960}));
  EXPECT_EQ(structure->GetClockRect(), (Rect{806, 912, 986, 964}));
  structure->SetSize(0, -1);
  structure->GrowClockRect(7, 7, 7, 7);
  structure->SetSize(1920, 1080);
  EXPECT_EQ(structure->GetClockRect(), (Rect{806, 912, 986, 964}));
  structure->GrowDateRect(INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX);
  EXPECT_EQ(structure->GetDateRect().right, INT32_MAX);
}

}  // namespace
