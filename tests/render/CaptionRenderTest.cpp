// Captions stand on exactly the frames that they are meant for, and the rest of the movie is as without them.
#include <cstdlib>

#include <gmock/gmock.h>

#include "samples/clipmaker/PatternClip.h"
#include "tests/render/VrxProcess.h"
#include "tests/src/ProjectText.h"
#include "tests/support/MovieReader.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::test_support;

struct Caption {
  std::string text;
  int startMs;
  int endMs;
  int layout;
};

std::string PainterText(const std::vector<Caption>& captions, const std::string& slowInfo = "") {
  std::string text =
      "<plist version=\"1.0\"><dict><key>PainterInfo</key><dict><key>GeneralInfo</key><dict>"
      "<key>SaveMovieMode</key><true/><key>SlowInfoData</key><string>" +
      slowInfo +
      "</string><key>VideoWidth</key><integer>320</integer><key>VideoHeight</key><integer>192</integer></"
      "dict>"
      "<key>CaptionInfo</key><dict><key>Valid</key><true/><key>CaptionString</key><string><![CDATA[";
  for (const Caption& caption : captions) {
    text += "<Caption><Text>" + caption.text +
            "</Text><FontName>DejaVu Sans</FontName><FontSize>150</FontSize>" + "<LayoutType>" +
            std::to_string(caption.layout) + "</LayoutType><FontColor>255</FontColor><LeftPos>" +
            std::to_string(caption.startMs) + "</LeftPos><RightPos>" + std::to_string(caption.endMs) +
            "</RightPos><VideoID>1</VideoID></Caption>";
  }
  return text + "]]></string></dict></dict></dict></plist>";
}

class CaptionRenderTest : public testing::Test {
 protected:
  CaptionRenderTest() {
    WritePatternClip((folder.Path() / "a.mp4").string(), {.width = 320, .height = 192, .frames = 100});
    project.videoTrack = ClipText("a.mp4", "0", "4000");
    project.video =
        "<key>Width</key><integer>320</integer><key>Height</key><integer>192</integer>"
        "<key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>";
  }
  std::string Render(const std::string& output) {
    project.output = output;
    const VrxResult result =
        RunVrx({{"render", folder.Write("p.vrx", project.Text()), "--progress", "none"}});
    EXPECT_EQ(result.status, 0) << result.errors;
    return (folder.Path() / output).string();
  }
  void UseCaptions(const std::vector<Caption>& captions, const std::string& slowInfo = "") {
    folder.Write("painter.vrx", PainterText(captions, slowInfo));
    project.moreOutput = "<key>PainterEffect</key><string>painter.vrx</string>";
  }

  ProjectText project;
  TempFolder folder;
};

/// Pixels in the rows from `top` to `bottom` that differ by more than the encoder's loss.
int Differences(const RgbImage& a, const RgbImage& b, int top, int bottom) {
  constexpr int kLoss = 48;
  int count = 0;
  for (int y = top; y < bottom; ++y) {
    for (int x = 0; x < a.Width(); ++x) {
      const Rgb p = a.At(x, y);
      const Rgb q = b.At(x, y);
      if (std::abs(p[0] - q[0]) + std::abs(p[1] - q[1]) + std::abs(p[2] - q[2]) > 3 * kLoss) ++count;
    }
  }
  return count;
}

TEST_F(CaptionRenderTest, TextStandsOnItsFramesAndNoneBeside) {
  const std::string plain = Render("plain.mp4");
  // The last one ends within two frames of the clip's end and is therefore moved to its last frame but one.
  UseCaptions({{"One", 400, 800, 8}, {"Two", 1400, 1810, 8}, {"Three", 3600, 3980, 8}});
  MovieReader without(plain);
  MovieReader with(Render("captions.mp4"));
  MovieFrame a;
  MovieFrame b;
  std::vector<int> shown;
  for (int number = 0; without.NextFrame(a); ++number) {
    ASSERT_TRUE(with.NextFrame(b)) << number;
    constexpr int kFewest = 60;  // pixels of the shortest word
    if (Differences(a.image, b.image, 140, 192) > kFewest) shown.push_back(number);
    EXPECT_EQ(Differences(a.image, b.image, 0, 130), 0) << number;
  }
  EXPECT_FALSE(with.NextFrame(b));
  std::vector<int> wanted;
  for (const auto& [first, last] : {std::pair(10, 20), std::pair(35, 45), std::pair(90, 99)}) {
    for (int number = first; number <= last; ++number) wanted.push_back(number);
  }
  EXPECT_EQ(shown, wanted);
}

TEST_F(CaptionRenderTest, SingleFrameShowsWhatTheMovieWillShow) {
  UseCaptions({{"One", 400, 800, 8}});
  const std::string project_path = folder.Write("p.vrx", project.Text());
  const auto picture = [&](const std::string& name, const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"frame", project_path, "-o", (folder.Path() / name).string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const VrxResult result = RunVrx({arguments});
    EXPECT_EQ(result.status, 0) << result.errors;
    return folder.Read(name);
  };
  const std::string inside = picture("in.png", {"--frame", "20"});
  EXPECT_EQ(picture("time.png", {"--time", "0.8"}), inside);
  EXPECT_NE(picture("out.png", {"--frame", "21"}), inside);
  // Clear pictures are all alike, whatever the movie shows.
  EXPECT_EQ(picture("clear1.png", {"--frame", "21", "--overlay-only"}),
            picture("clear2.png", {"--frame", "50", "--overlay-only"}));
  EXPECT_NE(picture("text.png", {"--frame", "15", "--overlay-only"}), folder.Read("clear1.png"));
  const VrxResult behind = RunVrx({{"frame", project_path, "--frame", "100", "-o", "/dev/null"}});
  EXPECT_EQ(behind.status, 1);
  EXPECT_THAT(behind.errors, testing::HasSubstr("has no frame 100"));
}

}  // namespace
