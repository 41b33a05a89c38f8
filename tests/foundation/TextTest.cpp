// Strings share memory, cut parts and convert to UTF-8 and back.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "vrx/XpString.h"
#include "vrx/XpTextCodec.h"

namespace {

std::u16string Repeated(std::size_t count) { return std::u16string(count, u'x'); }

TEST(TextTest, CopiesShareMemoryUntilOneIsWritten) {
  XpString first(u"shared");
  const XpString second = first;
  EXPECT_EQ(XpString(Repeated(63)).Capacity(), 64);
  EXPECT_EQ(XpString(Repeated(64)).Capacity(), 128) << "the terminator needs room";
  EXPECT_EQ(first.c_str(), second.c_str());
  first.Append(u"!");
  EXPECT_STREQ(second.ToNarrow().c_str(), "shared");
  EXPECT_STREQ(first.ToNarrow().c_str(), "shared!");
  first = second;
  EXPECT_EQ(first.c_str(), second.c_str());
}

TEST(TextTest, AssignmentReusesMemoryUnlessItIsFarTooLarge) {
  XpString text(Repeated(100));
  const char16_t* memory = text.c_str();
  text = u"q";
  EXPECT_EQ(text.c_str(), memory);
  EXPECT_TRUE(text == u"q");
  text = Repeated(1000).c_str();
  EXPECT_EQ(text.Capacity(), 1024);
  text = text.c_str() + 400;
  EXPECT_EQ(text.Length(), 600);
  text = Repeated(600).c_str();
  EXPECT_EQ(text.Capacity(), 640);
  text = Repeated(200).c_str();
  EXPECT_EQ(text.Capacity(), 256);
  const XpString copy = text;
  text = u"other";
  EXPECT_EQ(copy.Length(), 200);
  text = static_cast<const char16_t*>(nullptr);
  EXPECT_TRUE(text.IsEmpty());
}

TEST(TextTest, TheEmptyTextCanBeCopiedAssignedAndWritten) {
  XpString empty;
  XpString other = empty;
  other.Append(u"a");
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_TRUE(XpString(static_cast<const char16_t*>(nullptr)) == empty);
  EXPECT_TRUE(empty == static_cast<const char16_t*>(nullptr));
  other = XpString();
  EXPECT_EQ(other.c_str()[0], 0);
}

TEST(TextTest, LeftRightMidAndFindKeepToTheirLimits) {
  const XpString abc(u"abc");
  struct Case {
    XpString got;
    const char16_t* expected;
  };
  const Case cases[] = {
      {abc.Left(5), u"abc"},   {abc.Left(-1), u""},     {abc.Right(2), u"bc"},  {abc.Right(5), u"abc"},
      {abc.Right(-1), u""},    {abc.Mid(1, 1), u"b"},   {abc.Mid(1, 9), u"bc"}, {abc.Mid(-1, 2), u"ab"},
      {abc.Mid(3, 2), u"abc"}, {abc.Mid(7, 1), u"abc"}, {abc.Mid(0, -1), u""},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) EXPECT_TRUE(cases[i].got == cases[i].expected) << i;
  EXPECT_EQ(abc.Find(u'b', -7), 1);
  EXPECT_EQ(abc.Find(u'b', 2), -1);
  EXPECT_EQ(abc.Find(u'a', 100), -1);
}

TEST(TextTest, AppendingAStringToItselfDoublesIt) {
  for (const bool shared : {false, true}) {
    XpString text(Repeated(50) + u"!");
    const XpString keeper = shared ? text : XpString();
    text.Append(text.c_str());
    EXPECT_TRUE(text.AsView() == Repeated(50) + u"!" + Repeated(50) + u"!");
    text.Append(text.c_str() + text.Length() - 1);
    EXPECT_EQ(text.Length(), 103);
  }
}

TEST(TextTest, Utf8AndInvalidBytesSurviveARoundTrip) {
  const std::string samples[] = {
      "plain",
      "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x8E\xBE",  // two, three and four bytes
      "\x80 stray",
      "cut \xE2\x82",
      "overlong \xC0\xAF \xE0\x80\xAF",
      "surrogate \xED\xA0\x80",
      "too high \xF4\x90\x80\x80 \xFF",
      "\xF0\x9F\x8E\xBE\x80",  // a valid pair and a stray byte
  };
  for (const std::string& bytes : samples) {
    EXPECT_EQ(XpNarrowString(bytes).ToWide().ToNarrow().AsView(), bytes);
  }
  EXPECT_EQ(XpNarrowString("\xF0\x9F\x8E\xBE").ToWide().Length(), 2);
  EXPECT_EQ(XpString(u"\xD83D").ToNarrow().AsView(), "\xEF\xBF\xBD");
}

TEST(TextTest, ThreadsMayShareABlock) {
  const XpString shared(Repeated(100));
  std::atomic<int> wrong = 0;
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([copy = shared, &wrong] {
      for (int i = 0; i < 2000; ++i) {
        XpString own = copy;
        own.Append(u"y");
        XpString empty;
        if (own.Length() != 101 || copy.Length() != 100 || !empty.IsEmpty()) ++wrong;
      }
    });
  }
  threads.clear();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
