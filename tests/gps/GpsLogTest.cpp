// What the lines of a log give, and which of them lie in the stretch that is read.
#include <gmock/gmock.h>

#include "gps/log/GpsLogLine.h"
#include "gps/log/GpsTime.h"
#include "gps/log/KVUGPSLogReader.h"
#include "tests/gps/GpsLogText.h"

namespace {

using namespace vrx::gps;
using testing::ElementsAre;

struct Reading {
  KVUGPSInfoList list;
  KVUGPSLogReader reader;
  std::int64_t shift = 0;
  bool mark = false;

  std::vector<std::string> Times() const {
    std::vector<std::string> times;
    for (const KVUGPSInfo& point : list) times.push_back(Clock(point.time).substr(11));
    return times;
  }
};

Reading Read(const std::string& log, int first = 0, int last = 3600, std::int32_t zone = 0) {
  Reading reading;
  ParseGPSLog(log, reading.reader, After(first), After(last), reading.list, zone, reading.shift,
              reading.mark);
  return reading;
}

TEST(GpsLogTest, DecimalsAndAnglesAreReadAsTheReceiverWritesThem) {
  const std::pair<std::string_view, double> decimals[] = {
      {"12.5", 12.5},
      {"0.0625", 0.0625},
      {"12", 0.0},
      {"", 0.0},
      {".5", 0.5},
      {"7.", 7.0},
      {"1.5.5", 1.5},
      {"-3.5", 0.5},
      {"+3.5", 0.5},
      {"1e3.5", 1.5},
      {"3x.2", 3.2},
      {"1.2x", 1.2},
      {"1.25\r", 1.25},
      {"1234567890123456789.5", 0.0},
      {"123456789012345678.9", 123456789012345678.0},
      {"1.23456789012345678999", 1.23456789012345678},
  };
  for (const auto& [text, value] : decimals) EXPECT_DOUBLE_EQ(ReadDecimal(text), value) << text;
  const std::pair<std::string_view, double> angles[] = {
      {"3530.5000", (35 * 60 + 30) * 60 + 30.0},
      {"13959.9999", (139 * 60 + 59) * 60 + 59.994},
      {"0000.0000", 0.0},
      {"00001.2500", 75.0},
      {"9000.0000", 324000.0},
      {"3530", 0.0},
  };
  for (const auto& [text, seconds] : angles) EXPECT_NEAR(ReadArcSeconds(text), seconds, 1e-6) << text;
}

TEST(GpsLogTest, SentenceGivesPositionSpeedAndItsOwnMilliseconds) {
  const Reading reading = Read(
      "$GPGGA,100007.000,x\n"
      "$GPRMC,100007.250,A,3530.5000,S,13915.2500,W,12.75,,040518,,,A*11\r\n");
  ASSERT_EQ(reading.list.size(), 1u);
  const KVUGPSInfo& point = reading.list[0];
  EXPECT_EQ(Clock(point.time), "2018-05-04 10:00:07");
  EXPECT_NEAR(point.latitude, -((35 * 60 + 30) * 60 + 30.0), 1e-6);
  EXPECT_NEAR(point.longitude, -((139 * 60 + 15) * 60 + 15.0), 1e-6);
  EXPECT_DOUBLE_EQ(point.speed, 12.75);
  EXPECT_EQ(point.milliseconds, ((10 * 60 + 0) * 60 + 7) * 1000 + 250);
  EXPECT_EQ(point.status, 1);
  EXPECT_EQ(point.kind, GPSPointLogged);
}

TEST(GpsLogTest, FieldsOfASentenceThatCountOrNot) {
  const std::string gga = "$GPGGA,100007.000\n";
  struct Case {
    const char* line;
    int points;
    int status;
    double latitude;
    double speed;
  };
  const double lat = (35 * 60 + 30) * 60;
  const Case cases[] = {
      {"$GPRMC,100007.0,a,3530.0,N,13930.0,E,5.5,040518", 1, 1, lat, 5.5},
      {"$GPRMC,100007.0,V,3530.0,N,13930.0,E,5.5,040518", 1, 0, lat, 5.5},
      {"$GPRMC,100007.0,X,3530.0,N,13930.0,E,5.5,040518", 1, 0, lat, 5.5},
      {"$GPRMC,100007.0,A,3530.0,n,13930.0,E,5.5,040518", 1, 1, 0.0, 5.5},
      {"$GPRMC,100007.0,A,3530.0,N,13930.0,E,5,040518", 1, 1, lat, 0.0},
      {"#SMC,,,100007.0,,A,3530.0,N,13930.0,E,5.5,,,040518,", 1, 1, lat, 5.5},
      {"\xEF\xBB\xBF noise $GPRMC,100007.0,A,3530.0,N,13930.0,E,5.5,040518,W", 1, 1, lat, 5.5},
      {"$GPRMC,100007.0,A,3530.0,N,13930.0,E,5.5,84.4,040518", 0, 0, 0, 0},  // a course is taken for the date
      {"$GPRMC,100007.0,V,,,,,,,040518,,,N", 0, 0, 0, 0},
      {"$GPRMC,100007.0,A,3530.0,N,13930.0,E,5.5,310618", 0, 0, 0, 0},  // no such day
      {"$GPRMC,100007.0,A,3530.0,N,13930.0,E,5.5,0405", 0, 0, 0, 0},
      {"$GNRMC,100007.0,A,3530.0,N,13930.0,E,5.5,040518", 0, 0, 0, 0},
      {"$gprmc,100007.0,A,3530.0,N,13930.0,E,5.5,040518", 0, 0, 0, 0},
  };
  for (const Case& c : cases) {
    const Reading reading = Read(gga + c.line + "\n");
    ASSERT_EQ(reading.list.size(), static_cast<std::size_t>(c.points)) << c.line;
    if (c.points == 0) continue;
    EXPECT_EQ(reading.list[0].status, c.status) << c.line;
    EXPECT_NEAR(reading.list[0].latitude, c.latitude, 1e-6) << c.line;
    EXPECT_DOUBLE_EQ(reading.list[0].speed, c.speed) << c.line;
  }
}

TEST(GpsLogTest, ClockComesFromTheLastFixTimeAndDateFromThePosition) {
  const std::string rmc = "$GPRMC,235959.000,A,3530.0,N,13930.0,E,5.5,040518\n";
  EXPECT_TRUE(Read(rmc).list.empty());
  EXPECT_THAT(Read(rmc + "$GPGGA,100001.900,1\n" + rmc + rmc + "#SGA,,100003,7\n" + rmc).Times(),
              ElementsAre("10:00:01", "10:00:01", "10:00:03"));
  EXPECT_TRUE(Read("$GPGGA,,,\n" + rmc).list.empty());
  EXPECT_TRUE(Read("$GPGGA,1000\n" + rmc).list.empty());
  EXPECT_TRUE(Read("$GPGGA,100060.0\n" + rmc).list.empty());
}

TEST(GpsLogTest, LinesEndWithALineFeedAndHave99BytesAtMost) {
  const std::string fix = Fix({.second = 5});
  EXPECT_EQ(Read(fix).list.size(), 1u);
  EXPECT_TRUE(Read(fix.substr(0, fix.size() - 1)).list.empty());
  EXPECT_TRUE(Read("").list.empty());
  const std::string gga = "$GPGGA,100007.000\n";
  const std::string rmc = "$GPRMC,100007.0,A,3530.0,N,13930.0,E,5.5,040518";
  EXPECT_EQ(Read(gga + rmc + std::string(99 - rmc.size(), ' ') + "\n").list.size(), 1u);
  const Reading tooLong = Read(gga + rmc + std::string(100 - rmc.size(), ' ') + "\n");
  EXPECT_TRUE(tooLong.list.empty());
  EXPECT_EQ(tooLong.reader.counts.tooLong, 1u);
}

TEST(GpsLogTest, HeaderMarkIsThatOfTheLastHeader) {
  EXPECT_FALSE(Read("@Kelogps/any/wgs-84/20180504100000.000/\n").mark);
  EXPECT_TRUE(Read("\xEF\xBB\xBF@Kelogps/id/wgs-84/20180504100000.000/\n").mark);
  EXPECT_FALSE(Read("@Kelogps/id/wgs-84/\n@Kelogps/x/wgs-84/\n").mark);
  EXPECT_FALSE(Read("@Kelogpsoption/x/d/\n$GPGGA,d/\nd/\n").mark);
}

TEST(GpsLogTest, StretchIsLocalTimeAndIncludesBothEnds) {
  std::string log;
  for (int second = 8; second <= 14; ++second) log += Fix({.second = second});
  EXPECT_THAT(Read(log, 10, 12).Times(), ElementsAre("10:00:10", "10:00:11", "10:00:12"));
  // Nine hours ahead of UTC, the stretch is nine hours earlier there.
  EXPECT_THAT(Read(log, 10 + 540 * 60, 11 + 540 * 60, 540).Times(), ElementsAre("10:00:10", "10:00:11"));
  EXPECT_THAT(Read(log, 13 - 210 * 60, 20 - 210 * 60, -210).Times(), ElementsAre("10:00:13", "10:00:14"));
  EXPECT_TRUE(Read(log, 15, 20).list.empty());
  EXPECT_TRUE(Read(log, 12, 10).list.empty());
  const Reading counted = Read(log, 10, 12);
  EXPECT_EQ(counted.reader.counts.positions, 7u);
  EXPECT_EQ(counted.reader.counts.kept, 3u);
  EXPECT_EQ(counted.reader.counts.outsideRange, 4u);
  KVUGPSLogReader reader;
  KVUGPSInfoList list(3);
  std::int64_t shift = 0;
  bool mark = false;
  ParseGPSLog(log, reader, XpDateTime(), After(100), list, 0, shift, mark);
  EXPECT_TRUE(list.empty());
}

TEST(GpsLogTest, FirstSecondOfTheStretchIsReadInEveryZone) {
  // Sums of serial dates differ in their last bits from dates that were read.
  for (int minutes = -840; minutes <= 840; ++minutes) {
    XpDateTime local = Date(2018, 5, 5);
    local.AddMinutesSeconds(minutes, 0);
    XpDateTime last = local;
    last.AddMinutesSeconds(0, 10);
    KVUGPSLogReader reader;
    KVUGPSInfoList list;
    std::int64_t shift = 0;
    bool mark = false;
    ParseGPSLog(Fix({.second = 14 * 3600}), reader, local, last, list, minutes, shift, mark);
    ASSERT_EQ(list.size(), 1u) << minutes;
  }
}

TEST(GpsLogTest, OptionLineMovesTheStretchByItsSecondTimeMinusItsFirst) {
  std::string log;
  for (int second = 0; second <= 120; second += 10) log += Fix({.second = second});
  const auto option = [](const char* a, const char* b) {
    return std::string("@Kelogpsoption/x/") + a + "/" + b + "/\r\n";
  };
  const std::string later = option("20180504100000.000", "20180504100030.999");
  EXPECT_THAT(Read(later + log, 10, 20).Times(), ElementsAre("10:00:40", "10:00:50"));
  EXPECT_EQ(Read(later + log, 10, 20).shift, 30);
  const std::string earlier = option("20180504100130.000", "20180504100000.000");
  EXPECT_THAT(Read(earlier + log, 100, 110).Times(), ElementsAre("10:00:10", "10:00:20"));
  EXPECT_EQ(Read(earlier + log).shift, -90);
  // Each line moves the stretch on; the last one is reported.
  const Reading both = Read(later + later + earlier + log, 40, 50);
  EXPECT_THAT(both.Times(), ElementsAre("10:00:10", "10:00:20"));
  EXPECT_EQ(both.shift, -90);
  const std::string none[] = {
      option("20180504100000.000", "20180504100000.999"), option("00990504100000.000", "20180504100000.000"),
      option("20180504100000.000", "2018050410"), "@Kelogpsoption/x/2018\n", "@Kelogpsoption/\n"};
  for (const std::string& line : none) {
    EXPECT_EQ(Read(line + log).shift, 0) << line;
    EXPECT_EQ(Read(line + log, 10, 20).list.size(), 2u) << line;
  }
}

TEST(GpsLogTest, AnyCutAndAnyDamageLeavesWholePointsOnly) {
  const std::string log =
      "@Kelogps/any/wgs-84/20180504100000.000/\n"
      "@Kelogpsoption/x/20180504100000.000/20180504100001.000/\n" +
      Fix({.second = 5}) + Fix({.second = 6});
  for (std::size_t length = 0; length < log.size(); ++length) {
    for (const KVUGPSInfo& point : Read(log.substr(0, length)).list)
      EXPECT_EQ(Clock(point.time).substr(0, 17), "2018-05-04 10:00:") << length;
    std::string damaged = log;
    damaged[length] = '\0';
    EXPECT_LE(Read(damaged).list.size(), 2u);
  }
}

}  // namespace
