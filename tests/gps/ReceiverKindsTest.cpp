// Each kind of receiver gives the same track of the same drive.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <string>

#include "gps/receiver/GpxReader.h"
#include "gps/receiver/LogFormat.h"
#include "gps/receiver/NmeaReader.h"
#include "gps/receiver/SecondFixes.h"
#include "samples/logmaker/ReceiverKinds.h"
#include "samples/route/DriveRoute.h"

namespace {

using namespace vrx::receiver;
using vrx::test_support::DriveOptions;
using vrx::test_support::DriveRoute;
using vrx::test_support::ReceiverKind;
using vrx::test_support::ReceiverKinds;

constexpr std::int64_t kNewYear2017 = 1'483'228'800'000;  // a leap second came before it

const std::map<std::string, DriveOptions> kDrives = {
    {"plain", {.seconds = 300}},
    {"over midnight and the antimeridian",
     {.startUtcMilliseconds = 1'719'791'880'000, .seconds = 300, .latitude = -16.8, .longitude = 179.98}},
    {"west of Greenwich, on the equator", {.seconds = 300, .latitude = -0.01, .longitude = -78.5}},
    {"over a leap second",
     {.startUtcMilliseconds = kNewYear2017 - 121'000,
      .seconds = 300,
      .leapSecondBeforeUtcMilliseconds = kNewYear2017}},
};

XpResult Read(const std::string& text, ReceiverLog& log) {
  const ReadOptions options{.correctWeekRollover = true};
  switch (DetectFormat(text)) {
    case LogFormat::Nmea:
      return ReadNmea(text, options, log);
    case LogFormat::Gpx:
      return ReadGpx(text, options, log);
    default:
      return XpErrInvalidFile;
  }
}

/// Seconds that a track must have: those with a fix, without the leap second.
std::set<std::int64_t> SecondsWithFix(const DriveRoute& route) {
  const std::int64_t leap = route.Options().leapSecondBeforeUtcMilliseconds;
  std::set<std::int64_t> seconds;
  for (std::int64_t at = 0; at <= route.Milliseconds(); at += 1000) {
    const std::int64_t utc = route.Options().startUtcMilliseconds + at;
    if (!route.At(at).hasFix || (leap != 0 && utc == leap)) continue;
    seconds.insert((utc - (leap != 0 && utc > leap ? 1000 : 0)) / 1000);
  }
  return seconds;
}

std::int64_t Elapsed(const DriveRoute& route, const Fix& fix) {
  const std::int64_t leap = route.Options().leapSecondBeforeUtcMilliseconds;
  const bool isAfterLeap = leap != 0 && fix.utcMilliseconds >= leap;
  return fix.utcMilliseconds - route.Options().startUtcMilliseconds + (isAfterLeap ? 1000 : 0);
}

void ExpectTrack(const DriveRoute& route, std::vector<Fix> fixes) {
  const bool hasSpeeds = fixes.front().speedKnots >= 0;
  FillSpeeds(fixes);
  std::set<std::int64_t> missing = SecondsWithFix(route);
  for (const Fix& fix : fixes) {
    const std::int64_t elapsed = Elapsed(route, fix);
    const auto state = route.At(elapsed);
    SCOPED_TRACE(elapsed);
    ASSERT_TRUE(state.hasFix);
    const Fix expected{.latitude = state.latitude, .longitude = state.longitude};
    ASSERT_LT(DistanceMeters(fix, expected), 0.15);  // four decimals of a minute
    ASSERT_NEAR(fix.speedKnots / kKnotsPerMeterPerSecond, state.metersPerSecond, hasSpeeds ? 0.006 : 1);
    // At the ends of a gap, a fast receiver has a fix that is nearest to a second inside the gap.
    const bool isExpected = missing.erase(NearestSecond(fix)) == 1;
    ASSERT_TRUE(isExpected || fix.utcMilliseconds % 1000 != 0);
  }
  EXPECT_TRUE(missing.empty()) << missing.size() << " seconds have no fix, the first is " << *missing.begin();
}

TEST(ReceiverKindsTest, AllKindsOfReceiversGiveTheSameTrack) {
  ASSERT_GE(ReceiverKinds().size(), 10U);
  for (const auto& [name, options] : kDrives) {
    const DriveRoute route(options);
    for (const ReceiverKind& kind : ReceiverKinds()) {
      SCOPED_TRACE(name + ", " + kind.name);
      // No receiver's weeks had overflowed twice before April 2019.
      const bool isBeforeSecondRollover = options.leapSecondBeforeUtcMilliseconds == kNewYear2017;
      if (isBeforeSecondRollover && std::string(kind.name) == "rolled-twice") continue;
      ReceiverLog log;
      ASSERT_EQ(Read(kind.write(route), log), XpOk);
      EXPECT_EQ(log.GetRejected(), 0U);
      ASSERT_FALSE(log.fixes.empty());
      ThinCounts counts;
      const auto seconds = ThinToSeconds(log.fixes, &counts);
      EXPECT_EQ(counts.outOfOrder, 0U);
      ExpectTrack(route, seconds);
    }
  }
}

TEST(ReceiverKindsTest, RolledDatesAreReportedAndMovedOnlyWhenAsked) {
  const DriveRoute route({.seconds = 20});
  for (const ReceiverKind& kind : ReceiverKinds()) {
    const std::string name = kind.name;
    if (!name.starts_with("rolled")) continue;
    ReceiverLog asWritten;
    ReceiverLog moved;
    ASSERT_EQ(ReadNmea(kind.write(route), {}, asWritten), XpOk);
    ASSERT_EQ(ReadNmea(kind.write(route), {.correctWeekRollover = true}, moved), XpOk);
    const std::int64_t weeks = name == "rolled" ? 1024 : 2048;
    EXPECT_EQ(moved.fixes.front().utcMilliseconds - asWritten.fixes.front().utcMilliseconds,
              weeks * 7 * 86'400'000);
    EXPECT_EQ(asWritten.rolledDates, asWritten.fixes.size());
    ASSERT_EQ(asWritten.warnings.size(), 1U);
    EXPECT_NE(moved.warnings.front().find("they were moved by 1024 weeks"), std::string::npos);
  }
}

}  // namespace
