// A part of a movie has the pictures, overlays and samples that it has in the whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string_view>

#include "samples/clipmaker/FramePattern.h"
#include "tests/engine/RenderJob.h"
#include "tests/support/MovieReader.h"

namespace vrx::engine {
namespace {

using namespace test_support;
using testing::ElementsAreArray;

/// Pictures with their numbers, from 500 on.
class NumberedStills : public IVRXRawInputCallback {
 public:
  bool GetFrame(std::uint64_t frame, void* buffer, std::uint32_t size) override {
    pulled.push_back(static_cast<int>(frame));
    RgbImage image(64, 48);
    DrawPattern(static_cast<std::uint32_t>(500 + frame), image);
    EXPECT_EQ(size, 64u * 48u * 3u);
    auto* out = static_cast<std::uint8_t*>(buffer);
    for (int y = 47; y >= 0; --y) {
      for (int x = 0; x < 64; ++x) {
        const Rgb colour = image.At(x, y);
        out = std::reverse_copy(colour.begin(), colour.end(), out);
      }
    }
    return true;
  }
  std::uint32_t GetWidth() override { return 64; }
  std::uint32_t GetHeight() override { return 48; }
  const VRXTimeInfo* GetFrameDuration() override { return nullptr; }
  std::uint32_t GetStage() override { return 2; }
  std::uint32_t GetFormat() override { return 5; }
  std::vector<int> pulled;
};

/// Keeps what the engine hands it, with a clock that counts the frames of its ranges.
class ClockedOverlay : public IVRXIntermediateRawOutputCallback {
 public:
  bool ProcessFrame(std::uint64_t frame, void* buffer, std::uint32_t size, std::int32_t,
                    std::int32_t) override {
    const std::string_view bytes(static_cast<const char*>(buffer), size);
    seen[static_cast<int>(frame)] = {clock++, std::hash<std::string_view>()(bytes)};
    return true;
  }
  void SkipFrames(std::uint64_t first, std::uint64_t end) override {
    EXPECT_TRUE(seen.empty() && first >= next && end > first) << first;
    clock += static_cast<int>(end - first);
    next = end;
  }
  std::map<int, std::pair<int, std::size_t>> seen;  // by frame: the clock, and the picture
  int clock = 0;
  std::uint64_t next = 0;
};

struct Rendered {
  std::vector<int> numbers;
  std::vector<float> sound;
  std::vector<int> stills;
  std::map<int, std::pair<int, std::size_t>> overlay;
};

class RangeTest : public EngineRenderTest {
 protected:
  ~RangeTest() override { VRX_SetRenderOverrides(nullptr); }

  static void SetRange(std::uint64_t first, std::uint64_t count) {
    VRXRenderOverrides overrides;
    overrides.firstFrame = first;
    overrides.frameCount = count;
    ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
  }

  /// 110 frames: two cuts of one source, stills, a source with open groups, and a whole source. Sound that is
  /// resampled over a join without a jump, and after a jump within a source whose decoder makes noise.
  void FillTimeline(RenderJob& job, NumberedStills& stills) const {
    job.AddClip(Path("long.mkv"), 137, 163);
    job.AddClip(Path("long.mkv"), 12, 28);
    VRXBasebandSourceStreamInfo clip;
    clip.rawInput = &stills;
    clip.startTime = VRXTimeInfo(10, 25);
    clip.endTime = VRXTimeInfo(28, 25);
    job.timeline.video.Add(clip);
    job.AddClip(Path("open.ts"), 20, 45);
    job.AddClip(Path("whole.mp4"), 0, 0);
    job.AddSound(1, 48000, 3);
    job.AddSoundClip(Path("sound.mp4"), 1001, 3003, 2500);
    job.AddSoundClip(Path("sound.mp4"), 3003, 4500, 2500);
    for (const int start : {60, 10}) job.AddSoundClip(Path("sound.ts"), start, start + 30);
  }

