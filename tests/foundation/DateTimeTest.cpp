#include <gtest/gtest.h>
#include <time.h>
#include <unicode/locid.h>

#include <array>
#include <cmath>
#include <limits>
#include <thread>
#include <tuple>

#include "foundation/platform/LocalTime.h"
#include "foundation/time/DateTimeScanner.h"
#include "foundation/time/XpDateTime.h"
#include "tests/foundation/ScopedVariable.h"

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

TEST(DateTimeTest, SerialDatesAndFieldsAgree) {
  const struct {
    double value;
    Fields fields;
  } cases[] = {
      {0.0, {1899, 12, 30, 0, 0, 0, 6}},     {-1.25, {1899, 12, 29, 6, 0, 0, 5}},
      {0.25, {1899, 12, 30, 6, 0, 0, 6}},    {25569.0, {1970, 1, 1, 0, 0, 0, 4}},
      {36585.5, {2000, 2, 29, 12, 0, 0, 2}}, {-657434.0, {100, 1, 1, 0, 0, 0, 5}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FieldsOf(XpDateTime(c.value)), c.fields) << c.value;
    const Fields& f = c.fields;
    EXPECT_DOUBLE_EQ(At(f[0], f[1], f[2], f[3], f[4], f[5]).GetValue(), c.value);
  }
  EXPECT_EQ(FieldsOf(XpDateTime(-0.25)), FieldsOf(XpDateTime(0.25))) << "a time of day zero";
}

TEST(DateTimeTest, FieldsOfEveryYearComeBackUnchanged) {
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
  }
  std::tm broken{};
  broken.tm_year = broken.tm_mon = std::numeric_limits<int>::max();
  EXPECT_FALSE(XpDateTime().SetFromTm(broken));
}

TEST(DateTimeTest, NumbersOutOfRangeAreKeptButNotValid) {
  for (const double value : {-657435.0, 2958466.0, 1e300, std::nan(""), -HUGE_VAL}) {
    const XpDateTime date(value);
    EXPECT_FALSE(date.IsValid()) << value;
    std::int32_t f = 0;
    EXPECT_FALSE(date.GetDateTimeFields(f, f, f, f, f, f, f)) << value;
    EXPECT_TRUE(date.FormatDate(0).IsEmpty() && date.FormatTime(2, true).IsEmpty());
    FILETIME fileTime;
    EXPECT_FALSE(date.ToFileTime(fileTime));
    EXPECT_EQ(date.ToTimeT(), -1);
  }
  EXPECT_FALSE(XpDateTime().IsValid());
}

TEST(DateTimeTest, FractionOfASecondIsRoundedInTheTimeButNotInTheDay) {
  EXPECT_EQ(FieldsOf(XpDateTime(36526.0 + 86399.6 / 86400.0)), (Fields{2000, 1, 1, 0, 0, 0, 6}));
  EXPECT_EQ(FieldsOf(XpDateTime(36526.0 + 59.4 / 86400.0))[5], 59);
}

TEST(DateTimeTest, ArithmeticIsRightOnBothSidesOfDayZero) {
  XpDateTime date = At(1899, 12, 29, 23, 59, 30);
  date.AddMinutesSeconds(1, 0);
  EXPECT_EQ(FieldsOf(date), (Fields{1899, 12, 30, 0, 0, 30, 6}));
  date.SubtractMinutes(24 * 60);
  EXPECT_EQ(FieldsOf(date), (Fields{1899, 12, 29, 0, 0, 30, 5}));
  EXPECT_EQ(At(1899, 12, 31).Difference(At(1899, 12, 28, 12)).GetTotalSeconds(), 216000);
  date = At(9999, 12, 31, 23, 59, 0);
  date.AddMinutesSeconds(0, 60);
  EXPECT_FALSE(date.IsValid());
  date.SubtractMinutes(1);
  EXPECT_TRUE(date.IsValid());
  date.SubtractMinutes(std::numeric_limits<std::int32_t>::min());
  EXPECT_FALSE(date.IsValid());
}

