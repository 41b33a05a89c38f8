// What the tennis counters show before they roll to the next shot's values, and of numbers without measure.
// How they roll is in the pictures beside these tests.
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

TEST(CounterRollTest, UnitsConvertBeforeRounding) {
  const std::int64_t early = kShotMs - 1000;
  EXPECT_EQ(SpeedAt(100, 200, early, 1).lower, 62);
  EXPECT_EQ(SpeedAt(100, 200, early, 2).lower, 100);
  EXPECT_EQ(SpeedAt(100, 200, early, -7).lower, 100);
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
