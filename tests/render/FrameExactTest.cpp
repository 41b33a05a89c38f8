// The finished movie holds exactly the frames that the project asks for, each at its place.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "samples/clipmaker/PatternClip.h"
#include "tests/render/VrxProcess.h"
#include "tests/src/ProjectText.h"
#include "tests/support/MovieReader.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace vrx::test_support;

class RenderTest : public testing::Test {
 protected:
  std::string Clip(const std::string& name, const PatternClip& clip) {
    const std::string path = (folder.Path() / name).string();
    WritePatternClip(path, clip);
    return name;
  }
  void Render(const ProjectText& project) {
    const VrxResult result =
        RunVrx({{"render", folder.Write("p.vrx", project.Text()), "--progress", "none"}});
    ASSERT_EQ(result.status, 0) << result.errors;
  }
  std::string Output() const { return (folder.Path() / "out.mp4").string(); }

  TempFolder folder;
};

/// Numbers that a clip must show: one a movie frame, from its first number on.
struct Expected {
  double startSeconds;
  int movieFrames;
  double sourceRate;
  int sourceFrames;
  int firstNumber;
};

void Append(std::vector<int>& numbers, const Expected& e) {
  for (int k = 0; k < e.movieFrames; ++k) {
    // A hair forward, since the times of both clocks meet exactly where rates are equal.
    const double seconds = e.startSeconds + k * 1001.0 / 30000.0 + 1e-7;
    const int shown = std::min(static_cast<int>(std::floor(seconds * e.sourceRate)), e.sourceFrames - 1);
    numbers.push_back(e.firstNumber + shown);
  }
}

TEST_F(RenderTest, EveryPlannedFrameIsTheRightOne) {
  constexpr double kNtsc = 30000.0 / 1001.0;
  ProjectText project;
  project.video =
      "<key>Width</key><integer>320</integer><key>Height</key><integer>192</integer>"
      "<key>TimeValue</key><integer>1001</integer><key>TimeScale</key><integer>30000</integer>"
      "<key>AverageBitrate</key><integer>3000000</integer>";
  std::vector<int> wanted;
  const auto add = [&](const std::string& name, const PatternClip& clip, double start, int frames) {
    const double startMs = start * 1001.0 / 30.0;
    const double endMs = (start + frames) * 1001.0 / 30.0;
    project.videoTrack +=
        ClipText(Clip(name, clip), std::to_string(startMs + 0.01), std::to_string(endMs + 0.01));
    const double rate = static_cast<double>(clip.rateNum) / clip.rateDen;
    Append(wanted, {start / kNtsc, frames, rate, clip.frames, static_cast<int>(clip.firstNumber)});
  };
  // Trims into the middle of long groups of pictures, in three containers.
  add("same.mp4", {.width = 320, .height = 192, .rateNum = 30000, .rateDen = 1001, .frames = 200, .gop = 60},
      71, 40);
  add("pal.mkv", {.rateNum = 25, .frames = 100, .gop = 50, .firstNumber = 1000}, 30, 50);
  add("stream.ts", {.rateNum = 50, .frames = 150, .codec = "mpeg2video", .firstNumber = 2000}, 10, 30);
  // Held upright: stored turned by a quarter.
  add("upright.mp4", {.rateNum = 24000, .rateDen = 1001, .frames = 80, .rotation = 90, .firstNumber = 3000},
      5, 30);
  // Shorter than its range: the last frame stands.
  add("short.mp4", {.rateNum = 30000, .rateDen = 1001, .frames = 20, .firstNumber = 4000}, 0, 45);
  Render(project);

  MovieReader movie(Output());
  EXPECT_EQ(movie.RemainingNumbers(), wanted);
  EXPECT_EQ(movie.Info().frameRate.num, 30000);
  EXPECT_EQ(movie.Info().frameRate.den, 1001);
}

