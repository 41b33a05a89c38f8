// Every mistake in a project and in the documents that it names is reported with its place, and each caption
// that never shows with its cause.
#include <sys/stat.h>

#include <algorithm>

#include <gmock/gmock.h>

#include "src/check/ProjectReport.h"
#include "tests/src/BasebandText.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using vrx::check::ProjectReport;
using vrx::check::Severity;
using vrx::check::SourceFacts;

std::string Caption(int startMs, int endMs, int layout = 5, int videoId = 0, const std::string& text = "x") {
  return "<Caption><Text>" + text +
         "</Text><FontName>Sans</FontName><FontSize>60</FontSize>"
         "<FontColor>255</FontColor><LayoutType>" +
         std::to_string(layout) + "</LayoutType><LeftPos>" + std::to_string(startMs) +
         "</LeftPos><RightPos>" + std::to_string(endMs) + "</RightPos><VideoID>" + std::to_string(videoId) +
         "</VideoID></Caption>";
}

class ProjectCheckTest : public testing::Test {
 protected:
  ProjectCheckTest() {
    m_folder.Write("a.mp4", "movie");
    project.videoTrack = ClipText("a.mp4", "0", "1001");
    project.audioTrack = project.videoTrack;
    project.audio = "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>48000</integer>";
  }
  ProjectReport Check() { return CheckText(project.Text()); }
  ProjectReport CheckText(const std::string& text) {
    const std::string path = m_folder.Write("p.vrx", text);
    return vrx::check::CheckProject(XpNarrowString(path).ToWide(), [this](const XpString&) {
      ++probes;
      return facts;
    });
  }
  /// "E VideoTrack/2 SourceFile message" for each problem.
  static std::vector<std::string> Lines(const ProjectReport& report) {
    std::vector<std::string> lines;
    for (const auto& problem : report.problems) {
      std::string line = problem.severity == Severity::Error ? "E " : "W ";
      if (problem.clip != 0) {
        line += problem.track.ToNarrow().c_str() + ("/" + std::to_string(problem.clip)) + " ";
      }
      line += problem.key.ToNarrow().c_str();
      lines.push_back(line + " " + problem.message.ToNarrow().c_str());
    }
    return lines;
  }
  static std::vector<std::string> Causes(const ProjectReport& report) {
    std::vector<std::string> causes;
    for (const auto& row : report.captions) causes.push_back(row.hiddenBecause.ToNarrow().c_str());
    return causes;
  }
  ProjectReport CheckPainter(const std::string& painter) {
    m_folder.Write("painter.xml", painter);
    project.videoTrack = ClipText("a.mp4", "0", "10010");
    project.moreOutput = "<key>PainterEffect</key><string>painter.xml</string>";
    facts.videoSeconds = 20;
    return Check();
  }
  ProjectReport CheckInfo(const std::string& info) {
    return CheckPainter("<plist><dict><key>PainterInfo</key><dict>" + info + "</dict></dict></plist>");
  }
  ProjectReport CheckCaptions(const std::string& captions, const std::string& general = "") {
    return CheckInfo(
        "<key>CaptionInfo</key><dict><key>Valid</key><true/><key>CaptionString</key><string>"
        "<![CDATA[" +
        captions + "]]></string></dict>" + general);
  }
  void ExpectLine(const std::string& line, bool isRenderable) {
    const ProjectReport report = Check();
    EXPECT_THAT(Lines(report), Contains(HasSubstr(line)));
    EXPECT_EQ(report.HasErrors(), !isRenderable) << line;
  }

  ProjectText project;
  SourceFacts facts{.usable = true, .hasVideo = true, .hasAudio = true, .videoSeconds = 4, .audioSeconds = 4};
  int probes = 0;
  TempFolder m_folder;
};

TEST_F(ProjectCheckTest, GoodProjectHasATimelineAndNoProblems) {
  project.videoTrack += ClipText("a.mp4", "2002", "3003") + ClipText("a.mp4", "-1", "-1");
  const ProjectReport report = Check();
  EXPECT_THAT(Lines(report), testing::IsEmpty());
  ASSERT_EQ(report.clips.size(), 4u);
  EXPECT_EQ(report.clips[1].firstFrame, 30);
  EXPECT_EQ(report.clips[1].frames, 30);
  EXPECT_NEAR(report.clips[1].sourceStart, 2.002, 1e-9);
  EXPECT_TRUE(report.clips[2].wholeSource);
  EXPECT_EQ(report.clips[2].frames, 120);
  EXPECT_EQ(report.totalFrames, 180);
}

