// What a project document's keys become, and what a wrong one costs.
#include <gtest/gtest.h>

#include "src/project/TKLXOutputXml.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

class ProjectReaderTest : public testing::Test {
 protected:
  XpResult Load(const ProjectText& text) {
    const std::string path = m_folder.Write("p.vrx", text.Text());
    return project.LoadXmlFile(XpNarrowString(path).ToWide());
  }
  TKLXOutputXml project;
  TempFolder m_folder;
};

TEST_F(ProjectReaderTest, MissingKeyOrWrongTypeGivesTheDefault) {
  ProjectText text;
  text.videoTrack =
      "<dict><key>SourceFile</key><string>a &amp; b.mp4</string><key>StartTime</key><integer>5</integer>"
      "<key>SourceType</key><string>4</string><key>EnableOverlay</key><integer>0</integer></dict>"
      "<string>no clip</string>";
  EXPECT_EQ(Load(text), XpErrNoObject);  // no audio settings, all else read
  ASSERT_EQ(project.videoTracks.size(), 1u);
  const TKLXOutputXmlInfo& clip = *project.videoTracks[0];
  EXPECT_EQ(clip.sourceFile, u"a & b.mp4");
  EXPECT_EQ(clip.sourceType, 0);
  EXPECT_EQ(clip.startTime, -1.0);
  EXPECT_EQ(clip.endTime, -1.0);
  EXPECT_TRUE(clip.enableOverlay);
}

TEST_F(ProjectReaderTest, CodesAreRenumberedForTheEngine) {
  struct Case {
    int inDocument;
    int specification, codec, mode, audio, source;
  };
  for (const Case& c :
       {Case{1, 1, 1, 1, 1, 1}, Case{2, 3, 0, 2, 2, 2}, Case{3, 4, 0, 0, 3, 3}, Case{4, 6, 0, 0, 0, 4},
        Case{5, 8, 0, 0, 0, 0}, Case{6, 9, 0, 0, 0, 0}, Case{7, 7, 0, 0, 0, 0}, Case{8, 0, 0, 0, 0, 0}}) {
    const std::string number = "<integer>" + std::to_string(c.inDocument) + "</integer>";
    ProjectText text;
    text.videoTrack = "<dict><key>SourceType</key>" + number + "</dict>";
    text.video = "<key>VideoSpecificationType</key>" + number + "<key>VideoCodecType</key>" + number +
                 "<key>AvcEncoderMode</key>" + number;
    text.audio = "<key>AudioCodecType</key>" + number;
    EXPECT_EQ(Load(text), XpOk);
    EXPECT_EQ(project.videoSettings->specificationType, c.specification) << c.inDocument;
    EXPECT_EQ(project.videoSettings->codecType, c.codec) << c.inDocument;
    EXPECT_EQ(project.videoSettings->avcEncoderMode, c.mode) << c.inDocument;
    EXPECT_EQ(project.audioSettings->codecType, c.audio) << c.inDocument;
    EXPECT_EQ(project.videoTracks[0]->sourceType, c.source) << c.inDocument;
  }
}

TEST_F(ProjectReaderTest, NumbersKeepTheirWidth) {
  ProjectText text;
  text.video = "<key>TimeValue</key><integer>8589934592</integer>";
  text.audio =
      "<key>Channel</key><integer>65538</integer><key>BitPerSample</key><integer>24</integer>"
      "<key>SamplingRate</key><integer>44100</integer>";
  EXPECT_EQ(Load(text), XpOk);
  EXPECT_EQ(project.videoSettings->frameDuration.value, 8589934592u);
  EXPECT_EQ(project.videoSettings->width, -1);
  EXPECT_EQ(project.audioSettings->channels, 2);
  EXPECT_EQ(project.audioSettings->bitsPerSample, 24);
  EXPECT_EQ(project.audioSettings->samplingRate, 44100u);
}

TEST_F(ProjectReaderTest, MissingPartGivesItsResultCode) {
  for (const std::string& path : {std::string(), std::string("/no/such.vrx"), m_folder.Path().string()}) {
    EXPECT_EQ(project.LoadXmlFile(XpNarrowString(path).ToWide()), XpErrFileNotFound) << path;
  }
  for (const auto& [text, result] :
       {std::pair{"", XpErrNoDocument},
        {"<plist><dict/></plist>", XpErrFileNotFound},
        {"<plist><dict><key>VRXWrapper</key><dict/></dict></plist>", XpErrFileNotFound}}) {
    const std::string path = m_folder.Write("p.vrx", text);
    EXPECT_EQ(project.LoadXmlFile(XpNarrowString(path).ToWide()), result) << text;
  }
}

}  // namespace
