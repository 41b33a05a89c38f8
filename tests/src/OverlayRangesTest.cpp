// Overlays cover exactly the frames that they are meant for. All numbers are worked out by hand.
#include <limits>

#include <gmock/gmock.h>

#include "src/overlayplan/OverlayRanges.h"

namespace {

using testing::ElementsAre;
using vrx::overlayplan::ComputeTemplateRange;
using vrx::overlayplan::MovieTimes;
using vrx::overlayplan::OverlayPlan;
using vrx::overlayplan::OverlayRange;
using vrx::overlayplan::PlanOverlays;

using Times = std::pair<std::int32_t, std::int32_t>;

/// 20 seconds, 40 ms a frame.
const MovieTimes kMovie{{1, 25}, {500, {}, {{0, 500}}}};

PainterInfo WithCaptions(const std::vector<Times>& captions, const std::string& speedSections = "") {
  std::string text;
  for (const auto& [start, end] : captions) {
    text += "<Caption><LeftPos>" + std::to_string(start) + "</LeftPos><RightPos>" + std::to_string(end) +
            "</RightPos></Caption>";
  }
  PainterInfo info;
  info.captionInfo.valid = true;
  info.captionInfo.captionString = XpNarrowString(text).ToWide();
  info.slowInfoData = XpNarrowString(speedSections).ToWide();
  return info;
}

std::vector<Times> CaptionTimes(const OverlayPlan& plan) {
  std::vector<Times> times;
  for (const CaptionItem& caption : plan.captions) times.emplace_back(caption.startMs, caption.endMs);
  return times;
}

TEST(CaptionRangesTest, RangesEqualTheNumbersWorkedOutByHand) {
  const MovieTimes stills{{1, 25}, {}, true};
  const MovieTimes broadcast{{1001, 30000}, {300300, {}, {{0, 300300}}}};
  // Captions run on the movie's clock, so a clip without overlay before them only lengthens the movie.
  const MovieTimes bareClipFirst{{1, 25}, {500, {250}, {{0, 250}, {250, 750}}}};
  struct Case {
    const char* name;
    const MovieTimes& movie;
    double drawStart;
    std::vector<Times> captions;
    std::vector<Times> adjusted;
    std::vector<OverlayRange> ranges;
  };
  const std::vector<Times> one{{1000, 2000}};
  const Case cases[] = {
      {"the range ends one frame later", kMovie, 0, one, one, {{25, 51}}},
      {"between frames", kMovie, 0, {{1001, 1999}}, {{1001, 1999}}, {{26, 50}}},
      // The second starts one frame before frame 50, the end of the first.
      {"a gap of one frame", kMovie, 0, {one[0], {2040, 3000}}, {one[0], {1960, 3000}}, {{25, 76}}},
      {"three frames", kMovie, 0, {one[0], {2120, 3000}}, {one[0], {2120, 3000}}, {{25, 51}, {53, 76}}},
      // 19,950 ms is frame 498 of 500.
      {"at the clip's end", kMovie, 0, {{19000, 19950}}, {{19000, 19960}}, {{475, 500}}},
      {"past the movie", kMovie, 0, {{19000, 90000}}, {{19000, 90000}}, {{475, 500}}},
      {"stills", stills, 0, {one[0], {2000, 3000}}, {one[0], {1960, 3000}}, {{25, 50}, {49, 75}}},
      {"bare clip first", bareClipFirst, 0, {{25000, 26000}}, {{25000, 26000}}, {{625, 651}}},
      {"drawing starts later", kMovie, 2.0, one, {{3000, 4000}}, {{75, 101}}},
      // Frame 30 of 29.97 fps begins at 1001 ms.
      {"broadcast rate", broadcast, 0, {{1001, 2002}}, {{1001, 2002}}, {{30030, 61061}}},
      {"no frame length", {{0, 0}, {500, {}, {}}}, 0, one, {}, {}},
  };
  for (const Case& c : cases) {
    PainterInfo info = WithCaptions(c.captions);
    info.templateInfo.drawStartTime = c.drawStart;
    const OverlayPlan plan = PlanOverlays(c.movie, info);
    EXPECT_EQ(CaptionTimes(plan), c.adjusted) << c.name;
    EXPECT_EQ(plan.ranges, c.ranges) << c.name;
  }
}

TEST(CaptionRangesTest, CaptionsFollowTheirPictureThroughSpeedSections) {
  // 2 s to 4 s at half speed take 4 s in the movie's record; the section's end is at 2000 + 2000 * 0.5 =
  // 3000.
  const std::string slow = "0,0.5,2,4,0,0|";
  // 1 s forwards, 1 s backwards, 1 s forwards: 2 s more than the first alone.
  const std::string group = "0,1,2,3,0,0|0,-1,3,4,0,0|0,1,4,5,0,0|";
  struct Case {
    const char* name;
    std::string sections;
    Times caption;
    Times adjusted;
    OverlayRange range;
  };
  const Case cases[] = {
      {"slow inside", slow, {2200, 2600}, {2400, 3200}, {60, 81}},
      {"slow before", slow, {4000, 5000}, {5000, 6000}, {125, 151}},
      {"slow covered", slow, {1000, 5000}, {1000, 6000}, {25, 151}},
      // 2500 -> 3000; 3000 + (3000 - 2500) / 0.5 + (5000 - 3000) = 6000.
      {"slow at the start", slow, {2500, 5000}, {3000, 6000}, {75, 151}},
      {"slow at the end", slow, {1000, 2500}, {1000, 3000}, {25, 76}},
      {"fast before", "0,2,2,3,0,0|", {5000, 6000}, {4000, 5000}, {100, 126}},
      {"group before", group, {4000, 5000}, {6000, 7000}, {150, 176}},
      {"group covered", group, {1000, 5000}, {1000, 7000}, {25, 176}},
      {"group inside", group, {2500, 5000}, {2500, 5000}, {63, 126}},
      {"last one backwards", "0,1,0,2,0,0|0,-0.5,2,4,0,0|", {4000, 5000}, {5000, 6000}, {125, 151}},
      // It ends at 0 - 2000; -2000 / -1 + 0 + (1000 + 2000 - 0) = 5000, where the next one begins.
      {"first one backwards", "0,-1,0,2,0,0|0,0.5,5,6,5,5|", {0, 1000}, {0, 5000}, {0, 126}},
      // A section that holds the caption is the last that moves it.
      {"not moved twice", slow + "0,0.5,1,2,0,0|", {2200, 2600}, {2400, 3200}, {60, 81}},
      {"no speed", "0,0,2,4,0,0|", {2200, 2600}, {2200, 2600}, {55, 66}},
  };
  for (const Case& c : cases) {
    const OverlayPlan plan = PlanOverlays(kMovie, WithCaptions({c.caption}, c.sections));
    EXPECT_THAT(CaptionTimes(plan), ElementsAre(c.adjusted)) << c.name;
    EXPECT_THAT(plan.ranges, ElementsAre(c.range)) << c.name;
  }
}

TEST(TemplateRangeTest, OneRangeCoversTheDrawnSpan) {
  struct Case {
    double start, end;
    std::int64_t overlay;
    std::vector<std::int64_t> nonOverlay;
    OverlayRange range;
  };
  for (const Case& c :
       {Case{0, 10, 250, {}, {0, 250}}, Case{0, 10, 249, {}, {0, 249}}, Case{2, 10, 250, {}, {50, 249}},
        Case{2, 10, 250, {75, 9}, {75, 325}}, Case{2.001, 9.999, 250, {}, {51, 248}}}) {
    EXPECT_EQ(ComputeTemplateRange({{1, 25}, {c.overlay, c.nonOverlay, {}}}, c.start, c.end), c.range)
        << c.start << " to " << c.end;
  }
}

TEST(OverlayPlanTest, TemplateAndCaptionsShareOneRange) {
  PainterInfo info = WithCaptions({{1000, 2000}});
  info.tennisMetaInfo.valid = true;
  const OverlayPlan plan = PlanOverlays(kMovie, info);
  EXPECT_THAT(plan.ranges, ElementsAre(OverlayRange{0, 500}));
  EXPECT_EQ(plan.captions.size(), 1u);
  EXPECT_TRUE(PlanOverlays(kMovie, PainterInfo()).ranges.empty());
}

TEST(OverlayPlanTest, HostileNumbersStayInRange) {
  constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
  constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
  PainterInfo info = WithCaptions(
      {{INT32_MIN, INT32_MAX}, {INT32_MAX, INT32_MIN}, {0, 0}},
      "0,1e-38,-3e38,3e38,0,0|0,3e38,3e38,-3e38,0,0|0,-1e-38,0,3e38,0,0|0,5,1,2,0,0|0,0,1,2,0,0|0,-0,1,2,0,"
      "0|");
  for (const VRXTimeInfo& frame : {VRXTimeInfo(1, kMax), VRXTimeInfo(kMax, 1), VRXTimeInfo(kMax, kMax)}) {
    for (const bool hasTemplate : {false, true}) {
      info.tennisMetaInfo.valid = hasTemplate;
      info.templateInfo.drawStartTime = hasTemplate ? 1e308 : -1e308;
      info.templateInfo.drawEndTime = -1e308;
      const OverlayPlan plan =
          PlanOverlays({frame, {kMax, {kMax, kMin, kMin}, {{0, kMin}, {kMax, kMax}}}}, info);
      EXPECT_FALSE(plan.ranges.empty());
    }
  }
}

}  // namespace