TEST_F(ProjectCheckTest, MistakeInAClipIsNamedWithItsPlace) {
  struct Case {
    std::string clip;
    const char* line;
    bool renderable;
  };
  const Case cases[] = {
      {"<dict><key>SourceFile</key><string>a.mp4</string><key>StartTime</key><integer>5</integer></dict>",
       "W VideoTrack/2 StartTime is integer instead of real", true},
      {ClipText("b.mp4", "0", "1001"), "E VideoTrack/2 SourceFile ", false},
      {ClipText("a.mp4", "900", "900"),
       "W VideoTrack/2 EndTime does not lie after StartTime: the whole source is used", true},
      {ClipText("a.mp4", "2000", "-1"), "W VideoTrack/2 EndTime is missing, so StartTime is not used", true},
      {ClipText("a.mp4", "1", "9"), "W VideoTrack/2 EndTime the clip is shorter than a frame", true},
      {ClipText("a.mp4", "3003", "6006"),
       "W VideoTrack/2 EndTime lies 2.006 s after the source's end: the last frame is held", true},
      {"<dict><key>SourceFile</key><string>a.mp4</string><key>SourceType</key><integer>5</integer></dict>",
       "W VideoTrack/2 SourceType is 5, not one of 0 to 4: it counts as 0", true},
      {ClipText("a.mp4", "4004", "6006"),
       "W VideoTrack/2 StartTime lies 0.004 s after the source's end: the clip is the source's last frame",
       true},
      {"<string>a.mp4</string>", "W VideoTrack holds a string, not a dict: left out", true},
  };
  const std::string good = project.videoTrack;
  for (const Case& c : cases) {
    project.videoTrack = good + c.clip;
    ExpectLine(c.line, c.renderable);
  }
  // What is no clip has no number.
  project.videoTrack = "\n<string>a</string>\n" + good + "\n" + ClipText("b.mp4", "0", "1001");
  const ProjectReport report = Check();
  EXPECT_EQ(report.problems[0].clip, 2u);
  EXPECT_EQ(report.problems[0].line, report.problems[1].line + 2);
}

TEST_F(ProjectCheckTest, MistakeInTheOutputIsNamedWithItsKey) {
  struct Case {
    std::string ProjectText::*part;
    std::string text;
    std::string line;
    bool renderable;
  };
  const std::string socket = (m_folder.Path() / "socket").string();
  ASSERT_EQ(mknod(socket.c_str(), S_IFSOCK | 0600, 0), 0);
  const Case cases[] = {
      {&ProjectText::videoTrack, "", "E VideoTrack holds no clip", false},
      {&ProjectText::video, "", "E VideoOutputSettings is missing", false},
      {&ProjectText::video, "<key>Width</key><integer>64</integer>", "E TimeScale must be above 0", false},
      {&ProjectText::video, "<key>Width</key><integer>641</integer>", "E Width must be even", false},
      {&ProjectText::video, "<key>interlace</key><true/>",
       "W interlace is an unknown key; did you mean Interlace?", false},
      {&ProjectText::audio, "", "W AudioOutputSettings is missing: the clips of AudioTrack are not heard",
       true},
      {&ProjectText::audioTrack, ClipText("", "0", "1001"), "E AudioTrack/1 SourceFile names no source",
       false},
      {&ProjectText::output, "", "E OutputFilePath names no file", false},
      {&ProjectText::output, "none/out.mp4", "E OutputFilePath the folder ", false},
      {&ProjectText::output, m_folder.Path().string(),
       "E OutputFilePath " + m_folder.Path().string() + " is a folder", false},
      {&ProjectText::output, "socket", "E OutputFilePath " + socket + " is a device, a pipe or a socket",
       false},
      {&ProjectText::videoTrack, ClipText("socket", "0", "1001"),
       "E VideoTrack/1 SourceFile " + socket + " is a device, a pipe or a socket", false},
      {&ProjectText::audio, "<key>Channel</key><integer>2</integer>",
       "E SamplingRate must lie between 8000 and 192000 Hz, and is not set", false},
      {&ProjectText::audio,
       "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>48000</integer>"
       "<key>AudioCodecType</key><integer>3</integer><key>BitPerSample</key><integer>20</integer>",
       "E BitPerSample must be 16 or 24 for PCM, and is 20", false},
      {&ProjectText::audio,
       "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>48000</integer>"
       "<key>AudioCodecType</key><integer>4</integer>",
       "W AudioCodecType is 4, not one of 0 to 3: it counts as 0", true},
      {&ProjectText::output, "out.m2ts", "W VideoSpecificationType an MP4 file is written", true},
      {&ProjectText::moreOutput, "<key>PainterEffect</key><string>none.vrx</string>", "W PainterEffect ",
       true},
  };
  project.audioTrack = project.videoTrack;
  const std::string sound = project.audio;
  project.audio += "<key>AudioCodecType</key><integer>3</integer>";  // of 16 bits
  EXPECT_THAT(Lines(Check()), testing::IsEmpty());
  project.audio = "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>4294976</integer>";
  EXPECT_THAT(Lines(Check()), ElementsAre(testing::EndsWith("and is 4294976")));
  project.audio = sound;
  const ProjectText good = project;
  for (const Case& c : cases) {
    project = good;
    project.*c.part = c.text;
    ExpectLine(c.line, c.renderable);
  }
}

