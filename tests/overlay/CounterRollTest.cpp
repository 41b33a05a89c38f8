// The tennis counters roll to the next shot's values in its last three tenths of a second.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "overlay/tennis/CounterRoll.h"

namespace vrx::overlay {
void PrintTo(const CounterRoll& roll, std::ostream* out) {
  *out << roll.lower << " below " << roll.upper << " at " << roll.offset;
}
}  // namespace vrx::overlay

namespace {

using namespace vrx::overlay;

constexpr std::int64_t kShotMs = 5000;
constexpr std::int32_t kHeight = 90;

TennisShot Shot(double speed, std::int32_t count = 0, double time = kShotMs / 1000.0) {
  TennisShot shot;
  shot.time = time;
  shot.secondPanelSpeed = speed;
  shot.firstPanelValue = count;
  return shot;
}

CounterRoll SpeedAt(double from, double to, std::int64_t t, std::int32_t unit = 0) {
  const TennisShot current = Shot(from, 0, 0), next = Shot(to);
  return CounterRolls(&current, &next, t, kHeight).Speed(&TennisShot::secondPanelSpeed, unit);
}
CounterRoll CountAt(std::int32_t from, std::int32_t to, std::int64_t t) {
  const TennisShot current = Shot(0, from, 0), next = Shot(0, to);
  return CounterRolls(&current, &next, t, kHeight).Count();
}

/// Share of the way, in 32000ths, by the phase alone.
std::int64_t Way(std::int64_t t) {
  const double left = static_cast<double>(kShotMs - t);
  if (left >= 300) return 0;
  const auto k = static_cast<std::int64_t>(std::min(40.0, (300 - left) * 400 / 3 / 1000));
  return (60 - k) * k * k;
}

/// A tape of values, one each `kHeight`, that moves down behind a window: a rising one begins at its lower
/// end, a falling one at its upper end.
CounterRoll Tape(const std::vector<std::int32_t>& values, std::int64_t t) {
  const auto steps = static_cast<std::int64_t>(values.size()) - 2;  // and one beyond the last
  const std::int64_t moved = Way(t) * steps * kHeight / 32000;
  const auto at = static_cast<std::size_t>(moved / kHeight);
  const auto rest = static_cast<std::int32_t>(moved % kHeight);
  const bool rises = values.back() >= values.front();
  return rises ? CounterRoll{values[at + 1], values[at], rest}
               : CounterRoll{values[at], values[at + 1], kHeight - rest};
}

TEST(CounterRollTest, SmallDifferencesRollOneByOne) {
  for (std::int64_t t = kShotMs - 310; t < kShotMs; ++t) {
    EXPECT_EQ(SpeedAt(3, 5, t), Tape({3, 4, 5, 6}, t)) << t;
    EXPECT_EQ(SpeedAt(3.4, 6.6, t), Tape({3, 4, 5, 6, 7, 8}, t)) << t;
    EXPECT_EQ(SpeedAt(100, 96, t), Tape({100, 99, 98, 97, 96, 95}, t)) << t;
    EXPECT_EQ(SpeedAt(50, 50.2, t), (CounterRoll{51, 50, 0})) << t;
  }
}

TEST(CounterRollTest, LargeDifferencesRollInFourEqualSteps) {
  for (std::int64_t t = kShotMs - 310; t < kShotMs; ++t) {
    EXPECT_EQ(SpeedAt(30, 50, t), Tape({30, 35, 40, 45, 50, 55}, t)) << t;
    EXPECT_EQ(SpeedAt(10, 15, t), Tape({10, 11, 13, 14, 15, 16}, t)) << t;
    EXPECT_EQ(SpeedAt(180, 0, t), Tape({180, 135, 90, 45, 0, -44}, t)) << t;
    EXPECT_EQ(SpeedAt(0, 9, t), Tape({0, 2, 5, 7, 9, 11}, t)) << t;
  }
}

TEST(CounterRollTest, CountsChangeInOneStep) {
  for (std::int64_t t = kShotMs - 310; t < kShotMs; ++t) {
    const auto rest = static_cast<std::int32_t>(Way(t) * kHeight / 32000);
    EXPECT_EQ(CountAt(-2, 7, t), (CounterRoll{7, -2, rest})) << t;
    EXPECT_EQ(CountAt(7, -2, t), (CounterRoll{7, -2, kHeight - rest})) << t;
    EXPECT_EQ(CountAt(4, 4, t), (CounterRoll{4, 4, 0})) << t;
  }
}

TEST(CounterRollTest, UnitsConvertBeforeRounding) {
  const std::int64_t early = kShotMs - 1000;
  EXPECT_EQ(SpeedAt(100, 200, early, 1).lower, 62);
  EXPECT_EQ(SpeedAt(100, 200, early, 2).lower, 100);
  EXPECT_EQ(SpeedAt(100, 200, early, -7).lower, 100);
  for (std::int64_t t = kShotMs - 300; t < kShotMs; t += 7) {
    EXPECT_EQ(SpeedAt(100, 105, t, 1), Tape({62, 63, 64, 65, 66}, t)) << t;  // 62.1 to 65.2: three steps
  }
}

TEST(CounterRollTest, StaysAtTheCurrentValueUntilTheRunUp) {
  for (const std::int64_t t : {kShotMs - 100000, kShotMs - 301, kShotMs - 300}) {
    EXPECT_EQ(SpeedAt(30, 50, t), (CounterRoll{35, 30, 0}));
    EXPECT_EQ(SpeedAt(50, 30, t), (CounterRoll{50, 45, kHeight}));
  }
  const TennisShot only = Shot(80, 3, 0);
  const CounterRolls last(&only, nullptr, 99999, kHeight);
  EXPECT_EQ(last.Speed(&TennisShot::secondPanelSpeed, 0), (CounterRoll{80, 60, kHeight}));
  EXPECT_EQ(last.Count(), (CounterRoll{3, 0, kHeight}));
  const CounterRolls first(nullptr, &only, -5000, kHeight);
  EXPECT_EQ(first.Speed(&TennisShot::secondPanelSpeed, 0), (CounterRoll{20, 0, 0}));
}

TEST(CounterRollTest, HostileNumbersStayWithinTheirRange) {
  constexpr double kHuge = std::numeric_limits<double>::max();
  for (const double from : {-kHuge, -1e10, 0.0, 1e10, kHuge}) {
    for (const double to : {-kHuge, -1e10, 0.0, 1e10, kHuge}) {
      for (const std::int64_t t : {INT64_MIN, kShotMs - 100, INT64_MAX}) {
        const CounterRoll roll = SpeedAt(from, to, t, 1);
        EXPECT_GE(roll.offset, 0);
        EXPECT_LE(roll.offset, kHeight);
      }
    }
  }
  EXPECT_EQ(CountAt(INT32_MIN, INT32_MAX, kShotMs - 300), (CounterRoll{INT32_MAX, INT32_MIN, 0}));
}

}  // namespace
