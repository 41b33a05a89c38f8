// Overlays that are written alone can be laid over the plain movie later, and then it is the movie with
// overlays.
#include "engine/OverlaySequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/engine/PictureCard.h"
#include "tests/engine/RenderJob.h"
#include "tests/support/MovieReader.h"

namespace vrx::engine {
namespace {

using test_support::MovieReader;
using testing::ElementsAre;
using Pixels = std::vector<std::uint32_t>;

constexpr int kWidth = 64, kHeight = 48;  // of the jobs' movies
constexpr std::size_t kPixels = kWidth * kHeight;

int Channel(std::uint32_t pixel, int shift) { return static_cast<int>(pixel >> shift & 0xFF); }

/// Lays top-down `drawing` over bottom-up `ground`.
void Blend(const std::uint32_t* drawing, std::uint32_t* ground) {
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const std::uint32_t from = drawing[y * kWidth + x];
      std::uint32_t& to = ground[(kHeight - 1 - y) * kWidth + x];
      const int alpha = Channel(from, 24);
      std::uint32_t mixed = 0;
      for (const int shift : {0, 8, 16}) {
        const int colour = (Channel(to, shift) * (255 - alpha) + Channel(from, shift) * alpha) / 255;
        mixed |= static_cast<std::uint32_t>(colour) << shift;
      }
      to = mixed;
    }
  }
}

/// Draws lettering, a fading patch and a chequered one, which move every second frame; nothing on every
/// fifth.
class Painter : public IVRXIntermediateRawOutputCallback {
 public:
  bool ProcessFrame(std::uint64_t frame, void* buffer, std::uint32_t size, std::int32_t,
                    std::int32_t) override {
    EXPECT_EQ(size, kPixels * 4);
    processed.push_back(frame);
    if (frame == throwsAt) throw std::runtime_error("painter");
    if (frame == cancelsAt) *endFlag = true;
    Draw(static_cast<int>(frame / 2));
    m_isShown = frame % 5 != 4;
    if (frame == failsAt) return false;
    if (m_isShown) Blend(drawing.data(), static_cast<std::uint32_t*>(buffer));
    return true;
  }
  void SkipFrames(std::uint64_t first, std::uint64_t end) override {
    EXPECT_TRUE(processed.empty());
    skipped.emplace_back(first, end);
  }
  const std::uint32_t* GetDrawing() const override { return m_isShown ? drawing.data() : nullptr; }

  static constexpr std::uint64_t kNever = ~std::uint64_t{0};
  std::uint64_t throwsAt = kNever, cancelsAt = kNever, failsAt = kNever;
  bool* endFlag = nullptr;
  std::vector<std::uint64_t> processed;
  std::vector<std::pair<std::uint64_t, std::uint64_t>> skipped;
  Pixels drawing;  // of the last frame

 private:
  void Draw(int step) {
    drawing.assign(kPixels, 0);
    const auto fill = [&](int left, int right, auto colour) {
      for (int y = 11; y < 37; ++y) {
        for (int x = left; x < right; ++x) {
          drawing[static_cast<std::size_t>(y * kWidth + x + step)] = colour(x, y);
        }
      }
    };
    fill(3, 19, [](int x, int y) { return (x / 3 + y / 5) % 2 == 0 ? 0xFFFFFFFF : 0xFF000000; });
    fill(21, 37, [](int x, int y) { return static_cast<std::uint32_t>(x * y % 256) << 24 | 0x00FF8000; });
    fill(39, 52, [](int x, int y) {
      return (x + y) % 2 == 0 ? 0xFFFF0000 : static_cast<std::uint32_t>(x * 5) << 24 | 0x0000FF;
    });
  }
  bool m_isShown = false;
};

std::uint8_t Level(double colour) {
  return static_cast<std::uint8_t>(std::clamp(std::floor(colour * 255 + 0.5), 0.0, 255.0));
}

/// The next overlay of a movie or a picture file, as the callback draws them.
Pixels NextOverlay(MovieReader& reader) {
  const AVFrame* frame = reader.NextDecodedFrame();
  if (frame == nullptr) return {};
  const bool isPicture = frame->format == AV_PIX_FMT_RGBA;
  if (!isPicture && frame->format != AV_PIX_FMT_YUVA444P12) {
    ADD_FAILURE() << "pixel format " << frame->format;
    return {};
  }
  Pixels pixels(kPixels);
  for (int y = 0; y < kHeight; ++y) {
    const auto row = [&](int plane) { return frame->data[plane] + y * frame->linesize[plane]; };
    for (int x = 0; x < kWidth; ++x) {
      std::array<std::uint8_t, 4> rgba{};
      if (isPicture) {
        std::copy_n(row(0) + x * 4, 4, rgba.data());
      } else {
        const auto sample = [&](int plane) { return reinterpret_cast<const std::uint16_t*>(row(plane))[x]; };
        const Triple colours = kMovie601.ColoursOf({sample(0) / 16.0, sample(1) / 16.0, sample(2) / 16.0});
        for (std::size_t i = 0; i < 3; ++i) rgba[i] = Level(colours[i]);
        rgba[3] = static_cast<std::uint8_t>(sample(3) >> 4);
        EXPECT_EQ(sample(3) & 15, rgba[3] >> 4) << "alpha in between";
      }
      pixels[static_cast<std::size_t>(y * kWidth + x)] =
          std::uint32_t{rgba[3]} << 24 | std::uint32_t{rgba[0]} << 16 | std::uint32_t{rgba[1]} << 8 | rgba[2];
    }
  }
  return pixels;
}