TEST_F(ProjectCheckTest, OutputThatIsAnInputIsRefusedAlsoThroughLinks) {
  m_folder.Write("sound.wav", "sound");
  m_folder.Write("photo.png", "photo");
  m_folder.Write("ride.mts", "movie");
  m_folder.Write("ride.moff", "log");
  m_folder.Write(
      "painter.xml",
      "<plist><dict><key>PainterInfo</key><dict><key>TemplateInfo</key><dict><key>LogDataArray</key>"
      "<array><dict><key>GPSLogFilePath</key><string>ride.mts</string></dict></array></dict></dict>"
      "</dict></plist>");
  m_folder.Write("stills.xml", BasebandText(ImageText(1, "photo.png", 0, 9)));
  std::filesystem::create_symlink("a.mp4", m_folder.Path() / "link.mp4");
  std::filesystem::create_hard_link(m_folder.Path() / "photo.png", m_folder.Path() / "hard.png");
  std::filesystem::create_symlink("nothing", m_folder.Path() / "to-nothing.mp4");
  project.videoTrack += ClipText("stills.xml", "0", "334", "<key>SourceType</key><integer>4</integer>");
  project.audioTrack = ClipText("sound.wav", "0", "1001");
  project.moreOutput = "<key>PainterEffect</key><string>painter.xml</string>";
  struct Case {
    const char* output;
    const char* role;
  };
  for (const Case& c : {Case{"a.mp4", "is the source of VideoTrack clip 1"},
                        {"link.mp4", "is the source of VideoTrack clip 1"},
                        {"stills.xml", "is the source of VideoTrack clip 2"},
                        {"photo.png", "is a still picture of VideoTrack clip 2 (line 2 of its document)"},
                        {"hard.png", "is a still picture of VideoTrack clip 2"},
                        {"sound.wav", "is the source of AudioTrack clip 1"},
                        {"painter.xml", "is the painter document"},
                        {"ride.mts", "is a GPS log"},
                        {"ride.moff", "is a GPS log"},
                        {"./p.vrx", "is the project document"}}) {
    project.output = c.output;
    EXPECT_THAT(Lines(Check()), Contains(AllOf(HasSubstr("E OutputFilePath"), HasSubstr(c.role))))
        << c.output;
  }
  for (const char* output : {"to-nothing.mp4", "new.mp4"}) {
    project.output = output;
    EXPECT_THAT(Lines(Check()), testing::Not(Contains(HasSubstr("OutputFilePath")))) << output;
  }
}

TEST_F(ProjectCheckTest, EndlessTimesAddUpToALongMovie) {
  project.videoTrack = ClipText("a.mp4", "-1e300", "1e300") + ClipText("a.mp4", "0", "1e300");
  const ProjectReport report = Check();
  EXPECT_GT(report.totalFrames, 1'000'000'000'000);
  EXPECT_GT(report.clips[1].firstFrame, 1'000'000'000'000);
}

