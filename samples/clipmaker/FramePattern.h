// A test picture that carries a number: written into the frames of test clips and read back out of rendered
// movies, so that a test can say which source frame an output frame shows, which side is up, and whether its
// colours were converted rightly.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "samples/clipmaker/RgbImage.h"

namespace vrx::test_support {

/// The colours of the four patches beside the number: red, green, blue, grey.
inline constexpr std::array<Rgb, 4> kPatchColours = {
    {{200, 40, 40}, {40, 180, 60}, {50, 60, 210}, {128, 128, 128}}};

/// What was read from a pattern.
struct PatternReading {
  bool valid = false;     // the corner marks and all sixteen bits agree with their inverse copies
  int number = -1;        // 0 to 65535
  int rotation = 0;       // clockwise turn of the picture against upright: 0, 90, 180, 270
  bool mirrored = false;  // left and right exchanged, before the turn
  std::array<Rgb, kPatchColours.size()> patches{};  // mean colours, in the order of kPatchColours
  std::string problem;                              // empty when valid
};

/// Fills `image` with the pattern of `number`, of which the low 16 bits count. The picture wants at least 32
/// by 32 pixels; it is a grid of 8 by 8 cells:
///
///     row 0     white corner, the four patches in columns 2 to 5, light grey corner
///     rows 2, 3 the number, highest bit first, white for 1
///     rows 4, 5 the same inverted
///     row 7     black corner, a white bar in columns 2 to 5, dark grey corner
///
/// and mid grey elsewhere. Corners run white, light, dark, black clockwise from the top left.
void DrawPattern(std::uint32_t number, RgbImage& image);

/// Reads the pattern that fills `rect` of `image`, however it is turned or mirrored.
PatternReading ReadPattern(const RgbImage& image, const PixelRect& rect);

/// Looks for the picture between black bars first.
PatternReading ReadPattern(const RgbImage& image);

}  // namespace vrx::test_support
