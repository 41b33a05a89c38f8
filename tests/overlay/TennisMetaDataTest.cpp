// Tennis metadata is read record by record, and shots are found whatever search tree a document brings.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "overlay/tennis/TennisMetaData.h"

namespace {

using namespace vrx::overlay;

const TextTable kTexts{{17, u"fore"}, {20, u"back"}, {24, u"serve"}};

std::vector<TennisShot> Parse(const std::u16string& text) {
  std::vector<TennisShot> shots;
  ParseTennisMetaData(text, kTexts, shots);
  return shots;
}

std::vector<TennisShot> ShotsAt(const std::vector<double>& seconds) {
  std::vector<TennisShot> shots(seconds.size());
  for (std::size_t i = 0; i < seconds.size(); ++i) shots[i].time = seconds[i];
  BuildSearchTree(shots);
  return shots;
}

/// Counted from the front, as one would by hand.
std::int64_t LastShotAt(const std::vector<TennisShot>& shots, std::int64_t t) {
  std::int64_t last = -1;
  for (std::size_t i = 0; i < shots.size(); ++i) {
    if (std::trunc(shots[i].time * 1000) <= static_cast<double>(t)) last = static_cast<std::int64_t>(i);
  }
  return last;
}

TEST(TennisMetaDataTest, RecordFillsEveryField) {
  const auto shots = Parse(u"1.5,128,25,180.25,120.5,-3,0.5,2.5,90,-1,7,1|");
  ASSERT_EQ(shots.size(), 1u);
  const TennisShot& s = shots.front();
  EXPECT_EQ(std::tuple(s.time, s.swingType, s.impactZone, s.thirdPanelSpeed, s.secondPanelSpeed),
            std::tuple(1.5, 128, 25, 180.25, 120.5));
  EXPECT_EQ(std::tuple(s.firstPanelValue, s.clipStart, s.clipAnchor, s.clipEnd, s.leftIndex, s.rightIndex),
            std::tuple(-3, 0.5, 2.5, 90.0, -1, 7));
  EXPECT_TRUE(s.swapSides);
  EXPECT_EQ(s.name, XpString(u"serve"));
  EXPECT_EQ(s.strokeClass, 7);
}

TEST(TennisMetaDataTest, DamagedPiecesAreDroppedAndTheOthersRead) {
  const std::u16string good = u"1,1,2,3,4,5,6,7,8,-1,-1,0|";
  const std::u16string last = u"9,8,2,3,4,5,6,7,8,-1,-1,0|";
  for (const std::u16string damage :
       {u"|", u"||||", u"x|", u"1,2,3|", u"1,1,2,3,4,5,6,7,8,-1,-1|", u"1,1,2,3,4,5,6,7,8,-1,-1,|",
        u"1.5.5,1,2,3,4,5,6,7,8,-1,-1,0|", u"inf,1,2,3,4,5,6,7,8,-1,-1,0|", u"1e999,1,2,3,4,5,6,7,8,-1,-1,0|",
        u"1,1.5,2,3,4,5,6,7,8,-1,-1,0|", u"1;1;2;3;4;5;6;7;8;-1;-1;0|", u"\u00e9\xd800|"}) {
    const auto shots = Parse(good + damage + last);
    ASSERT_EQ(shots.size(), 2u) << XpString(damage).ToNarrow().c_str();
    EXPECT_EQ(shots[1].time, 9.0);
  }
  // Without its bar a record is none, wherever it is cut.
  for (std::size_t length = 0; length < good.size(); ++length) {
    EXPECT_TRUE(Parse(good.substr(0, length)).empty()) << length;
    EXPECT_EQ(Parse(good + good.substr(0, length)).size(), 1u) << length;
  }
  const auto extreme = Parse(u"-1e300,99999999999,-99999999999,1e308,-1e308,2147483648,0,0,0,9,-9,-5|");
  ASSERT_EQ(extreme.size(), 1u);
  EXPECT_EQ(extreme[0].swingType, INT32_MAX);
  EXPECT_EQ(extreme[0].impactZone, INT32_MIN);
  EXPECT_TRUE(extreme[0].swapSides);
}

TEST(TennisMetaDataTest, UnknownStrokeKeepsTheClassOfTheRecordBefore) {
  const auto record = [](std::u16string swingType) { return u"1," + swingType + u",2,3,4,5,6,7,8,-1,-1,0|"; };
  const auto shots =
      Parse(record(u"3") + record(u"8") + u"broken|" + record(u"256") + record(u"0") + record(u"1"));
  const std::vector<std::int32_t> classes{0, 3, 3, 3, 0};
  const std::vector<XpString> names{u"", u"back", u"", u"", u"fore"};
  ASSERT_EQ(shots.size(), classes.size());
  for (std::size_t i = 0; i < shots.size(); ++i) {
    EXPECT_EQ(shots[i].strokeClass, classes[i]) << i;
    EXPECT_EQ(shots[i].name, names[i]) << i;
  }
}

TEST(TennisMetaDataTest, NoMoreShotsAreReadThanTheLimit) {
  std::u16string text;
  for (std::size_t i = 0; i < kMaxTennisShots + 5; ++i) text += u"1,1,2,3,4,5,6,7,8,-1,-1,0|";
  EXPECT_EQ(Parse(text).size(), kMaxTennisShots);
}

TEST(TennisMetaDataTest, WrittenShotsReadBackAsTheyWere) {
  std::vector<TennisShot> shots = ShotsAt({0.033, 12.5, 4000.999});
  shots[0].swingType = 0x80;
  shots[1].secondPanelSpeed = 123.25;
  shots[1].firstPanelValue = -1200;
  shots[2].swapSides = true;
  shots[2].clipEnd = 1e300;
  const auto read = Parse(XpNarrowString(WriteTennisMetaData(shots)).ToWide().AsView().data());
  ASSERT_EQ(read.size(), shots.size());
  for (std::size_t i = 0; i < shots.size(); ++i) {
    EXPECT_EQ(read[i].time, shots[i].time);
    EXPECT_EQ(read[i].leftIndex, shots[i].leftIndex);
    EXPECT_EQ(read[i].rightIndex, shots[i].rightIndex);
    EXPECT_EQ(
        std::tuple(read[i].secondPanelSpeed, read[i].firstPanelValue, read[i].swapSides, read[i].clipEnd),
        std::tuple(shots[i].secondPanelSpeed, shots[i].firstPanelValue, shots[i].swapSides,
                   shots[i].clipEnd));
  }
}

TEST(TennisShotsTest, BalancedTreeIsRightAndFindsEveryShot) {
  for (std::size_t count = 0; count < 70; ++count) {
    std::vector<double> seconds;
    for (std::size_t i = 0; i < count; ++i) seconds.push_back(static_cast<double>(i / 2) * 0.7 + 0.0005);
    const auto shots = ShotsAt(seconds);
    EXPECT_FALSE(FindWrongTreeNode(shots)) << count;
    const TennisShots searched(shots);
    for (std::int64_t t = -1; t < 26000; t += 23) {
      ASSERT_EQ(searched.FindShotIndex(t), LastShotAt(shots, t)) << count << " at " << t;
    }
  }
}

TEST(TennisShotsTest, WrongTreeOrOrderIsFoundAndDoesNotMatter) {
  const std::vector<double> seconds{1, 2, 3, 4, 5, 6, 7};
  const auto expectPlain = [](const std::vector<TennisShot>& shots) {
    const TennisShots searched(shots);
    for (const std::int64_t t : {INT64_MIN, std::int64_t{0}, std::int64_t{1000}, std::int64_t{2700},
                                 std::int64_t{3500}, std::int64_t{6999}, std::int64_t{7000}, INT64_MAX}) {
      EXPECT_EQ(searched.FindShotIndex(t), LastShotAt(shots, t)) << t;
    }
  };
  // Every index in turn is replaced by one that is wrong there: out of range, a loop, or a shot left out.
  for (std::size_t node = 0; node < seconds.size(); ++node) {
    for (const std::int32_t wrong : {-2, -1, 0, 3, 5, 6, 7, INT32_MAX, INT32_MIN}) {
      for (auto child : {&TennisShot::leftIndex, &TennisShot::rightIndex}) {
        auto shots = ShotsAt(seconds);
        const bool isSame = shots[node].*child == wrong;
        shots[node].*child = wrong;
        EXPECT_NE(FindWrongTreeNode(shots).has_value(), isSame) << node << " " << wrong;
        expectPlain(shots);
      }
    }
  }
  auto shots = ShotsAt({1, 2, 3, 2.5, 5});
  EXPECT_EQ(FindUnsortedShot(shots), 3u);
  expectPlain(shots);
}

TEST(TennisShotsTest, SwingRunsOverTheLastThreeTenthsBeforeAShot) {
  const TennisShots shots(ShotsAt({2, 5}));
  struct Case {
    std::int64_t t, index;
    std::int32_t frames, expected;
  };
  for (const Case& c :
       {Case{1700, -1, 8, -1}, Case{1701, -1, 8, 1}, Case{1750, -1, 8, 2}, Case{1999, -1, 8, 7},
        Case{2000, -1, 8, 7}, Case{2001, -1, 8, -1}, Case{4800, 0, 8, 3}, Case{4800, 1, 8, -1},
        Case{4999, 0, 1, 0}, Case{4999, 0, 0, -1}, Case{INT64_MIN, 0, 8, -1}, Case{INT64_MAX, 0, 8, -1},
        Case{0, INT64_MAX - 1, 8, -1}}) {
    EXPECT_EQ(shots.SwingFrameIndex(c.t, c.index, c.frames), c.expected) << c.t << " after " << c.index;
  }
}

TEST(TennisShotsTest, ClipTimeComesFromTheFirstClipThatHoldsIt) {
  std::vector<TennisShot> shots = ShotsAt({10, 20});
  shots[0].clipStart = 1;
  shots[0].clipAnchor = 3;  // the clip begins 7 s into the match
  shots[0].clipEnd = 6;
  shots[1].clipStart = 0;
  shots[1].clipAnchor = 1;
  shots[1].clipEnd = 100;
  const TennisShots searched(shots);
  for (const auto& [t, expected] : {std::pair{7999, 7999},
                                    {8000, 1000},
                                    {13000, 6000},
                                    {13001, 13001},
                                    {19000, 0},
                                    {25500, 6500},
                                    {119001, 119001}}) {
    EXPECT_EQ(searched.ClipTime(t), expected) << t;
  }
}

TEST(TennisStrokesTest, FrameSetGoesByBits) {
  using enum FrameSet;
  struct Case {
    std::int32_t swingType;
    FrameSet plain, swapped;
  };
  for (const Case& c : {Case{1, Fore, Back}, Case{2, Fore, Back}, Case{4, Fore, Back}, Case{8, Back, Fore},
                        Case{0x10, Back, Fore}, Case{0x20, Back, Fore}, Case{0x40, Racket, Racket},
                        Case{0x80, Racket, Racket}, Case{0, Fore, Fore}, Case{0x100, Fore, Fore},
                        Case{0x09, Back, Back}, Case{-1, Racket, Racket}}) {
    EXPECT_EQ(FrameSetOf(c.swingType, false), c.plain) << c.swingType;
    EXPECT_EQ(FrameSetOf(c.swingType, true), c.swapped) << c.swingType;
  }
}

}  // namespace
