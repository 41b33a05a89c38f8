// Footage of a route shows at each second what the log of that route says.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <numbers>
#include <optional>

#include "gps/receiver/NmeaReader.h"
#include "gps/receiver/SecondFixes.h"
#include "samples/clipmaker/PatternClip.h"
#include "samples/clipmaker/RoadScene.h"
#include "samples/logmaker/NmeaLog.h"
#include "samples/route/PlannedRoute.h"
#include "tests/support/MovieReader.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::test_support;
using vrx::receiver::Fix;

constexpr int kWidth = 320;
constexpr int kHeight = 180;

/// A second of the route, as the receiver saw it and as the camera did.
struct Moment {
  std::optional<Fix> fix;
  RgbImage picture;
};

/// From `from` on, a clip of its own with a frame a second.
std::vector<Moment> Film(RouteKind kind, int from, int seconds) {
  std::vector<Moment> moments(static_cast<std::size_t>(seconds));
  const PlannedRoute route({.kind = kind, .times = {.seconds = 200}});
  vrx::receiver::ReceiverLog log;
  EXPECT_EQ(ReadNmea(NmeaLog(route, {}), {}, log), XpOk);
  for (const Fix& fix : log.fixes) {
    const std::int64_t second = fix.utcMilliseconds / 1000 - RouteTimes{}.startUtcMilliseconds / 1000 - from;
    if (fix.isValid && second >= 0 && second < seconds) moments[static_cast<std::size_t>(second)].fix = fix;
  }
  const TempFolder folder;
  const std::string path = (folder.Path() / "road.mkv").string();
  WritePatternClip(path, {.width = kWidth,
                          .height = kHeight,
                          .rateNum = 1,
                          .frames = seconds,
                          .codec = "ffv1",
                          .style = ClipStyle::kRoad,
                          .route = kind,
                          .routeSecond = from});
  MovieReader reader(path);
  MovieFrame frame;
  for (Moment& moment : moments) {
    EXPECT_TRUE(reader.NextFrame(frame));
    moment.picture = frame.image;
  }
  return moments;
}

double CourseDegrees(const Fix& from, const Fix& to) {
  const double east = (to.longitude - from.longitude) * std::cos(from.latitude * std::numbers::pi / 180);
  return std::atan2(east, to.latitude - from.latitude) * 180 / std::numbers::pi;
}

/// Where the asphalt lies on the picture, some 30 meters ahead.
double AsphaltColumn(const RgbImage& picture) {
  constexpr int kRow = 86;
  double sum = 0, count = 0;
  for (int x = 0; x < kWidth; ++x) {
    const Rgb colour = picture.At(x, kRow);
    const auto [low, high] = std::ranges::minmax(colour);
    if (low < 95 || high > 140 || high - low > 20) continue;
    sum += x;
    ++count;
  }
  EXPECT_GT(count, 20);
  return sum / count;
}

/// Difference of the ground before the feet.
double GroundDifference(const RgbImage& a, const RgbImage& b) {
  double sum = 0;
  for (int y = kHeight * 11 / 20; y < kHeight * 9 / 10; ++y) {
    for (int i = 0; i < 3 * kWidth; ++i) sum += std::abs(a.Row(y)[i] - b.Row(y)[i]);
  }
  return sum;
}

TEST(RoadClipTest, BendsOfTheLogAreBendsOnTheScreen) {
  constexpr double kClearBend = 14;  // degrees from now to two seconds ahead
  const std::vector<Moment> moments = Film(RouteKind::kDrive, 8, 110);
  std::vector<double> left, right;
  for (std::size_t i = 0; i + 3 < moments.size(); ++i) {
    const auto fix = [&](std::size_t ahead) { return moments[i + ahead].fix; };
    if (!fix(0) || !fix(1) || !fix(2) || !fix(3)) continue;
    const double bend =
        std::remainder(CourseDegrees(*fix(2), *fix(3)) - CourseDegrees(*fix(0), *fix(1)), 360);
    if (std::abs(bend) < kClearBend) continue;
    (bend < 0 ? left : right).push_back(AsphaltColumn(moments[i].picture));
  }
  ASSERT_GE(left.size(), 4U);
  ASSERT_GE(right.size(), 4U);
  EXPECT_LT(*std::ranges::max_element(left) + 10, *std::ranges::min_element(right));
}

TEST(RoadClipTest, TheGroundStandsStillWhereTheLogDoes) {
  const struct {
    RouteKind kind;
    int from;
    int seconds;
    int stillSeconds;
  } cases[] = {{RouteKind::kDrive, 140, 40, 5}, {RouteKind::kRun, 10, 30, 0}, {RouteKind::kWalk, 10, 60, 5}};
  for (const auto& [kind, from, seconds, stillSeconds] : cases) {
    SCOPED_TRACE(static_cast<int>(kind));
    const std::vector<Moment> moments = Film(kind, from, seconds);
    int still = 0;
    for (std::size_t i = 0; i + 1 < moments.size(); ++i) {
      SCOPED_TRACE(from + static_cast<int>(i));
      const Fix& now = *moments[i].fix;
      const Fix& next = *moments[i + 1].fix;
      const double difference = GroundDifference(moments[i].picture, moments[i + 1].picture);
      if (now.speedKnots == 0 && next.speedKnots == 0) {
        EXPECT_EQ(difference, 0);
        ++still;
      } else if (now.speedKnots > 1 && next.speedKnots > 1) {
        EXPECT_GT(difference, 0);
      }
    }
    EXPECT_GE(still, stillSeconds);
  }
}

TEST(RoadClipTest, ItIsDarkWhereTheReceiverHasNoFix) {
  const std::vector<Moment> moments = Film(RouteKind::kDrive, 30, 30);
  EXPECT_TRUE(std::ranges::any_of(moments, [](const Moment& moment) { return !moment.fix; }));
  for (std::size_t i = 0; i < moments.size(); ++i) {
    SCOPED_TRACE(i);
    const Rgb ground = moments[i].picture.Mean({0, kHeight * 2 / 3, kWidth, kHeight * 5 / 6});
    EXPECT_EQ(Luma(ground) > 85, moments[i].fix.has_value()) << Luma(ground);
  }
}

TEST(RoadClipTest, TheSameSecondGivesTheSamePicture) {
  for (const RouteKind kind : {RouteKind::kDrive, RouteKind::kRun, RouteKind::kWalk}) {
    const RoadScene shortRoute(kind, 50);
    const RoadScene longRoute(kind, 90);
    RgbImage a(kWidth, kHeight), b(kWidth, kHeight);
    longRoute.Draw(80.04, b);
    for (const double second : {45.52, 3.0}) {
      shortRoute.Draw(second, a);
      longRoute.Draw(second, b);
      EXPECT_EQ(std::memcmp(a.Row(0), b.Row(0), std::size_t{3} * kWidth * kHeight), 0) << second;
    }
  }
}

}  // namespace
