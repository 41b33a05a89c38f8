#include "engine/ToneMapper.h"

#include <algorithm>

#include "engine/ColourCoefficients.h"

namespace vrx::engine {
namespace {

constexpr int kCells = 32;  // along an edge of the cube
constexpr int kNodes = kCells + 1;
constexpr std::int32_t kRedStride = kNodes * kNodes, kGreenStride = kNodes, kBlueStride = 1;
constexpr std::int32_t kFarCorner = kRedStride + kGreenStride + kBlueStride;
constexpr int kStrideBits = 11;  // for the largest of them
constexpr std::int32_t kStrideMask = (1 << kStrideBits) - 1;
constexpr int kPlaceBits = 12;  // after the point
constexpr std::int32_t kUnit = 1 << kPlaceBits;
constexpr double kLumaSteps = 219, kChromaSteps = 224;
constexpr int kDither = 8;      // rows and columns of the pattern
constexpr int kChromaTaps = 8;  // what the weights of a chroma sample add up to

/// Thresholds between 0 and 1, each once, neighbours far apart.
constexpr std::array<std::array<float, kDither>, kDither> MakeDither() {
  std::array<std::array<float, kDither>, kDither> thresholds{};
  for (unsigned y = 0; y < kDither; ++y) {
    for (unsigned x = 0; x < kDither; ++x) {
      unsigned order = 0;
      for (unsigned bit = 0; bit < 3; ++bit) {
        const unsigned column = x >> bit & 1, line = y >> bit & 1;
        order = order << 2 | (column ^ line) << 1 | line;
      }
      thresholds[y][x] = (static_cast<float>(order) + 0.5F) / (kDither * kDither);
    }
  }
  return thresholds;
}

constexpr auto kThresholds = MakeDither();

}  // namespace

void ToneMapper::Prepare(VRXDynamicRange range, AVColorPrimaries primaries, AVColorSpace to) {
  if (!m_cube.empty() && range == m_range && primaries == m_primaries && to == m_matrix) return;
  const ToneCurve curve(range, primaries);
  constexpr int kCodes = 1 << kColourBits;
  m_places.clear();
  for (int code = 0; code < kCodes; ++code) {
    const double place = curve.SignalOfGrey(double(code) / (kCodes - 1)) * kCells * kUnit;
    m_places.push_back(std::min(static_cast<std::int32_t>(place + 0.5), kCells * kUnit - 1));
  }
  m_cube.clear();
  m_cube.reserve(std::size_t{kNodes} * kNodes * kNodes);
  for (int red = 0; red < kNodes; ++red) {
    for (int green = 0; green < kNodes; ++green) {
      for (int blue = 0; blue < kNodes; ++blue) {
        const Colour signals{double(red) / kCells, double(green) / kCells, double(blue) / kCells};
        const bool isGrey = red == green && green == blue;
        m_cube.push_back(SampleOf(isGrey ? signals : curve.Map(signals), WeightsOf(to)));
      }
    }
  }
  m_range = range;
  m_primaries = primaries;
  m_matrix = to;
}

ToneMapper::Sample ToneMapper::SampleOf(const Colour& colour, const LumaWeights& weights) {
  const auto& [red, green, blue] = colour;
  // By way of differences, which are exactly zero for a grey.
  const double u = weights.red * (blue - red) + (1 - weights.red - weights.blue) * (blue - green);
  const double v = weights.blue * (red - blue) + (1 - weights.red - weights.blue) * (red - green);
  const double luma = kLumaFloor + kLumaSteps * (blue - u);
  const double cb = kNeutral + kChromaSteps * u / (2 * (1 - weights.blue));
  const double cr = kNeutral + kChromaSteps * v / (2 * (1 - weights.red));
  const Vector parts = {static_cast<float>(luma), static_cast<float>(cb), static_cast<float>(cr), 0};
  return {parts};
}

void ToneMapper::Apply(const ColourRow& first, const ColourRow& second, int row,
                       const PlanarPicture& target) {
  m_sums.assign(static_cast<std::size_t>(target.width), Sample{});
  MapRow(first, row, target);
  MapRow(second, row + 1, target);
  WriteChroma(row / 2, target);
}

void ToneMapper::MapRow(const ColourRow& colours, int row, const PlanarPicture& target) {
  const auto& thresholds = kThresholds[static_cast<std::size_t>(row % kDither)];
  std::uint8_t* luma = target.y + row * target.lumaStride;
  Paths paths;
  for (int first = 0; first < target.width; first += kRun) {
    const int count = std::min(kRun, target.width - first);
    FindPaths({colours.red + first, colours.green + first, colours.blue + first}, count, paths);
    Sample* sums = m_sums.data() + first;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      const Sample* corner = m_cube.data() + paths.corner[i];
      const Vector sample =
          corner->parts * paths.weight0[i] + corner[paths.step1[i]].parts * paths.weight1[i] +
          corner[paths.step2[i]].parts * paths.weight2[i] + corner[kFarCorner].parts * paths.weight3[i];
      luma[static_cast<std::size_t>(first) + i] =
          static_cast<std::uint8_t>(sample[0] + thresholds[i % kDither]);
      sums[i].parts += sample;
    }
  }
}

