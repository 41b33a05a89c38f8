// Colours stay what they are when a source has another matrix or range than the movie.
#include "engine/MatrixConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

namespace vrx::engine {
namespace {

/// Samples of one pixel; luma, and both chroma samples.
using Samples = std::array<double, 3>;

struct Encoding {
  AVColorSpace matrix;
  double kr, kb;
  bool fullRange;
};

/// By way of red, green and blue, unrounded but clipped to a byte.
Samples Reference(const Samples& in, const Encoding& from, const Encoding& to) {
  const double lumaSteps = from.fullRange ? 255 : 219, chromaSteps = from.fullRange ? 255 : 224;
  const double y = (in[0] - (from.fullRange ? 0 : 16)) / lumaSteps;
  const double red = y + 2 * (1 - from.kr) * (in[2] - 128) / chromaSteps;
  const double blue = y + 2 * (1 - from.kb) * (in[1] - 128) / chromaSteps;
  const double green = (y - from.kr * red - from.kb * blue) / (1 - from.kr - from.kb);
  const double luma = to.kr * red + (1 - to.kr - to.kb) * green + to.kb * blue;
  const auto clip = [](double sample) { return std::clamp(sample, 0.0, 255.0); };
  return {clip(16 + 219 * luma), clip(128 + 224 * (blue - luma) / (2 * (1 - to.kb))),
          clip(128 + 224 * (red - luma) / (2 * (1 - to.kr)))};
}

class Picture {
 public:
  Picture(int width, int height, std::uint32_t seed)
      : m_width(width), m_height(height), m_chromaWidth((width + 1) / 2), m_bytes(Size()) {
    std::mt19937 random(seed);
    for (auto& sample : m_bytes) sample = static_cast<std::uint8_t>(random());
  }
  PlanarPicture View() {
    auto* u = m_bytes.data() + m_width * m_height;
    return {m_bytes.data(), u,       u + m_chromaWidth * ((m_height + 1) / 2), m_width, m_chromaWidth,
            m_width,        m_height};
  }
  Samples At(int x, int y) {
    const PlanarPicture view = View();
    const std::ptrdiff_t chroma = y / 2 * view.chromaStride + x / 2;
    return {double(view.y[y * view.lumaStride + x]), double(view.u[chroma]), double(view.v[chroma])};
  }
  bool operator==(const Picture&) const = default;

 private:
  std::size_t Size() const {
    return static_cast<std::size_t>(m_width * m_height + 2 * m_chromaWidth * ((m_height + 1) / 2));
  }

  int m_width, m_height, m_chromaWidth;
  std::vector<std::uint8_t> m_bytes;
};

TEST(MatrixConversionTest, IsExactWithinHalfALevelForEveryPairAndInPlace) {
  const Encoding encodings[] = {
      {AVCOL_SPC_SMPTE170M, 0.299, 0.114, false},
      {AVCOL_SPC_BT709, 0.2126, 0.0722, false},
      {AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593, false},
      {AVCOL_SPC_SMPTE240M, 0.212, 0.087, false},
      {AVCOL_SPC_FCC, 0.30, 0.11, false},
  };
  MatrixConversion conversion;
  for (Encoding from : encodings) {
    for (const bool fullRange : {false, true}) {
      from.fullRange = fullRange;
      for (const Encoding& to : {encodings[0], encodings[1]}) {
        conversion.Prepare({from.matrix, AVCOL_PRI_UNSPECIFIED, AVCOL_TRC_UNSPECIFIED, fullRange}, to.matrix);
        for (const auto& [width, height] : {std::pair{333, 55}, {2, 2}, {1, 1}, {64, 3}}) {
          SCOPED_TRACE(testing::Message() << "matrix " << from.matrix << " full " << fullRange << " to "
                                          << to.matrix << " " << width << "x" << height);
          Picture source(width, height, 5), target(width, height, 6), inPlace = source;
          conversion.Apply(source.View(), target.View());
          conversion.Apply(inPlace.View(), inPlace.View());
          ASSERT_EQ(inPlace, target);
          for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
              const Samples in = source.At(x, y), out = target.At(x, y), exact = Reference(in, from, to);
              for (std::size_t i = 0; i < out.size(); ++i)
                ASSERT_NEAR(out[i], exact[i], 0.52) << x << "," << y;
            }
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace vrx::engine
