// What the readers of NMEA and GPX take, what they reject and why, and that damaged and hostile logs do no
// harm.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "gps/receiver/GpxReader.h"
#include "gps/receiver/LogFormat.h"
#include "gps/receiver/NmeaReader.h"
#include "gps/receiver/SecondFixes.h"

namespace {

using namespace vrx::receiver;

constexpr std::int64_t kNoon = 1'714'564'800'000;  // 1 May 2024, 12:00:00
constexpr double kLatitude = 48 + 7.038 / 60;
constexpr double kLongitude = 11 + 31.0 / 60;

std::string Repeat(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

ReceiverLog Nmea(const std::string& text) {
  ReceiverLog log;
  EXPECT_EQ(ReadNmea(text, {}, log), XpOk) << text.substr(0, 200);
  return log;
}

std::string GpxOf(const std::string& points) {
  return "<gpx><trk><trkseg>" + points + "</trkseg></trk></gpx>";
}

ReceiverLog Gpx(const std::string& text) {
  ReceiverLog log;
  EXPECT_EQ(ReadGpx(text, {}, log), XpOk) << text.substr(0, 200);
  return log;
}

std::uint64_t Count(const ReceiverLog& log, Rejection reason) {
  return log.rejected.at(static_cast<std::size_t>(reason));
}

TEST(NmeaReaderTest, SentencesOfAllFormsAreRead) {
  struct Case {
    std::string text;
    std::int64_t milliseconds = kNoon;
    double speedKnots = 22.4;
    double latitude = kLatitude;
    double longitude = kLongitude;
  };
  const std::string plain = "$GPRMC,120000,A,4807.038,N,01131.000,E,022.4,084.4,010524,003.1,W";
  const Case cases[] = {
      {plain},
      {plain + "*69"},
      {plain + "*69\xFFstray"},
      {"$GPRMC,120000,A,4807.038,N,01131.000,E,022.4,,010524\n"},
      {"$GNRMC,120000.5,A,4807.038,N,01131.000,E,022.4,,010524,,,A,V\r\n", kNoon + 500},
      {"$QZRMC,120000.250999,A,4807.038,N,01131.000,E,022.4,,010524", kNoon + 250},
      {"\xEF\xBB\xBF 12:00 > $GPRMC,120000,A,4807.038,N,1131,E,22.4,,010524"},
      {"$GPRMC,120000, A ,4807.038 ,N,01131.000,E,,,010524,,", kNoon, -1},
      {"$GPRMC,120000,A,4807.038,S,01131.000,W,.5,,010524", kNoon, 0.5, -kLatitude, -kLongitude},
      {"$GPRMC,120000,A,9000.0,N,18000.0,E,0,,010524", kNoon, 0, 90, 180},
      {"$GPRMC,1200$GPGGA,$x$," + plain},
      {"$GPRMC,235960.50,A,4807.038,N,01131.000,E,022.4,,300424", kNoon - 12 * 3'600'000 - 1},
      {"$GPRMC,120000,A,4807.038,N,01131.000,E,022.4,,010580", 326'030'400'000},
      {"$GPRMC,120000,A,4807.038,N,01131.000,E,022.4,,290200", 951'825'600'000},
  };
  for (const Case& c : cases) {
    const ReceiverLog log = Nmea(c.text);
    ASSERT_EQ(log.fixes.size(), 1U) << c.text;
    const Fix& fix = log.fixes.front();
    EXPECT_EQ(fix.utcMilliseconds, c.milliseconds) << c.text;
    EXPECT_DOUBLE_EQ(fix.speedKnots, c.speedKnots) << c.text;
    EXPECT_NEAR(fix.latitude, c.latitude, 1e-12) << c.text;
    EXPECT_NEAR(fix.longitude, c.longitude, 1e-12) << c.text;
    EXPECT_TRUE(fix.isValid);
    EXPECT_EQ(log.validFixes, 1U);
  }
}

TEST(NmeaReaderTest, BrokenSentencesAreCountedByReason) {
  const std::pair<const char*, Rejection> cases[] = {
      {"120000,A,4807.038,N,01131.000,E,022.4,,010524*00", Rejection::WrongChecksum},
      {"120000,A,4807.038,N,01131.000,E,022.4,,010524*6", Rejection::WrongChecksum},
      {"120000,A,4807.038,N,01131.000,E,022.4,,010524*", Rejection::WrongChecksum},
      {"120000,A,4807.038,N,01131.000,E,022.4,", Rejection::TooFewFields},
      {"", Rejection::TooFewFields},
      {"120000,,4807.038,N,01131.000,E,022.4,,010524", Rejection::UnknownStatus},
      {"120000,AV,4807.038,N,01131.000,E,022.4,,010524", Rejection::UnknownStatus},
      {",A,4807.038,N,01131.000,E,022.4,,010524", Rejection::NoTime},
      {"1200,A,4807.038,N,01131.000,E,022.4,,010524", Rejection::BadTime},
      {"120000Z,A,4807.038,N,01131.000,E,022.4,,010524", Rejection::BadTime},
      {"240000,A,4807.038,N,01131.000,E,022.4,,010524", Rejection::BadTime},
      {"126000,A,4807.038,N,01131.000,E,022.4,,010524", Rejection::BadTime},
      {"120060,A,4807.038,N,01131.000,E,022.4,,010524", Rejection::BadTime},
      {"-10000,A,4807.038,N,01131.000,E,022.4,,010524", Rejection::BadTime},
      {"120000,A,4807.038,N,01131.000,E,022.4,,", Rejection::NoDate},
      {"120000,A,4807.038,N,01131.000,E,022.4,,084.4", Rejection::BadDate},
      {"120000,A,4807.038,N,01131.000,E,022.4,,300223", Rejection::BadDate},
      {"120000,A,4807.038,N,01131.000,E,022.4,,01052024", Rejection::BadDate},
      {"120000,A,,N,01131.000,E,022.4,,010524", Rejection::NoPosition},
      {"120000,A,4807.038,N,01131.000,,022.4,,010524", Rejection::NoPosition},
      {"120000,A,48o7.038,N,01131.000,E,022.4,,010524", Rejection::BadPosition},
      {"120000,A,4807.038,N,011.31.0,E,022.4,,010524", Rejection::BadPosition},
      {"120000,A,4807.038,E,01131.000,E,022.4,,010524", Rejection::BadPosition},
      {"120000,A,4807.038,N,.,E,022.4,,010524", Rejection::BadPosition},
      {"120000,A,4860.000,N,01131.000,E,022.4,,010524", Rejection::OutOfRange},
      {"120000,A,9000.001,N,01131.000,E,022.4,,010524", Rejection::OutOfRange},
      {"120000,A,4807.038,N,18000.001,E,022.4,,010524", Rejection::OutOfRange},
      {"120000,A,4294967296,N,01131.000,E,022.4,,010524", Rejection::OutOfRange},
      {"120000,A,4807.038,N,01131.000,E,-1,,010524", Rejection::BadSpeed},
      {"120000,A,4807.038,N,01131.000,E,1e3,,010524", Rejection::BadSpeed},
      {"120000,A,4807.038,N,01131.000,E,4294967296,,010524", Rejection::OutOfRange},
  };
  for (const auto& [fields, reason] : cases) {
    const ReceiverLog log = Nmea(std::string("$GPRMC,") + fields + "\r\n");
    EXPECT_EQ(Count(log, reason), 1U) << fields << ", not " << RejectionName(reason);
    EXPECT_EQ(log.GetRejected(), 1U) << fields;
    EXPECT_TRUE(log.fixes.empty()) << fields;
  }
  const ReceiverLog tooLong =
      Nmea("$GPRMC,120000,A,4807.038,N,01131.000,E,022.4,,010524" + Repeat(",0", 200));
  EXPECT_EQ(Count(tooLong, Rejection::TooLong), 1U);
}

TEST(NmeaReaderTest, VoidAndOtherSentencesAreCountedButAreNoFixes) {
  const ReceiverLog log = Nmea(
      "$GPRMC,,V,,,,,,,,,,N*53\r\n"
      "$GPRMC,120000,V,4807.038,N,01131.000,E,022.4,,010524\r\n"
      "$GPRMC,,V,,,,,,,,,,N*54\r\n"
      "$GPRMC,120001,A,4807.038,N,01131.000,E,022.4,,010524\r\n"
      "$GPGSV,1\r\n$GLGSV,1\r\n$PUBX,00\r\n$gprmc,1\r\n$,\r\n!AIVDM,1\r\n$GPTXT\r\n");
  EXPECT_EQ(log.sentences, 7U);
  EXPECT_EQ(log.voidFixes, 2U);
  EXPECT_EQ(Count(log, Rejection::WrongChecksum), 1U);
  ASSERT_EQ(log.fixes.size(), 2U);
  EXPECT_FALSE(log.fixes[0].isValid);
  EXPECT_TRUE(log.fixes[1].isValid);
  EXPECT_EQ(log.validFixes, 1U);
  EXPECT_EQ(log.passedOver, (std::map<std::string, std::uint64_t>{{"GSV", 2}, {"PUBX", 1}}));
  EXPECT_TRUE(log.warnings.empty());

  const ReceiverLog withoutRmc = Nmea("$GPGGA,120000,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,\n");
  ASSERT_EQ(withoutRmc.warnings.size(), 1U);
  EXPECT_NE(withoutRmc.warnings.front().find("no RMC sentences"), std::string::npos);
  ReceiverLog none;
  EXPECT_EQ(ReadNmea(std::string("no log\n$5,000 for it\n"), {}, none), XpErrInvalidFile);
}

TEST(GpxReaderTest, TimesAndSpeedsOfAllFormsAreRead) {
  struct Case {
    std::string inside;
    std::int64_t milliseconds = kNoon;
    double metersPerSecond = -1;
  };
  const std::string noon = "<time>2024-05-01T12:00:00Z</time>";
  const Case cases[] = {
      {noon},
      {"<time>\n 2024-05-01T12:00:00.25Z </time>", kNoon + 250},
      {"<time>2024-05-01t14:00:00,5+02:00</time>", kNoon + 500},
      {"<time>2024-05-01T08:30:00-0330</time>"},
      {"<time>2024-05-01T20:29:60.5-03:30</time>", kNoon + 12 * 3'600'000 - 1},
      {"<time>2024-05-02T00:00:00+12</time>"},
      {"<time>2024-05-01 12:00:00</time>"},
      {"<time>2024-05-01T12:<!-- -->00:<![CDATA[00Z]]></time>"},
      {"<speed>5.5</speed>" + noon, kNoon, 5.5},
      {noon + "<x:speed> +1.5e1 </x:speed>", kNoon, 15},
      {"<extensions><a><b xmlns='q'><n:speed>2</n:speed></b><speed>9</speed></a></extensions>" + noon, kNoon,
       2},
      {noon + "<speed/><a><speed>3</speed></a>", kNoon, 3},
      {noon + "<speed>-1</speed>"},
      {noon + "<speed>NaN</speed>"},
      {noon + "<speed>1e300</speed>"},
      {noon + "<speed>fast</speed><extensions><time>2000-01-01T00:00:00Z</time></extensions>"},
  };
  for (const Case& c : cases) {
    const ReceiverLog log = Gpx(GpxOf("<trkpt lat='-1.5' lon='1e1'>" + c.inside + "</trkpt>"));
    ASSERT_EQ(log.fixes.size(), 1U) << c.inside;
    EXPECT_EQ(log.fixes[0].utcMilliseconds, c.milliseconds) << c.inside;
    EXPECT_EQ(log.fixes[0].latitude, -1.5);
    EXPECT_EQ(log.fixes[0].longitude, 10);
    const double expected = c.metersPerSecond < 0 ? -1 : c.metersPerSecond * kKnotsPerMeterPerSecond;
    EXPECT_DOUBLE_EQ(log.fixes[0].speedKnots, expected) << c.inside;
  }
}

TEST(GpxReaderTest, PointsWithoutUseAreCountedByReason) {
  const std::string noon = "<time>2024-05-01T12:00:00Z</time>";
  const std::pair<std::string, Rejection> cases[] = {
      {"<trkpt lat='1' lon='2'/>", Rejection::NoTime},
      {"<trkpt lat='1' lon='2'><time> </time></trkpt>", Rejection::NoTime},
      {"<trkpt lat='1' lon='2'><a><time>2024-05-01T12:00:00Z</time></a></trkpt>", Rejection::NoTime},
      {"<trkpt lat='1' lon='2'><time>12:00</time></trkpt>", Rejection::BadTime},
      {"<trkpt lat='1' lon='2'><time>2024-05-01T12:00:00X</time></trkpt>", Rejection::BadTime},
      {"<trkpt lat='1' lon='2'><time>2024-05-01T12:00:00+9</time></trkpt>", Rejection::BadTime},
      {"<trkpt lat='1' lon='2'><time>2024-05-01T12:00:00+99:00</time></trkpt>", Rejection::BadTime},
      {"<trkpt lat='1' lon='2'><time>2023-02-29T12:00:00Z</time></trkpt>", Rejection::BadTime},
      {"<trkpt lat='1' lon='2'><time>1970-01-01T00:00:00+01:00</time></trkpt>", Rejection::BadTime},
      {"<trkpt lat='1' lon='2'><time>2024-05-01T12:00:00Z" + std::string(100, '0') + "</time></trkpt>",
       Rejection::BadTime},
      {"<trkpt lat='1'>" + noon + "</trkpt>", Rejection::NoPosition},
      {"<trkpt lat='1' lon='2,5'>" + noon + "</trkpt>", Rejection::BadPosition},
      {"<trkpt lat='nan' lon='2'>" + noon + "</trkpt>", Rejection::BadPosition},
      {"<trkpt lat='90.1' lon='2'>" + noon + "</trkpt>", Rejection::OutOfRange},
      {"<trkpt lat='1' lon='-180.1'>" + noon + "</trkpt>", Rejection::OutOfRange},
  };
  for (const auto& [point, reason] : cases) {
    // The point before must not lend the broken one its time or speed.
    const ReceiverLog log = Gpx(GpxOf("<trkpt lat='1' lon='2'>" + noon + "</trkpt>" + point));
    EXPECT_EQ(Count(log, reason), 1U) << point << ", not " << RejectionName(reason);
    EXPECT_EQ(log.fixes.size(), 1U) << point;
    EXPECT_EQ(log.sentences, 2U);
  }
}

TEST(GpxReaderTest, OnlyPointsOfTracksCountAndTheirOrderIsTheDocuments) {
  const auto point = [](int latitude) {
    return "lat='" + std::to_string(latitude) + "' lon='0'><time>2024-05-01T12:00:00Z</time></";
  };
  const ReceiverLog log =
      Gpx("<?xml version='1.0'?><!-- <gpx> --><q:gpx><q:wpt " + point(9) + "q:wpt><q:rte><q:rtept " +
          point(8) + "q:rtept></q:rte><q:trk><q:trkseg><q:trkpt " + point(1) +
          "q:trkpt></q:trkseg><q:trkseg/><q:trkseg><q:trkpt " + point(2) +
          "q:trkpt></q:trkseg></q:trk><q:trk><q:trkseg><q:trkpt " + point(3) +
          "q:trkpt></q:trkseg></q:trk></q:gpx>");
  ASSERT_EQ(log.fixes.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(log.fixes[i].latitude, static_cast<double>(i + 1));

  const ReceiverLog route = Gpx("<gpx><rte><rtept lat='1' lon='2'/></rte></gpx>");
  ASSERT_EQ(route.warnings.size(), 1U);
  EXPECT_NE(route.warnings.front().find("routes"), std::string::npos);
  ReceiverLog none;
  EXPECT_EQ(ReadGpx(std::string("<kml/>"), {}, none), XpErrInvalidFile);
  EXPECT_EQ(ReadGpx(std::string("<gpx>"), {}, none), XpErrNotWellFormed);
  EXPECT_EQ(ReadGpx({}, {}, none), XpErrNotWellFormed);
}

bool IsPrefix(const std::vector<Fix>& start, const std::vector<Fix>& whole) {
  return std::equal(start.begin(), start.end(), whole.begin(), whole.begin() + static_cast<int>(start.size()),
                    [](const Fix& a, const Fix& b) {
                      return a.utcMilliseconds == b.utcMilliseconds && a.latitude == b.latitude &&
                             a.longitude == b.longitude && a.speedKnots == b.speedKnots;
                    });
}

TEST(ReceiverLogTest, LogsThatBreakOffAnywhereGiveTheFixesUpToThere) {
  const std::string nmea =
      "$GPGGA,120000,4807.038,N,01131.000,E,1\r\n$GPRMC,120000,A,4807.038,N,01131.000,E,022.4,084.4,010524*"
      "12\r\n"
      "$GPRMC,120001,A,4807.138,S,01131.100,W,023.4,084.4,010524*1D\r\n";
  const std::string gpx = GpxOf(
      "<trkpt lat='1.25' lon='2.25'><time>2024-05-01T12:00:00Z</time><speed>3</speed></trkpt>"
      "<trkpt lat='1.26' lon='2.26'><time>2024-05-01T12:00:01Z</time></trkpt>");
  const auto wholeNmea = Nmea(nmea).fixes;
  const auto wholeGpx = Gpx(gpx).fixes;
  ASSERT_EQ(wholeNmea.size(), 2U);
  ASSERT_EQ(wholeGpx.size(), 2U);
  ReceiverLog log;
  for (std::size_t size = 0; size < nmea.size(); ++size) {
    ReadNmea(std::span(nmea.data(), size), {}, log);
    // Cut before the checksum, the last date could be cut, too; two digits of the year keep that from
    // passing.
    EXPECT_TRUE(IsPrefix(log.fixes, wholeNmea)) << size;
  }
  for (std::size_t size = 0; size < gpx.size(); ++size) {
    const XpResult result = ReadGpx(std::span(gpx.data(), size), {}, log);
    EXPECT_TRUE(IsPrefix(log.fixes, wholeGpx)) << size;
    EXPECT_EQ(result, log.fixes.empty() ? XpErrNotWellFormed : XpOk) << size;
    EXPECT_EQ(log.warnings.size(), 1U) << size;
  }
}

TEST(ReceiverLogTest, HostileLogsCostNoMoreThanTheirSize) {
  constexpr std::size_t kLong = 4 << 20;
  ReceiverLog log;
  EXPECT_EQ(ReadNmea("$GPRMC," + std::string(kLong, '1'), {}, log), XpOk);
  EXPECT_EQ(Count(log, Rejection::TooLong), 1U);
  EXPECT_EQ(ReadNmea("$GPRMC" + std::string(kLong, ','), {}, log), XpOk);
  EXPECT_EQ(ReadNmea(std::string(kLong, '$'), {}, log), XpErrInvalidFile);
  EXPECT_EQ(ReadNmea(std::string(kLong, '\0'), {}, log), XpErrInvalidFile);
  std::string types;
  for (int i = 0; i < 5000; ++i) types += "$P" + std::to_string(i + 10) + ",\n";
  EXPECT_EQ(ReadNmea(types, {}, log), XpOk);
  EXPECT_LE(log.passedOver.size(), 65U);
  EXPECT_EQ(log.passedOver["others"], 5000U - 64U);

  EXPECT_EQ(ReadGpx(GpxOf(Repeat("<trkpt lat='1' lon='2'>", 100'000)), {}, log), XpErrNotWellFormed);
  EXPECT_EQ(log.warnings.back(), "the document breaks off: elements are nested too deeply");
  const std::string longText(kLong, '1');
  EXPECT_EQ(
      ReadGpx(GpxOf("<trkpt lat='" + longText + "' lon='2'><time>" + longText + "</time></trkpt>"), {}, log),
      XpOk);
  EXPECT_EQ(Count(log, Rejection::BadTime), 1U);
  EXPECT_EQ(ReadGpx("<!DOCTYPE gpx [<!ENTITY a 'aa'>]>" + GpxOf("&a;"), {}, log), XpErrNotWellFormed);
}

TEST(ReceiverLogTest, FormatsAreToldByTheirContent) {
  const std::string gpx = "<gpx version='1.1'/>";
  std::string utf16 = "\xFF\xFE";
  for (const char c : gpx) utf16 += {c, '\0'};
  const std::pair<std::string, LogFormat> cases[] = {
      {"", LogFormat::Unknown},
      {"MOFF", LogFormat::Moff},
      {"MOF", LogFormat::Unknown},
      {gpx, LogFormat::Gpx},
      {utf16, LogFormat::Gpx},
      {"\xEF\xBB\xBF\n<?xml version='1.0'?>\n<!-- $GPRMC, --><g:gpx\n>", LogFormat::Gpx},
      {"<kml><name>gpx</name></kml>", LogFormat::Unknown},
      {"a text about <gpx>", LogFormat::Unknown},
      {"<gpxx/>", LogFormat::Unknown},
      {"@header\r\n$PMTK,1\r\n$GNGSV,3,1\r\n", LogFormat::Nmea},
      {"$PMTK,1\r\n$GPRMC", LogFormat::Unknown},
      {std::string("\0\x80$", 3) + "$GBRMC,", LogFormat::Nmea},
  };
  for (const auto& [bytes, expected] : cases) {
    EXPECT_STREQ(LogFormatName(DetectFormat(bytes)), LogFormatName(expected)) << bytes;
  }
}

}  // namespace