TEST(DateTimeTest, SpansAreRoundedToSecondsAndLimitedTo64Bits) {
  EXPECT_EQ(XpDateTimeSpan(0.999999999).GetTotalSeconds(), 86400);
  EXPECT_EQ(XpDateTimeSpan(-0.999999999).GetTotalSeconds(), -86400);
  EXPECT_TRUE(XpDateTimeSpan(3615899.0).IsValid());
  EXPECT_FALSE(XpDateTimeSpan(3615900.0).IsValid());
  EXPECT_FALSE(XpDateTimeSpan(std::nan("")).IsValid());
  EXPECT_EQ(XpDateTimeSpan(std::nan("")).GetTotalSeconds(), 0);
  EXPECT_EQ(XpDateTimeSpan(1e300).GetTotalSeconds(), std::numeric_limits<std::int64_t>::max());
  std::int64_t seconds = 7;
  EXPECT_TRUE(At(2024, 3, 1, 0, 0, 1).DifferenceInSeconds(At(2024, 2, 28, 23, 59, 59), seconds));
  EXPECT_EQ(seconds, 86402);
  EXPECT_FALSE(XpDateTime().DifferenceInSeconds(At(2024, 1, 1), seconds));
  EXPECT_EQ(seconds, 0);
  EXPECT_FALSE(At(2024, 1, 1).DifferenceInSeconds(XpDateTime(), seconds));
}

