// The track of one point a second: how gaps are filled, and the distances, speeds and bounds of it.
#include <random>

#include <gmock/gmock.h>
#include <GeographicLib/Geodesic.hpp>

#include "gps/log/GpsTime.h"
#include "gps/track/GeodesicDistance.h"
#include "gps/track/GpsUnits.h"
#include "gps/track/ResampleTrack.h"
#include "gps/track/TrackMetrics.h"
#include "tests/gps/GpsLogText.h"

namespace {

using namespace vrx::gps;

constexpr double kDegree = 3600.0;  // arc-seconds

KVUGPSInfo Point(int second, double latitude = 35.5, double longitude = 139.5, double knots = 10.0) {
  KVUGPSInfo point;
  point.time = After(second).GetValue();
  point.latitude = latitude * kDegree;
  point.longitude = longitude * kDegree;
  point.speed = knots;
  point.status = 1;
  return point;
}

/// A letter a point: Logged, Before the fix, Interpolated, After the fix, Held.
std::string Kinds(const KVUGPSInfoList& list) {
  std::string kinds;
  for (const KVUGPSInfo& point : list) kinds += "LBIAH"[point.kind];
  return kinds;
}

KVUGPSInfoList Resampled(KVUGPSInfoList list, int first, int last, std::int32_t zone = 0) {
  ResampleTrack(list, After(first), After(last), zone);
  return list;
}

TEST(ResampleTest, GapsOfEveryLengthAreFilledSecondBySecond) {
  const std::pair<int, const char*> gaps[] = {
      {0, "LL"},        {1, "LL"},         {2, "LHL"},          {3, "LHHL"},
      {4, "LHHHL"},     {5, "LHHHIL"},     {6, "LHHHIIL"},      {7, "LHHHIIIL"},
      {8, "LHHHIIIIL"}, {9, "LHHHIIIIIL"}, {10, "LHHHIIIIIIL"}, {-5, "LL"},
  };
  for (const auto& [gap, kinds] : gaps) {
    const KVUGPSInfoList list = Resampled({Point(0, 10, 20, 7), Point(gap, 20, 40, 9)}, 0, std::min(gap, 0));
    EXPECT_EQ(Kinds(list), kinds) << gap;
    for (int i = 1; i < gap; ++i) {
      const KVUGPSInfo& point = list[static_cast<std::size_t>(i)];
      EXPECT_EQ(WholeSeconds(point.time), WholeSeconds(After(i)));
      EXPECT_NEAR(point.latitude, (10 + 10.0 * i / gap) * kDegree, 1e-6);
      EXPECT_NEAR(point.longitude, (20 + 20.0 * i / gap) * kDegree, 1e-6);
      EXPECT_DOUBLE_EQ(point.speed, i <= 3 ? 7.0 : -1.0);
      EXPECT_EQ(point.status, 0);
    }
  }
}

TEST(ResampleTest, SecondsBeforeTheFirstAndAfterTheLastPointAreFilled) {
  EXPECT_EQ(Kinds(Resampled({Point(10)}, 0, 10)), "BBBBBBBBBBL");
  EXPECT_EQ(Kinds(Resampled({Point(0)}, 0, 2)), "LHH");
  const KVUGPSInfoList list = Resampled({Point(3, 12, 34, 5)}, 1, 9);
  EXPECT_EQ(Kinds(list), "BBLHHHAAA");
  for (std::size_t i = 0; i < list.size(); ++i) {
    EXPECT_EQ(WholeSeconds(list[i].time), WholeSeconds(After(static_cast<int>(i) + 1))) << i;
    const bool hasPosition = i >= 2 && i <= 5;
    EXPECT_DOUBLE_EQ(list[i].latitude, hasPosition ? 12 * kDegree : 0.0) << i;
    EXPECT_DOUBLE_EQ(list[i].longitude, hasPosition ? 34 * kDegree : 0.0) << i;
    EXPECT_DOUBLE_EQ(list[i].speed, hasPosition ? 5.0 : -1.0) << i;
  }
  // The stretch is local time, the points are UTC.
  const int zone = 330;
  EXPECT_EQ(Kinds(Resampled({Point(2)}, zone * 60, zone * 60 + 4, zone)), "BBLHH");
}

TEST(ResampleTest, WithoutPointsOnlyStretchesOfTwoSecondsAndMoreHaveATrack) {
  EXPECT_EQ(Kinds(Resampled({}, 0, 0)), "");
  EXPECT_EQ(Kinds(Resampled({}, 0, 1)), "");
  EXPECT_EQ(Kinds(Resampled({}, 0, 2)), "BBB");
  EXPECT_EQ(Kinds(Resampled({}, 5, 2)), "");
  EXPECT_DOUBLE_EQ(Resampled({}, 0, 2)[1].speed, -1.0);
  KVUGPSInfoList list;
  ResampleTrack(list, XpDateTime(), After(100), 60);
  EXPECT_TRUE(list.empty());
  list = {Point(4)};
  ResampleTrack(list, XpDateTime(), XpDateTime(), 60);
  EXPECT_EQ(Kinds(list), "L");
}

TEST(ResampleTest, EndlessStretchesStopAtTheLimit) {
  KVUGPSInfoList list;
  ResampleTrack(list, Date(100, 1, 1), Date(9999, 12, 31), 0);
  EXPECT_EQ(list.size(), kMostTrackPoints);
  list = {Point(0)};
  ResampleTrack(list, Date(100, 1, 1), Date(9999, 12, 31), 0);
  EXPECT_EQ(list.size(), kMostTrackPoints);
  list = {Point(0)};
  ResampleTrack(list, Start(), Date(9999, 12, 31), 0);
  EXPECT_EQ(list.size(), kMostTrackPoints);
  list = {Point(0), Point(2'000'000'000)};
  ResampleTrack(list, Start(), Date(9999, 12, 31), 0);
  EXPECT_EQ(list.size(), kMostTrackPoints);
}

TEST(ResampleTest, SecondsCrossMidnightMonthsAndLeapDays) {
  KVUGPSInfo a = Point(0);
  a.time = Date(2020, 2, 28, 23, 59, 58).GetValue();
  KVUGPSInfo b = Point(0);
  b.time = Date(2020, 3, 1, 0, 0, 2).GetValue();
  KVUGPSInfoList list = {a, b};
  ResampleTrack(list, XpDateTime(a.time), XpDateTime(b.time), 0);
  ASSERT_EQ(list.size(), 86400u + 5);
  EXPECT_EQ(Clock(list[2].time), "2020-02-29 00:00:00");
  EXPECT_EQ(Clock(list[86402].time), "2020-03-01 00:00:00");
}

TEST(InterpolateTest, ThePathTakesTheShortWayAcrossTheAntimeridian) {
  struct Case {
    double from, to, middle;  // degrees
  };
  const Case cases[] = {{179, -179, 180}, {-179, 179, 180}, {178, -179, 179.5}, {-178, 179, -179.5},
                        {10, -10, 0},     {90, -90, 0},     {-10, 30, 10},      {179.5, -178.5, -179.5},
                        {0, 179, 89.5},   {0, -179, -89.5}};
  for (const Case& c : cases) {
    KVUGPSInfo point = Point(5);
    InterpolatePoint(Point(0, 10, c.from), Point(10, 20, c.to), point);
    EXPECT_NEAR(std::remainder(point.longitude / kDegree - c.middle, 360.0), 0.0, 1e-9) << c.from << c.to;
    EXPECT_LE(std::abs(point.longitude), 180 * kDegree);
    EXPECT_NEAR(point.latitude, 15 * kDegree, 1e-6);
  }
  KVUGPSInfo pole = Point(5);
  InterpolatePoint(Point(0, 90, 100), Point(10, 90, 120), pole);
  EXPECT_DOUBLE_EQ(pole.longitude, 0.0);
  KVUGPSInfo same = Point(0);
  InterpolatePoint(Point(0, 11, 12), Point(0, 21, 22), same);
  EXPECT_DOUBLE_EQ(same.latitude, 11 * kDegree);
  EXPECT_DOUBLE_EQ(same.longitude, 12 * kDegree);
}

TEST(DistanceTest, StepsOfATrackAgreeWithTheGeodesic) {
  // The Bessel ellipsoid is up to 1.3 parts in ten thousand smaller than that of the positions.
  const auto& geodesic = GeographicLib::Geodesic::WGS84();
  std::mt19937 random(20261125);
  std::uniform_real_distribution<double> latitude(-85.0, 85.0), longitude(-180.0, 180.0), step(-0.01, 0.01);
  for (int i = 0; i < 20000; ++i) {
    const double lat1 = latitude(random), lon1 = longitude(random);
    const double lat2 = lat1 + step(random);
    double lon2 = lon1 + step(random);
    if (lon2 > 180.0) lon2 -= 360.0;
    if (lon2 < -180.0) lon2 += 360.0;
    double expected = 0.0;
    geodesic.Inverse(lat1, lon1, lat2, lon2, expected);
    const double meters = GeodesicDistance(lat1 * kDegree, lon1 * kDegree, lat2 * kDegree, lon2 * kDegree);
    ASSERT_NEAR(meters, expected, expected * 2e-4 + 1e-6)
        << lat1 << " " << lon1 << " to " << lat2 << " " << lon2;
  }
}

TEST(DistanceTest, FormulaOnItsOwnEllipsoidAndTheLongitudesWithinHalfATurn) {
  const GeographicLib::Geodesic bessel(6377397.0, 1.0 - std::sqrt(6334834.0 / 6377397.0));
  double expected = 0.0;
  bessel.Inverse(0.0, 0.0, 0.1, 0.1, expected);
  EXPECT_NEAR(GeodesicDistance(0.0, 0.0, 0.1 * kDegree, 0.1 * kDegree), expected, 0.05);
  EXPECT_DOUBLE_EQ(GeodesicDistance(10, 20, 10, 20), 0.0);
  // A step of 72 arc-seconds on the equator, also across the antimeridian.
  const double meters = GeodesicDistance(0, 0, 0, 72);
  EXPECT_NEAR(meters, 6377397.0 * 72 / 3600 * std::acos(-1) / 180, 1e-6);
  EXPECT_NEAR(GeodesicDistance(0, 648000 - 36, 0, -648000 + 36), meters, 1e-6);
  EXPECT_NEAR(GeodesicDistance(0, -648000 + 36, 0, 648000 - 36), meters, 1e-6);
  EXPECT_NEAR(GeodesicDistance(324000, 0, 324000, 400000), 0.0, 1e-3);
}

/// Points a second apart on the equator; a letter each as in Kinds, V for a logged one without validity.
KVUGPSInfoList OnTheEquator(const std::string& kinds, const std::vector<double>& arcSeconds) {
  KVUGPSInfoList list;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    KVUGPSInfo point = Point(static_cast<int>(i), 0, 0);
    point.longitude = arcSeconds[i];
    point.status = kinds[i] == 'L' ? 1 : 0;
    point.kind =
        kinds[i] == 'V' ? GPSPointLogged : static_cast<std::int32_t>(std::string("LBIAH").find(kinds[i]));
    point.distance = -7.0;
    list.push_back(point);
  }
  return list;
}

const double kStep = GeodesicDistance(0, 0, 0, 1) / 1000.0;  // km of an arc-second on the equator

TEST(MetricsTest, RunningDistanceCountsValidAndInterpolatedPoints) {
  struct Case {
    const char* kinds;
    std::vector<double> places;
    std::vector<double> distances;  // steps
  };
  const Case cases[] = {
      {"LLL", {0, 1, 3}, {0, 1, 3}},
      {"BBLL", {0, 0, 5, 6}, {0, 0, 0, 1}},
      // The first interpolated point adds the way since the last logged one.
      {"LHHHIL", {0, 1, 2, 3, 4, 5}, {0, 0, 0, 0, 4, 5}},
      {"LVL", {0, 50, 1}, {0, 0, 1}},
      {"VVLL", {0, 5, 6, 7}, {0, 0, 0, 1}},
      {"LHHHAA", {0, 0, 0, 0, 9, 9}, {0, 0, 0, 0, 0, 0}},
      {"VH", {0, 1}, {0, 0}},
  };
  for (const Case& c : cases) {
    KVUGPSInfoList list = OnTheEquator(c.kinds, c.places);
    AccumulateDistance(list, kGpsUnitKilometers);
    for (std::size_t i = 0; i < list.size(); ++i)
      EXPECT_NEAR(list[i].distance, c.distances[i] * kStep, 1e-12) << c.kinds << " " << i;
  }
  KVUGPSInfoList list = OnTheEquator("LLLL", {0, 1, 2, 4});
  AccumulateDistanceFrom(list, kGpsUnitNauticalMiles, After(1));
  EXPECT_DOUBLE_EQ(list[0].distance, -7.0);
  EXPECT_DOUBLE_EQ(list[1].distance, 0.0);
  EXPECT_NEAR(list[3].distance, 3 * kStep * 0.53996, 1e-12);
  KVUGPSInfoList one = OnTheEquator("L", {0});
  AccumulateDistanceFrom(one, 0, After(0));
  EXPECT_DOUBLE_EQ(one[0].distance, -7.0);
}

TEST(MetricsTest, DistanceAndSpeedsOfARangeIncludeBothEnds) {
  KVUGPSInfoList list = OnTheEquator("BLLHILAA", {9, 0, 1, 2, 3, 4, 60, 70});
  list[2].speed = 30;
  list[5].speed = 20;
  const auto distance = [&](int t0, int t1) {
    return DistanceInRange(list, 0, After(t0), After(t1)) / kStep;
  };
  EXPECT_NEAR(distance(0, 100), 4.0, 1e-9);
  EXPECT_NEAR(distance(2, 4), 2.0, 1e-9);
  EXPECT_NEAR(distance(2, 2), 0.0, 1e-9);
  EXPECT_NEAR(distance(4, 100), 1.0, 1e-9);
  EXPECT_DOUBLE_EQ(DistanceInRange({list[1]}, 0, After(0), After(9)), 0.0);
  EXPECT_DOUBLE_EQ(DistanceInRange({}, 0, After(0), After(9)), 0.0);
  EXPECT_DOUBLE_EQ(DistanceInRange(list, 0, XpDateTime(), After(9)), 0.0);
  EXPECT_NEAR(AverageSpeedInRange(list, 0, After(2), After(4)), 2 * kStep * 1800, 1e-9);
  EXPECT_NEAR(AverageSpeedInRange(list, 0, After(2), After(3)), kStep, 1e-12);
  EXPECT_DOUBLE_EQ(AverageSpeedInRange(list, 0, After(4), After(2)), 0.0);
  EXPECT_DOUBLE_EQ(MaxSpeedInRange(list, After(2), After(5)), 30.0);
  EXPECT_DOUBLE_EQ(MaxSpeedInRange(list, After(3), After(5)), 20.0);
  EXPECT_DOUBLE_EQ(MaxSpeedInRange({}, After(3), After(5)), 0.0);
  const KVUGPSInfoList slow = {Point(0, 0, 0, -1.0)};
  EXPECT_DOUBLE_EQ(MaxSpeed(slow), 0.0);
}

TEST(MetricsTest, TotalsStartAtTheFirstValidPoint) {
  const KVUGPSInfoList list = OnTheEquator("VLHVLAL", {90, 0, 1, 5, 6, 70, 80});
  EXPECT_NEAR(TotalDistance(list, 0, 0.0), 6 * kStep, 1e-12);
  EXPECT_NEAR(TotalDistance(list, 0, -5.0), 6 * kStep, 1e-12);
  EXPECT_NEAR(TotalDistance(list, 0, 2.0), 0.0, 1e-12);
  EXPECT_DOUBLE_EQ(TotalDistance(list, 0, 6.0), 0.0);
  EXPECT_DOUBLE_EQ(TotalDistance(list, 0, 1e300), 0.0);
  EXPECT_DOUBLE_EQ(TotalDistance(list, 0, std::nan("")), TotalDistance(list, 0, 0.0));
  EXPECT_DOUBLE_EQ(TotalDistance(OnTheEquator("VHV", {0, 1, 2}), 0, 0.0), 0.0);
  EXPECT_NEAR(AverageSpeed(list, 0, 0.0), 6 * kStep / (7 / 3600.0), 1e-9);
  EXPECT_DOUBLE_EQ(AverageSpeed({}, 0, 0.0), 0.0);
}

TEST(MetricsTest, BoundsHoldTheUsablePlaces) {
  KVUGPSInfoList list = {Point(0, 10, 20), Point(1, 12, 15), Point(2, 80, 80), Point(3, 11, 25),
                         Point(4, 9, 21)};
  list[2].status = 0;
  list[3].status = list[4].status = 0;
  list[3].kind = GPSPointHeld;
  list[4].kind = GPSPointInterpolated;
  KVSGPSBounds bounds;
  TrackBounds(list, 0.0, bounds);
  EXPECT_DOUBLE_EQ(bounds.top, 12 * kDegree);
  EXPECT_DOUBLE_EQ(bounds.left, 15 * kDegree);
  EXPECT_DOUBLE_EQ(bounds.width, 10 * kDegree);
  EXPECT_DOUBLE_EQ(bounds.height, 3 * kDegree);
  bounds = {};
  TrackBounds(list, 3.0, bounds);
  EXPECT_DOUBLE_EQ(bounds.top, 11 * kDegree);
  EXPECT_DOUBLE_EQ(bounds.left, 21 * kDegree);
  const auto isUntouched = [&](double first, const KVUGPSInfoList& points) {
    bounds = {};
    TrackBounds(points, first, bounds);
    return bounds.top == 5401.0 && bounds.left == 10801.0 && bounds.width == 0.0 && bounds.height == 0.0;
  };
  EXPECT_TRUE(isUntouched(5.0, list));
  EXPECT_TRUE(isUntouched(0.0, {}));
  EXPECT_TRUE(isUntouched(0.0, {list[2]}));
}

}  // namespace