TEST_F(ProjectCheckTest, SourceThatCannotGiveItsPictureOrColoursIsNamed) {
  facts.dynamicRange = VRXDynamicRangePq;
  ExpectLine("a.mp4 is HDR (PQ): its colours are brought to the movie's standard range", true);
  facts.dynamicRange = VRXDynamicRangeHlg;
  ExpectLine("a.mp4 is HDR (HLG): its", true);
  facts.hasVideo = false;
  ExpectLine("has no picture", false);
  facts = {.usable = false, .cause = "is no movie"};
  ExpectLine("a.mp4 is no movie", false);
}

TEST_F(ProjectCheckTest, TimesInSecondsAndSoundWithoutATrackAreNamed) {
  facts.videoSeconds = facts.audioSeconds = 500;
  project.videoTrack = ClipText("a.mp4", "0", "120") + ClipText("a.mp4", "200", "400");
  EXPECT_THAT(
      Lines(Check()),
      ElementsAre("W VideoTrack/1 EndTime every clip lasts less than a second (times are milliseconds; "
                  "were 0 and 120000 meant?)"));
  project.videoTrack += ClipText("a.mp4", "0", "2000");  // 2000 s cannot be cut from a source of 500 s
  project.audioTrack.clear();
  EXPECT_THAT(Lines(Check()), ElementsAre(HasSubstr("AudioTrack holds no clip, so the movie is silent")));
  facts.hasAudio = false;
  EXPECT_THAT(Lines(Check()), testing::IsEmpty());
  facts.hasAudio = true;
  project.audio.clear();
  EXPECT_THAT(Lines(Check()), ElementsAre(HasSubstr("the movie will have no sound")));
}

TEST_F(ProjectCheckTest, BitratesThatCanOnlyBeKilobitsAreNamed) {
  const auto linesAt = [&](const std::string& size, const std::string& bitrate) {
    project.video = size +
                    "<key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>"
                    "<key>AverageBitrate</key><integer>" +
                    bitrate + "</integer>";
    return Lines(Check());
  };
  const std::string large = "<key>Width</key><integer>1920</integer><key>Height</key><integer>1080</integer>";
  const std::string small = "<key>Width</key><integer>128</integer><key>Height</key><integer>96</integer>";
  EXPECT_THAT(linesAt(large, "8000"),
              ElementsAre(HasSubstr("W AverageBitrate 8000 bits a second are too few")));
  EXPECT_THAT(linesAt(large, "60000"), ElementsAre(HasSubstr("were 60000000 meant?")));
  EXPECT_THAT(linesAt(large, "8"),
              ElementsAre(HasSubstr("E AverageBitrate 8 bits a second are too few for the "
                                    "picture; were 8000000 meant?")));
  EXPECT_THAT(linesAt(small, "128"), ElementsAre(HasSubstr("E AverageBitrate 128 bits a second")));
  EXPECT_THAT(linesAt(large, "200000"), testing::IsEmpty());
  EXPECT_THAT(linesAt(small, "20000"), testing::IsEmpty());
}

