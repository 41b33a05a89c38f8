// What a painter document gets wrong is told with its place, and each caption that never shows with its
// cause.
#include <gmock/gmock.h>

#include "src/check/ProjectReport.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using vrx::check::ProjectReport;

std::string Caption(int startMs, int endMs, int layout = 5, int videoId = 0, const std::string& text = "x") {
  return "&lt;Caption&gt;&lt;Text&gt;" + text +
         "&lt;/Text&gt;&lt;FontName&gt;Sans&lt;/FontName&gt;&lt;FontSize&gt;60&lt;/FontSize&gt;"
         "&lt;FontColor&gt;255&lt;/FontColor&gt;&lt;LayoutType&gt;" +
         std::to_string(layout) + "&lt;/LayoutType&gt;&lt;LeftPos&gt;" + std::to_string(startMs) +
         "&lt;/LeftPos&gt;&lt;RightPos&gt;" + std::to_string(endMs) + "&lt;/RightPos&gt;&lt;VideoID&gt;" +
         std::to_string(videoId) + "&lt;/VideoID&gt;&lt;/Caption&gt;";
}

class OverlayCheckTest : public testing::Test {
 protected:
  ProjectReport Check(const std::string& painter) {
    folder.Write("a.mp4", "movie");
    folder.Write("painter.xml", painter);
    ProjectText project;
    project.videoTrack = ClipText("a.mp4", "0", "10010");
    project.moreOutput = "<key>PainterEffect</key><string>painter.xml</string>";
    const std::string path = folder.Write("p.vrx", project.Text());
    return vrx::check::CheckProject(XpNarrowString(path).ToWide(), {});
  }
  ProjectReport CheckInfo(const std::string& info) {
    return Check("<plist><dict><key>PainterInfo</key><dict>" + info + "</dict></dict></plist>");
  }
  ProjectReport CheckCaptions(const std::string& captions, const std::string& general = "") {
    return CheckInfo("<key>CaptionInfo</key><dict><key>Valid</key><true/><key>CaptionString</key><string>" +
                     captions + "</string></dict>" + general);
  }
  static std::vector<std::string> Lines(const ProjectReport& report) {
    std::vector<std::string> lines;
    for (const auto& problem : report.problems) {
      if (problem.file == report.painterPath) {
        lines.push_back((problem.key + u" " + problem.message).ToNarrow().c_str());
      }
    }
    return lines;
  }
  static std::vector<std::string> Causes(const ProjectReport& report) {
    std::vector<std::string> causes;
    for (const auto& row : report.captions) causes.push_back(row.hiddenBecause.ToNarrow().c_str());
    return causes;
  }

  TempFolder folder;
};

TEST_F(OverlayCheckTest, GoodCaptionsAreListedInTheMoviesTime) {
  const ProjectReport report = CheckCaptions(Caption(1001, 2002));
  EXPECT_THAT(Lines(report), ElementsAre());
  ASSERT_EQ(report.overlays.size(), 1u);
  EXPECT_EQ(report.overlays[0].firstFrame, 30);
  EXPECT_EQ(report.overlays[0].lastFrame, 61);
  ASSERT_EQ(report.captions.size(), 1u);
  EXPECT_NEAR(report.captions[0].startSeconds, 1.001, 1e-9);
  EXPECT_THAT(Causes(report), ElementsAre(""));
}

TEST_F(OverlayCheckTest, EachHiddenCaptionHasItsCause) {
  const ProjectReport report = CheckCaptions(
      Caption(1000, 2000) + Caption(3000, 4000) + Caption(1500, 3500) + Caption(1200, 3900) +
      Caption(5000, 6000, 12) + Caption(5200, 5500) + Caption(7000, 6500) + Caption(7000, 8000, 5, 3) +
      Caption(50000, 51000) + Caption(8500, 8501) + Caption(9000, 9500, 5, 0, ""));
  EXPECT_THAT(Causes(report), ElementsAre("", "", "", HasSubstr("earlier captions"), HasSubstr("LayoutType"),
                                          HasSubstr("earlier captions"), HasSubstr("ends before it starts"),
                                          HasSubstr("VideoID 3"), HasSubstr("behind the movie's end"),
                                          HasSubstr("between two frames"), HasSubstr("text is empty")));
  EXPECT_THAT(Lines(report), Contains(HasSubstr("caption 8 never shows: its VideoID 3")));
  EXPECT_FALSE(report.HasErrors());
  EXPECT_THAT(Causes(CheckCaptions(Caption(7000, 8000, 5, 3),
                                   "<key>GeneralInfo</key><dict><key>SaveMovieMode</key><true/>"
                                   "<key>VideoWidth</key><integer>640</integer></dict>")),
              ElementsAre(""));
}

