// The looks of the GPS overlay: which there are, their lines, needles and pictures. Where everything stands
// is in the pictures beside these tests.
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

std::unique_ptr<Scenario> Make(std::int32_t type, std::int32_t width = 1920, std::int32_t height = 1080) {
  return MakeTemplateScenario(type, width, height, u"Face");
}

TEST(TemplateTest, OnlyKnownNumbersHaveALook) {
  for (const std::int32_t type : {-1, 0, 6, INT32_MAX}) EXPECT_EQ(Make(type), nullptr) << type;
  for (std::int32_t type = -1; type <= 17; ++type) {
    const auto structure = MakeTemplateStructure(type, 1920, 1080, 0, 0);
    ASSERT_EQ(structure != nullptr, type >= 1 && type <= 15) << type;
    if (structure == nullptr) continue;
    EXPECT_EQ(structure->IsTopBottom(), type == 7) << type;
    EXPECT_EQ(structure->GetTopRect(), (Rect{0, 40, 1200, 240})) << "nothing is drawn there";
  }
  EXPECT_TRUE(Make(5)->HasMeter());
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
