// What is written reads back as the reader of sidecars takes it: by tokens between commas, empty ones
// dropped.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "gps/receiver/LogWriter.h"

namespace {

using namespace vrx::receiver;

struct LogRecord {
  std::string fixTime;
  std::string ownTime;
  std::string date;
  std::string status;
  double latitudeSeconds = 0;  // of arc
  double longitudeSeconds = 0;
  double speed = 0;
};

struct WrittenLog {
  bool hasHeader = false;
  bool hasMark = false;
  std::string timeA;
  std::string timeB;
  std::vector<LogRecord> records;
};

std::vector<std::string> Tokens(const std::string& line) {
  std::vector<std::string> tokens;
  std::istringstream stream(line);
  for (std::string token; std::getline(stream, token, ',');) {
    if (!token.empty()) tokens.push_back(token);
  }
  return tokens;
}

double DecimalOf(const std::string& token) {
  EXPECT_LE(token.size(), 19U) << token;
  EXPECT_EQ(token.find_first_not_of("0123456789."), std::string::npos) << token;
  return token.find('.') == std::string::npos ? 0.0 : std::stod(token);
}

double ArcSeconds(const std::string& token, const std::string& hemisphere) {
  const double value = DecimalOf(token);
  const double degrees = std::floor(value / 100);
  const double minutes = value - degrees * 100;
  EXPECT_LT(minutes, 60) << token;
  const bool isNegative = hemisphere == "S" || hemisphere == "W";
  return (degrees * 60 + minutes) * (isNegative ? -60 : 60);
}

void ExpectChecksum(const std::string& line) {
  const std::size_t star = line.find('*');
  ASSERT_EQ(star, line.size() - 4) << line;
  int sum = 0;
  for (const char c : line.substr(1, star - 1)) sum ^= c;
  EXPECT_EQ(std::stoi(line.substr(star + 1, 2), nullptr, 16), sum) << line;
}

WrittenLog Parse(const std::string& text) {
  WrittenLog log;
  EXPECT_TRUE(text.ends_with("\r\n"));
  std::istringstream stream(text);
  std::string fixTime;
  for (std::string line; std::getline(stream, line);) {
    EXPECT_LE(line.size(), 99U);
    EXPECT_TRUE(line.ends_with('\r'));
    if (line.starts_with("@Kelogps/")) {
      log.hasHeader = line.find("wgs-84/") != std::string::npos;
      log.hasMark = line.find("d/") != std::string::npos;
    } else if (line.starts_with("@Kelogpsoption/")) {
      EXPECT_EQ(line.size(), 55U);
      EXPECT_EQ(line.substr(16, 1) + line.substr(35, 1), "//");
      log.timeA = line.substr(17, 18);
      log.timeB = line.substr(36, 18);
    } else if (line.starts_with("$GPGGA")) {
      ExpectChecksum(line);
      fixTime = Tokens(line).at(1);
    } else {
      EXPECT_TRUE(line.starts_with("$GPRMC")) << line;
      ExpectChecksum(line);
      const auto t = Tokens(line);
      log.records.push_back({fixTime, t.at(1), t.at(8), t.at(2), ArcSeconds(t.at(3), t.at(4)),
                             ArcSeconds(t.at(5), t.at(6)), DecimalOf(t.at(7))});
    }
  }
  return log;
}

constexpr std::int64_t kNoon = 1'714'564'800'000;  // 1 May 2024, 12:00:00

TEST(LogWriterTest, FixesReadBackWithTimePositionAndSpeed) {
  const Fix fixes[] = {
      {kNoon - 499, 48.1173, 11.51666666, 22.4},
      {kNoon + 1300, -0.5, -0.0000001, 0},
      {kNoon + 12 * 3'600'000, 89.99999999999, 179.99999999999, 20'000},
      {kNoon + 13 * 3'600'000, -90, -180, -1},
      {kNoon + 14 * 3'600'000, 0, 0, 0.0004},
  };
  std::string text;
  ASSERT_EQ(WriteLog(fixes, {}, text), XpOk);
  const WrittenLog log = Parse(text);
  EXPECT_TRUE(log.hasHeader);
  EXPECT_FALSE(log.hasMark);
  EXPECT_EQ(log.timeA, "") << "there is no shift";
  ASSERT_EQ(log.records.size(), std::size(fixes));
  const std::pair<const char*, const char*> times[] = {{"120000.000", "010524"},
                                                       {"120001.000", "010524"},
                                                       {"000000.000", "020524"},
                                                       {"010000.000", "020524"},
                                                       {"020000.000", "020524"}};
  for (std::size_t i = 0; i < std::size(fixes); ++i) {
    EXPECT_EQ(log.records[i].fixTime, times[i].first);
    EXPECT_EQ(log.records[i].ownTime, times[i].first);
    EXPECT_EQ(log.records[i].date, times[i].second);
    EXPECT_EQ(log.records[i].status, "A");
    EXPECT_NEAR(log.records[i].latitudeSeconds, fixes[i].latitude * 3600, 1e-4) << i;
    EXPECT_NEAR(log.records[i].longitudeSeconds, fixes[i].longitude * 3600, 1e-4) << i;
    EXPECT_NEAR(log.records[i].speed, std::max(fixes[i].speedKnots, 0.0), 0.0005) << i;
  }
}

TEST(LogWriterTest, ShiftAndMarkAreWrittenOnlyWhenWanted) {
  const Fix fix{.utcMilliseconds = kNoon};
  for (const auto& [shift, timeA] : {std::pair<std::int64_t, const char*>{3600, "20240501110000.000"},
                                     {-90'061, "20240502130101.000"},
                                     {INT32_MAX, "19560413084553.000"},
                                     {INT32_MIN, "20920519151408.000"}}) {
    std::string text;
    ASSERT_EQ(WriteLog(std::span(&fix, 1), {.shiftSeconds = shift, .hasHeaderMark = true}, text), XpOk);
    const WrittenLog log = Parse(text);
    EXPECT_TRUE(log.hasMark);
    EXPECT_EQ(log.timeA, timeA);
    EXPECT_EQ(log.timeB, "20240501120000.000");
  }
}

TEST(LogWriterTest, WhatTheFormatCannotHoldIsRefused) {
  const Fix good{.utcMilliseconds = kNoon};
  const auto changed = [&](auto change) {
    Fix fix = good;
    change(fix);
    return std::vector<Fix>{fix};
  };
  const std::vector<std::vector<Fix>> cases = {
      {},
      {good, good},
      {good, {.utcMilliseconds = kNoon - 1000}},
      {good, {.utcMilliseconds = kNoon + 499}},
      changed([](Fix& f) { f.isValid = false; }),
      changed([](Fix& f) { f.utcMilliseconds = 946'684'799'999; }),
      changed([](Fix& f) { f.utcMilliseconds = 4'102'444'799'500; }),
      changed([](Fix& f) { f.utcMilliseconds = INT64_MAX; }),
      changed([](Fix& f) { f.utcMilliseconds = INT64_MIN; }),
      changed([](Fix& f) { f.latitude = 90.1; }),
      changed([](Fix& f) { f.longitude = -180.1; }),
      changed([](Fix& f) { f.longitude = NAN; }),
      changed([](Fix& f) { f.speedKnots = 20'001; }),
      changed([](Fix& f) { f.speedKnots = NAN; }),
  };
  for (const auto& fixes : cases) {
    std::string text = "old";
    EXPECT_EQ(WriteLog(fixes, {}, text), XpErrInvalidArgument)
        << (fixes.empty() ? 0 : fixes[0].utcMilliseconds);
    EXPECT_EQ(text, "");
  }
  std::string text;
  EXPECT_EQ(WriteLog(std::span(&good, 1), {.shiftSeconds = std::int64_t{INT32_MAX} + 1}, text),
            XpErrInvalidArgument);
}

}  // namespace
