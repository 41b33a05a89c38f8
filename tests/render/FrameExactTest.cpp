// The finished movie holds exactly the frames that the project asks for, each at its place.
#include <cmath>
#include <vector>

#include "tests/render/RenderFixture.h"
#include "tests/support/MovieReader.h"

namespace {

using namespace vrx::test_support;

constexpr double kMsPerFrame = 1001.0 / 30.0;

class FrameExactTest : public RenderFixture {
 protected:
  FrameExactTest() : RenderFixture(320, 192, 1001, 30000) {}

  /// A clip of `frames` movie frames from movie frame `start` on, and the numbers that it must show.
  void Add(const std::string& name, const PatternClip& clip, double start, int frames) {
    WriteClip(name, clip);
    project.videoTrack += ClipText(name, std::to_string(start * kMsPerFrame + 0.01),
                                   std::to_string((start + frames) * kMsPerFrame + 0.01));
    for (int k = 0; k < frames; ++k) {
      // A little later, since with equal rates the times of both clocks are the same up to rounding.
      const double seconds = (start + k) * kMsPerFrame / 1000 + 1e-7;
      const int shown = static_cast<int>(std::floor(seconds * clip.rateNum / clip.rateDen));
      wanted.push_back(static_cast<int>(clip.firstNumber) + std::min(shown, clip.frames - 1));
    }
  }
  std::vector<int> wanted;
};

TEST_F(FrameExactTest, EveryPlannedFrameIsTheRightOneAndUpright) {
  // Trims into the middle of long groups of pictures, in three containers.
  Add("same.mp4", {.width = 320, .height = 192, .rateNum = 30000, .rateDen = 1001, .frames = 200, .gop = 60},
      71, 40);
  Add("pal.mkv", {.rateNum = 25, .frames = 100, .gop = 50, .firstNumber = 1000}, 30, 50);
  Add("stream.ts", {.rateNum = 50, .frames = 150, .codec = "mpeg2video", .firstNumber = 2000}, 10, 30);
  // Held upright: stored turned by a quarter.
  Add("upright.mp4", {.rateNum = 24000, .rateDen = 1001, .frames = 80, .rotation = 90, .firstNumber = 3000},
      5, 30);
  // Shorter than its range: the last frame is held.
  Add("short.mp4", {.rateNum = 30000, .rateDen = 1001, .frames = 20, .firstNumber = 4000}, 0, 45);
  // Whole clips, in both ways to say so.
  WriteClip("whole.mkv", {.rateNum = 30000, .rateDen = 1001, .frames = 20, .codec = "ffv1"});
  project.videoTrack +=
      "<dict><key>SourceFile</key><string>whole.mkv</string></dict>" + ClipText("whole.mkv", "-1", "-1");
  for (int i = 0; i < 40; ++i) wanted.push_back(i % 20);

  MovieReader movie(Render());
  EXPECT_EQ(movie.RemainingNumbers(), wanted);
  EXPECT_EQ(movie.Info().frameRate.num, 30000);
  EXPECT_EQ(movie.Info().frameRate.den, 1001);
}

TEST_F(FrameExactTest, ClicksStayWithThePictureOverFiveMinutes) {
  const std::string name = WriteClip("long.mp4", {.width = 64,
                                                  .height = 48,
                                                  .rateNum = 5,
                                                  .frames = 300 * 5,
                                                  .gop = 250,
                                                  .hasSound = true,
                                                  .sound = {.rate = 44100, .channels = 2}});
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
  const std::vector<std::int64_t> clicks = MovieReader(Render()).ReadSound().Clicks();
  ASSERT_GE(clicks.size(), 290u);       // some lie on a joint
  constexpr double kAudioFrame = 1024;  // samples of an AAC frame
  for (const std::int64_t click : clicks) {
    const double place = static_cast<double>(click), second = std::round(place / 48000);
    EXPECT_NEAR(place, second * 48000, kAudioFrame) << second;
  }
  EXPECT_NEAR(static_cast<double>(clicks.front()), 0, kAudioFrame);
  EXPECT_NEAR(static_cast<double>(clicks.back()), 299 * 48000, kAudioFrame);
}

}  // namespace