/// A cell is cut into tetrahedra. The corners of the one that holds the colour are reached by going along the
/// edges in the order of the fractions, the largest first.
void ToneMapper::FindPaths(const ColourRow& colours, int count, Paths& paths) const {
  std::array<std::int32_t, kRun> red{}, green{}, blue{};
  for (int i = 0; i < count; ++i) {
    const auto at = static_cast<std::size_t>(i);
    red[at] = m_places[colours.red[i]];
    green[at] = m_places[colours.green[i]];
    blue[at] = m_places[colours.blue[i]];
  }
  // A fraction with the stride of its edge below it, so that both are sorted at once; a float holds them.
  const auto edge = [](std::int32_t place, std::int32_t stride) {
    return static_cast<float>((place & (kUnit - 1)) << kStrideBits | stride);
  };
  const auto fraction = [](float key) { return static_cast<std::int32_t>(key) >> kStrideBits; };
  const auto stride = [](float key) { return static_cast<std::int32_t>(key) & kStrideMask; };
  const auto part = [](std::int32_t weight) { return static_cast<float>(weight) * (1.0F / kUnit); };
  for (std::size_t i = 0; i < kRun; ++i) {
    const float r = edge(red[i], kRedStride), g = edge(green[i], kGreenStride),
                b = edge(blue[i], kBlueStride);
    const float high = std::max(r, g), low = std::min(r, g);
    const float large = std::max(high, b), small = std::min(low, b),
                middle = std::max(low, std::min(high, b));
    paths.corner[i] = (red[i] >> kPlaceBits) * kRedStride + (green[i] >> kPlaceBits) * kGreenStride +
                      (blue[i] >> kPlaceBits) * kBlueStride;
    paths.step1[i] = stride(large);
    paths.step2[i] = stride(large) + stride(middle);
    paths.weight0[i] = part(kUnit - fraction(large));
    paths.weight1[i] = part(fraction(large) - fraction(middle));
    paths.weight2[i] = part(fraction(middle) - fraction(small));
    paths.weight3[i] = part(fraction(small));
  }
}

/// A chroma sample lies on the left one of its columns, which counts twice, and between its rows.
void ToneMapper::WriteChroma(int row, const PlanarPicture& target) const {
  std::uint8_t* u = target.u + row * target.chromaStride;
  std::uint8_t* v = target.v + row * target.chromaStride;
  for (int x = 0; x < target.width; x += 2) {
    const Sample* column = m_sums.data() + x;
    const Vector left = column[x == 0 ? 0 : -1].parts, right = column[x + 1 < target.width ? 1 : 0].parts;
    const Vector mean = (left + column->parts * 2.0F + right) * (1.0F / kChromaTaps);
    u[x / 2] = static_cast<std::uint8_t>(mean[1] + 0.5F);
    v[x / 2] = static_cast<std::uint8_t>(mean[2] + 0.5F);
  }
}

}  // namespace vrx::engine
