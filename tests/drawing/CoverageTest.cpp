// Text has the same pixels whether it is composed in groups or pixel by pixel.
#include "drawing/Coverage.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace vrx::drawing {
namespace {

TEST(CoverageTest, RowHasTheSamePixelsAsOneComposedPixelByPixel) {
  std::mt19937 random(3);
  const auto sometimes = [&random](unsigned one, unsigned of) { return random() % of < one; };
  for (int round = 0; round < 400; ++round) {
    const std::size_t count = 1 + random() % 70;
    const auto format = sometimes(3, 4) ? XpBitmapFormat::Bgra32 : XpBitmapFormat::Bgr24;
    const std::size_t step = format == XpBitmapFormat::Bgra32 ? 4 : 3;
    const bool isEmpty = sometimes(1, 2), isBlank = sometimes(1, 4);
    std::vector<unsigned char> under(count * step), coverage(count);
    for (auto& byte : under) byte = isEmpty || sometimes(2, 3) ? 0 : static_cast<unsigned char>(random());
    for (auto& byte : coverage) byte = isBlank || sometimes(1, 2) ? 0 : static_cast<unsigned char>(random());
    const ColorRef color = random() & 0xFFFFFF;
    std::vector<unsigned char> single = under;
    for (std::size_t i = 0; i < count; ++i)
      ComposeRow(single.data() + i * step, format, &coverage[i], 1, color);
    ComposeRow(under.data(), format, coverage.data(), count, color);
    ASSERT_EQ(under, single) << "round " << round << ", " << count << " pixels of " << step << " bytes";
  }
}

}  // namespace
}  // namespace vrx::drawing