  Rendered Render(std::uint64_t first, std::uint64_t count) {
    SetRange(first, count);
    RenderJob job(Path("out.mov"));
    NumberedStills stills;
    FillTimeline(job, stills);
    ClockedOverlay overlay;
    VRXIntermediateRawOutputSetting range;
    for (const auto& [from, to] : {std::pair{5, 40}, {50, 200}}) {
      range.startTime = VRXTimeInfo(static_cast<std::uint64_t>(from), 25);
      range.endTime = VRXTimeInfo(static_cast<std::uint64_t>(to), 25);
      job.output.AddRange(range);
    }
    job.output.rawOutput = &overlay;
    EXPECT_EQ(job.Run(), kOk) << job.log;
    MovieReader movie(Path("out.mov"));
    EXPECT_EQ(movie.Info().startSeconds, 0);
    const MovieSound sound = movie.ReadSound();
    EXPECT_EQ(sound.start, 0);
    const Rendered rendered{movie.RemainingNumbers(), sound.samples, stills.pulled, overlay.seen};
    EXPECT_EQ(job.progress.total, rendered.numbers.size());
    EXPECT_EQ(job.progress.processed, rendered.numbers.size());
    VRXRenderSummary summary;
    EXPECT_EQ(VRX_GetRenderSummary(&summary), kOk);
    EXPECT_EQ(summary.frames, rendered.numbers.size());
    EXPECT_EQ(summary.soundSamples, rendered.sound.size());
    return rendered;
  }
};

TEST_F(RangeTest, EveryRangeHasTheFramesOverlaysAndSamplesOfTheWholeMovie) {
  Write("long.mkv", {.frames = 200, .gop = 250, .bFrames = 3});
  Write("open.ts", {.frames = 60, .codec = "mpeg2video", .gop = 15});
  Write("whole.mp4", {.frames = 25, .firstNumber = 300});
  const ClipSound aac{.style = ClipSoundStyle::kClickOverTone, .rate = 44100};
  const ClipSound ac3{.style = ClipSoundStyle::kClickOverTone, .codec = "ac3"};
  Write("sound.mp4", {.frames = 100, .hasSound = true, .sound = aac});
  Write("sound.ts", {.frames = 100, .hasSound = true, .sound = ac3});
  const Rendered whole = Render(0, 0);
  ASSERT_EQ(whole.numbers.size(), 110u);
  ASSERT_EQ(whole.sound.size(), 110u * 1920);
  for (const auto& [first, count] : {std::pair{0, 1},
                                     {17, 1},   // in a clip
                                     {25, 2},   // over a jump of the picture
                                     {41, 3},   // the join of a clip and the stills
                                     {45, 5},   // stills, and before an overlay
                                     {55, 10},  // from the stills on
                                     {66, 20},  // an open group, and the end of it
                                     {85, 0},   // to the end
                                     {109, 1}}) {
    SCOPED_TRACE(testing::Message() << count << " frames from " << first);
    const Rendered part = Render(static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(count));
    const int end = count == 0 ? 110 : first + count;
    EXPECT_THAT(part.numbers, ElementsAreArray(whole.numbers.begin() + first, whole.numbers.begin() + end));
    EXPECT_TRUE(std::equal(part.sound.begin(), part.sound.end(), whole.sound.begin() + first * 1920,
                           whole.sound.begin() + end * 1920));
    const std::map overlay(whole.overlay.lower_bound(first), whole.overlay.lower_bound(end));
    EXPECT_EQ(part.overlay, overlay);
    std::vector<int> stills;
    for (int n = std::max(first, 42); n < std::min(end, 60); ++n) stills.push_back(n - 32);
    EXPECT_EQ(part.stills, stills);
  }
}

TEST_F(RangeTest, RangeOutsideOfTheMovieIsRefusedWithItsLength) {
  const std::string source = Write("source.mp4", {.frames = 50});
  for (const auto& [first, count, said] : {std::tuple{50, 0, "the frames from 50 on are not"},
                                           {0, 51, "the frames from 0 to 50 are not"},
                                           {40, 11, "the frames from 40 to 50 are not"},
                                           {2147483647, 2147483647, "the frames from 2147483647 to"}}) {
    SetRange(static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(count));
    RenderJob job(Path("out.mp4"));
    job.AddClip(source, 0, 50);
    EXPECT_EQ(job.Run(), kUnusableSettings);
    EXPECT_TRUE(job.Logged(said)) << job.log;
    EXPECT_TRUE(job.Logged("has 50 frames, 0 to 49")) << job.log;
    EXPECT_EQ(folder.Count(), 1);
  }
}

}  // namespace
}  // namespace vrx::engine