TEST_F(RenderTest, WholeClipsFollowEachOther) {
  ProjectText project;
  project.video =
      "<key>Width</key><integer>160</integer><key>Height</key><integer>96</integer>"
      "<key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>";
  const std::string name = Clip("a.mp4", {.frames = 30});
  project.videoTrack =
      "<dict><key>SourceFile</key><string>" + name + "</string></dict>" +
      ClipText(Clip("b.mkv", {.frames = 20, .codec = "ffv1", .firstNumber = 100}), "-1", "-1");
  Render(project);
  std::vector<int> wanted;
  for (int i = 0; i < 30; ++i) wanted.push_back(i);
  for (int i = 0; i < 20; ++i) wanted.push_back(100 + i);
  EXPECT_EQ(MovieReader(Output()).RemainingNumbers(), wanted);
}

TEST_F(RenderTest, PortraitClipStandsUprightBetweenBars) {
  ProjectText project;
  project.videoTrack =
      ClipText(Clip("upright.mp4", {.width = 192, .height = 96, .rotation = 90}), "0", "500");
  project.video =
      "<key>Width</key><integer>384</integer><key>Height</key><integer>192</integer>"
      "<key>TimeValue</key><integer>1</integer><key>TimeScale</key><integer>25</integer>";
  Render(project);
  MovieReader movie(Output());
  MovieFrame frame;
  ASSERT_TRUE(movie.NextFrame(frame));
  const auto brightness = [&](int x, int y) {
    const Rgb pixel = frame.image.At(x, y);
    return (pixel[0] + pixel[1] + pixel[2]) / 3;
  };
  for (int y = 4; y < 192; y += 20) {
    EXPECT_LT(brightness(20, y), 24) << y;
    EXPECT_LT(brightness(363, y), 24) << y;
  }
  EXPECT_EQ(frame.image.Width(), 384);
}

TEST_F(RenderTest, ClicksStayWithThePictureOverFiveMinutes) {
  constexpr int kSeconds = 300;
  const std::string name = Clip("long.mp4", {.width = 64,
                                             .height = 48,
                                             .frames = kSeconds * 25,
                                             .gop = 250,
                                             .hasSound = true,
                                             .sound = {.rate = 44100, .channels = 2}});
  ProjectText project;
  project.video =
      "<key>Width</key><integer>64</integer><key>Height</key><integer>48</integer>"
      "<key>TimeValue</key><integer>1001</integer><key>TimeScale</key><integer>30000</integer>"
      "<key>AvcEncoderMode</key><integer>1</integer>";
  project.audio =
      "<key>AudioCodecType</key><integer>1</integer><key>Channel</key><integer>2</integer>"
      "<key>SamplingRate</key><integer>48000</integer>";
  // The sound is cut into ten clips, so that errors at the joints would add up.
  project.videoTrack = ClipText(name, "0", "300000");
  for (int i = 0; i < 10; ++i) {
    project.audioTrack += ClipText(name, std::to_string(i * 30000), std::to_string((i + 1) * 30000));
  }
  Render(project);
  MovieReader movie(Output());
  const MovieSound sound = movie.ReadSound();
  constexpr double kAudioFrame = 1024;  // samples of an AAC frame
  const std::vector<std::int64_t> clicks = sound.Clicks();
  ASSERT_GE(clicks.size(), 290u);
  std::size_t next = 0;
  for (int i = 0; i < 10; ++i) {
    const double start = std::floor(i * 30000 * 30000.0 / (1001 * 1000.0)) * 1001 / 30000.0;
    const double end = std::floor((i + 1) * 30000 * 30000.0 / (1001 * 1000.0)) * 1001 / 30000.0;
    for (int second = static_cast<int>(std::ceil(start)); second + 0.003 < end; ++second, ++next) {
      ASSERT_LT(next, clicks.size());
      EXPECT_NEAR(static_cast<double>(clicks[next]), second * 48000.0, kAudioFrame) << second;
    }
  }
}

}  // namespace
