// What `vrx check` prints of a project: its tables for people, and the JSON document for programs.
#include <string>

#include <gmock/gmock.h>

#include "tests/render/RenderFixture.h"
#include "tests/src/BasebandText.h"

namespace {

/// Joins the lines, without the spaces that indent them.
std::string WithoutLayout(const std::string& text) {
  std::string joined;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n') {
      while (i + 1 < text.size() && text[i + 1] == ' ') ++i;
    } else {
      joined += text[i];
    }
  }
  return joined;
}

class CheckCommandTest : public RenderFixture {
 protected:
  CheckCommandTest() : RenderFixture(320, 192) {
    project.video =
        "<key>Width</key><integer>320</integer><key>Height</key><integer>192</integer>"
        "<key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>";
    project.audio = "<key>Channel</key><integer>2</integer><key>SamplingRate</key><integer>48000</integer>";
    project.moreOutput = "<key>PainterEffect</key><string>painter.vrx</string>";
    project.videoTrack = ClipText(WriteClip("a.mp4", {.frames = 100, .hasSound = true}), "1000", "3000") +
                         ClipText("photos.xml", "0", "400", "<key>SourceType</key><integer>4</integer>") +
                         ClipText("a.mp4", "-1", "-1");
    project.audioTrack = ClipText("a.mp4", "0", "2000");
    folder.Write("photos.xml", BasebandText(ImageText(7, "none.png", 0, 9, 1, true)));
    folder.Write(
        "painter.vrx",
        "<plist version=\"1.0\"><dict><key>PainterInfo</key><dict><key>GeneralInfo</key><dict>"
        "<key>SaveMovieMode</key><true/><key>VideoWidth</key><integer>320</integer></dict>"
        "<key>CaptionInfo</key><dict><key>Valid</key><true/><key>CaptionString</key><string><![CDATA["
        "<Caption><Text>Two\nlines</Text><FontName>Sans</FontName><FontSize>60</FontSize>"
        "<LayoutType>5</LayoutType><FontColor>255</FontColor><LeftPos>400</LeftPos>"
        "<RightPos>800</RightPos><VideoID>0</VideoID></Caption>]]></string></dict></dict></dict></plist>");
  }
  /// With the folder's path as FOLDER.
  std::string Check(std::vector<std::string> options) {
    options.insert(options.begin(), {"check", WriteProject()});
    m_result = RunVrx({options});
    std::string output = m_result.output;
    const std::string path = folder.Path().string();
    for (std::size_t at; (at = output.find(path)) != output.npos;) output.replace(at, path.size(), "FOLDER");
    return output;
  }
};

TEST_F(CheckCommandTest, TablesShowTheWholeProjectAndErrorsComeFirst) {
  EXPECT_EQ(Check({}), R"(Picture  320 x 192, 25.000 fps, H.264
Sound    48000 Hz, 2 channels
Movie    160 frames, 6.400 s, to FOLDER/out.mp4
Plan     0 of 160 frames (0.0 %) are copied, the sound is encoded: the sound ends before the picture

Track       Clip      Frame    Frames    Movie s   Source s  Source
VideoTrack     1          0        50      0.000      1.000  FOLDER/a.mp4
VideoTrack     2         50        10      2.000      0.000  FOLDER/photos.xml
VideoTrack     3         60       100      2.400      0.000  FOLDER/a.mp4 (whole)
AudioTrack     1          0        50      0.000      0.000  FOLDER/a.mp4

Pictures
  frames 0 to 49, 0.000 s to 2.000 s: encoded: the source has 160x96 pixels, and the movie 320x192 (a.mp4)
  frames 50 to 59, 2.000 s to 2.400 s: encoded: still picture (photos.xml)
  frames 60 to 159, 2.400 s to 6.400 s: encoded: the source has 160x96 pixels, and the movie 320x192 (a.mp4)

Clip          In        Out        Size  Turned          Still image
2              0          9           ?  left, mirrored  FOLDER/none.png

Overlays of FOLDER/painter.vrx
  frames 10 to 20, 0.400 s to 0.800 s
  caption 1, 0.400 s to 0.800 s, place 5: Two lines

Problems
  error: FOLDER/photos.xml:2: VideoTrack clip 2: ImagePath FOLDER/none.png is left out: the file does not exist
  warning: FOLDER/p.vrx:1: VideoTrack clip 3: EndTime does not say where the clip ends: overlays count it as empty and may be missing
  note: FOLDER/p.vrx:1: AverageBitrate is not set: the engine codes at constant quality
)");
  EXPECT_EQ(m_result.status, 1);
  EXPECT_THAT(Check({"--allow-missing"}), testing::HasSubstr("Problems\n  warning: FOLDER/photos.xml:2: "));
  EXPECT_EQ(m_result.status, 0);
}

