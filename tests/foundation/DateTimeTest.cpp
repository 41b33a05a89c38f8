#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <array>
#include <cmath>
#include <ctime>
#include <limits>
#include <tuple>

#include "foundation/time/XpDateTime.h"

namespace {

using Fields = std::array<std::int32_t, 7>;

Fields FieldsOf(const XpDateTime& date) {
  Fields f{};
  EXPECT_TRUE(date.GetDateTimeFields(f[0], f[1], f[2], f[3], f[4], f[5], f[6])) << date.GetValue();
  return f;
}

XpDateTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  XpDateTime date;
  EXPECT_TRUE(date.SetDateTime(year, month, day, hour, minute, second)) << year << '-' << month << '-' << day;
  return date;
}

class Zone {
 public:
  explicit Zone(const char* rules) {
    setenv("TZ", rules, 1);
    tzset();
  }
  ~Zone() {
    unsetenv("TZ");
    tzset();
  }
};

constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST(DateTimeTest, SerialDatesAndFieldsAgree) {
  const struct {
    double value;
    Fields fields;
  } cases[] = {
      {0.0, {1899, 12, 30, 0, 0, 0, 6}},       {-1.25, {1899, 12, 29, 6, 0, 0, 5}},
      {0.25, {1899, 12, 30, 6, 0, 0, 6}},      {25569.0, {1970, 1, 1, 0, 0, 0, 4}},
      {36585.5, {2000, 2, 29, 12, 0, 0, 2}},   {36526.0, {2000, 1, 1, 0, 0, 0, 6}},
      {36891.75, {2000, 12, 31, 18, 0, 0, 0}}, {-657434.0, {100, 1, 1, 0, 0, 0, 5}},
      {2958465.0, {9999, 12, 31, 0, 0, 0, 5}}, {73050.0, {2099, 12, 31, 0, 0, 0, 4}},
      {73110.0, {2100, 3, 1, 0, 0, 0, 1}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FieldsOf(XpDateTime(c.value)), c.fields) << c.value;
    const Fields& f = c.fields;
    EXPECT_DOUBLE_EQ(At(f[0], f[1], f[2], f[3], f[4], f[5]).GetValue(), c.value);
  }
}

TEST(DateTimeTest, AFractionAloneIsATimeOfDayZeroWhateverItsSign) {
  EXPECT_EQ(FieldsOf(XpDateTime(-0.25)), FieldsOf(XpDateTime(0.25)));
}

TEST(DateTimeTest, EveryDayOfTheCalendarComesBack) {
  double expected = At(101, 1, 1).GetValue();
  for (int year = 101; year <= 9999; ++year) {
    for (const int month : {1, 2, 3, 12}) {
      XpDateTime date;
      const bool leapDay = date.SetDateTime(year, 2, 29, 23, 59, 59);
      ASSERT_EQ(leapDay, year % 4 == 0 && (year % 100 != 0 || year % 400 == 0)) << year;
      for (const int day : {1, month == 2 ? 28 + leapDay : 31}) {
        date = At(year, month, day, 23, 59, 59);
        const Fields f = FieldsOf(date);
        ASSERT_EQ((Fields{year, month, day, 23, 59, 59, f[6]}), f);
      }
    }
    ASSERT_EQ(At(year, 1, 1).GetValue(), expected);
    expected += At(year, 12, 31).GetValue() - At(year, 1, 1).GetValue() + 1;
  }
}

TEST(DateTimeTest, FieldsOutsideTheCalendarAreRefusedAndKeepTheValue) {
  const std::array<int, 6> cases[] = {
      {99, 1, 1, 0, 0, 0},           {10000, 1, 1, 0, 0, 0}, {1900, 2, 29, 0, 0, 0}, {2001, 4, 31, 0, 0, 0},
      {2001, 0, 1, 0, 0, 0},         {2001, 13, 1, 0, 0, 0}, {2001, 1, 0, 0, 0, 0},  {2001, 1, 1, 24, 0, 0},
      {2001, 1, 1, 0, 60, 0},        {2001, 1, 1, 0, 0, 60}, {2001, 1, 1, -1, 0, 0}, {-5, 1, 1, 0, 0, 0},
      {2001, INT32_MAX, 1, 0, 0, 0},
  };
  for (const auto& f : cases) {
    XpDateTime date(1.5);
    EXPECT_FALSE(date.SetDateTime(f[0], f[1], f[2], f[3], f[4], f[5])) << f[0] << ' ' << f[1] << ' ' << f[2];
    EXPECT_FALSE(date.IsValid());
    EXPECT_EQ(date.GetValue(), 1.5);
    EXPECT_EQ(date.GetYear(), -1);
    EXPECT_EQ(date.GetSecond(), -1);
  }
  std::tm broken{};
  broken.tm_year = std::numeric_limits<int>::max();
  broken.tm_mon = std::numeric_limits<int>::max();
  EXPECT_FALSE(XpDateTime().SetFromTm(broken));
}

