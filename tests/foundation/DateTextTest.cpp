#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <string>
#include <thread>

#include "foundation/time/DateTimeScanner.h"
#include "foundation/time/XpDateTime.h"

namespace {

TEST(DateParsingTest, FormatsAreReadLikeScanfDoes) {
  const struct {
    const char16_t* text;
    const char16_t* format;
    bool read;
    double value;
  } cases[] = {
      {u"20000229120000", u"%4d%2d%2d%2d%2d%2d", true, 36585.5},
      {u"20000229120000", u"%04d%02d%02d%02d%02d%02d", true, 36585.5},
      {u"2000/02/29 12:00:00", u"%d/%d/%d %d:%d:%d", true, 36585.5},
      {u"2000:2:29", u"%ld:%02ld:%02u", true, 36585.0},
      {u"2000-02-29T12", u"%d-%d-%dT%d", true, 36585.5},
      {u"  2000 \t 2\n29", u"%d%d%d", true, 36585.0},
      {u"2000/02/29 12:00:00.250 tail", u"%d/%d/%d %d:%d:%d.%*d", true, 36585.5},
      {u"2000/02/29 12:00:00.250", u"%d/%d/%d %d:%d:%d.%d", false, 1.0},  // seven numbers
      {u"2000/02", u"%d/%d/%d", false, 1.0},
      {u"2000/xx/29", u"%d/%d/%d", false, 1.0},
      {u"", u"%d/%d/%d", false, 1.0},
      {u"2000 2 29", u"%d %d %s", false, 1.0},
      {u"2000 2 29", u"%d %d %", false, 1.0},
      {u"0099/01/01", u"%d/%d/%d", false, 1.0},
      {u"99999999999999999999/01/01", u"%d/%d/%d", false, 1.0},
      {u"1900/02/29", u"%d/%d/%d", false, 1.0},
      {u"2000/02/-29", u"%d/%d/%d", false, 1.0},
  };
  for (const auto& c : cases) {
    XpDateTime date(1.0);
    EXPECT_EQ(date.ParseDateTime(c.text, c.format), c.read) << XpString(c.text).ToNarrow().c_str();
    EXPECT_EQ(date.GetValue(), c.value) << XpString(c.text).ToNarrow().c_str();
  }
}

TEST(DateParsingTest, TextThatDoesNotFitLeavesAValidDateAlone) {
  XpDateTime date(1.0);
  EXPECT_FALSE(date.ParseDateTime(u"yesterday", u"%d/%d/%d"));
  EXPECT_TRUE(date.IsValid());
  EXPECT_FALSE(date.ParseDateTime(u"99/01/01", u"%d/%d/%d"));
  EXPECT_FALSE(date.IsValid());
}

TEST(DateParsingTest, WidthsSignsAndLimitsHold) {
  std::array<std::int32_t, 3> n{};
  EXPECT_EQ(vrx::ScanIntegers(u"-12+3", u"%3d%2d", n), 2u);
  EXPECT_EQ(n[0], -12);
  EXPECT_EQ(n[1], 3);
  EXPECT_EQ(vrx::ScanIntegers(u"-12", u"%1d", n), 0u);
  EXPECT_EQ(vrx::ScanIntegers(u"9999999999 -9999999999 100%", u"%d %I64d %d%%", n), 3u);
  EXPECT_EQ(n[0], INT32_MAX);
  EXPECT_EQ(n[1], INT32_MIN);
  EXPECT_EQ(n[2], 100);
}

class DateTextTest : public testing::Test {
 protected:
  ~DateTextTest() override {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(m_before, status);
  }
  static void Use(const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale(locale), status);
    ASSERT_TRUE(U_SUCCESS(status));
  }
  static std::string Text(const XpString& text) { return std::string(text.ToNarrow().AsView()); }

 private:
  icu::Locale m_before = icu::Locale::getDefault();
};

TEST_F(DateTextTest, DatesAndTimesFollowTheUsersLocale) {
  XpDateTime date;
  ASSERT_TRUE(date.SetDateTime(2024, 2, 9, 15, 4, 5));
  const struct {
    const char* locale;
    const char* dates[3];
    const char* times[3];
    const char* times24[2];
  } cases[] = {
      {"en_US",
       {"2/9/2024", "Friday, February 9, 2024", "February 2024"},
       {"3 PM", "3:04 PM", "3:04:05 PM"},
       {"15:04", "15:04:05"}},
      {"de_DE",
       {"9.2.2024", "Freitag, 9. Februar 2024", "Februar 2024"},
       {"15 Uhr", "15:04", "15:04:05"},
       {"15:04", "15:04:05"}},
      {"ja_JP",
       {"2024/2/9",
        "2024\xE5\xB9\xB4"
        "2\xE6\x9C\x88"
        "9\xE6\x97\xA5\xE9\x87\x91\xE6\x9B\x9C\xE6\x97\xA5",
        "2024\xE5\xB9\xB4"
        "2\xE6\x9C\x88"},
       {"15\xE6\x99\x82", "15:04", "15:04:05"},
       {"15:04", "15:04:05"}},
  };
  for (const auto& c : cases) {
    Use(c.locale);
    for (int kind = 0; kind < 3; ++kind) {
      EXPECT_EQ(Text(date.FormatDate(kind)), c.dates[kind]);
      EXPECT_EQ(Text(date.FormatTime(kind, false)), c.times[kind]);
    }
    EXPECT_EQ(Text(date.FormatTime(XpTimeMinute, true)), c.times24[0]);
    EXPECT_EQ(Text(date.FormatDateTime(99, 99, true)), std::string(c.dates[0]) + " " + c.times24[1]);
  }
}

TEST_F(DateTextTest, OldDatesAndOtherThreadsAreRightToo) {
  Use("en_US");
  std::jthread([] {
    XpDateTime date;
    ASSERT_TRUE(date.SetDateTime(1582, 10, 10, 0, 0, 0));
    EXPECT_EQ(Text(date.FormatDate(0)), "10/10/1582");
    EXPECT_EQ(Text(date.FormatTime(2, true)), "00:00:00");
    EXPECT_EQ(Text(XpDateTime(-1.25).FormatDateTime(0, 2, true)), "12/29/1899 06:00:00");
  }).join();
  EXPECT_TRUE(XpDateTime().FormatDate(0).IsEmpty());
  EXPECT_TRUE(XpDateTime().FormatTime(2, true).IsEmpty());
}

}  // namespace
