// The other media tests trust what these tools write and read: here they are held against each other.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "samples/clipmaker/ClickTrack.h"
#include "samples/clipmaker/FramePattern.h"
#include "samples/clipmaker/PatternClip.h"
#include "tests/support/MovieReader.h"

namespace vrx::test_support {
namespace {

class ClipFile : public ::testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(m_folder); }
  void TearDown() override { std::filesystem::remove_all(m_folder); }
  std::string Path(const std::string& name) const { return (m_folder / name).string(); }

 private:
  std::filesystem::path m_folder =
      std::filesystem::path(::testing::TempDir()) /
      (std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) +
       std::to_string(getpid()));
};

TEST(FramePattern, IsReadInAnyOrientationAndBetweenBars) {
  RgbImage pattern(160, 96);
  DrawPattern(0xA5C3, pattern);
  for (const int rotation : {0, 90, 180, 270}) {
    RgbImage turned;
    pattern.Turn(rotation, turned);
    RgbImage boxed(200, 240);
    boxed.Fill(boxed.Bounds(), {4, 2, 3});
    const PixelRect place = {13, 41, 13 + turned.Width(), 41 + turned.Height()};
    RgbImage mirroredBox = boxed;
    for (int y = 0; y < turned.Height(); ++y) {
      for (int x = 0; x < turned.Width(); ++x) {
        boxed.Set(place.left + x, place.top + y, turned.At(x, y));
        mirroredBox.Set(place.left + x, place.top + turned.Height() - 1 - y, turned.At(x, y));
      }
    }
    EXPECT_EQ(boxed.FindPicture(), place);
    const PatternReading reading = ReadPattern(boxed);
    ASSERT_TRUE(reading.valid) << reading.problem;
    EXPECT_EQ(reading.number, 0xA5C3);
    EXPECT_EQ(reading.rotation, rotation);
    EXPECT_FALSE(reading.mirrored);
    EXPECT_EQ(reading.patches, kPatchColours);
    const PatternReading mirrored = ReadPattern(mirroredBox, place);
    ASSERT_TRUE(mirrored.valid) << mirrored.problem;
    EXPECT_TRUE(mirrored.mirrored);
    EXPECT_EQ(mirrored.number, 0xA5C3);
  }
}

TEST(FramePattern, TwoFramesBlendedAreNotTakenForANumber) {
  RgbImage first(160, 96);
  RgbImage second(160, 96);
  DrawPattern(1, first);
  DrawPattern(2, second);
  for (int y = 0; y < 96; ++y) {
    for (int i = 0; i < 3 * 160; ++i) {
      first.Row(y)[i] = static_cast<std::uint8_t>((first.Row(y)[i] + second.Row(y)[i]) / 2);
    }
  }
  EXPECT_FALSE(ReadPattern(first).valid);
  first.Fill(first.Bounds(), {0, 0, 0});
  EXPECT_FALSE(ReadPattern(first).valid);
}

TEST_F(ClipFile, EveryCodecAndContainerKeepsNumbersTimesAndColours) {
  struct Case {
    const char* file;
    const char* codec;
    int bFrames;
    bool bt601;
    bool fullRange;
  };
  for (const Case& c : {Case{"a.mp4", "h264", 2, false, false}, Case{"b.mkv", "h264", 0, true, false},
                        Case{"c.ts", "h264", 2, false, true}, Case{"d.ts", "mpeg2video", 2, false, false},
                        Case{"e.mov", "mpeg4", 0, true, false}, Case{"f.avi", "mpeg4", 0, true, false},
                        Case{"g.mkv", "ffv1", 0, false, true}}) {
    SCOPED_TRACE(c.file);
    PatternClip clip;
    clip.codec = c.codec;
    clip.bFrames = c.bFrames;
    clip.bt601 = c.bt601;
    clip.fullRange = c.fullRange;
    clip.rateNum = 30000;
    clip.rateDen = 1001;
    clip.frames = 31;
    clip.firstNumber = 1000;
    WritePatternClip(Path(c.file), clip);
    MovieReader reader(Path(c.file));
    MovieFrame frame;
    for (int i = 0; i < clip.frames; ++i) {
      ASSERT_TRUE(reader.NextFrame(frame)) << i;
      const PatternReading reading = ReadPattern(frame.image);
      ASSERT_TRUE(reading.valid) << i << ": " << reading.problem;
      EXPECT_EQ(reading.number, 1000 + i);
      EXPECT_EQ(reading.rotation, 0);
      EXPECT_NEAR(frame.seconds, i * 1001 / 30000.0, 0.0011);
      for (std::size_t p = 0; p < kPatchColours.size(); ++p) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
          EXPECT_NEAR(reading.patches[p][channel], kPatchColours[p][channel], 8) << i << " patch " << p;
        }
      }
    }
    EXPECT_FALSE(reader.NextFrame(frame));
  }
}

