// Overlays cover exactly the frames that they are meant for. All numbers are worked out by hand.
#include <limits>

#include <gmock/gmock.h>

#include "src/overlay/OverlayRanges.h"

namespace {

using testing::ElementsAre;
using vrx::overlay::ComputeTemplateRange;
using vrx::overlay::OverlayRange;
using vrx::overlay::PlanOverlays;

using Times = std::pair<std::int32_t, std::int32_t>;

XpString CaptionText(const std::vector<Times>& captions) {
  std::string text;
  for (const auto& [start, end] : captions) {
    text += "<Caption><LeftPos>" + std::to_string(start) + "</LeftPos><RightPos>" + std::to_string(end) +
            "</RightPos></Caption>";
  }
  return XpNarrowString(text).ToWide();
}

struct RangeCase {
  const char* name;
  std::vector<Times> captions;
  std::string slow;
  VRXTimeInfo frame{1, 25};
  std::vector<std::pair<std::int64_t, std::int64_t>> clipRanges{{0, 500}};
  std::int64_t overlayDuration = 500;
  std::vector<std::int64_t> nonOverlay{};
  bool hasBaseband = false;
  double drawStart = 0.0;
  std::vector<Times> adjusted{};
  std::vector<OverlayRange> ranges{};
};

class CaptionRangesTest : public testing::TestWithParam<RangeCase> {};

TEST_P(CaptionRangesTest, EqualTheNumbersWorkedOutByHand) {
  const RangeCase& c = GetParam();
  PainterInfo info;
  info.captionInfo.valid = true;
  info.captionInfo.captionString = CaptionText(c.captions);
  info.slowInfoData = XpNarrowString(c.slow).ToWide();
  info.templateInfo.drawStartTime = c.drawStart;
  const auto plan =
      PlanOverlays({c.frame, {c.overlayDuration, c.nonOverlay, c.clipRanges}, c.hasBaseband}, info);
  std::vector<Times> adjusted;
  for (const CaptionItem& caption : plan.captions) adjusted.emplace_back(caption.startMs, caption.endMs);
  EXPECT_EQ(adjusted, c.adjusted);
  EXPECT_THAT(plan.ranges, testing::ElementsAreArray(c.ranges));
}

INSTANTIATE_TEST_SUITE_P(
    Projects, CaptionRangesTest,
    testing::Values(
        // 40 ms a frame: the range ends one frame behind the caption's end.
        RangeCase{.name = "OneCaption",
                  .captions = {{1000, 2000}},
                  .adjusted = {{1000, 2000}},
                  .ranges = {{25, 51}}},
        RangeCase{
            .name = "OddTimes", .captions = {{1001, 1999}}, .adjusted = {{1001, 1999}}, .ranges = {{26, 50}}},
        // The gap of one frame closes: the second starts one frame before frame 50, the end of the first.
        RangeCase{.name = "CaptionsCloserThanTwoFrames",
                  .captions = {{1000, 2000}, {2040, 3000}},
                  .adjusted = {{1000, 2000}, {1960, 3000}},
                  .ranges = {{25, 76}}},
        RangeCase{.name = "CaptionsThreeFramesApart",
                  .captions = {{1000, 2000}, {2120, 3000}},
                  .adjusted = {{1000, 2000}, {2120, 3000}},
                  .ranges = {{25, 51}, {53, 76}}},
        // 19,950 ms is frame 498 of 500.
        RangeCase{.name = "AtAClipEnd",
                  .captions = {{19000, 19950}},
                  .adjusted = {{19000, 19960}},
                  .ranges = {{475, 500}}},
        RangeCase{.name = "BehindTheMovie",
                  .captions = {{19000, 90000}},
                  .adjusted = {{19000, 90000}},
                  .ranges = {{475, 500}}},
        RangeCase{.name = "StillImages",
                  .captions = {{1000, 2000}, {2000, 3000}},
                  .clipRanges = {},
                  .overlayDuration = 0,
                  .hasBaseband = true,
                  .adjusted = {{1000, 2000}, {1960, 3000}},
                  .ranges = {{25, 50}, {49, 75}}},
        // Captions run on the movie's clock, so a clip without overlay before them only lengthens the movie.
        RangeCase{.name = "ClipWithoutOverlayFirst",
                  .captions = {{25000, 26000}},
                  .clipRanges = {{0, 250}, {250, 750}},
                  .nonOverlay = {250},
                  .adjusted = {{25000, 26000}},
                  .ranges = {{625, 651}}},
        RangeCase{.name = "DrawStartMovesAll",
                  .captions = {{1000, 2000}},
                  .drawStart = 2.0,
                  .adjusted = {{3000, 4000}},
                  .ranges = {{75, 101}}},
        // 2 s to 4 s at half speed take 4 s in the movie's record; T1 = 2000 + 2000 * 0.5 = 3000.
        RangeCase{.name = "SlowSectionInside",
                  .captions = {{2200, 2600}},
                  .slow = "0,0.5,2,4,0,0|",
                  .adjusted = {{2400, 3200}},
                  .ranges = {{60, 81}}},
        RangeCase{.name = "SlowSectionBefore",
                  .captions = {{4000, 5000}},
                  .slow = "0,0.5,2,4,0,0|",
                  .adjusted = {{5000, 6000}},
                  .ranges = {{125, 151}}},
        RangeCase{.name = "SlowSectionCovered",
                  .captions = {{1000, 5000}},
                  .slow = "0,0.5,2,4,0,0|",
                  .adjusted = {{1000, 6000}},
                  .ranges = {{25, 151}}},
        // s = 2500 -> 3000; e = 3000 + (3000 - 2500) / 0.5 + (5000 - 3000) = 6000.
        RangeCase{.name = "SlowSectionAtTheStart",
                  .captions = {{2500, 5000}},
                  .slow = "0,0.5,2,4,0,0|",
                  .adjusted = {{3000, 6000}},
                  .ranges = {{75, 151}}},
        RangeCase{.name = "SlowSectionAtTheEnd",
                  .captions = {{1000, 2500}},
                  .slow = "0,0.5,2,4,0,0|",
                  .adjusted = {{1000, 3000}},
                  .ranges = {{25, 76}}},
        // T1 = 2000 + 1000 * 2 = 4000.
        RangeCase{.name = "FastSectionBefore",
                  .captions = {{5000, 6000}},
                  .slow = "0,2,2,3,0,0|",
                  .adjusted = {{4000, 5000}},
                  .ranges = {{100, 126}}},
        RangeCase{.name = "NormalSpeedChangesNothing",
                  .captions = {{2200, 2600}},
                  .slow = "0,1,2,4,0,0|",
                  .adjusted = {{2200, 2600}},
                  .ranges = {{55, 66}}},
        // 1 s forwards, 1 s backwards, 1 s forwards: 2 s more than the first alone.
        RangeCase{.name = "GroupOfThreeBefore",
                  .captions = {{4000, 5000}},
                  .slow = "0,1,2,3,0,0|0,-1,3,4,0,0|0,1,4,5,0,0|",
                  .adjusted = {{6000, 7000}},
                  .ranges = {{150, 176}}},
        RangeCase{.name = "GroupOfThreeCovered",
                  .captions = {{1000, 5000}},
                  .slow = "0,1,2,3,0,0|0,-1,3,4,0,0|0,1,4,5,0,0|",
                  .adjusted = {{1000, 7000}},
                  .ranges = {{25, 176}}},
        RangeCase{.name = "GroupOfThreeInside",
                  .captions = {{2500, 5000}},
                  .slow = "0,1,2,3,0,0|0,-1,3,4,0,0|0,1,4,5,0,0|",
                  .adjusted = {{2500, 5000}},
                  .ranges = {{63, 126}}},
        RangeCase{.name = "LastRecordBackwards",
                  .captions = {{4000, 5000}},
                  .slow = "0,1,0,2,0,0|0,-0.5,2,4,0,0|",
                  .adjusted = {{5000, 6000}},
                  .ranges = {{125, 151}}},
        // T1 = 0 - 2000; e = -2000 / -1 + 0 + (1000 + 2000 - 0) = 5000, where the next section begins.
        RangeCase{.name = "FirstRecordBackwards",
                  .captions = {{0, 1000}},
                  .slow = "0,-1,0,2,0,0|0,0.5,5,6,5,5|",
                  .adjusted = {{0, 5000}},
                  .ranges = {{0, 126}}},
        RangeCase{.name = "SpeedZeroChangesNothing",
                  .captions = {{2200, 2600}},
                  .slow = "0,0,2,4,0,0|",
                  .adjusted = {{2200, 2600}},
                  .ranges = {{55, 66}}},
        // Frame 30 of 29.97 fps begins at 1001 ms.
        RangeCase{.name = "BroadcastRate",
                  .captions = {{1001, 2002}},
                  .frame = {1001, 30000},
                  .clipRanges = {{0, 300300}},
                  .overlayDuration = 300300,
                  .adjusted = {{1001, 2002}},
                  .ranges = {{30030, 61061}}},
        RangeCase{.name = "NoFrameLength", .captions = {{1000, 2000}}, .frame = {0, 0}}),
    [](const auto& test) { return test.param.name; });

TEST(TemplateRangeTest, OneRangeCoversTheDrawnSpan) {
  struct Case {
    double start, end;
    std::int64_t overlay;
    std::vector<std::int64_t> nonOverlay;
    OverlayRange range;
  };
  for (const Case& c : {Case{0, 10, 250, {}, {0, 250}}, Case{0, 10, 249, {}, {0, 249}},
                        Case{0, 5, 0, {}, {0, 0}}, Case{2, 10, 250, {}, {50, 249}},
                        Case{2, 10, 250, {75, 9}, {75, 325}}, Case{2.001, 9.999, 250, {}, {51, 248}}}) {
    EXPECT_EQ(ComputeTemplateRange({{1, 25}, {c.overlay, c.nonOverlay, {}}}, c.start, c.end), c.range)
        << c.start << " to " << c.end;
  }
}

TEST(OverlayPlanTest, TemplateAndCaptionsShareOneRange) {
  PainterInfo info;
  info.captionInfo.valid = info.tennisMetaInfo.valid = true;
  info.captionInfo.captionString = CaptionText({{1000, 2000}});
  const auto plan = PlanOverlays({{1, 25}, {500, {}, {{0, 500}}}}, info);
  EXPECT_THAT(plan.ranges, ElementsAre(OverlayRange{0, 500}));
  EXPECT_EQ(plan.captions.size(), 1u);
  EXPECT_TRUE(PlanOverlays({{1, 25}, {500, {}, {{0, 500}}}}, PainterInfo()).ranges.empty());
}

TEST(OverlayPlanTest, HostileNumbersStayInRange) {
  constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
  constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
  PainterInfo info;
  info.captionInfo.valid = true;
  info.captionInfo.captionString = CaptionText({{INT32_MIN, INT32_MAX}, {INT32_MAX, INT32_MIN}, {0, 0}});
  info.slowInfoData =
      u"0,1e-38,-3e38,3e38,0,0|0,3e38,3e38,-3e38,0,0|0,-1e-38,0,3e38,0,0|0,5,1,2,0,0|0,0,1,2,0,0|0,-0,1,2,0,"
      u"0|";
  for (const VRXTimeInfo& frame : {VRXTimeInfo(1, kMax), VRXTimeInfo(kMax, 1), VRXTimeInfo(kMax, kMax)}) {
    for (const bool hasTemplate : {false, true}) {
      info.tennisMetaInfo.valid = hasTemplate;
      info.templateInfo.drawStartTime = hasTemplate ? 1e308 : -1e308;
      info.templateInfo.drawEndTime = -1e308;
      const auto plan = PlanOverlays({frame, {kMax, {kMax, kMin, kMin}, {{0, kMin}, {kMax, kMax}}}}, info);
      EXPECT_FALSE(plan.ranges.empty());
    }
  }
}

}  // namespace
