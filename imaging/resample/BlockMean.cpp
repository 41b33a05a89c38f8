#include "imaging/resample/BlockMean.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "imaging/resample/PixelRun.h"

namespace vrx::resample {

namespace {

/// Runs `strip(in offset, pixels, out)` over a row of `count` blocks that are `Side` pixels wide. It fills
/// `out` with the mean of the block that begins at each byte, of which every `Side`-th pixel is kept: that
/// is faster than to add only the bytes that belong together.
template <std::size_t Side, class Strip>
[[gnu::always_inline]] inline void ForEachStrip(std::size_t count, unsigned char* out, Strip strip) {
  std::array<unsigned char, Side * kStripBytes> means;
  for (std::size_t at = 0; at < count; at += kStripPixels) {
    const std::size_t blocks = std::min(kStripPixels, count - at);
    strip(at * Side * kBytesPerPixel, ((blocks - 1) * Side + 1) * kBytesPerPixel, means.data());
    PickPixels(means.data(), Side, blocks, out + at * kBytesPerPixel);
  }
}

}  // namespace

void MeanOf2x2Blocks(const XpPlaneBase& source, const XpPlaneBase& target) {
  for (std::int32_t y = 0; y < target.height; ++y) {
    const unsigned char* upper = source.Row(2 * y);
    const unsigned char* lower = source.Row(2 * y + 1);
    const auto strip = [&](std::size_t offset, std::size_t bytes, unsigned char* means) {
      std::array<std::uint16_t, 2 * kStripBytes> sums;
      for (std::size_t x = 0; x < bytes + kBytesPerPixel; ++x) {
        sums[x] = static_cast<std::uint16_t>(upper[offset + x] + lower[offset + x]);
      }
      for (std::size_t x = 0; x < bytes; ++x) {
        const auto sum = static_cast<std::uint16_t>(sums[x] + sums[x + kBytesPerPixel]);
        means[x] = static_cast<unsigned char>(sum >> 2);
      }
    };
    ForEachStrip<2>(static_cast<std::size_t>(target.width), target.Row(y), strip);
  }
}

void MeanOf3x3Blocks(const XpPlaneBase& source, const XpPlaneBase& target) {
  constexpr std::size_t kSecond = kBytesPerPixel;
  constexpr std::size_t kThird = 2 * kBytesPerPixel;
  for (std::int32_t y = 0; y < target.height; ++y) {
    const unsigned char* first = source.Row(3 * y);
    const unsigned char* second = source.Row(3 * y + 1);
    const unsigned char* third = source.Row(3 * y + 2);
    const auto strip = [&](std::size_t offset, std::size_t bytes, unsigned char* means) {
      std::array<std::uint16_t, 3 * kStripBytes> sums;
      for (std::size_t x = 0; x < bytes + kThird; ++x) {
        sums[x] = static_cast<std::uint16_t>(first[offset + x] + second[offset + x] + third[offset + x]);
      }
      for (std::size_t x = 0; x < bytes; ++x) {
        const auto sum = static_cast<std::uint16_t>(sums[x] + sums[x + kSecond] + sums[x + kThird]);
        means[x] = static_cast<unsigned char>(sum / 9);
      }
    };
    ForEachStrip<3>(static_cast<std::size_t>(target.width), target.Row(y), strip);
  }
}

void MeanOfPairs(const unsigned char* in, std::size_t count, unsigned char* out) {
  ForEachStrip<2>(count, out, [in](std::size_t offset, std::size_t bytes, unsigned char* means) {
    MeanOfTwoRows(in + offset, in + offset + kBytesPerPixel, bytes, means);
  });
}

void MeanOfTwoRows(const unsigned char* upper, const unsigned char* lower, std::size_t bytes,
                   unsigned char* out) {
  for (std::size_t x = 0; x < bytes; ++x) out[x] = static_cast<unsigned char>((upper[x] + lower[x]) >> 1);
}

}  // namespace vrx::resample
