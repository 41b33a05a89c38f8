// `vrx tennis import`: a table of shots becomes a painter document that a project can use as it is.
#include <gmock/gmock.h>

#include "overlay/document/TKLXPainterInfoXml.h"
#include "overlay/tennis/TennisMetaData.h"
#include "tests/render/VrxProcess.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class TennisImportTest : public testing::Test {
 protected:
  TennisImportTest() {
    m_folder.Write("shots.csv", "time_s,stroke,spin\n9,smash,3\n1.5,serve,-2\n4,forehand,0\n");
  }
  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }
  VrxResult Import(const std::string& table, const std::string& output, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"tennis", "import", Path(table), "-o", Path(output)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunVrx({arguments});
  }
  const PainterInfo& Read(const std::string& name) {
    m_document = std::make_unique<TKLXPainterInfoXml>();
    EXPECT_EQ(m_document->Load(XpPath(XpNarrowString(Path(name)).ToWide())), XpOk);
    return m_document->GetPainterInfo();
  }

  TempFolder m_folder;
  std::unique_ptr<TKLXPainterInfoXml> m_document;
};

TEST_F(TennisImportTest, DocumentIsCompleteAndHasNothingThatCheckFinds) {
  const VrxResult result = Import("shots.csv", "painter.vrx");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("3 shots from 0:02 to 0:09"));
  const PainterInfo& info = Read("painter.vrx");
  std::vector<TennisShot> shots;
  vrx::overlay::ParseTennisMetaData(info.tennisMetaInfo.metaData, info.stringTable, shots);
  ASSERT_EQ(shots.size(), 3u);
  EXPECT_EQ(std::tuple(shots[0].name, shots[1].name, shots[2].name, shots[1].leftIndex, shots[1].rightIndex),
            std::tuple(XpString(u"Serve"), XpString(u"Forehand"), XpString(u"Smash"), 0, 2));
  EXPECT_EQ(std::tuple(info.tennisMetaInfo.layoutType, info.gpsUnitFromUser, info.tennisMetaInfo.duration),
            std::tuple(1, 0, 19.0));
  EXPECT_TRUE(info.tennisMetaInfo.valid && info.saveMovieMode && info.templateInfo.drawEndTime > 1000);
  EXPECT_FALSE(info.tennisMetaInfo.originalDateTime.IsValid());

  ProjectText project;
  project.videoTrack = ClipText("none.mp4", "0", "10000");
  project.moreOutput = "<key>PainterEffect</key><string>painter.vrx</string>";
  m_folder.Write("project.vrx", project.Text());
  const VrxResult check = RunVrx({{"check", Path("project.vrx")}});
  EXPECT_THAT(check.output + check.errors, AllOf(HasSubstr("none.mp4"), Not(HasSubstr("painter.vrx:"))));
}

TEST_F(TennisImportTest, OptionsChooseLayoutUnitAndDate) {
  const VrxResult result = Import("shots.csv", "painter.vrx",
                                  {"--layout", "2", "--unit", "mph", "--start", "2024-05-01T10:11:12"});
  EXPECT_EQ(result.status, 0) << result.errors;
  const PainterInfo& info = Read("painter.vrx");
  EXPECT_EQ(std::tuple(info.tennisMetaInfo.layoutType, info.gpsUnitFromUser), std::tuple(2, 1));
  const XpDateTime& start = info.tennisMetaInfo.originalDateTime;
  EXPECT_EQ(std::tuple(start.GetYear(), start.GetHour(), start.GetSecond()), std::tuple(2024, 10, 12));
  m_folder.Write("fast.csv", "time_s,stroke,swing_speed,ball_speed\n9,smash,100,185.2\n");
  EXPECT_EQ(Import("fast.csv", "knots.vrx", {"--unit", "knots"}).status, 0);
  EXPECT_THAT(std::string(Read("knots.vrx").tennisMetaInfo.metaData.ToNarrow().AsView()),
              HasSubstr("9.000,64,12,100.000,53.996,"));
  for (const auto& wrong :
       {std::vector<std::string>{"--layout", "3"}, {"--unit", "furlongs"}, {"--start", "May"}}) {
    EXPECT_EQ(Import("shots.csv", "painter.vrx", wrong).status, 2) << wrong[0];
  }
}

TEST_F(TennisImportTest, OtherOverlaysOfTheDocumentStay) {
  m_folder.Write(
      "painter.vrx",
      "<plist><dict><key>PainterInfo</key><dict><key>CaptionInfo</key><dict><key>CaptionString</key>"
      "<string>Words</string></dict><key>GeneralInfo</key><dict><key>VideoWidth</key><integer>640"
      "</integer><key>StringManager</key><array><string>mi/h</string></array></dict>"
      "<key>TemplateInfo</key><dict><key>DrawEndTime</key><real>7</real></dict></dict></dict></plist>");
  ASSERT_EQ(Import("shots.csv", "painter.vrx").status, 0);
  ASSERT_EQ(Import("shots.csv", "painter.vrx", {"--layout", "2"}).status, 0);
  const PainterInfo& info = Read("painter.vrx");
  EXPECT_EQ(info.captionInfo.captionString, XpString(u"Words"));
  EXPECT_EQ(std::tuple(info.videoWidth, info.templateInfo.drawEndTime, info.tennisMetaInfo.layoutType),
            std::tuple(640, 7.0, 2));
  EXPECT_EQ(info.stringTable.at(0), XpString(u"mi/h"));
  m_folder.Write("notes.txt", "not a document");
  const VrxResult refused = Import("shots.csv", "notes.txt");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.errors, HasSubstr("is no painter document"));
  EXPECT_EQ(Import("shots.csv", "shots.csv").status, 1);
}

TEST_F(TennisImportTest, RowsThatAreWrongAreNamedAndWriteNothing) {
  m_folder.Write("bad.csv", "time_s,stroke\n1,serve\nsoon,serve\n3,lob\n");
  const VrxResult result = Import("bad.csv", "painter.vrx");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,
              AllOf(HasSubstr("bad.csv:3: time_s is \"soon\""), HasSubstr("bad.csv:4: stroke")));
  EXPECT_FALSE(std::filesystem::exists(Path("painter.vrx")));
  const VrxResult skipped = Import("bad.csv", "painter.vrx", {"--skip-bad-rows"});
  EXPECT_EQ(skipped.status, 0);
  EXPECT_THAT(skipped.errors, HasSubstr("warning: " + Path("bad.csv") + ":3: "));
  EXPECT_THAT(skipped.output, HasSubstr("1 shot from 0:01 to 0:01"));
  m_folder.Write("empty.csv", "time_s,stroke\n");
  for (const char* table : {"empty.csv", "none.csv"})
    EXPECT_EQ(Import(table, "painter.vrx").status, 1) << table;
}

}  // namespace
