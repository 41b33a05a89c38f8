// A log meets its movie through the movie's date and zone and what the user knows better; where they do not
// meet, the likeliest cause is named.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "gps/receiver/LogAlignment.h"

namespace {

using namespace vrx::receiver;

constexpr std::int64_t kNoonSeconds = 1'714'564'800;  // 1 May 2024, 12:00:00
constexpr std::int64_t kDay = 86'400;

XpDateTime Noon() {
  XpDateTime time;
  time.SetDateTime(2024, 5, 1, 12, 0, 0);
  return time;
}

/// A log whose first fix comes `from` seconds after noon UTC.
LogSpan Span(std::int64_t from, std::int64_t seconds) {
  return {(kNoonSeconds + from) * 1000, (kNoonSeconds + from + seconds) * 1000};
}

TEST(AlignTest, ZonesOffsetsAndStartsPlaceTheMovieInTheLog) {
  struct Case {
    const char* what;
    std::optional<int> movieZone;
    AlignRequest request;
    std::int64_t start;  // after noon UTC
    std::int64_t shift;
    bool isZoneAssumed = false;
  };
  const Case cases[] = {
      {"no zone anywhere", {}, {}, 0, 0, true},
      {"the movie's zone", 120, {}, -7200, 0},
      {"the user's zone alone", {}, {.zoneMinutes = 120}, -7200, -7200},
      {"the user's zone before the movie's", 60, {.zoneMinutes = -210}, 12'600, 16'200},
      {"an offset", 120, {.offsetSeconds = -30}, -7230, -30},
      {"an offset without zone", {}, {.offsetSeconds = 30}, 30, 30, true},
      {"a start", 120, {.startUtcSeconds = kNoonSeconds + 100}, 100, 7300},
      {"a start without zone", {}, {.startUtcSeconds = kNoonSeconds + 100}, 100, 100},
      {"a start, moved", {}, {.offsetSeconds = 5, .zoneMinutes = 60, .startUtcSeconds = kNoonSeconds}, 5, 5},
  };
  for (const Case& c : cases) {
    Alignment alignment;
    const MovieTime movie{Noon(), c.movieZone, 60.0};
    ASSERT_EQ(AlignLog(movie, c.request, Span(-kDay, 2 * kDay), alignment), XpOk) << c.what;
    EXPECT_EQ(alignment.startUtcSeconds - kNoonSeconds, c.start) << c.what;
    EXPECT_EQ(alignment.shiftSeconds, c.shift) << c.what;
    EXPECT_EQ(alignment.isZoneAssumed, c.isZoneAssumed) << c.what;
    // The reader takes the movie's local time, its zone and the shift.
    EXPECT_EQ(kNoonSeconds - c.movieZone.value_or(0) * 60 + alignment.shiftSeconds,
              alignment.startUtcSeconds);
  }
}

TEST(AlignTest, TheCoveredPartIsToldOnTheMoviesClock) {
  const std::tuple<LogSpan, std::optional<double>, const char*> cases[] = {
      {Span(-60, 821), 845.0, "the log covers 00:00 to 12:41 of 14:05"},
      {Span(187, 9999), 845.9, "the log covers 03:07 to 14:05 of 14:05"},
      {Span(0, 3725), 7322.0, "the log covers 00:00 to 1:02:05 of 2:02:02"},
      {Span(-10, 70), {}, "the log covers 00:00 to 01:00 of the movie"},
      {Span(-10, 70), -1.0, "the log covers 00:00 to 01:00 of the movie"},
      {Span(-10, 70), NAN, "the log covers 00:00 to 01:00 of the movie"},
      {Span(60, 0), 60.0, "the log covers 01:00 to 01:00 of 01:00"},
      {Span(61, 100), 60.0, "the log covers nothing of the movie"},
      {Span(-61, 60), 60.0, "the log covers nothing of the movie"},
  };
  for (const auto& [span, duration, text] : cases) {
    Alignment alignment;
    ASSERT_EQ(AlignLog({Noon(), 0, duration}, {}, span, alignment), XpOk);
    EXPECT_EQ(DescribeOverlap(alignment), text);
    EXPECT_EQ(DescribeMismatch(alignment).empty(), alignment.hasOverlap) << text;
  }
}

TEST(AlignTest, WithoutOverlapTheLikeliestCauseIsNamed) {
  constexpr std::int64_t kHour = 3600;
  constexpr std::int64_t kWeeks = 1024 * 7 * kDay;
  struct Case {
    std::int64_t logFrom;  // after the movie's start
    std::int64_t logSeconds;
    Mismatch mismatch;
    std::int64_t correction;
    const char* words;
  };
  const Case cases[] = {
      {kHour - 100, 900, Mismatch::OneHour, kHour, "one hour later"},
      {kHour + 50, 640, Mismatch::OneHour, kHour, "one hour later"},
      {-kHour + 30, 550, Mismatch::OneHour, -kHour, "one hour earlier"},
      {-9 * kHour - 20, 700, Mismatch::Zone, -9 * kHour, "about 9 hours earlier"},
      {14 * kHour, 600, Mismatch::Zone, 14 * kHour, "14 hours later"},
      {2 * kHour - 1800, 5 * kHour, Mismatch::Zone, 2 * kHour, "2 hours later"},
      {5 * kHour + 1800 - 30, 700, Mismatch::Zone, 5 * kHour + 1800, "5 hours and 30 minutes later"},
      {-5 * kHour - 2700 - 30, 700, Mismatch::Zone, -5 * kHour - 2700, "5 hours and 45 minutes earlier"},
      {2700 - 10, 640, Mismatch::Zone, 2700, "about 45 minutes later"},
      {kDay - 300, 1000, Mismatch::WholeDays, kDay, "1 day later"},
      {-366 * kDay - 300, 1000, Mismatch::WholeDays, -366 * kDay, "366 days earlier"},
      {-kWeeks - 300, 1000, Mismatch::WeekRollover, -kWeeks, "1024 weeks earlier"},
      {-2 * kWeeks + 2 * kHour, 1000, Mismatch::WeekRollover, -2 * kWeeks, "2048 weeks earlier"},
      {-3 * kWeeks - 300, 1000, Mismatch::WholeDays, -3 * kWeeks, "21504 days earlier"},
      {kHour + 420, 620, Mismatch::OtherRecording, kHour - 180, "begins 57:00 after the movie ends"},
      {-40 * kDay - 5 * kHour, 1000, Mismatch::OtherRecording, -40 * kDay - 5 * kHour + 1000,
       "ends 40 days before the movie begins"},
      {kHour + 300, 2400, Mismatch::OtherRecording, kHour - 300, "begins 55:00 after the movie ends"},
      {630, 620, Mismatch::OtherRecording, 30, "begins 00:30 after the movie ends"},
  };
  for (const Case& c : cases) {
    Alignment alignment;
    const MovieTime movie{Noon(), 0, 600.0};
    ASSERT_EQ(AlignLog(movie, {}, Span(c.logFrom, c.logSeconds), alignment), XpOk) << c.words;
    EXPECT_FALSE(alignment.hasOverlap) << c.words;
    EXPECT_EQ(alignment.mismatch, c.mismatch) << c.words;
    EXPECT_EQ(alignment.correctionSeconds, c.correction) << c.words;
    EXPECT_NE(DescribeMismatch(alignment).find(c.words), std::string::npos) << DescribeMismatch(alignment);
    if (c.mismatch == Mismatch::OtherRecording) continue;
    Alignment corrected;
    ASSERT_EQ(AlignLog(movie, {.offsetSeconds = c.correction}, Span(c.logFrom, c.logSeconds), corrected),
              XpOk);
    EXPECT_TRUE(corrected.hasOverlap || corrected.mismatch == Mismatch::Zone) << c.words;
  }
}

TEST(AlignTest, WhatCannotBeAlignedIsRefused) {
  Alignment alignment;
  const LogSpan span = Span(0, 100);
  EXPECT_EQ(AlignLog({XpDateTime(), 0, 60.0}, {}, span, alignment), XpErrInvalidArgument);
  EXPECT_EQ(AlignLog({Noon(), 1441, 60.0}, {}, span, alignment), XpErrInvalidArgument);
  EXPECT_EQ(AlignLog({Noon(), 0, 60.0}, {.zoneMinutes = INT32_MIN}, span, alignment), XpErrInvalidArgument);
  EXPECT_EQ(AlignLog({Noon(), 0, 60.0}, {.offsetSeconds = INT64_MAX}, span, alignment), XpErrInvalidArgument);
  EXPECT_EQ(AlignLog({Noon(), 0, 60.0}, {.startUtcSeconds = INT64_MIN}, span, alignment),
            XpErrInvalidArgument);
  EXPECT_EQ(AlignLog({Noon(), 0, 60.0}, {}, {1, 0}, alignment), XpErrInvalidArgument);
  EXPECT_EQ(AlignLog({Noon(), 0, 1e300}, {}, {INT64_MIN, INT64_MIN}, alignment), XpOk);
  EXPECT_EQ(alignment.mismatch, Mismatch::OtherRecording);
  EXPECT_EQ(AlignLog({Noon(), 0, {}}, {}, {INT64_MAX, INT64_MAX}, alignment), XpOk);
  EXPECT_TRUE(alignment.hasOverlap) << "a movie of unknown length may reach there";
}

}  // namespace