TEST_F(ProjectCheckTest, StillsThatLeaveFramesBlackOrSayWhatIsUnknownAreNamed) {
  struct Case {
    std::string images;
    std::uint64_t line;
    const char* key;
    const char* message;
    bool renderable = true;
  };
  m_folder.Write("a", PixelBmp());
  const Case cases[] = {
      {ImageText(1, "no.jpg", 0, 9), 2, "ImagePath", "no.jpg is left out", false},
      {ImageText(1, "a", 0, 3) + ImageText(2, "a", 6, 9), 3, "InFrame", "frames 4 to 5 have no image"},
      {ImageText(1, "a", 0, 5) + ImageText(2, "a", 4, 9), 3, "InFrame",
       "frames 4 to 5 already have an image"},
      {ImageText(1, "a", 5, 9) + ImageText(2, "a", 0, 4), 3, "InFrame", "must be listed in order"},
      {ImageText(1, "a", 0, 7), 0, "", "end with frame 7, the clip with frame 9"},
      {ImageText(1, "a", 0, 12), 0, "", "go on to frame 12"},
      {ImageText(1, "a", 0, 9, 4), 2, "Rotation", "4 is none of 0 to 3"},
      {ImageText(1, "a", 0, 9, 0, 2), 2, "Mirror", "2 is neither 0 nor 1"},
      {ImageText(1, "a", 0, 4) + ImageText(1, "a", 5, 9), 3, "ImageId", "1 is used before"},
      {"", 0, "", "holds no DecImage", false},
  };
  project.videoTrack = ClipText("b.xml", "0", "334", "<key>SourceType</key><integer>4</integer>");
  for (const Case& c : cases) {
    m_folder.Write("b.xml", BasebandText(c.images));
    ProjectReport report = Check();
    EXPECT_EQ(report.HasErrors(), !c.renderable) << c.message;
    const std::string place =
        (c.renderable ? "W VideoTrack/1 " : "E VideoTrack/1 ") + std::string(c.key) + " ";
    EXPECT_THAT(Lines(report), Contains(AllOf(HasSubstr(place), HasSubstr(c.message))));
    EXPECT_TRUE(c.line == 0 || std::ranges::count(report.problems, c.line, &vrx::check::Problem::line) > 0)
        << c.message;
    report.AllowMissingPictures();
    EXPECT_FALSE(report.HasErrors()) << c.message;
  }
}

TEST_F(ProjectCheckTest, UnreadableDocumentSaysWhy) {
  for (const auto& [text, line] : {std::pair{"", "the document is empty"},
                                   {"<plist>\n<dict>", "(column 7)"},
                                   {"<plist><dict/></plist>", "E VRXWrapper is missing"}}) {
    EXPECT_THAT(Lines(CheckText(text)), ElementsAre(HasSubstr(line)));
  }
  const ProjectReport missing = vrx::check::CheckProject(XpString(u"/no/such.vrx"), {});
  EXPECT_THAT(Lines(missing), ElementsAre(HasSubstr("does not exist")));
}

TEST_F(ProjectCheckTest, EachSourceIsProbedOnce) {
  for (int i = 0; i < 50; ++i) project.videoTrack += ClipText("a.mp4", "0", "1001");
  Check();
  EXPECT_EQ(probes, 1);
}

TEST_F(ProjectCheckTest, GoodCaptionsAreListedInTheMoviesTime) {
  const ProjectReport report = CheckCaptions(Caption(1001, 2002));
  EXPECT_THAT(Lines(report), ElementsAre());
  ASSERT_EQ(report.overlays.size(), 1u);
  EXPECT_EQ(report.overlays[0].firstFrame, 30);
  EXPECT_EQ(report.overlays[0].lastFrame, 61);
  ASSERT_EQ(report.captions.size(), 1u);
  EXPECT_NEAR(report.captions[0].startSeconds, 1.001, 1e-9);
  EXPECT_THAT(Causes(report), ElementsAre(""));
  const auto linesAtSize = [&](const std::string& width, const std::string& height) {
    project.video =
        "<key>Width</key><integer>" + width + "</integer><key>Height</key><integer>" + height +
        "</integer><key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>";
    return Lines(CheckCaptions(Caption(1001, 2002)));
  };
  EXPECT_THAT(linesAtSize("20", "1080"), Contains(HasSubstr("20 pixels or less on a side")));
  EXPECT_THAT(linesAtSize("1080", "1920"), Contains(HasSubstr("letters are 0.31 times as wide")));
}

TEST_F(ProjectCheckTest, EachHiddenCaptionHasItsCause) {
  const ProjectReport report =
      CheckCaptions(Caption(1000, 2000) + Caption(3000, 4000) + Caption(1500, 3500) + Caption(1200, 3900) +
                    Caption(5000, 6000, 12) + Caption(5200, 5500) + Caption(7000, 6500) +
                    Caption(7000, 8000, 5, 3) + Caption(50000, 51000) + Caption(8500, 8501) +
                    Caption(9000, 9500, 5, 0, "") + Caption(-2000, -1000) + Caption(9600, 9700, 5, 3));
  EXPECT_THAT(Causes(report), ElementsAre("", "", "", HasSubstr("earlier captions"), HasSubstr("LayoutType"),
                                          HasSubstr("earlier captions"), HasSubstr("ends before it starts"),
                                          HasSubstr("VideoID 3"), HasSubstr("after the movie's end"),
                                          HasSubstr("between two frames"), HasSubstr("text is empty"),
                                          HasSubstr("before the movie begins"), HasSubstr("VideoID 3")));
  EXPECT_THAT(
      Lines(report),
      Contains(testing::ContainsRegex("caption 8 never shows: its VideoID 3.*; more captions like it: 1$")));
  EXPECT_FALSE(report.HasErrors());
  EXPECT_THAT(Causes(CheckCaptions(Caption(7000, 8000, 5, 3),
                                   "<key>GeneralInfo</key><dict><key>SaveMovieMode</key><true/>"
                                   "<key>VideoWidth</key><integer>640</integer></dict>")),
              ElementsAre(""));
}

