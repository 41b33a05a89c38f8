// What keeps a tennis overlay from showing what was meant is named with its place.
#include "src/check/TennisCheck.h"

#include <gmock/gmock.h>

namespace vrx::check {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Three shots with a sound tree.
constexpr char kFirst[] = "1.5,1,0,100,90,3,0,1.5,99,-1,-1,0|";
constexpr char kRoot[] = "2.5,128,25,100,90,-3,0,2.5,99,0,2,1|";
constexpr char kLast[] = "3.5,16,12,100,90,0,0,3.5,99,-1,-1,0|";

class TennisCheckTest : public testing::Test {
 protected:
  TennisCheckTest() {
    info.tennisMetaInfo.layoutType = 1;
    info.gpsUnitFromUser = 0;
    info.stringTable[17] = u"Forehand";
    info.templateInfo.drawEndTime = 60;
  }
  std::vector<std::string> Messages(const std::string& data) {
    info.tennisMetaInfo.metaData = XpNarrowString(data).ToWide();
    std::vector<Problem> problems;
    CheckTennis(
        info, {.text = info.tennisMetaInfo.metaData, .file = u"/p.vrx", .key = u"TennisMetaData", .line = 4},
        problems);
    std::vector<std::string> messages;
    for (const Problem& problem : problems) {
      EXPECT_EQ(std::tuple(problem.severity, problem.file),
                std::tuple(Severity::Warning, XpString(u"/p.vrx")));
      messages.push_back((problem.key + u" " + problem.message).ToNarrow().c_str());
    }
    return messages;
  }
  const std::string good = std::string(kFirst) + kRoot + kLast;
  PainterInfo info;
};

TEST_F(TennisCheckTest, SoundDocumentHasNoProblem) { EXPECT_THAT(Messages(good), IsEmpty()); }

TEST_F(TennisCheckTest, DamagedShotsAreNamedByRecordAndField) {
  struct Case {
    std::string data, message;
  };
  const std::string first = kFirst, root = kRoot, last = kLast;
  for (const Case& c :
       {Case{first + "2,x|" + root + last, "record 2: the swing type cannot be read: the record is left out"},
        Case{first + root + "||" + last, "record 3: the time cannot be read"},
        Case{first + root + "3,1,2,4,5,6,7,8,9,-1,-1|" + last, "record 3: the swap of sides cannot be read"},
        Case{"1.5,1,0,100,90,3,0,1.5,99,-1,-1,0,7|" + root + last, "record 1: more than twelve fields"},
        Case{"1.5,3,0,100,90,3,0,1.5,99,-1,-1,0|" + root + last, "record 1: 3 is no swing type"},
        Case{"1.5,1,26,100,90,3,0,1.5,99,-1,-1,0|" + root + last,
             "record 1: the impact zone 26 is not one of 0 to 25"},
        Case{"1.5,1,-1,100,90,3,0,1.5,99,-1,-1,0|" + root + last, "record 1: the impact zone -1"},
        Case{good + "4", "record 4: does not end with a bar"},
        Case{"1,2|", "holds no shot that can be read"}}) {
    EXPECT_THAT(Messages(c.data), Contains(HasSubstr("TennisMetaData " + c.message))) << c.data;
  }
  // Numbers are those of the document, also after a record that was left out.
  EXPECT_THAT(Messages(std::string("x|") + kLast + kFirst),
              Contains(HasSubstr("record 3: its time lies before that of the shot before it")));
  EXPECT_THAT(Messages(first + last + root), ElementsAre(HasSubstr("record 3: its time lies before")));
  EXPECT_THAT(Messages(root + last),
              ElementsAre(HasSubstr("record 2: its children do not make a search tree")));
  std::string many;
  for (int i = 0; i < 80; ++i) many += "x|";
  EXPECT_THAT(Messages(many + good), Contains(HasSubstr("has 30 more problems")));
}

TEST_F(TennisCheckTest, WhatTheOverlayNeedsBesideItsShotsIsNamed) {
  info.tennisMetaInfo.layoutType = 3;
  EXPECT_THAT(Messages(good), ElementsAre(HasSubstr("TennisMetaLayoutType is 3, which is no layout")));
  info.tennisMetaInfo.layoutType = 2;
  info.gpsUnitFromUser = -1;
  EXPECT_THAT(Messages(good), ElementsAre(HasSubstr("GpsUnitFromUser is -1, which is no unit")));
  info.gpsUnitFromUser = 2;
  info.stringTable = {{0, u""}, {17, u""}};
  EXPECT_THAT(Messages(good), ElementsAre(HasSubstr("StringManager holds no texts")));
  info.stringTable[14] = u"Spin";
  info.templateInfo.drawEndTime = 0;
  EXPECT_THAT(Messages(good), ElementsAre(HasSubstr("TemplateInfo/DrawEndTime does not lie after")));
}

}  // namespace
}  // namespace vrx::check