TEST_F(ClipFile, RotationAspectAndUnevenTimesAreInTheFile) {
  for (const int rotation : {0, 90, 180, 270}) {
    PatternClip clip;
    clip.rotation = rotation;
    clip.sarNum = 4;
    clip.sarDen = 3;
    clip.timesMs = {0, 40, 200, 210, 1000};
    WritePatternClip(Path("turned.mp4"), clip);
    MovieReader reader(Path("turned.mp4"));
    EXPECT_EQ(reader.Info().rotation, rotation);
    EXPECT_EQ(reader.Info().width, 160);
    EXPECT_EQ(av_cmp_q(reader.Info().sampleAspect, {4, 3}), 0);
    MovieFrame frame;
    for (const std::int64_t time : clip.timesMs) {
      ASSERT_TRUE(reader.NextFrame(frame));
      EXPECT_NEAR(frame.seconds, static_cast<double>(time) / 1000, 0.001);
      // Turned back by what the file asks for, the picture is upright.
      EXPECT_EQ((ReadPattern(frame.image).rotation + rotation) % 360, 0);
    }
  }
}

TEST_F(ClipFile, ClicksStayOnTheWholeSeconds) {
  struct Case {
    const char* file;
    const char* codec;
    int rate;
    int channels;
    std::int64_t tolerance;  // samples
  };
  for (const Case& c : {Case{"a.mp4", "aac", 48000, 2, 24}, Case{"b.mkv", "pcm_s16le", 44100, 1, 0},
                        Case{"c.ts", "ac3", 48000, 6, 1100}, Case{"d.mov", "pcm_s16le", 48000, 6, 0},
                        Case{"e.avi", "pcm_s16le", 22050, 2, 0}, Case{"f.wav", "pcm_f32le", 96000, 1, 0}}) {
    SCOPED_TRACE(c.file);
    PatternClip clip;
    clip.frames = std::string(c.file) == "f.wav" ? 0 : 60;
    clip.hasSound = true;
    clip.sound.style = ClipSoundStyle::kClickOverTone;
    clip.sound.codec = c.codec;
    clip.sound.rate = c.rate;
    clip.sound.channels = c.channels;
    clip.sound.samples = 5 * c.rate / 2;
    WritePatternClip(Path(c.file), clip);
    const MovieSound sound = MovieReader(Path(c.file)).ReadSound();
    EXPECT_EQ(sound.rate, c.rate);
    EXPECT_EQ(static_cast<int>(sound.channels.size()), c.channels);
    EXPECT_LE(sound.largestJump, c.rate / 1000);
    const std::vector<std::int64_t> clicks = sound.Clicks();
    ASSERT_EQ(clicks.size(), 3U);
    for (std::size_t i = 0; i < clicks.size(); ++i) {
      EXPECT_NEAR(static_cast<double>(clicks[i]), static_cast<double>(i) * c.rate,
                  static_cast<double>(c.tolerance));
    }
  }
}

TEST_F(ClipFile, AJumpInTheSoundsTimesIsInTheFile) {
  PatternClip clip;
  clip.frames = 0;
  clip.hasSound = true;
  clip.sound.samples = 3 * 48000;
  clip.sound.jumps = {{30000, 12000}};
  WritePatternClip(Path("hole.mkv"), clip);
  const MovieSound sound = MovieReader(Path("hole.mkv")).ReadSound();
  EXPECT_NEAR(static_cast<double>(sound.largestJump), 12000, 48);
  EXPECT_EQ(sound.channels.front().size(), 3U * 48000 - 12000);
}

TEST_F(ClipFile, TheSameDescriptionGivesTheSameBytes) {
  PatternClip clip;
  clip.hasSound = true;
  clip.style = ClipStyle::kScene;
  clip.seed = 3;
  const auto bytes = [&](const char* name) {
    WritePatternClip(Path(name), clip);
    std::ifstream file(Path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  const std::string first = bytes("first.mp4");
  EXPECT_EQ(first, bytes("second.mp4"));
  clip.seed = 4;
  EXPECT_NE(first, bytes("third.mp4"));
}

TEST_F(ClipFile, WhatCannotBeWrittenOrReadSaysWhy) {
  PatternClip clip;
  clip.rotation = 90;
  EXPECT_THROW(WritePatternClip(Path("turned.mkv"), clip), std::runtime_error);
  EXPECT_THROW(WritePatternClip(Path("no/such/folder.mp4"), PatternClip()), std::runtime_error);
  EXPECT_THROW(MovieReader(Path("missing.mp4")), std::runtime_error);
}

}  // namespace
}  // namespace vrx::test_support
