// Seeded pixmaps and the comparison of two pictures with the place of their first difference.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "imaging/pixmap/XpPixmap.h"

inline constexpr std::array<std::array<std::int32_t, 2>, 7> kOddSizes = {
    {{1, 1}, {1, 7}, {7, 1}, {3, 2}, {16, 16}, {67, 41}, {301, 5}}};

/// Random bytes, with every second pixel or so fully transparent, opaque or empty, since these have rules
/// of their own. Padding is random as well.
template <class Pixmap>
void FillRandom(Pixmap& pixmap, std::mt19937& random) {
  for (std::uint32_t i = 0; i < pixmap.size; ++i) pixmap.data[i] = static_cast<unsigned char>(random());
  if (pixmap.GetPlaneBytesPerPixel(0) != 4) return;
  for (std::uint32_t i = 0; i < pixmap.size; i += 4) {
    switch (random() % 6) {
      case 0:
        pixmap.data[i + 3] = 0;
        break;
      case 1:
        pixmap.data[i + 3] = 255;
        break;
      case 2:
        std::fill_n(pixmap.data + i, 4, static_cast<unsigned char>(0));
        break;
      default:
        break;
    }
  }
}

using Bytes = std::vector<unsigned char>;

inline Bytes BytesOf(const XpPixmapBase& pixmap) { return Bytes(pixmap.data, pixmap.data + pixmap.size); }

inline testing::AssertionResult SamePicture(const Bytes& expected, const XpPixmapBase& actual) {
  for (std::uint32_t i = 0; i < actual.size; ++i) {
    if (expected[i] == actual.data[i]) continue;
    const auto rowBytes = static_cast<std::uint32_t>(actual.GetPlane(0)->rowBytes);
    const std::uint32_t perPixel = actual.GetPlaneBytesPerPixel(0);
    return testing::AssertionFailure()
           << "column " << i % rowBytes / perPixel << " row " << i / rowBytes << " byte "
           << i % rowBytes % perPixel << " of " << actual.width << "x" << actual.height << ": expected "
           << int{expected[i]} << ", is " << int{actual.data[i]};
  }
  return testing::AssertionSuccess();
}

/// A whole number from `low` to `high`.
inline std::int32_t Between(std::mt19937& random, std::int32_t low, std::int32_t high) {
  return std::uniform_int_distribution<std::int32_t>(low, high)(random);
}
