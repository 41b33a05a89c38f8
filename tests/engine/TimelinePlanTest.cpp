// Cuts and overlay ranges mean exactly the frames that a project names.
#include "engine/TimelinePlan.h"

#include <gtest/gtest.h>

#include "engine/SourcePath.h"

namespace vrx::engine {
namespace {

constexpr FrameDuration kFilm{1001, 30000};
constexpr FrameDuration kTwentyFive{1, 25};

TEST(TimelinePlanTest, FramesOfFileClipsAreCountedAndImpossibleTimesRefused) {
  struct Case {
    std::int64_t start, end;
    std::uint64_t scale;
    FrameDuration duration;
    std::int64_t frames;
    bool whole;
    Result result = kOk;
  };
  const Case cases[] = {
      {0, 100 * 1001, 30000, kFilm, 100, false},
      {1001, 100 * 1001 - 1, 30000, kFilm, 98, false},  // an unfinished frame does not count
      {500, 1500, 1000, kTwentyFive, 25, false},
      {-40, 80, 1000, kTwentyFive, 2, false},
      {-80, -40, 1000, kTwentyFive, 0, true},
      {-40, 0, 1000, kTwentyFive, 0, true},  // no start and an end within the first frame
      {100, 100, 1000, kTwentyFive, 0, true},
      {100, 99, 1000, kTwentyFive, 0, true},
      {0, 39, 1000, kTwentyFive, 0, false},
      {INT64_MAX - 1000, INT64_MAX, 1000, kTwentyFive, 25, false},
      {0, 10, 0, kTwentyFive, 0, false, kUnusableSettings},
      {0, 10, std::uint64_t{1} << 40, kTwentyFive, 0, false, kUnusableSettings},
      {0, INT64_MAX, 1, kTwentyFive, 0, false, kUnusableSettings},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.start << " to " << c.end << " of " << c.scale);
    VRXFileSourceStreamInfo clip(u"/a.mp4");
    clip.startTime = VRXTimeInfo(static_cast<std::uint64_t>(c.start), c.scale);
    clip.endTime = VRXTimeInfo(static_cast<std::uint64_t>(c.end), c.scale);
    VRXTimeline timeline;
    timeline.video.Add(clip);
    TimelinePlan plan;
    ASSERT_EQ(MakeTimelinePlan(timeline, c.duration, plan), c.result);
    if (c.result != kOk) continue;
    EXPECT_EQ(plan.video[0].frameCount, c.frames);
    EXPECT_EQ(plan.video[0].wholeSource, c.whole);
    EXPECT_GE(plan.video[0].start, 0);
  }
}

TEST(TimelinePlanTest, EndWithAScaleOfItsOwnKeepsTheLastFrame) {
  constexpr std::uint64_t kHuge = std::uint64_t{1} << 62;
  struct Case {
    VRXTimeInfo start, end;
    FrameDuration duration;
    std::int64_t frames;
    AudioClip sound;
  };
  const Case cases[] = {
      {{0, 1000}, {100 * 1001, 30000}, kFilm, 100, {"", 0, 100 * 1001, 30000}},
      {{10 * 1001, 30000}, {1001, 1000}, kFilm, 20, {"", 10010, 30030, 30000}},
      {{1, 6}, {7, 10}, kTwentyFive, 13, {"", 5, 21, 30}},
      {{0, 1}, {999, 1000}, kTwentyFive, 24, {"", 0, 999, 1000}},
      {{25, 25}, {2000, 0}, kTwentyFive, 1975, {"", 25, 2000, 25}},
      // Too large for the common scale: rounded to the nearest.
      {{0, 2}, {kHuge, 3}, {kMaxTimeScale, 1}, 715827883, {"", 0, 3074457345618258603, 2}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.start.value << '/' << c.start.scale << " to " << c.end.value << '/'
                                    << c.end.scale);
    VRXFileSourceStreamInfo clip(u"/a.mp4");
    clip.startTime = c.start;
    clip.endTime = c.end;
    VRXTimeline timeline;
    timeline.video.Add(clip);
    timeline.audio.Add(clip);
    TimelinePlan plan;
    ASSERT_EQ(MakeTimelinePlan(timeline, c.duration, plan), kOk);
    EXPECT_EQ(plan.video[0].frameCount, c.frames);
    EXPECT_FALSE(plan.video[0].wholeSource);
    EXPECT_EQ(plan.audio[0].start, c.sound.start);
    EXPECT_EQ(plan.audio[0].end, c.sound.end);
    EXPECT_EQ(plan.audio[0].scale, c.sound.scale);
  }
}

TEST(TimelinePlanTest, SourceTimesAndLengthsAreExactAtAFilmRate) {
  VideoClip clip;
  clip.start = 90'000'000'000;
  clip.scale = 90000;
  const ExactTime time = SourceTimeOfFrame(clip, 2'000'000'000, kFilm);
  // 10^6 s + 2 * 10^9 * 1001 / 30000 s in ticks of 1 / 90000 s
  EXPECT_EQ(RoundDivide(time.numerator * 90000, time.denominator),
            Int128{90'000'000'000} + 2'000'000'000LL * 3003);
  EXPECT_EQ(FramesOfSource(100 * 512, 1, 12800, kTwentyFive), 100);
  EXPECT_EQ(FramesOfSource(3337, 1, 1000, kFilm), 100);  // milliseconds, rounded
  EXPECT_EQ(FramesOfSource(1, 1, 1000, kFilm), 1);
}

struct NoPainter : IVRXIntermediateRawOutputCallback {
  bool ProcessFrame(std::uint64_t, void*, std::uint32_t, std::int32_t, std::int32_t) override { return true; }
};

TEST(OverlaySpansTest, SpansIncludeBothEndsAndEachFrameOnce) {
  struct Range {
    std::uint64_t start, end, scale;
    std::int32_t stage;
  };
  using Span = std::array<std::int64_t, 3>;  // first, last, stage
  struct Case {
    FrameDuration duration;
    std::vector<Range> ranges;
    std::vector<Span> spans;
  };
  for (const Case& c :
       {Case{kFilm, {{1001, 3003, 30000, 2}}, {{1, 3, 2}}},
        Case{kFilm, {{1002, 3002, 30000, 2}}, {{2, 2, 2}}},
        Case{kTwentyFive, {{40, 40, 1000, 2}}, {{1, 1, 2}}}, Case{kTwentyFive, {{41, 79, 1000, 2}}, {}},
        Case{kTwentyFive, {{80, 40, 1000, 2}}, {}},
        Case{kTwentyFive,
             {{5, 10, 25, 1}, {0, 20, 25, 2}, {8, 22, 25, 3}},
             {{0, 4, 2}, {5, 10, 1}, {11, 20, 2}, {21, 22, 3}}}}) {
    NoPainter painter;
    VRXSystemOutputSetting setting;
    setting.rawOutput = &painter;
    for (const Range& range : c.ranges) {
      VRXIntermediateRawOutputSetting added;
      added.startTime = VRXTimeInfo(range.start, range.scale);
      added.endTime = VRXTimeInfo(range.end, range.scale);
      added.stage = range.stage;
      setting.AddRange(added);
    }
    std::vector<OverlaySpan> spans;
    EXPECT_EQ(MakeOverlaySpans(setting, c.duration, spans), kOk);
    std::vector<Span> found;
    for (const OverlaySpan& span : spans) found.push_back({span.first, span.last, span.stage});
    EXPECT_EQ(found, c.spans) << "from " << c.ranges[0].start << " to " << c.ranges[0].end;
  }
}

TEST(SourcePathTest, EveryFormOfPathBecomesItsNativePath) {
  EXPECT_EQ(NativePath(u"/a\\b.mp4"), "/a\\b.mp4");
  EXPECT_EQ(NativePath(u"Z:\\movies\\a.mp4"), "/movies/a.mp4");
  EXPECT_EQ(NativePath(u"z:/movies/a.mp4"), "/movies/a.mp4");
  EXPECT_EQ(NativePath(u"C:\\movies\\a.mp4"), "");
  EXPECT_EQ(NativePath(u"\\\\server\\movies\\a.mp4"), "");
  EXPECT_EQ(NativePath(u"..\\a.mp4"), "../a.mp4");
  EXPECT_EQ(NativePath(u"/\u00E4\xDCFF.mp4"), "/\xC3\xA4\xFF.mp4");
  EXPECT_EQ(NativePath(u""), "");
}

}  // namespace
}  // namespace vrx::engine
