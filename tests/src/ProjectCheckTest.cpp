// Every mistake in a project is found and its place named.
#include <algorithm>

#include <gmock/gmock.h>

#include "src/check/ProjectReport.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

using vrx::check::ProjectReport;
using vrx::check::Severity;
using vrx::check::SourceFacts;

class ProjectCheckTest : public testing::Test {
 protected:
  ProjectCheckTest() {
    m_folder.Write("a.mp4", "movie");
    project.videoTrack = ClipText("a.mp4", "0", "1001");
    project.audio = "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>48000</integer>";
  }
  ProjectReport Check() { return CheckText(project.Text()); }
  ProjectReport CheckText(const std::string& text) {
    const std::string path = m_folder.Write("p.vrx", text);
    return vrx::check::CheckProject(XpNarrowString(path).ToWide(), [this](const XpString&) { return facts; });
  }
  /// "E VideoTrack/2 SourceFile message" for each problem.
  static std::vector<std::string> Lines(const ProjectReport& report) {
    std::vector<std::string> lines;
    for (const auto& problem : report.problems) {
      std::string line = problem.severity == Severity::Error     ? "E "
                         : problem.severity == Severity::Warning ? "W "
                                                                 : "N ";
      if (problem.clip != 0) {
        line += problem.track.ToNarrow().c_str() + ("/" + std::to_string(problem.clip)) + " ";
      }
      line += problem.key.ToNarrow().c_str();
      lines.push_back(line + " " + problem.message.ToNarrow().c_str());
    }
    return lines;
  }

  ProjectText project;
  SourceFacts facts{.usable = true, .hasVideo = true, .hasAudio = true, .videoSeconds = 4, .audioSeconds = 4};
  TempFolder m_folder;
};

TEST_F(ProjectCheckTest, GoodProjectHasATimelineAndNoProblems) {
  project.videoTrack += ClipText("a.mp4", "2002", "3003") + ClipText("a.mp4", "-1", "-1");
  const ProjectReport report = Check();
  EXPECT_THAT(Lines(report), testing::IsEmpty());
  ASSERT_EQ(report.clips.size(), 3u);
  EXPECT_EQ(report.clips[1].firstFrame, 30);
  EXPECT_EQ(report.clips[1].frames, 30);
  EXPECT_NEAR(report.clips[1].sourceStart, 2.002, 1e-9);
  EXPECT_TRUE(report.clips[2].wholeSource);
  EXPECT_EQ(report.clips[2].frames, 120);
  EXPECT_EQ(report.totalFrames, 180);
}

struct Mistake {
  const char* name;
  void (*make)(ProjectText&, SourceFacts&);
  const char* line;
  bool renderable;
};

class ProjectMistakeTest : public ProjectCheckTest, public testing::WithParamInterface<Mistake> {};

TEST_P(ProjectMistakeTest, IsNamedWithItsPlace) {
  GetParam().make(project, facts);
  const ProjectReport report = Check();
  EXPECT_THAT(Lines(report), testing::Contains(testing::HasSubstr(GetParam().line)));
  EXPECT_EQ(report.HasErrors(), !GetParam().renderable);
}

