// Cuts and overlay ranges mean exactly the frames that a project names.
#include "engine/TimelinePlan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/SourcePath.h"

namespace vrx::engine {
namespace {

using testing::ElementsAre;

constexpr FrameDuration kFilm{1001, 30000};
constexpr FrameDuration kTwentyFive{1, 25};

VRXFileSourceStreamInfo Clip(std::int64_t start, std::int64_t end, std::uint64_t scale) {
  VRXFileSourceStreamInfo clip(u"/a.mp4");
  clip.startTime = VRXTimeInfo(static_cast<std::uint64_t>(start), scale);
  clip.endTime = VRXTimeInfo(static_cast<std::uint64_t>(end), scale);
  return clip;
}

TEST(TimelinePlan, CountsTheFramesOfFileClips) {
  struct Case {
    std::int64_t start, end;
    std::uint64_t scale;
    FrameDuration duration;
    std::int64_t frames;
    bool whole;
  };
  const Case cases[] = {
      {0, 100 * 1001, 30000, kFilm, 100, false},
      {1001, 100 * 1001 - 1, 30000, kFilm, 98, false},  // an unfinished frame does not count
      {500, 1500, 1000, kTwentyFive, 25, false},
      {-40, 80, 1000, kTwentyFive, 2, false},
      {-80, -40, 1000, kTwentyFive, 0, false},
      {100, 100, 1000, kTwentyFive, 0, true},
      {100, 99, 1000, kTwentyFive, 0, true},
      {0, 39, 1000, kTwentyFive, 0, false},
      {INT64_MAX - 1000, INT64_MAX, 1000, kTwentyFive, 25, false},
  };
  for (const Case& c : cases) {
    VRXTimeline timeline;
    timeline.video.Add(Clip(c.start, c.end, c.scale));
    TimelinePlan plan;
    ASSERT_EQ(MakeTimelinePlan(timeline, c.duration, plan), kOk);
    EXPECT_EQ(plan.video[0].frameCount, c.frames) << c.start << " to " << c.end;
    EXPECT_EQ(plan.video[0].wholeSource, c.whole) << c.start << " to " << c.end;
    EXPECT_GE(plan.video[0].start, 0);
  }
}

TEST(TimelinePlan, RefusesTimesThatNoMovieHas) {
  const std::pair<VRXFileSourceStreamInfo, Result> cases[] = {
      {Clip(0, 10, 0), kUnusableSettings},
      {Clip(0, 10, std::uint64_t{1} << 40), kUnusableSettings},
      {Clip(0, INT64_MAX, 1), kUnusableSettings},
  };
  for (const auto& [clip, expected] : cases) {
    VRXTimeline timeline;
    timeline.video.Add(clip);
    TimelinePlan plan;
    EXPECT_EQ(MakeTimelinePlan(timeline, kTwentyFive, plan), expected);
  }
}

TEST(TimelinePlan, SourceTimesAreExactFarIntoAFilmRate) {
  VideoClip clip;
  clip.start = 90'000'000'000;
  clip.scale = 90000;
  const ExactTime time = SourceTimeOfFrame(clip, 2'000'000'000, kFilm);
  // 10^6 s + 2 * 10^9 * 1001 / 30000 s in ticks of 1 / 90000 s
  EXPECT_EQ(RoundDivide(time.numerator * 90000, time.denominator),
            Int128{90'000'000'000} + 2'000'000'000LL * 3003);
}

TEST(TimelinePlan, AWholeSourceGivesAsManyFramesAsItHas) {
  EXPECT_EQ(FramesOfSource(100 * 512, 1, 12800, kTwentyFive), 100);
  EXPECT_EQ(FramesOfSource(3337, 1, 1000, kFilm), 100);  // milliseconds, rounded
  EXPECT_EQ(FramesOfSource(1, 1, 1000, kFilm), 1);
}

VRXIntermediateRawOutputSetting Range(std::uint64_t start, std::uint64_t end, std::uint64_t scale,
                                      std::int32_t stage) {
  VRXIntermediateRawOutputSetting range;
  range.startTime = VRXTimeInfo(start, scale);
  range.endTime = VRXTimeInfo(end, scale);
  range.stage = stage;
  return range;
}

struct NoPainter : IVRXIntermediateRawOutputCallback {
  bool ProcessFrame(std::uint64_t, void*, std::uint32_t, std::int32_t, std::int32_t) override { return true; }
};

std::vector<std::array<std::int64_t, 3>> Spans(const std::vector<VRXIntermediateRawOutputSetting>& ranges,
                                               FrameDuration duration) {
  NoPainter painter;
  VRXSystemOutputSetting setting;
  setting.rawOutput = &painter;
  for (const auto& range : ranges) setting.AddRange(range);
  std::vector<OverlaySpan> spans;
  EXPECT_EQ(MakeOverlaySpans(setting, duration, spans), kOk);
  std::vector<std::array<std::int64_t, 3>> result;
  for (const OverlaySpan& span : spans) result.push_back({span.first, span.last, span.stage});
  return result;
}

using Span = std::array<std::int64_t, 3>;

TEST(OverlaySpans, HoldBothEndsAndNothingBeside) {
  EXPECT_THAT(Spans({Range(1001, 3003, 30000, 2)}, kFilm), ElementsAre(Span{1, 3, 2}));
  EXPECT_THAT(Spans({Range(1002, 3002, 30000, 2)}, kFilm), ElementsAre(Span{2, 2, 2}));
  EXPECT_THAT(Spans({Range(40, 40, 1000, 2)}, kTwentyFive), ElementsAre(Span{1, 1, 2}));
  EXPECT_THAT(Spans({Range(41, 79, 1000, 2)}, kTwentyFive), ElementsAre());
  EXPECT_THAT(Spans({Range(80, 40, 1000, 2)}, kTwentyFive), ElementsAre());
}

TEST(OverlaySpans, NameEachFrameOnceWhereRangesOverlap) {
  EXPECT_THAT(Spans({Range(5, 10, 25, 1), Range(0, 20, 25, 2), Range(8, 22, 25, 3)}, kTwentyFive),
              ElementsAre(Span{0, 4, 2}, Span{5, 10, 1}, Span{11, 20, 2}, Span{21, 22, 3}));
}

TEST(SourcePath, FindsTheFileBehindEveryFormOfPath) {
  EXPECT_EQ(NativePath(u"/a\\b.mp4"), "/a\\b.mp4");
  EXPECT_EQ(NativePath(u"Z:\\movies\\a.mp4"), "/movies/a.mp4");
  EXPECT_EQ(NativePath(u"z:/movies/a.mp4"), "/movies/a.mp4");
  EXPECT_EQ(NativePath(u"C:\\movies\\a.mp4"), "");
  EXPECT_EQ(NativePath(u"..\\a.mp4"), "../a.mp4");
  EXPECT_EQ(NativePath(u"/\u00E4\xDCFF.mp4"), "/\xC3\xA4\xFF.mp4");
  EXPECT_EQ(NativePath(u""), "");
}

}  // namespace
}  // namespace vrx::engine