TEST_F(ProjectCheckTest, CaptionsThatOthersCutShortAreReported) {
  // The frame in which two meet is no overlap.
  for (const auto& [start, isNamed] : {std::pair{1960, false}, {1920, true}}) {
    const auto named = Contains(HasSubstr("caption 2 shows only in part"));
    const std::vector<std::string> lines = Lines(CheckCaptions(Caption(1000, 2000) + Caption(start, 3000)));
    EXPECT_EQ(testing::Matches(named)(lines), isNamed) << start;
  }
  const ProjectReport unordered = CheckCaptions(Caption(6000, 8000) + Caption(1000, 3000));
  EXPECT_THAT(Causes(unordered),
              ElementsAre(HasSubstr("no frame that is drawn on"), HasSubstr("in the order")));
  const ProjectReport nested = CheckCaptions(Caption(1000, 9000) + Caption(2000, 3000));
  EXPECT_THAT(Causes(nested), ElementsAre("", HasSubstr("earlier captions")));
  EXPECT_THAT(Lines(nested), ElementsAre(HasSubstr("caption 2 never shows: earlier captions")));
  const ProjectReport sound = CheckCaptions(Caption(0, 999) + Caption(1000, 2000) + Caption(2001, 3000) +
                                            Caption(3000, 4000) + Caption(5000, 5033) + Caption(9000, 99000));
  EXPECT_THAT(Causes(sound), ElementsAre("", "", "", "", "", ""));
  EXPECT_THAT(Lines(sound), ElementsAre());
}

TEST_F(ProjectCheckTest, HiddenCaptionsBeyondFiftyAreCounted) {
  std::string captions;
  for (int i = 0; i < 1000; ++i) captions += Caption(2000, 1000);
  const ProjectReport report = CheckCaptions(captions);
  EXPECT_EQ(report.captions.size(), 1000u);
  EXPECT_LT(report.problems.size(), 60u);
  EXPECT_THAT(Lines(report), Contains(HasSubstr("950 more captions never show")));
}

TEST_F(ProjectCheckTest, MistakeInThePainterDocumentIsNamed) {
  struct Case {
    std::string info;
    std::string line;
  };
  const std::string width = "<key>GeneralInfo</key><dict><key>VideoWidth</key>";
  for (const Case& c :
       {Case{width + "<real>1</real></dict>", "GeneralInfo/VideoWidth is real instead of integer"},
        Case{"<key>GeneralInfo</key><dict/>", "GeneralInfo/VideoWidth is missing or cannot be read"},
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
             "TennisMetaData record 1: does not end with a bar"},
        Case{"<key>TemplateInfo</key><dict><key>Valid</key><true/><key>ScenarioType</key><integer>1</integer>"
             "<key>LogDataArray</key><array><dict><key>Duration</key><real>1</real></dict></array></dict>",
             "LogDataArray VideoID -1: GPSLogFilePath is empty"},
        Case{"<key>Other</key><dict/>", "Other is an unknown key"}}) {
    EXPECT_THAT(Lines(CheckInfo(c.info)), Contains(HasSubstr(c.line))) << c.info;
  }
  EXPECT_THAT(Lines(CheckPainter("<plist><dict><key>x</key><true/></dict></plist>")),
              Contains(HasSubstr("PainterInfo is missing")));
  EXPECT_THAT(Lines(CheckPainter("<plist>")), Contains(HasSubstr("cannot be read as a painter document")));
  EXPECT_THAT(Lines(CheckCaptions("junk")), Contains(HasSubstr("\"junk\" lies in no <Caption>")));
}

}  // namespace