INSTANTIATE_TEST_SUITE_P(
    Mistakes, ProjectMistakeTest,
    testing::Values(
        Mistake{"WrongType",
                [](ProjectText& p, SourceFacts&) {
                  p.videoTrack +=
                      "<dict><key>SourceFile</key><string>a.mp4</string>"
                      "<key>StartTime</key><integer>5</integer></dict>";
                },
                "W VideoTrack/2 StartTime is integer where real is due", true},
        Mistake{"MissingSource",
                [](ProjectText& p, SourceFacts&) { p.videoTrack += ClipText("b.mp4", "0", "1001"); },
                "E VideoTrack/2 SourceFile ", false},
        Mistake{"SourceWithoutName",
                [](ProjectText& p, SourceFacts&) { p.audioTrack = ClipText("", "0", "1001"); },
                "E AudioTrack/1 SourceFile names no source", false},
        Mistake{"UnreadableSource",
                [](ProjectText&, SourceFacts& f) { f = {.usable = false, .cause = "is no movie"}; },
                "a.mp4 is no movie", false},
        Mistake{"NoPicture", [](ProjectText&, SourceFacts& f) { f.hasVideo = false; }, "has no picture",
                false},
        Mistake{"ClipWithoutLength",
                [](ProjectText& p, SourceFacts&) { p.videoTrack += ClipText("a.mp4", "900", "900"); },
                "W VideoTrack/2 EndTime does not lie behind StartTime: the whole source is used", true},
        Mistake{"ClipShorterThanAFrame",
                [](ProjectText& p, SourceFacts&) { p.videoTrack += ClipText("a.mp4", "1", "9"); },
                "W VideoTrack/2 EndTime the clip is shorter than a frame", true},
        Mistake{"ClipBehindTheEnd",
                [](ProjectText& p, SourceFacts&) { p.videoTrack += ClipText("a.mp4", "3003", "6006"); },
                "W VideoTrack/2 EndTime lies 2.006 s behind the source's end: the last frame holds", true},
        Mistake{"EntryThatIsNoDict",
                [](ProjectText& p, SourceFacts&) { p.videoTrack += "<string>a.mp4</string>"; },
                "W VideoTrack/2  is a string, not a dict: left out", true},
        Mistake{"NoClips", [](ProjectText& p, SourceFacts&) { p.videoTrack.clear(); }, "E  holds no clip",
                false},
        Mistake{"NoVideoSettings", [](ProjectText& p, SourceFacts&) { p.video.clear(); },
                "E VideoOutputSettings is missing", false},
        Mistake{"SoundWithoutSettings",
                [](ProjectText& p, SourceFacts&) {
                  p.audio.clear();
                  p.audioTrack = ClipText("a.mp4", "0", "1001");
                },
                "without AudioOutputSettings", true},
        Mistake{"NoFrameLength",
                [](ProjectText& p, SourceFacts&) {
                  p.video = "<key>Width</key><integer>64</integer><key>Height</key><integer>64</integer>";
                },
                "E TimeScale must be above 0", false},
        Mistake{"OddWidth",
                [](ProjectText& p, SourceFacts&) { p.video.replace(p.video.find("640"), 3, "641"); },
                "E Width must be even", false},
        Mistake{"MisspelledKey",
                [](ProjectText& p, SourceFacts&) { p.video += "<key>interlace</key><true/>"; },
                "W interlace is an unknown key; did you mean Interlace?", true},
        Mistake{"NoOutput", [](ProjectText& p, SourceFacts&) { p.output.clear(); },
                "E OutputFilePath names no file", false},
        Mistake{"NoOutputFolder", [](ProjectText& p, SourceFacts&) { p.output = "none/out.mp4"; },
                "E OutputFilePath the folder ", false},
        Mistake{"OutputOverSource", [](ProjectText& p, SourceFacts&) { p.output = "a.mp4"; },
                "is also a source and would be replaced", true},
        Mistake{"NoPainterDocument",
                [](ProjectText& p, SourceFacts&) {
                  p.moreOutput = "<key>PainterEffect</key><string>none.vrx</string>";
                },
                "W PainterEffect ", true}),
    [](const auto& test) { return test.param.name; });

TEST_F(ProjectCheckTest, UnreadableDocumentSaysWhy) {
  EXPECT_THAT(Lines(CheckText("")), testing::ElementsAre(testing::HasSubstr("the document is empty")));
  EXPECT_THAT(Lines(CheckText("<plist>\n<dict>")), testing::ElementsAre(testing::HasSubstr("line 2")));
  EXPECT_THAT(Lines(CheckText("<!DOCTYPE x><plist/>")),
              testing::ElementsAre(testing::HasSubstr("document types are not allowed")));
  EXPECT_THAT(Lines(CheckText("<plist><dict/></plist>")),
              testing::ElementsAre(testing::HasSubstr("E VRXWrapper is missing")));
  const ProjectReport missing = vrx::check::CheckProject(u"/no/such.vrx", {});
  EXPECT_THAT(Lines(missing), testing::ElementsAre(testing::HasSubstr("does not exist")));
}

TEST_F(ProjectCheckTest, EachSourceIsProbedOnce) {
  int probes = 0;
  for (int i = 0; i < 50; ++i) project.videoTrack += ClipText("a.mp4", "0", "1001");
  const std::string path = m_folder.Write("p.vrx", project.Text());
  vrx::check::CheckProject(XpNarrowString(path).ToWide(), [&](const XpString&) {
    ++probes;
    return facts;
  });
  EXPECT_EQ(probes, 1);
}

}  // namespace