TEST(DateTimeTest, FileTimesFollowTheZoneAtTheirDate) {
  const ScopedVariable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
  constexpr std::uint64_t kUnixEpoch = 116444736000000000;
  for (const auto& [date, unixSeconds] :
       {std::pair{At(2024, 1, 15, 13, 0, 0), std::int64_t{1705320000}},  // winter
        std::pair{At(2024, 7, 15, 14, 0, 0), std::int64_t{1721044800}},  // summer
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

TEST(DateTimeTest, RepeatedOrSkippedTimeHasOneResultWhateverWasConvertedBefore) {
  const ScopedVariable zone("TZ", "EST5EDT,M3.2.0,M11.1.0");
  for (const XpDateTime& before : {At(2021, 7, 1), At(2021, 12, 1)}) {
    for (const auto& [date, unixSeconds] :
         {std::pair{At(2021, 11, 7, 0, 59, 59), std::int64_t{1636261199}},
          std::pair{At(2021, 11, 7, 1, 30, 0), std::int64_t{1636263000}},  // first in summer time
          std::pair{At(2021, 11, 7, 2, 0, 0), std::int64_t{1636268400}},
          std::pair{At(2021, 3, 14, 1, 59, 59), std::int64_t{1615705199}},
          std::pair{At(2021, 3, 14, 2, 30, 0), std::int64_t{1615707000}},  // skipped: 3:30 in summer time
          std::pair{At(2021, 3, 14, 3, 0, 0), std::int64_t{1615705200}}}) {
      EXPECT_NE(before.ToTimeT(), -1);
      EXPECT_EQ(date.ToTimeT(), unixSeconds) << date.GetMonth() << '/' << date.GetDay();
      FILETIME fileTime;
      ASSERT_TRUE(date.ToFileTime(fileTime));
      EXPECT_EQ(fileTime.Ticks() / 10'000'000, static_cast<std::uint64_t>(unixSeconds) + 11644473600u);
    }
  }
}

TEST(DateTimeTest, UtcOffsetFollowsTheZoneInForce) {
  for (const auto& [name, minutes] : {std::pair{"EAST-9", 540}, {"WEST3:30", -210}, {"UTC0", 0}}) {
    const ScopedVariable zone("TZ", name);
    EXPECT_EQ(vrx::platform::UtcOffsetMinutes(), minutes);
  }
}

TEST(DateParsingTest, FormatsAreReadAsByScanfAndAMismatchChangesNothing) {
  const struct {
    const char16_t* text;
    const char16_t* format;
    double value;  // 1 if it stays
  } cases[] = {
      {u"20000229120000", u"%04d%2d%2d%2d%2d%2d", 36585.5},
      {u"2000:2:29", u"%ld:%02ld:%02u", 36585.0},
      {u"  2000 \t 2\n29T12", u"%d%d%dT%d", 36585.5},
      {u"2000/02/29 12:00:00.250 tail", u"%d/%d/%d %d:%d:%d.%*d", 36585.5},
      {u"2000/02/29 12:00:00.250", u"%d/%d/%d %d:%d:%d.%d", 1.0},  // seven numbers
      {u"2000/02", u"%d/%d/%d", 1.0},
      {u"2000/xx/29", u"%d/%d/%d", 1.0},
      {u"2000 2 29", u"%d %d %s", 1.0},
      {u"2000 2 29", u"%d %d %", 1.0},
      {u"99999999999999999999/01/01", u"%d/%d/%d", 1.0},
      {u"2000/02/-29", u"%d/%d/%d", 1.0},
  };
  for (const auto& c : cases) {
    XpDateTime date(1.0);
    EXPECT_EQ(date.ParseDateTime(c.text, c.format), c.value != 1.0) << XpString(c.text).ToNarrow().c_str();
    EXPECT_EQ(date.GetValue(), c.value) << XpString(c.text).ToNarrow().c_str();
  }
  XpDateTime date(1.0);
  EXPECT_FALSE(date.ParseDateTime(u"yesterday", u"%d/%d/%d"));
  EXPECT_TRUE(date.IsValid());
  EXPECT_FALSE(date.ParseDateTime(u"99/01/01", u"%d/%d/%d"));
  EXPECT_FALSE(date.IsValid());
}

TEST(DateParsingTest, WidthsSignsAndLimitsOfNumbersAreKept) {
  std::array<std::int32_t, 3> n{};
  EXPECT_EQ(vrx::ScanIntegers(u"-12+3", u"%3d%2d", n), 2u);
  EXPECT_EQ(n[0], -12);
  EXPECT_EQ(n[1], 3);
  EXPECT_EQ(vrx::ScanIntegers(u"-12", u"%1d", n), 0u);
  EXPECT_EQ(vrx::ScanIntegers(u"9999999999 -9999999999 100%", u"%d %I64d %d%%", n), 3u);
  EXPECT_EQ(n, (std::array{INT32_MAX, INT32_MIN, 100}));
}

class DateTextTest : public testing::Test {
 protected:
  ~DateTextTest() override { Use(m_before); }
  static void Use(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale, status);
    ASSERT_TRUE(U_SUCCESS(status));
  }
  static std::string Text(const XpString& text) { return text.ToNarrow().c_str(); }

 private:
  icu::Locale m_before = icu::Locale::getDefault();
};

TEST_F(DateTextTest, DatesAndTimesFollowTheUsersLocale) {
  const XpDateTime date = At(2024, 2, 9, 15, 4, 5);
  const struct {
    const char* locale;
    const char* dates[3];
    const char* times[3];
  } cases[] = {
      {"en_US", {"2/9/2024", "Friday, February 9, 2024", "February 2024"}, {"3 PM", "3:04 PM", "3:04:05 PM"}},
      {"de_DE", {"9.2.2024", "Freitag, 9. Februar 2024", "Februar 2024"}, {"15 Uhr", "15:04", "15:04:05"}},
      {"ja_JP", {"2024/2/9", "2024年2月9日金曜日", "2024年2月"}, {"15時", "15:04", "15:04:05"}},
  };
  for (const auto& c : cases) {
    Use(c.locale);
    for (int kind = 0; kind < 3; ++kind) {
      EXPECT_EQ(Text(date.FormatDate(kind)), c.dates[kind]);
      EXPECT_EQ(Text(date.FormatTime(kind, false)), c.times[kind]);
    }
    EXPECT_EQ(Text(date.FormatTime(XpTimeMinute, true)), "15:04");
    EXPECT_EQ(Text(date.FormatDateTime(99, 99, true)), std::string(c.dates[0]) + " 15:04:05");
  }
}

TEST_F(DateTextTest, OldDatesAndOtherThreadsHaveTheSameTexts) {
  Use("en_US");
  std::jthread([] {
    EXPECT_EQ(Text(At(1582, 10, 10).FormatDate(0)), "10/10/1582");
    EXPECT_EQ(Text(XpDateTime(-1.25).FormatDateTime(0, 2, true)), "12/29/1899 06:00:00");
  }).join();
}

}  // namespace
