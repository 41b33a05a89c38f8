// Formatted text, and arguments that do not fit their conversion.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "foundation/text/XpFormat.h"

namespace {

template <class... Args>
std::string Formatted(const char16_t* format, const Args&... args) {
  XpString text;
  XpFormat(text, format, args...);
  return std::string(text.ToNarrow().AsView());
}

TEST(FormatTest, ConversionsWriteTheSameAsInC) {
  EXPECT_EQ(Formatted(u"%d|%5d|%-5d|%05d|%+d", -7, 42, 42, -42, 3), "-7|   42|42   |-0042|+3");
  EXPECT_EQ(Formatted(u"%u|%x|%X|%08x", 4000000000u, 0xBEEFu, 0xBEEFu, 0xBEEFu),
            "4000000000|beef|BEEF|0000beef");
  EXPECT_EQ(Formatted(u"%08.3d|%.3d|%.0d|%.0d", 42, -7, 0, 5), "     042|-007||5");
  EXPECT_EQ(Formatted(u"%x|%u", -1, -1), "ffffffff|4294967295");
  EXPECT_EQ(Formatted(u"%ld|%I64d|%llu", std::numeric_limits<std::int64_t>::min(), std::int64_t{5},
                      std::numeric_limits<std::uint64_t>::max()),
            "-9223372036854775808|5|18446744073709551615");
  EXPECT_EQ(Formatted(u"%f|%.2lf|%6.1f|%e", 1.5, 2.345, -2.25, 12345.0), "1.500000|2.35|  -2.2|1.234500e+04");
  EXPECT_EQ(Formatted(u"%s|%5s|%-5s|%.2s", u"ab", u"ab", XpString(u"ab"), "abc"), "ab|   ab|ab   |ab");
  EXPECT_EQ(Formatted(u"%c%c|100%%", 'a', u'\u00E9'), "a\xC3\xA9|100%");
  EXPECT_EQ(Formatted(u"%p", reinterpret_cast<const void*>(std::uintptr_t{0xAB})), "00000000000000AB");
  EXPECT_EQ(Formatted(u"%s", static_cast<const char16_t*>(nullptr)), "(null)");
  EXPECT_EQ(Formatted(u"%.3f", std::nan("")), "nan");
}

TEST(FormatTest, ABytewiseStringTakesWideTextAndCharacters) {
  XpNarrowString text;
  XpFormat(text, "%s %c", XpString(u"\u20AC"), u'\u00E9');
  EXPECT_EQ(text.AsView(), "\xE2\x82\xAC \xC3\xA9");
}

TEST(FormatTest, TextOfAnyLengthIsCompleteButWidthsAreLimited) {
  for (const std::size_t length : {255u, 256u, 511u, 512u, 5000u}) {
    const std::string word(length, 'w');
    EXPECT_EQ(Formatted(u"%s", word.c_str()), word) << length;
  }
  EXPECT_EQ(Formatted(u"%999999999d", 1).size(), 512u);
  EXPECT_EQ(Formatted(u"%.999999999d", 1).size(), 512u);
  EXPECT_EQ(Formatted(u"%.99999999999f", 0.5).size(), 514u);
  EXPECT_EQ(Formatted(u"%.600s", std::string(700, 'w')).size(), 600u);
}

TEST(FormatTest, AStringMayBeItsOwnArgument) {
  XpString text(u"ab");
  XpFormat(text, u"<%s|%s>", text, text.c_str());
  EXPECT_EQ(text.ToNarrow().AsView(), "<ab|ab>");
  XpAppendFormat(text, u"%s", text);
  EXPECT_EQ(text.ToNarrow().AsView(), "<ab|ab><ab|ab>");
}

TEST(FormatTest, AConversionThatDoesNotFitPrintsAMarker) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  struct Mismatch {
    const char* marker;
    std::string (*run)();
  };
  const Mismatch cases[] = {
      {"<%s?>", [] { return Formatted(u"%s", 1); }},
      {"<%d?>", [] { return Formatted(u"%d", u"text"); }},
      {"<%d?>", [] { return Formatted(u"%d", std::int64_t{1}); }},
      {"<%f?>", [] { return Formatted(u"%f", 1); }},
      {"<%d?>", [] { return Formatted(u"%d"); }},
      {"<%n?>", [] { return Formatted(u"%n", 1); }},
      {"<%?>", [] { return Formatted(u"%"); }},
  };
  for (const Mismatch& mismatch : cases) {
#ifdef NDEBUG
    EXPECT_EQ(mismatch.run(), mismatch.marker);
#else
    EXPECT_DEATH(mismatch.run(), "does not fit") << mismatch.marker;
#endif
  }
}

}  // namespace
