// A pattern is read whichever way it lies, and nothing else is taken for one: the render tests rest on it.
#include <gtest/gtest.h>

#include "samples/clipmaker/FramePattern.h"

namespace vrx::test_support {
namespace {

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

}  // namespace
}  // namespace vrx::test_support
