// What the texts and the needle of the GPS overlay say at a moment, where the texts stand, and how the clips
// of a movie follow each other.
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <gmock/gmock.h>

#include "drawing/BoxTextRenderer.h"
#include "gps/painter/GpsClipTimes.h"
#include "gps/painter/GpsMeter.h"
#include "gps/painter/GpsTextFields.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "tests/drawing/Sheet.h"
#include "tests/foundation/FolderTest.h"
#include "tests/gps/GpsLogText.h"
#include "tests/overlay/ReferencePicture.h"

namespace {

using namespace vrx::gps;
using testing::ElementsAre;

GpsMoment Logged(double knots) {
  GpsMoment moment;
  moment.point = {.time = After(0).GetValue(), .speed = knots, .status = 1};
  moment.hasFix = true;
  return moment;
}

TEST(GpsReadoutsTest, SpeedIsShownInTheUnitOrNotAtAll) {
  const struct {
    double knots;
    std::int32_t unit;
    const char16_t* text;
  } cases[] = {{10, 0, u"18.5"},  {10, 1, u"11.5"},  {10, 2, u"10.0"}, {0.05, 0, u"0.1"},
               {0.05, 2, u"0.1"}, {0.04, 2, u"0.0"}, {0, 0, u"0.0"},   {-1, 0, u"--"},
               {10, -1, u"0.0"},  {10, 3, u"0.0"},   {-1, 9, u"--"},   {std::nan(""), 2, u"--"}};
  for (const auto& c : cases) {
    EXPECT_EQ(MakeGpsReadouts(Logged(c.knots), {.unit = c.unit}).speed, XpString(c.text))
        << c.knots << " in unit " << c.unit;
  }
  GpsMoment stale = Logged(12);
  stale.hasFix = false;
  EXPECT_EQ(MakeGpsReadouts(stale, {}).speed, XpString(u"--"));
  EXPECT_TRUE(HasFix({.status = 0, .kind = GPSPointHeld}));
  EXPECT_TRUE(HasFix({.status = 1, .kind = GPSPointInterpolated}));
  EXPECT_FALSE(HasFix({.status = 0, .kind = GPSPointLogged}));
}

TEST(GpsReadoutsTest, TimesAndDistancesOfAMoment) {
  setenv("LC_ALL", "C", 1);  // of the date
  const GpsUnitTexts units{.unit = 0, .speed = u"km/h", .distance = u"km"};
  const auto read = [&](auto change) {
    GpsMoment moment = Logged(1);
    change(moment);
    return MakeGpsReadouts(moment, units);
  };
  const struct {
    std::int64_t ms;
    const char16_t* text;
  } elapsed[] = {{0, u"00:00:00"},
                 {59'999, u"00:00:59"},
                 {3'600'000, u"01:00:00"},
                 {360'000'000, u"100:00:00"},
                 {-5000, u"00:00:00"}};
  for (const auto& c : elapsed) {
    EXPECT_EQ(read([&](GpsMoment& m) { m.elapsedMs = c.ms; }).elapsed, XpString(c.text));
    EXPECT_EQ(read([&](GpsMoment& m) { m.totalSeconds = static_cast<double>(c.ms) / 1000; }).total,
              XpString(c.text));
  }
  const struct {
    double value;
    const char16_t* text;
  } averages[] = {{0, u"0.0 km/h"}, {-0.1, u"-- km/h"}, {12.35, u"12.4 km/h"}, {12.34, u"12.3 km/h"}};
  for (const auto& c : averages) {
    EXPECT_EQ(read([&](GpsMoment& m) { m.averageSpeed = c.value; }).average, XpString(c.text));
  }
  EXPECT_EQ(read([](GpsMoment& m) { m.point.distance = 0.949; }).distance, XpString(u"0.9 km"));
  const struct {
    std::int32_t minutes;
    const char *date, *clock;
  } zones[] = {{0, "5/4/2018", "10:00:00 AM"},
               {330, "5/4/2018", "3:30:00 PM"},
               {840, "5/5/2018", "12:00:00 AM"},
               {-660, "5/3/2018", "11:00:00 PM"},
               {65536 + 60, "5/4/2018", "11:00:00 AM"}};
  for (const auto& c : zones) {
    const GpsReadouts readouts = read([&](GpsMoment& m) { m.timeZoneMinutes = c.minutes; });
    EXPECT_STREQ(readouts.date.ToNarrow().c_str(), c.date) << c.minutes;
    EXPECT_STREQ(readouts.clock.ToNarrow().c_str(), c.clock) << c.minutes;
  }
}

LogDataEntry Lasting(std::int32_t videoId, double duration, double start = 0, double end = 0) {
  return {.videoId = videoId, .startTime = start, .endTime = end, .duration = duration};
}

TEST(GpsClipTimesTest, ClipsFollowEachOtherWithAMillisecondBetween) {
  const std::vector<LogDataEntry> clips = {Lasting(4, 10.4, 1, 3.5), Lasting(2, 5.2, 5, 4),
                                           Lasting(9, 8, 0, 8)};
  const auto at = [&](bool whole, std::int64_t second) { return FindClipAt(clips, whole, second); };
  EXPECT_THAT((std::vector{at(true, 0), at(true, 9), at(true, 10), at(true, 14), at(true, 15), at(true, 22),
                           at(true, 23)}),
              ElementsAre(0, 0, 1, 1, 2, 2, 3));
  // The second clip shows nothing.
  EXPECT_THAT((std::vector{at(false, 1), at(false, 2), at(false, 9), at(false, 10)}),
              ElementsAre(0, 2, 2, 3));
  const struct {
    std::int32_t videoId;
    std::int64_t ms;
    std::size_t index;
    double movieMs;
  } places[] = {{4, 0, 0, 0},         {4, 10'400, 0, 10'400}, {4, 99'000, 0, 10'400}, {2, 0, 1, 10'401},
                {2, 5199, 1, 15'600}, {2, 5200, 1, 15'600},   {9, 1000, 2, 16'602},   {7, 1000, 3, 23'600}};
  for (const auto& c : places) {
    const GpsPlace place = FindPlace(clips, true, c.videoId, c.ms);
    EXPECT_EQ(place.clipIndex, c.index) << c.videoId << " at " << c.ms;
    EXPECT_NEAR(place.movieMs, c.movieMs, 1e-6) << c.videoId << " at " << c.ms;
  }
  EXPECT_NEAR(FindPlace(clips, false, 9, 1000).movieMs, 2502, 1e-6);  // 2.5 s, and one less for the second
}

TEST(GpsMeterTest, SlowWalksKeepAPartOfTheScale) {
  const auto pictures = std::make_shared<TemplateResource>();
  for (int i = 0; i < 7; ++i) pictures->meterFrames.emplace_back(MakeSolidPixmap(0, 0, 0, 0).release());
  const auto scenario = MakeTemplateScenario(kScenarioWalkSmall, 1920, 1080, u"");
  scenario->SetResource(pictures);
  const struct {
    double knots, most;
    std::int32_t unit;
    std::size_t frame;
  } cases[] = {{3, 3, 0, 2}, {3, 3, 1, 3},   {3, 3, 2, 4},   {4, 4, 2, 6},  {4.9, 4.9, 2, 6}, {4, 5, 2, 4},
               {4, 5, 1, 4}, {4, 7.9, 0, 3}, {6, 7.9, 1, 4}, {4, 12, 0, 2}, {1, 2, 3, 3},     {1, 2, -1, 3}};
  for (const auto& c : cases) {
    const KVUGPSInfo point{.speed = c.knots, .status = 1};
    EXPECT_EQ(NeedleAt(point, c.most, c.unit, *scenario), pictures->meterFrames[c.frame])
        << c.knots << " of " << c.most << " in unit " << c.unit;
  }
  const auto frame = [&](std::int32_t kind) {
    return NeedleAt({.speed = 12, .status = 0, .kind = kind}, 12, 2, *scenario);
  };
  EXPECT_EQ(frame(GPSPointLogged), pictures->meterFrames[0]);
  EXPECT_EQ(frame(GPSPointHeld), pictures->meterFrames[6]);
  EXPECT_FALSE(NeedleAt({.status = 1}, 1, 0, *MakeTemplateScenario(kScenarioSpeedSmall, 9, 9, u"")));
}

TEST(GpsTextFieldsTest, TextsStandWhereTheyDid) {
  const GpsLabels labels{u"Speed", u"Elapsed", u"Total", u"Average", u"Distance", u"Track"};
  GpsReadouts says{u"123.4", u"05/04/18", u"10:00:00", u"00:00:07", u"01:02:03", u"12.3 km/h", u"4.5 km"};
  constexpr std::int32_t kWidth = 480, kHeight = 240;  // not in the shape of the layouts
  vrx::drawing::Sheet sheet(4 * kWidth, 6 * kHeight);
  vrx::drawing::BoxTextRenderer boxes;
  vrx::overlay::PictureRenditions renditions;
  std::int32_t row = 0;
  for (const std::int32_t layout : {1, 7}) {
    for (const std::int32_t scenario : {1, 2, 3, 4}) {
      KorvoTemplate look{MakeTemplateScenario(scenario, kWidth, kHeight, u""),
                         MakeTemplateStructure(layout, kWidth, kHeight, kWidth, kHeight)};
      // A long date moves the clock for good.
      std::int32_t drawn = 0;
      for (const char16_t* date : {u"05/04/18", u"Wednesday, 5 May 2018", u"05/04/18"}) {
        says.date = date;
        vrx::drawing::Sheet frame(kWidth, kHeight);
        vrx::overlay::PainterSurface surface(frame.pixmap, boxes, renditions);
        DrawGpsTextFields(look, labels, says, u"km/h", surface);
        for (std::int32_t y = 0; y < kHeight; ++y) {
          std::memcpy(sheet.pixmap.GetPlane(0)->Row((row + drawn) * kHeight + y) +
                          std::ptrdiff_t{scenario - 1} * kWidth * 4,
                      frame.pixmap.GetPlane(0)->Row(y), std::size_t{kWidth} * 4);
        }
        ++drawn;
      }
    }
    row += 3;
  }
  vrx::test_support::ExpectReference(sheet.pixmap, "gps-texts");
}

}  // namespace