TEST_F(CheckCommandTest, JsonHoldsTheWholeProjectAndNullForWhatIsNotSet) {
  const std::string document = WithoutLayout(Check({"--json"}));
  EXPECT_EQ(
      document,
      R"({"project": "FOLDER/p.vrx","renderable": false,)"
      R"("output": {"path": "FOLDER/out.mp4","frames": 160,"seconds": 6.4,)"
      R"("video": {"width": 320,"height": 192,"timeValue": 1,"timeScale": 25,"averageBitrate": null,)"
      R"("codecType": 0,"specificationType": 0,"interlace": false},)"
      R"("audio": {"codecType": 0,"channels": 2,"bitsPerSample": null,"samplingRate": 48000}},)"
      R"("timeline": [{"track": "VideoTrack","clip": 1,"source": "FOLDER/a.mp4","wholeSource": false,)"
      R"("firstFrame": 0,"frames": 50,"movieStart": 0.0,"seconds": 2.0,"sourceStart": 1.0},)"
      R"({"track": "VideoTrack","clip": 2,"source": "FOLDER/photos.xml","wholeSource": false,)"
      R"("firstFrame": 50,"frames": 10,"movieStart": 2.0,"seconds": 0.4,"sourceStart": 0.0},)"
      R"({"track": "VideoTrack","clip": 3,"source": "FOLDER/a.mp4","wholeSource": true,)"
      R"("firstFrame": 60,"frames": 100,"movieStart": 2.4,"seconds": 4.0,"sourceStart": 0.0},)"
      R"({"track": "AudioTrack","clip": 1,"source": "FOLDER/a.mp4","wholeSource": false,)"
      R"("firstFrame": 0,"frames": 50,"movieStart": 0.0,"seconds": 2.0,"sourceStart": 0.0}],)"
      R"("copiedFrames": 0,"encodedFrames": 160,)"
      R"("spans": [{"track": "video","copied": false,"firstFrame": 0,"frames": 50,"clip": 1,)"
      R"("reason": "the source has 160x96 pixels, and the movie 320x192"},)"
      R"({"track": "video","copied": false,"firstFrame": 50,"frames": 10,"clip": 2,"reason": "still picture"},)"
      R"({"track": "video","copied": false,"firstFrame": 60,"frames": 100,"clip": 3,)"
      R"("reason": "the source has 160x96 pixels, and the movie 320x192"},)"
      R"({"track": "audio","copied": false,"firstFrame": 0,"frames": 160,)"
      R"("reason": "the sound ends before the picture"}],)"
      R"("stillImages": [{"clip": 2,"line": 2,"imageId": 7,"picture": "FOLDER/none.png","width": null,)"
      R"("height": null,"inFrame": 0,"outFrame": 9,"rotation": 1,"mirror": true}],)"
      R"("overlays": {"document": "FOLDER/painter.vrx",)"
      R"("ranges": [{"firstFrame": 10,"lastFrame": 20,"start": 0.4,"end": 0.8}],)"
      R"("captions": [{"number": 1,"text": "Two\nlines","start": 0.4,"end": 0.8,"layoutType": 5,)"
      R"("shows": true}]},)"
      R"("problems": [{"severity": "error","file": "FOLDER/photos.xml","line": 2,"track": "VideoTrack",)"
      R"("clip": 2,"key": "ImagePath","message": "FOLDER/none.png is left out: the file does not exist"},)"
      R"({"severity": "warning","file": "FOLDER/p.vrx","line": 1,"track": "VideoTrack","clip": 3,"key": "EndTime",)"
      R"("message": "does not say where the clip ends: overlays count it as empty and may be missing"},)"
      R"({"severity": "note","file": "FOLDER/p.vrx","line": 1,"key": "AverageBitrate",)"
      R"("message": "is not set: the engine codes at constant quality"}]})");
}

}  // namespace
