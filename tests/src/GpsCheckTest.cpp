// What keeps a GPS overlay from showing what was meant is named with its clip.
#include "src/check/GpsCheck.h"

#include <functional>

#include <gmock/gmock.h>

#include "src/overlayplan/LogPaths.h"
#include "tests/content/MoffBytes.h"
#include "tests/gps/GpsLogText.h"
#include "tests/support/TempFolder.h"

namespace vrx::check {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

class GpsCheckTest : public testing::Test {
 protected:
  GpsCheckTest() {
    for (const char* name : {"ride.mts", "back.mts"}) PutLog(name, 0, 40);
    info.videoLayoutType = 1;
    info.gpsUnitFromUser = 0;
    info.stringTable[0] = u"mph";
    TemplateInfo& look = info.templateInfo;
    look.valid = true;
    look.scenarioType = 1;
    look.drawEndTime = 60;
    look.logData = {Clip(3, "ride.mts"), Clip(4, "back.mts")};
    sections = {{.videoId = 3, .startTime = 0, .endTime = 20},
                {.videoId = 4, .startTime = 20, .endTime = 60}};
  }
  void PutLog(const std::string& name, int first, int last) {
    std::string log;
    for (int second = first; second <= last; ++second) log += Fix({.second = second});
    m_folder.Write(name, "file");
    m_folder.Write(name + ".moff", test_support::MoffBytes({.name = name}, {{7, {{"BINA", log}}}}));
  }
  static LogDataEntry Clip(std::int32_t videoId, const char* log) {
    LogDataEntry clip{.videoId = videoId, .endTime = 30, .originalDateTime = Start(), .duration = 40};
    clip.gpsLogFilePath = XpNarrowString(log).ToWide();
    return clip;
  }
  std::vector<std::string> Messages() {
    report = {.painterPath = XpNarrowString((m_folder.Path() / "painter.xml").string()).ToWide(),
              .totalSeconds = 60};
    PainterInfo resolved = info;
    overlayplan::ResolveLogPaths(report.painterPath, resolved);
    CheckGps(resolved, sections, report);
    std::vector<std::string> messages;
    for (const Problem& problem : report.problems) {
      EXPECT_EQ(std::tuple(problem.severity, problem.file),
                std::tuple(Severity::Warning, report.painterPath));
      messages.push_back((problem.key + u" " + problem.message).ToNarrow().c_str());
    }
    return messages;
  }

  TempFolder m_folder;
  PainterInfo info;
  std::vector<SlowInfoRecord> sections;
  ProjectReport report;
};

TEST_F(GpsCheckTest, SoundDocumentHasNoProblemAndARowForEachClip) {
  PutLog("part.mts", 7, 12);
  info.templateInfo.logData[1] = Clip(4, (m_folder.Path() / "part.mts").c_str());
  info.templateInfo.logData[1].duration = 22;
  sections.push_back({.videoId = 3, .startTime = 60, .endTime = 70});
  EXPECT_THAT(Messages(), IsEmpty());
  ASSERT_EQ(report.gpsClips.size(), 2u);
  const GpsClipRow& whole = report.gpsClips[0];
  EXPECT_EQ(
      std::tuple(whole.videoId, whole.clipSeconds, whole.fixes, whole.firstFixSeconds, whole.lastFixSeconds),
      std::tuple(3, 40, 41u, 0, 40));
  EXPECT_THAT(whole.shown, ElementsAre(Pair(0, 20), Pair(60, 70)));
  // A path from the root counts from nowhere else.
  const GpsClipRow& part = report.gpsClips[1];
  EXPECT_EQ(std::tuple(part.videoId, part.clipSeconds, part.fixes, part.firstFixSeconds, part.lastFixSeconds),
            std::tuple(4, 22, 6u, 7, 12));
  info.templateInfo.drawTrimmedOutArea = false;
  Messages();
  EXPECT_EQ(report.gpsClips[0].clipSeconds, 30);
}

TEST_F(GpsCheckTest, EachMistakeHasItsLine) {
  PutLog("late.mts", 11, 40);
  PutLog("early.mts", 0, 29);
  PutLog("other.mts", 500, 600);
  m_folder.Write("bare.mts", "movie");
  TemplateInfo& look = info.templateInfo;
  LogDataEntry& clip = look.logData[0];
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[&] { info.videoLayoutType = 0; },
       "VideoLayoutType is 0, which is no layout: no GPS overlay is drawn"},
      {[&] { info.videoLayoutType = 16; }, "VideoLayoutType is 16"},
      {[&] { info.stringTable.clear(); }, "StringManager holds no texts"},
      {[&] { look.drawEndTime = 0; }, "TemplateInfo/DrawEndTime does not lie after DrawStartTime"},
      {[&] { look.drawStartTime = 70; },
       "TemplateInfo/DrawStartTime is 70 s, after the movie's end: nothing"},
      {[&] { look.drawStartTime = 30'000, look.drawEndTime = 60'000; },
       "it counts in seconds: was 30 meant?"},
      {[&] { clip.duration = 40'000; },
       "its log ends early, at 0:40 of 666:40; it counts in seconds: was 40 meant?"},
      {[&] { sections.clear(); }, "SlowInfoData has no record"},
      {[&] { clip.gpsLogFilePath = u""; }, "LogDataArray VideoID 3: GPSLogFilePath is empty"},
      {[&] { clip.gpsLogFilePath = u"none.mts"; }, "none.mts: no position is shown"},
      {[&] { clip.gpsLogFilePath = u"bare.mts"; }, "LogDataArray VideoID 3: no log can be read for "},
      {[&] { clip.duration = 0; }, "LogDataArray VideoID 3: has no Duration"},
      {[&] { look.drawTrimmedOutArea = false, clip.startTime = 30; },
       "LogDataArray VideoID 3: EndTime does not lie after StartTime"},
      {[&] { clip.gpsLogFilePath = u"other.mts"; }, "has no position in the time of the clip"},
      {[&] { clip.gpsLogFilePath = u"late.mts"; }, "VideoID 3: its log begins late, at 0:11 of the clip"},
      {[&] { clip.gpsLogFilePath = u"early.mts"; }, "VideoID 3: its log ends early, at 0:29 of 0:40"},
      {[&] { sections.erase(sections.begin()); }, "VideoID 3: no record of SlowInfoData names it"},
      {[&] { sections[1].videoId = 9, look.logData.pop_back(); },
       "SlowInfoData record 2: no log has VideoID 9"},
      {[&] { info.gpsUnitFromUser = -1; }, "GpsUnitFromUser is -1, which is no unit"},
      {[&] { info.gpsUnitFromUser = 3; }, "GpsUnitFromUser is 3"},
  };
  const PainterInfo good = info;
  const auto goodSections = sections;
  for (const auto& [change, line] : cases) {
    info = good;
    sections = goodSections;
    change();
    EXPECT_THAT(Messages(), ElementsAre(HasSubstr(line))) << line;
  }
}

TEST_F(GpsCheckTest, LogsMayBeginAndEndTenSecondsInsideTheirClips) {
  PutLog("near.mts", 10, 30);
  info.templateInfo.logData[0] = Clip(3, "near.mts");
  EXPECT_THAT(Messages(), IsEmpty());
}

}  // namespace
}  // namespace vrx::check
