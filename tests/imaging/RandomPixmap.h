// Seeded pixmaps, the plain way to compose one on another, and the comparison of two pictures with the place
// of their first difference.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <vector>

#include "imaging/pixmap/XpPixmap.h"

inline constexpr std::array<std::array<std::int32_t, 2>, 7> kOddSizes = {
    {{1, 1}, {1, 7}, {7, 1}, {3, 2}, {16, 16}, {67, 41}, {301, 5}}};

/// Random bytes, with every second pixel or so fully transparent, opaque or empty, since these have rules
/// of their own. The padding is random as well.
template <class Pixmap>
void FillRandom(Pixmap& pixmap, std::mt19937& random) {
  for (std::uint32_t i = 0; i < pixmap.size; ++i) pixmap.data[i] = static_cast<unsigned char>(random());
  if (pixmap.GetPlaneBytesPerPixel(0) != 4) return;
  for (std::uint32_t i = 0; i < pixmap.size; i += 4) {
    const auto kind = random() % 6;
    if (kind < 2) pixmap.data[i + 3] = kind == 0 ? 0 : 255;
    if (kind == 2) std::fill_n(pixmap.data + i, 4, static_cast<unsigned char>(0));
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

struct Block {
  std::int32_t destX, destY, destWidth, destHeight, sourceX, sourceY, sourceWidth, sourceHeight;
  bool IsScaled() const { return destWidth != sourceWidth || destHeight != sourceHeight; }
};

inline std::ostream& operator<<(std::ostream& out, const Block& b) {
  return out << b.destX << "," << b.destY << " " << b.destWidth << "x" << b.destHeight << " from "
             << b.sourceX << "," << b.sourceY << " " << b.sourceWidth << "x" << b.sourceHeight;
}

/// Lies anywhere in and around both pixmaps.
inline Block RandomBlock(std::mt19937& random, const XpPixmapBase& dest, const XpPixmapBase& source) {
  const auto place = [&](std::int32_t size) { return Between(random, -size - 2, size + 2); };
  const auto length = [&](std::int32_t size) { return Between(random, 1, 2 * size + 3); };
  return {place(dest.width),   place(dest.height),   length(dest.width),   length(dest.height),
          place(source.width), place(source.height), length(source.width), length(source.height)};
}

/// Where along one axis a nearest-neighbour copy takes what it writes at `at`, as the rule is documented:
/// nowhere when it writes nothing there.
inline std::optional<std::int64_t> SourceOf(std::int64_t at, std::int64_t dest, std::int64_t destCount,
                                            std::int64_t source, std::int64_t sourceCount,
                                            std::int64_t sourceSize, bool isScaled) {
  if (at < dest || at >= dest + destCount || source >= sourceSize || source + sourceCount <= 0) return {};
  if (!isScaled) {
    const std::int64_t from = source + at - dest;
    return from < 0 || from >= sourceSize ? std::nullopt : std::optional(from);
  }
  const std::int64_t before = std::max<std::int64_t>(0, -source) * destCount / sourceCount;
  const std::int64_t behind = std::min<std::int64_t>(0, sourceSize - (source + sourceCount));
  if (at < dest + before || at >= dest + destCount + behind * destCount / sourceCount) return {};
  return std::max<std::int64_t>(0, source + (((at - dest) * ((sourceCount << 16) / destCount)) >> 16));
}

/// `dest` after `rule` was applied to each pixel of the block with the pixel of `source` that belongs there.
inline Bytes ComposedPlainly(const XpPixmapBase& dest, const XpPixmapBase& source, const Block& b,
                             const std::function<void(unsigned char* to, const unsigned char* from)>& rule) {
  Bytes result = BytesOf(dest);
  for (std::int32_t y = 0; y < dest.height; ++y) {
    for (std::int32_t x = 0; x < dest.width; ++x) {
      const auto fromX =
          SourceOf(x, b.destX, b.destWidth, b.sourceX, b.sourceWidth, source.width, b.IsScaled());
      const auto fromY =
          SourceOf(y, b.destY, b.destHeight, b.sourceY, b.sourceHeight, source.height, b.IsScaled());
      if (!fromX || !fromY) continue;
      rule(result.data() + y * dest.GetPlane(0)->rowBytes +
               x * static_cast<std::int32_t>(dest.GetPlaneBytesPerPixel(0)),
           source.GetPlane(0)->Row(static_cast<std::int32_t>(*fromY)) +
               *fromX * static_cast<std::int32_t>(source.GetPlaneBytesPerPixel(0)));
    }
  }
  return result;
}
