// Captions show on exactly their frames, and the rest of the movie is as without them.
#include <sys/stat.h>

#include <cstdlib>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>

#include "tests/render/RenderFixture.h"
#include "tests/support/MovieReader.h"

namespace {

using namespace vrx::test_support;

class CaptionRenderTest : public RenderFixture {
 protected:
  CaptionRenderTest() : RenderFixture(320, 192) {
    project.videoTrack =
        ClipText(WriteClip("a.mp4", {.width = 320, .height = 192, .frames = 100}), "0", "4000");
  }
  /// Words, each with its first and last time in ms.
  void UseCaptions(const std::vector<std::tuple<const char*, int, int>>& captions) {
    std::string text =
        "<plist version=\"1.0\"><dict><key>PainterInfo</key><dict><key>GeneralInfo</key><dict>"
        "<key>SaveMovieMode</key><true/><key>VideoWidth</key><integer>320</integer><key>VideoHeight</key>"
        "<integer>192</integer></dict><key>CaptionInfo</key><dict><key>Valid</key><true/>"
        "<key>CaptionString</key><string><![CDATA[";
    for (const auto& [word, startMs, endMs] : captions) {
      text += "<Caption><Text>" + std::string(word) +
              "</Text><FontName>DejaVu Sans</FontName><FontSize>150</FontSize><LayoutType>8</LayoutType>"
              "<FontColor>255</FontColor><LeftPos>" +
              std::to_string(startMs) + "</LeftPos><RightPos>" + std::to_string(endMs) +
              "</RightPos><VideoID>1</VideoID></Caption>";
    }
    folder.Write("painter.vrx", text + "]]></string></dict></dict></dict></plist>");
    project.moreOutput = "<key>PainterEffect</key><string>painter.vrx</string>";
  }
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

TEST_F(CaptionRenderTest, TextShowsOnItsFramesOnly) {
  const std::string plain = Render();
  // The last one ends within two frames of the clip's end and is therefore moved to its last frame but one.
  UseCaptions({{"One", 400, 800}, {"Two", 1400, 1810}, {"Three", 3600, 3980}});
  MovieReader without(plain);
  project.output = "captions.mp4";
  MovieReader with(Render());
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
  UseCaptions({{"One", 400, 800}});
  const std::string document = WriteProject();
  const auto picture = [&](const std::vector<std::string>& options) {
    VrxCall call{.arguments = {"frame", document, "-o", Path("frame.png")}};
    call.arguments.insert(call.arguments.end(), options.begin(), options.end());
    const VrxResult result = RunVrx(call);
    EXPECT_EQ(result.status, 0) << result.errors;
    return folder.Read("frame.png");
  };
  const std::string inside = picture({"--frame", "20"});
  EXPECT_EQ(picture({"--time", "0.8"}), inside);
  EXPECT_NE(picture({"--frame", "21"}), inside);
  // Clear pictures are all alike, whatever the movie shows.
  const std::string clear = picture({"--frame", "21", "--overlay-only"});
  EXPECT_EQ(picture({"--frame", "50", "--overlay-only"}), clear);
  EXPECT_NE(picture({"--frame", "15", "--overlay-only"}), clear);
  for (const char* time : {"0.6", "0:00.6", "00:00:00.60", "15f"}) {
    EXPECT_EQ(picture({"--time", time}), picture({"--frame", "15"})) << time;
  }
  for (const auto& [option, value] : {std::pair{"--frame", "100"},
                                      {"--frame", "9223372036854775807"},
                                      {"--time", "4.0"},
                                      {"--time", "99:59:59"},
                                      {"--time", "4000000000f"}}) {
    const VrxResult beyond =
        RunVrx({{"frame", document, option, value, "--overlay-only", "-o", Path("no.png")}});
    EXPECT_EQ(beyond.status, 1) << value;
    EXPECT_THAT(beyond.errors,
                testing::HasSubstr("the movie has 100 frames, from 0 to 99: there is no frame "));
  }
  for (const char* seconds :
       {"nan", "inf", "-1", "soon", "1e3", "1:60", "1.5:00", "0:0:0:1", ":5", "5:", "-1f", "f", "1.5f"}) {
    const VrxResult wrong = RunVrx({{"frame", document, "--time", seconds, "-o", Path("no.png")}});
    EXPECT_EQ(wrong.status, 2) << seconds;
    EXPECT_THAT(wrong.errors, testing::HasSubstr("is no time such as 12.5"));
  }
  EXPECT_EQ(folder.Count(), 4);
}

TEST_F(CaptionRenderTest, RangeThatEndsBeforeTheMovieShowsNothing) {
  project.videoTrack = ClipText("a.mp4", "2000", "-1");
  UseCaptions({{"One", 400, 3000}});
  const std::string document = WriteProject();
  const auto overlay = [&](const char* frame) {
    EXPECT_EQ(RunVrx({{"frame", document, "--frame", frame, "--overlay-only", "-o", Path("o.png")}}).status,
              0);
    return folder.Read("o.png");
  };
  EXPECT_EQ(overlay("20"), overlay("99"));
}

TEST_F(CaptionRenderTest, PictureOfAFrameNeverReplacesAnInputOrAnotherFile) {
  UseCaptions({{"One", 400, 800}});
  const std::string document = WriteProject();
  const std::string clip = folder.Read("a.mp4");
  folder.Write("a.mp4.new", "the user's own");
  folder.Write("new.png.new", "the user's own");
  for (const char* input : {"a.mp4", "painter.vrx", "p.vrx"}) {
    const VrxResult result = RunVrx({{"frame", document, "-o", Path(input)}});
    EXPECT_EQ(result.status, 1) << input;
    EXPECT_THAT(result.errors, testing::HasSubstr("and would be overwritten"));
  }
  EXPECT_EQ(folder.Read("a.mp4"), clip);
  EXPECT_EQ(RunVrx({{"frame", document, "-o", Path("new.png")}}).status, 0);
  EXPECT_EQ(folder.Read("new.png.new"), "the user's own");
  ASSERT_EQ(mknod(Path("socket").c_str(), S_IFSOCK | 0600, 0), 0);
  EXPECT_THAT(RunVrx({{"frame", document, "-o", Path("socket")}}).errors,
              testing::HasSubstr("it is no file"));
  EXPECT_TRUE(std::filesystem::is_socket(Path("socket")));
  EXPECT_EQ(folder.Count(), 7);
}

}  // namespace
