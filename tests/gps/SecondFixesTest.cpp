// The fixes of any receiver become one a second, in order, with a speed.
#include <gtest/gtest.h>

#include <vector>

#include "gps/receiver/SecondFixes.h"

namespace {

using namespace vrx::receiver;

std::vector<Fix> At(const std::vector<std::int64_t>& times) {
  std::vector<Fix> fixes;
  for (const std::int64_t time : times) fixes.push_back({.utcMilliseconds = time});
  return fixes;
}

TEST(SecondFixesTest, OneFixStandsForASecondAndWrongTimesCostNoOtherFix) {
  constexpr std::int64_t kHours = 7'200'000;
  struct Case {
    const char* what;
    std::vector<std::int64_t> times;
    std::vector<std::int64_t> kept;
    ThinCounts counts;
  };
  const Case cases[] = {
      {"nothing", {}, {}, {}},
      {"the nearest", {9'400, 9'600, 9'900, 10'300, 10'600}, {9'400, 9'900, 10'600}, {.thinned = 2}},
      {"a clock beside the second", {999, 2'001, 3'000, 3'999}, {999, 2'001, 3'000, 3'999}, {}},
      {"duplicates", {1000, 1000, 2000, 2000, 2000}, {1000, 2000}, {.duplicates = 3}},
      {"a clock that is set back",
       {1000, 2000, 3000, 4000, 2500, 3500, 5000},
       {1000, 2000, 2500, 3500, 5000},
       {.outOfOrder = 2}},
      {"one time ahead", {1000, 2000, 900'000, 3000, 4000}, {1000, 2000, 3000, 4000}, {.outOfOrder = 1}},
      {"one time long before",
       {kHours + 1000, kHours + 2000, 5, kHours + 3000},
       {5, kHours + 1000, kHours + 2000, kHours + 3000},
       {}},
      {"the last track first",
       {kHours + 1000, kHours + 2000, 1000, 2000, 3000},
       {1000, 2000, 3000, kHours + 1000, kHours + 2000},
       {}},
  };
  for (const Case& c : cases) {
    ThinCounts counts;
    std::vector<std::int64_t> kept;
    for (const Fix& fix : ThinToSeconds(At(c.times), &counts)) kept.push_back(fix.utcMilliseconds);
    EXPECT_EQ(kept, c.kept) << c.what;
    EXPECT_EQ(counts.duplicates, c.counts.duplicates) << c.what;
    EXPECT_EQ(counts.outOfOrder, c.counts.outOfOrder) << c.what;
    EXPECT_EQ(counts.thinned, c.counts.thinned) << c.what;
  }
}

TEST(SecondFixesTest, VoidFixesAreLeftOut) {
  std::vector<Fix> fixes = At({1000, 2000, 2400});
  fixes[1].isValid = false;
  ThinCounts counts;
  const auto seconds = ThinToSeconds(fixes, &counts);
  ASSERT_EQ(seconds.size(), 2U);
  EXPECT_EQ(seconds[1].utcMilliseconds, 2400);
  EXPECT_EQ(counts.voidFixes, 1U);
}

TEST(SecondFixesTest, UnknownSpeedsAreMadeOfTheWayToNeighboursThatAreNear) {
  // A minute of latitude at 45 degrees is 1852.2 m on the ellipsoid.
  constexpr double kMeters = 1852.2;
  const auto at = [](std::int64_t seconds, double minutes, double knots = -1) {
    return Fix{.utcMilliseconds = seconds * 1000, .latitude = 45 + minutes / 60, .speedKnots = knots};
  };
  std::vector<Fix> fixes = {at(0, 0),    at(10, 0.1), at(11, 0.1), at(12, 0.2, 7),
                            at(23, 0.3), at(40, 0.4), at(41, 80)};
  EXPECT_EQ(FillSpeeds(fixes), 3U);
  const double expected[] = {0.1 * kMeters / 10, 0.1 * kMeters / 11, 0.1 * kMeters / 2};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(fixes[i].speedKnots, expected[i] * kKnotsPerMeterPerSecond, 0.01) << i;
  }
  EXPECT_EQ(fixes[3].speedKnots, 7) << "a logged speed is kept";
  EXPECT_LT(fixes[4].speedKnots, 0) << "the gaps around it are too long";
  EXPECT_LT(fixes[5].speedKnots, 0) << "nothing is that fast";
}

TEST(SecondFixesTest, DistancesAreRightAtTheEdgesOfTheMap) {
  const auto meters = [](double latitudeA, double longitudeA, double latitudeB, double longitudeB) {
    return DistanceMeters({.latitude = latitudeA, .longitude = longitudeA},
                          {.latitude = latitudeB, .longitude = longitudeB});
  };
  EXPECT_NEAR(meters(0, 179.999, 0, -179.999), 222.639, 0.001);
  EXPECT_NEAR(meters(89.999, 0, 89.999, 180), 223.388, 0.001);
  EXPECT_NEAR(meters(0, 0, 0.01, 0), 1105.743, 0.001);
  EXPECT_EQ(meters(90, 0, 90, 0), 0);
}

}  // namespace