class OverlaySequenceTest : public EngineRenderTest {
 protected:
  void SetUp() override { clip = Write("clip.mp4", {.frames = 12}); }
  void TearDown() override { VRX_SetRenderOverrides(nullptr); }

  /// Overlays on frames 1 to 5 and 8 to 10 of 12.
  void SetUp(RenderJob& job, bool withOverlays = true) {
    job.AddClip(clip, 0, 0);
    if (!withOverlays) return;
    job.output.rawOutput = &painter;
    for (const auto& [first, last] : {std::pair{1u, 5u}, {8u, 10u}}) {
      VRXIntermediateRawOutputSetting range;
      range.startTime = VRXTimeInfo(first, 25);
      range.endTime = VRXTimeInfo(last, 25);
      job.output.AddRange(range);
    }
  }
  void Ask(std::uint64_t first = 0, std::uint64_t count = 0) {
    VRXRenderOverrides overrides;
    overrides.overlays = VRXOverlayAlone;
    overrides.firstFrame = first;
    overrides.frameCount = count;
    ASSERT_EQ(VRX_SetRenderOverrides(&overrides), kOk);
  }
  Pixels Still(RenderJob& job, std::uint64_t frame) {
    Pixels pixels(kPixels);
    EXPECT_EQ(VRX_RenderFrame(&job.timeline, &job.output, frame, pixels.data(), kPixels * 4), kOk);
    return pixels;
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string clip;
  Painter painter;
};

TEST_F(OverlaySequenceTest, LaidOverThePlainMovieTheyGiveTheMovieWithOverlays) {
  RenderJob plain(Path("plain.mp4")), with(Path("with.mp4"));
  SetUp(plain, false);
  SetUp(with);
  painter.failsAt = 3;
  for (const auto& [first, count] : {std::pair{0u, 0u}, {3u, 0u}, {2u, 7u}, {7u, 1u}}) {
    SCOPED_TRACE(testing::Message() << first << " and " << count << " frames");
    const std::uint32_t frames = count == 0 ? 12 - first : count;
    Ask(first, count);
    for (const auto* name : {"alone.mov", "alone-%02d.PNG"}) {
      const bool isMovie = std::string(name) == "alone.mov";
      RenderJob job(Path(name));
      SetUp(job);
      job.AddSound(2, 48000, 0);
      painter.processed.clear();
      ASSERT_EQ(job.Run(), kOk) << job.log;
      EXPECT_EQ(job.progress.processed, frames);
      VRXRenderSummary summary;
      ASSERT_EQ(VRX_GetRenderSummary(&summary), kOk);
      EXPECT_EQ(summary.frames, frames);
      EXPECT_EQ(summary.soundSamples, 0u);
      std::uint64_t bytes = isMovie ? std::filesystem::file_size(Path(name)) : 0;
      std::unique_ptr<MovieReader> reader;
      int sum = 0;
      for (std::uint32_t frame = first; frame < first + frames; ++frame) {
        const std::string picture =
            Path("alone-" + std::string(frame < 10 ? "0" : "") + std::to_string(frame) + ".PNG");
        if (!isMovie) bytes += std::filesystem::file_size(picture);
        if (!isMovie || reader == nullptr)
          reader = std::make_unique<MovieReader>(isMovie ? Path(name) : picture);
        const Pixels overlay = NextOverlay(*reader);
        ASSERT_EQ(overlay.size(), kPixels) << frame;
        Pixels composed = Still(plain, frame);
        Blend(overlay.data(), composed.data());
        const Pixels wanted = Still(with, frame);
        for (std::size_t i = 0; i < kPixels; ++i) {
          for (const int shift : {0, 8, 16}) {
            const int difference = std::abs(Channel(composed[i], shift) - Channel(wanted[i], shift));
            ASSERT_LE(difference, isMovie ? 1 : 0) << frame << ": pixel " << i;
            sum += difference;
          }
        }
      }
      EXPECT_LT(sum, static_cast<int>(frames * kPixels / 50));
      EXPECT_EQ(summary.bytes, bytes);
      if (isMovie) {
        EXPECT_TRUE(NextOverlay(*reader).empty());
        EXPECT_EQ(av_cmp_q(reader->Info().frameRate, {25, 1}), 0);
        EXPECT_EQ(reader->Info().matrix, AVCOL_SPC_SMPTE170M);
        EXPECT_EQ(reader->Info().range, AVCOL_RANGE_MPEG);
        EXPECT_EQ(reader->Info().audioCodec, "");
      }
    }
  }
}

TEST_F(OverlaySequenceTest, AlphaComesBackExactly) {
  RenderJob job(Path("alone.mov"));
  SetUp(job);
  Ask(8, 1);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  MovieReader reader(Path("alone.mov"));
  const Pixels overlay = NextOverlay(reader);
  ASSERT_EQ(overlay.size(), kPixels);
  for (std::size_t i = 0; i < kPixels; ++i) ASSERT_EQ(overlay[i] >> 24, painter.drawing[i] >> 24) << i;
}

TEST_F(OverlaySequenceTest, CallbackReceivesTheFramesOfItsRangesAndTheNumbersOfThoseBefore) {
  RenderJob job(Path("alone.mov"));
  SetUp(job);
  Ask(9, 2);
  ASSERT_EQ(job.Run(), kOk) << job.log;
  EXPECT_THAT(painter.skipped, ElementsAre(std::pair(1, 6), std::pair(8, 9)));
  EXPECT_THAT(painter.processed, ElementsAre(9, 10));
}

TEST_F(OverlaySequenceTest, UnusableOutputsAndRangesAreNamedAndLeaveNothing) {
  std::filesystem::create_symlink(clip, Path("link-7.png"));
  std::filesystem::create_symlink(clip, Path("link.mov"));
  struct Case {
    const char* name;
    const char* cause;
    std::uint64_t first = 0, count = 0;
  };
  const Case cases[] = {
      {"a.mp4", "neither in .mov, for a movie, nor in .png"},
      {"a", "neither in .mov, for a movie, nor in .png"},
      {"a.png", "one place for the frame's number in their name, as in overlay-%05d.png"},
      {"a%.png", "one place for"},
      {"%d-%d.png", "one place for"},
      {"%%%d.png", "one place for"},
      {"%d%s.png", "one place for"},
      {"%5d.png", "one place for"},
      {"%0d.png", "one place for"},
      {"%00d.png", "one place for"},
      {"%010d.png", "one place for"},
      {"%-5d.png", "one place for"},
      {"%05u.png", "one place for"},
      {"%05", "neither in .mov"},
      {"link.mov", "replace the source of this clip"},
      {"link-%d.png", "replace the source of this clip"},
      {"a.mov", "frames from 12 on are not in the movie, which has 12 frames, 0 to 11", 12, 0},
      {"%d.png", "frames from 11 to 12 are not in the movie, which has 12 frames", 11, 2},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    RenderJob job(Path(one.name));
    SetUp(job);
    Ask(one.first, one.count);
    EXPECT_EQ(job.Run(), kUnusableSettings);
    EXPECT_TRUE(job.Logged(one.cause)) << job.log;
    EXPECT_EQ(std::count(job.log.begin(), job.log.end(), '\n'), 1) << job.log;
  }
  RenderJob without(Path("a.mov"));
  SetUp(without, false);
  Ask();
  EXPECT_EQ(without.Run(), kUnusableSettings);
  EXPECT_TRUE(without.Logged("the project has no overlays")) << without.log;
  EXPECT_THAT(Names(), ElementsAre("clip.mp4", "link-7.png", "link.mov"));
  EXPECT_TRUE(painter.processed.empty());

  // A picture that is not of this range may be a source.
  RenderJob other(Path("link-%d.png"));
  SetUp(other);
  Ask(0, 7);
  EXPECT_EQ(other.Run(), kOk) << other.log;
}

TEST_F(OverlaySequenceTest, EarlyEndsKeepWholePicturesAndNothingElse) {
  const auto run = [&](const char* name) {
    RenderJob job(Path(name));
    SetUp(job);
    painter.endFlag = &job.endFlag;
    const Result result = job.Run();
    EXPECT_LT(job.progress.processed, job.progress.total);
    return result;
  };
  Ask();
  for (const bool cancels : {true, false}) {
    (cancels ? painter.cancelsAt : painter.throwsAt) = 2;
    EXPECT_EQ(run("alone.mov"), cancels ? kOk : kFailed);
    EXPECT_THAT(Names(), ElementsAre("clip.mp4"));
    EXPECT_EQ(run("p%03d.png"), cancels ? kOk : kFailed);
    std::vector<std::string> names = Names();
    ASSERT_GE(names.size(), 3u);
    EXPECT_EQ(names.front(), "clip.mp4");
    for (std::size_t i = 1; i < names.size(); ++i) {
      EXPECT_EQ(names[i], "p00" + std::to_string(i - 1) + ".png");
      MovieReader picture(Path(names[i]));
      EXPECT_EQ(NextOverlay(picture).size(), kPixels);
      std::filesystem::remove(Path(names[i]));
    }
    painter.cancelsAt = painter.throwsAt = Painter::kNever;
  }
  Ask(0, 11);
  painter.cancelsAt = 10;  // the last
  EXPECT_EQ(run("alone.mov"), kOk);
  EXPECT_THAT(Names(), ElementsAre("clip.mp4"));
}

}  // namespace
}  // namespace vrx::engine