TEST_F(OverlayCheckTest, CaptionsThatOthersCutShortAreTold) {
  const ProjectReport unordered = CheckCaptions(Caption(6000, 8000) + Caption(1000, 3000));
  EXPECT_THAT(Causes(unordered),
              ElementsAre(HasSubstr("no frame that is drawn on"), HasSubstr("in the order")));
  const ProjectReport nested = CheckCaptions(Caption(1000, 9000) + Caption(2000, 3000));
  EXPECT_THAT(Causes(nested), ElementsAre("", HasSubstr("earlier captions")));
  EXPECT_THAT(Lines(nested), Contains(HasSubstr("caption 1 shows only in part")));
  const ProjectReport sound = CheckCaptions(Caption(0, 999) + Caption(1000, 2000) + Caption(2001, 3000) +
                                            Caption(2500, 4000) + Caption(5000, 5033) + Caption(9000, 99000));
  EXPECT_THAT(Causes(sound), ElementsAre("", "", "", "", "", ""));
  EXPECT_THAT(Lines(sound), ElementsAre());
}

TEST_F(OverlayCheckTest, ManyHiddenCaptionsAreSummedUp) {
  std::string captions;
  for (int i = 0; i < 1000; ++i) captions += Caption(1000, 2000, 0);
  const ProjectReport report = CheckCaptions(captions);
  EXPECT_EQ(report.captions.size(), 1000u);
  EXPECT_LT(report.problems.size(), 60u);
  EXPECT_THAT(Lines(report), Contains(HasSubstr("950 more captions never show")));
}

TEST_F(OverlayCheckTest, MistakesInTheDocumentAreNamed) {
  struct Case {
    std::string info;
    std::string line;
  };
  const std::string width = "<key>GeneralInfo</key><dict><key>VideoWidth</key>";
  for (const Case& c :
       {Case{width + "<real>1</real></dict>", "GeneralInfo/VideoWidth is real where integer is due"},
        Case{width + "<real>1</real></dict>", "GeneralInfo/VideoWidth is missing or cannot be read"},
        Case{"<key>TennisMetaInfo</key><dict/>", "TennisMetaInfo/TrimedShift is missing"},
        Case{"<key>TemplateInfo</key><dict><key>LogDataArray</key><array><dict/></array></dict>",
             "LogDataArray/Duration is missing"},
        Case{"<key>CaptionInfo</key><dict><key>captionString</key><string/></dict>",
             "CaptionInfo/captionString is an unknown key; did you mean CaptionString?"},
        Case{"<key>CaptionInfo</key><dict><key>CaptionString</key><string>x</string></dict>",
             "Valid is not true"},
        Case{"<key>CaptionInfo</key><dict><key>Valid</key><true/></dict>", "holds no captions"},
        Case{"<key>TennisMetaInfo</key><dict><key>Valid</key><true/><key>Duration</key><real>1</real>"
             "<key>OriginalDateTime</key><string/><key>TennisMetaData</key><string>x</string>"
             "<key>TennisMetaLayoutType</key><integer>0</integer><key>TrimedShift</key><real>0</real></dict>",
             "TennisMetaInfo is valid, but this version draws no such overlay"},
        Case{"<key>Other</key><dict/>", "Other is an unknown key"}}) {
    EXPECT_THAT(Lines(CheckInfo(c.info)), Contains(HasSubstr(c.line))) << c.info;
  }
  EXPECT_THAT(Lines(Check("<plist><dict><key>x</key><true/></dict></plist>")),
              Contains(HasSubstr("PainterInfo is missing")));
  EXPECT_THAT(Lines(Check("<plist>")), Contains(HasSubstr("cannot be read as a painter document")));
  EXPECT_THAT(Lines(CheckCaptions("junk")), Contains(HasSubstr("no complete <Caption>")));
}

}  // namespace