TEST(DateTimeTest, NumbersOutOfRangeAreKeptButNotValid) {
  for (const double value : {-657435.0, 2958466.0, 1e300, std::nan(""), -HUGE_VAL}) {
    const XpDateTime date(value);
    EXPECT_FALSE(date.IsValid()) << value;
    std::int32_t f = 0;
    EXPECT_FALSE(date.GetDateTimeFields(f, f, f, f, f, f, f)) << value;
    EXPECT_TRUE(date.FormatDate(0).IsEmpty());
    FILETIME fileTime;
    EXPECT_FALSE(date.ToFileTime(fileTime));
    EXPECT_EQ(date.ToTimeT(), -1);
  }
  EXPECT_FALSE(XpDateTime().IsValid());
  EXPECT_EQ(FieldsOf(At(9999, 12, 31, 23, 59, 59))[5], 59);
}

TEST(DateTimeTest, AFractionRoundsInTheTimeButNotInTheDay) {
  const double almostMidnight = 36526.0 + (86399.6 / 86400.0);
  EXPECT_EQ(FieldsOf(XpDateTime(almostMidnight)), (Fields{2000, 1, 1, 0, 0, 0, 6}));
  EXPECT_EQ(FieldsOf(XpDateTime(36526.0 + 59.4 / 86400.0))[5], 59);
}

TEST(DateTimeTest, ArithmeticRunsForwardOnBothSidesOfDayZero) {
  XpDateTime date = At(1899, 12, 29, 23, 59, 30);
  date.AddMinutesSeconds(1, 0);
  EXPECT_EQ(FieldsOf(date), (Fields{1899, 12, 30, 0, 0, 30, 6}));
  date.SubtractMinutes(24 * 60);
  EXPECT_EQ(FieldsOf(date), (Fields{1899, 12, 29, 0, 0, 30, 5}));
  EXPECT_EQ(At(1899, 12, 31).Difference(At(1899, 12, 28, 12)).GetTotalSeconds(), 216000);
  EXPECT_EQ(At(2000, 2, 28).Difference(At(2000, 3, 1)).GetTotalSeconds(), -2 * 86400);
  date = At(9999, 12, 31, 23, 59, 0);
  date.AddMinutesSeconds(0, 60);
  EXPECT_FALSE(date.IsValid());
  date.SubtractMinutes(1);
  EXPECT_TRUE(date.IsValid());
  date.SubtractMinutes(std::numeric_limits<std::int32_t>::min());
  EXPECT_FALSE(date.IsValid());
}

TEST(DateTimeTest, SpansRoundToSecondsAndStayInTheirType) {
  EXPECT_EQ(XpDateTimeSpan(0.999999999).GetTotalSeconds(), 86400);
  EXPECT_EQ(XpDateTimeSpan(-0.999999999).GetTotalSeconds(), -86400);
  EXPECT_TRUE(XpDateTimeSpan(3615899.0).IsValid());
  EXPECT_FALSE(XpDateTimeSpan(3615900.0).IsValid());
  EXPECT_FALSE(XpDateTimeSpan(std::nan("")).IsValid());
  EXPECT_EQ(XpDateTimeSpan(std::nan("")).GetTotalSeconds(), 0);
  EXPECT_EQ(XpDateTimeSpan(1e300).GetTotalSeconds(), std::numeric_limits<std::int64_t>::max());
}

TEST(DateTimeTest, DifferencesInSecondsAreExactOrNothing) {
  std::int64_t seconds = 7;
  EXPECT_TRUE(At(2024, 3, 1, 0, 0, 1).DifferenceInSeconds(At(2024, 2, 28, 23, 59, 59), seconds));
  EXPECT_EQ(seconds, 86402);
  EXPECT_FALSE(XpDateTime().DifferenceInSeconds(At(2024, 1, 1), seconds));
  EXPECT_EQ(seconds, 0);
  seconds = 7;
  EXPECT_FALSE(At(2024, 1, 1).DifferenceInSeconds(XpDateTime(), seconds));
  EXPECT_EQ(seconds, 0);
}

TEST(DateTimeTest, FileTimesFollowTheZoneAtTheirDate) {
  const Zone zone(kCentralEurope);
  constexpr std::uint64_t kUnixEpoch = 116444736000000000;
  for (const auto& [date, unixSeconds] :
       {std::pair{At(2024, 1, 15, 13, 0, 0), std::int64_t{1705320000}},  // winter
        std::pair{At(2024, 7, 15, 14, 0, 0), std::int64_t{1721044800}},  // summer
        std::pair{At(1970, 1, 1, 0, 59, 59), std::int64_t{-1}},
        std::pair{At(1965, 1, 1), std::int64_t{-157770000}}}) {
    FILETIME fileTime;
    ASSERT_TRUE(date.ToFileTime(fileTime));
    EXPECT_EQ(fileTime.Ticks(), kUnixEpoch + static_cast<std::uint64_t>(unixSeconds * 10'000'000));
    EXPECT_EQ(date.ToTimeT(), unixSeconds);
    EXPECT_EQ(XpDateTime::FromFileTime(fileTime).GetValue(), date.GetValue());
  }
  FILETIME early;
  EXPECT_FALSE(At(1600, 12, 31).ToFileTime(early));
  EXPECT_FALSE(XpDateTime::FromFileTime({UINT32_MAX, UINT32_MAX}).IsValid());
}

}  // namespace
