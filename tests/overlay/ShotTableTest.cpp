// Tables of shots are read as spreadsheets write them, and each row that is wrong is named with its line.
#include "overlay/tennis/ShotTable.h"

#include <gmock/gmock.h>

namespace {

using namespace vrx::overlay;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> Problems(const std::string& text) {
  std::vector<std::string> lines;
  for (const ShotTableProblem& problem : ReadShotTable(text).problems) {
    lines.push_back(std::to_string(problem.line) + ": " + problem.message);
  }
  return lines;
}

TEST(ShotTableTest, ValuesStandUnderTheirColumns) {
  // A byte order mark, columns in another order, quotes, blanks, CR LF, an empty line, no line end at the
  // end.
  const ShotTable table = ReadShotTable(
      "\xEF\xBB\xBFstroke,TIME_S,zone,swap_sides,ball_speed,swing_speed,spin\r\n"
      "Serve, 7.5 ,25,yes,180.5,120,+12\r\n"
      "\r\n"
      "\"backhand-slice\",\"0.25\",,,, ,\"-7\" \n"
      "\"sma\"\"sh\",1,1,no,1,1,1\n"
      "forehand,7.5,0,0,0,999,-99");
  ASSERT_EQ(table.shots.size(), 3u);
  EXPECT_EQ(table.problems.size(), 1u);
  const TennisShot& slice = table.shots[0];
  EXPECT_EQ(std::tuple(slice.time, slice.swingType, slice.impactZone, slice.firstPanelValue, slice.swapSides),
            std::tuple(0.25, 0x10, 12, -7, false));
  const TennisShot& serve = table.shots[1];
  EXPECT_EQ(std::tuple(serve.time, serve.swingType, serve.impactZone, serve.firstPanelValue, serve.swapSides,
                       serve.secondPanelSpeed, serve.thirdPanelSpeed),
            std::tuple(7.5, 0x80, 25, 12, true, 120.0, 180.5));
  EXPECT_EQ(table.shots[2].swingType, 1);  // equal times stay in their order
  EXPECT_FALSE(FindWrongTreeNode(table.shots) || FindUnsortedShot(table.shots));
  for (const std::int64_t t : {0, 7500, 90000}) EXPECT_EQ(TennisShots(table.shots).ClipTime(t), t);
}

TEST(ShotTableTest, EveryRowThatIsWrongIsNamedByItsLine) {
  EXPECT_THAT(
      Problems("time_s,stroke,zone,spin,swing_speed,ball_speed,swap_sides\n"
               "1,serve,0,0,0,0,no\n"
               "-1,serve,0,0,0,0,no\n"
               "nan,serve,0,0,0,0,no\n"
               "1e3x,serve,0,0,0,0,no\n"
               "1,lob,0,0,0,0,no\n"
               "1,,0,0,0,0,no\n"
               ",serve,0,0,0,0,no\n"
               "1,serve,26,0,0,0,no\n"
               "1,serve,1.5,0,0,0,no\n"
               "1,serve,0,100,0,0,no\n"
               "1,serve,0,0,1000,0,no\n"
               "1,serve,0,0,0,-1,no\n"
               "1,serve,0,0,0,0,maybe\n"
               "1,serve,0,0,0,0\n"
               "\"1\n2\",serve,0,0,0,0,no\n"
               "1,serve,0,0,0,0,no,\n"),
      ElementsAre("3: time_s is \"-1\", not a number of seconds from 0 to 86400", HasSubstr("4: time_s"),
                  HasSubstr("5: time_s is \"1e3x\""), HasSubstr("6: stroke is \"lob\", not one of forehand,"),
                  HasSubstr("7: stroke is \"\""), HasSubstr("8: time_s is \"\""),
                  HasSubstr("9: zone is \"26\""), HasSubstr("10: zone is \"1.5\""), HasSubstr("11: spin"),
                  HasSubstr("12: swing_speed"), HasSubstr("13: ball_speed"),
                  HasSubstr("14: swap_sides is \"maybe\", not yes or no"), "15: 6 values under 7 columns",
                  HasSubstr("16: time_s"), "18: 8 values under 7 columns"));
}

TEST(ShotTableTest, WrongHeaderIsTheOnlyProblem) {
  for (const auto& [text, message] : {std::pair{"", "1: there is no header line"},
                                      {"\n \n", "there is no header line"},
                                      {"time_s,zone\nx,y\n", "1: the header has no column stroke"},
                                      {"\n\nstroke\n", "3: the header has no column time_s"},
                                      {"time_s,stroke,speed\n", "1: there is no column \"speed\""},
                                      {"time_s,stroke,time_s\n", "1: the column time_s is there twice"},
                                      {"1,serve\n", "1: there is no column \"1\""}}) {
    EXPECT_THAT(Problems(text), ElementsAre(HasSubstr(message))) << text;
    EXPECT_FALSE(ReadShotTable(text).hasHeader) << text;
  }
}

TEST(ShotTableTest, CutTextsAndTooManyShotsAreNoTrouble) {
  const std::string text = "time_s,stroke\r\n\"1\",\"ser\"\"ve\"\r\n2,serve\r\n";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    EXPECT_LE(ReadShotTable(text.substr(0, length)).shots.size(), 1u) << length;
  }
  std::string many = "time_s,stroke\n";
  for (std::size_t i = 0; i <= kMaxTennisShots; ++i) many += "1,serve\n";
  EXPECT_EQ(ReadShotTable(many).shots.size(), kMaxTennisShots);
  EXPECT_THAT(Problems(many), ElementsAre("16386: more than 16384 shots"));
}

}  // namespace
