// The clocks of GPS logs and tennis data follow slow and fast segments; captions follow the movie.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "overlay/callback/TimeGenerators.h"

namespace {

using vrx::overlay::DrawSpan;

const VRXTimeInfo kTenth{1, 10};

SlowInfoRecord Segment(std::int32_t id, float speed, float start, float end, float source,
                       float withTrim = 0) {
  return {id, speed, start, end, source, withTrim};
}

/// The time of `frame` in milliseconds after all frames before it were asked for, and the clip in `id`.
double GpsAt(VRXGPSTimeGenerate clock, std::uint64_t frame, const DrawSpan& span, std::int32_t& id) {
  std::int64_t ms = -1;
  for (std::uint64_t n = 0; n <= frame; ++n) {
    id = 0;
    ms = clock.Generate(n, id, kTenth, span);
  }
  return static_cast<double>(ms);
}

TEST(GpsClockTest, RunsOnlyInsideTheDrawnSpan) {
  const VRXGPSTimeGenerate clock;
  const DrawSpan span{1.0, 3.0};
  std::int32_t id = 0;
  EXPECT_EQ(GpsAt(clock, 9, span, id), 0);
  EXPECT_NEAR(GpsAt(clock, 10, span, id), 100, 1);  // the first frame inside brings its own length
  EXPECT_NEAR(GpsAt(clock, 30, span, id), 2100, 1);
  EXPECT_EQ(GpsAt(clock, 50, span, id), GpsAt(clock, 30, span, id));
}

TEST(GpsClockTest, FollowsSegmentsAndNamesTheirClip) {
  const SlowInfoRecord records[] = {Segment(4, 0.5f, 0, 2, 10, 20), Segment(5, 2.0f, 2, 3, 11, 21)};
  struct Case {
    std::uint64_t frame;
    double ms;
    std::int32_t id;
  };
  for (const bool countsTrimmed : {false, true}) {
    VRXGPSTimeGenerate clock;
    clock.SetCountsTrimmed(countsTrimmed);
    clock.Reset(records);
    clock.SetPosition(clock.StartOf(records[0]));
    // The end of a segment belongs to the next; after the last one the clock goes on from where it was.
    for (const Case& c :
         {Case{0, 0, 4}, Case{19, 950, 4}, Case{20, 1000, 5}, Case{25, 2000, 5}, Case{35, 2800 + 500, 0}}) {
      std::int32_t id = 0;
      EXPECT_NEAR(GpsAt(clock, c.frame, {0, 9}, id), (countsTrimmed ? 20000 : 10000) + c.ms, 1) << c.frame;
      EXPECT_EQ(id, c.id) << c.frame;
    }
  }
}

TEST(TennisClockTest, ContinuesAfterTheLastSegmentFromItsEnd) {
  const SlowInfoRecord records[] = {Segment(4, -2.0f, 0, 1, 10)};
  VRXTennisMetaTimeGenerate clock;
  clock.Reset(records);
  std::int64_t ms = 0;
  for (std::uint64_t n = 0; n <= 15; ++n) ms = clock.Generate(n, kTenth, {0, 9});
  EXPECT_NEAR(static_cast<double>(ms), 12000 + 500, 1);
}

TEST(ClockTest, HostileNumbersGiveATime) {
  const SlowInfoRecord huge[] = {Segment(1, 3e38f, -3e38f, 3e38f, 3e38f)};
  VRXGPSTimeGenerate clock;
  clock.Reset(huge);
  std::int32_t id = 0;
  EXPECT_EQ(clock.Generate(5, id, {1, 0}, {0, 9}), -1);
  EXPECT_EQ(clock.Generate(5, id, kTenth, {0, 9}), std::numeric_limits<std::int32_t>::max());
  clock.Generate(std::numeric_limits<std::uint64_t>::max(), id, {~0ull, 1}, {-1e308, 1e308});
  clock.Generate(6, id, kTenth, {std::nan(""), std::nan("")});
  EXPECT_EQ(VRXCaptionTimeGenerate().Generate(3, {1001, 30000}), 100);
  EXPECT_EQ(VRXCaptionTimeGenerate().Generate(3, {1, 0}), -1);
  EXPECT_EQ(VRXCaptionTimeGenerate().Generate(~0ull, {~0ull, 1}), std::numeric_limits<std::int64_t>::max());
}

}  // namespace
