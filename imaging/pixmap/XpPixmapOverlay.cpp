#include "imaging/pixmap/XpPixmapOverlay.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/pixmap/XpBlockClip.h"
#include "imaging/pixmap/XpPixelVector.h"
#include "imaging/pixmap/XpStraightAlpha.h"

namespace {

using namespace vrx::pixels;

constexpr std::size_t kBytesPerPixel32 = 4;

/// The source's own alpha. d + (((s - d) * a) >> 8) equals (d * (256 - a) + s * a) >> 8, whose terms fit
/// into 16 bits; a factor of 256 in place of 255 makes the opaque case a plain copy.
struct OverlayRule {
  static bool LeavesAlone(const unsigned char*, std::size_t, const unsigned char* source,
                          std::size_t sourceCount) {
    return AreClear(source, sourceCount, kAlphaMask);
  }

  void operator()(unsigned char* dest, const unsigned char* source, std::size_t count) const {
    ForEachFour(dest, source, count, [](Vector32 d, Vector32 s) {
      const Vector32 alpha = s >> 24;
      const Vector32 opaque = reinterpret_cast<Vector32>(alpha == 255u);
      const Vector16 factor = InBothHalves(alpha - opaque);
      const Vector16 rest = 256 - factor;
      const Vector16 sourceOdd = As16((s >> 8 & kEvenBytes) | 0x00FF0000u);  // green, and alpha's goal
      const Vector16 even = (As16(d & kEvenBytes) * rest + As16(s & kEvenBytes) * factor) >> 8;
      const Vector16 odd = As16(d >> 8 & kEvenBytes) * rest + sourceOdd * factor;
      return As32(even) | (As32(odd) & ~kEvenBytes);
    });
  }
};

/// Straight alpha, to the rounded byte.
struct OverlaySmoothRule {
  static bool LeavesAlone(const unsigned char* dest, std::size_t count, const unsigned char* source,
                          std::size_t sourceCount) {
    return OverlayRule::LeavesAlone(dest, count, source, sourceCount);
  }

  void operator()(unsigned char* dest, const unsigned char* source, std::size_t count) const {
    std::size_t i = 0;
    for (; i + kVectorPixels <= count; i += kVectorPixels) {
      const Vector32 s = Load(source + i * kBytesPerPixel32), d = Load(dest + i * kBytesPerPixel32);
      const Vector32 alpha = s & kAlphaMask;
      if (!AnyBits(alpha)) continue;
      const Vector32 isDrawn = reinterpret_cast<Vector32>(alpha != 0u);
      const Vector32 isTaken = reinterpret_cast<Vector32>((alpha == kAlphaMask) | ((d & kAlphaMask) == 0u));
      if (AnyBits(isDrawn & ~isTaken)) {
        ComposeEach(dest, source, i, i + kVectorPixels);  // rare: edges on something drawn
      } else {
        Store(dest + i * kBytesPerPixel32, (s & isDrawn) | (d & ~isDrawn));
      }
    }
    ComposeEach(dest, source, i, count);
  }

  static void ComposeEach(unsigned char* dest, const unsigned char* source, std::size_t first,
                          std::size_t last) {
    for (std::size_t i = first; i < last; ++i) {
      const unsigned char* from = source + i * kBytesPerPixel32;
      if (from[3] != 0) ComposeOver(dest + i * kBytesPerPixel32, from, from[3]);
    }
  }
};

/// The source's alpha times a constant.
struct OverlayWithAlphaRule {
  std::uint32_t alpha;

  static bool LeavesAlone(const unsigned char* dest, std::size_t count, const unsigned char* source,
                          std::size_t sourceCount) {
    return AreClear(source, sourceCount, ~0u) && AreClear(dest, count, ~0u);
  }

  void operator()(unsigned char* dest, const unsigned char* source, std::size_t count) const {
    const std::uint32_t constant = alpha;
    ForEachFour(dest, source, count, [constant](Vector32 d, Vector32 s) {
      const Vector32 weight = (s >> 24) * constant;
      const Vector32 replaced = (s & ~kAlphaMask) | (weight >> 8) << 24;
      const Vector32 under = d & kAlphaMask;
      if (!AnyBits(under)) return replaced;
      // The wrap-around of a negative difference is undone by the sum, as all of it is modulo 2^32.
      const auto mixed = [&weight](Vector32 from, Vector32 to) {
        return ((from << 16) + (to - from) * weight) >> 16 & 0xFFu;
      };
      const Vector32 full = {0xFF, 0xFF, 0xFF, 0xFF};
      const Vector32 blended = mixed(d & 0xFFu, s & 0xFFu) | mixed(d >> 8 & 0xFFu, s >> 8 & 0xFFu) << 8 |
                               mixed(d >> 16 & 0xFFu, s >> 16 & 0xFFu) << 16 | mixed(d >> 24, full) << 24;
      const Vector32 empty = reinterpret_cast<Vector32>(under == 0u);
      return (replaced & empty) | (blended & ~empty);
    });
  }
};

template <class Rule>
void OverlayUnscaled(XpPixmap32& destination, std::int32_t destX, std::int32_t destY, std::int32_t width,
                     std::int32_t height, const XpPixmap32& source, std::int32_t sourceY, const Rule& rule) {
  const XpPlaneBase* to = destination.GetPlane(0);
  const XpPlaneBase* from = source.GetPlane(0);
  if (to == nullptr || from == nullptr) return;
  const XpAxisCopy columns = ClipAxisCopy(destX, 0, width, to->width, from->width);
  const XpAxisCopy rows = ClipAxisCopy(destY, sourceY, height, to->height, from->height);
  if (columns.count < 1) return;
  const std::size_t count = static_cast<std::size_t>(columns.count);
  for (std::int64_t y = 0; y < rows.count; ++y) {
    unsigned char* d = to->Row(static_cast<std::int32_t>(rows.dest + y)) + columns.dest * 4;
    const unsigned char* s = from->Row(static_cast<std::int32_t>(rows.source + y)) + columns.source * 4;
    if (!Rule::LeavesAlone(d, count, s, count)) rule(d, s, count);
  }
}

/// The source pixels that a run of destination columns shows, gathered row by row.
class GatheredRun {
 public:
  static constexpr std::int64_t kLength = 256;

  GatheredRun(const XpAxisStretch& columns, std::int64_t first)
      : m_first(first), m_count(std::min(kLength, columns.last - first)) {
    for (std::int64_t i = 0; i < m_count; ++i) {
      m_columns[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(columns.SourceAt(first + i));
    }
  }

  template <class Rule>
  void ComposeRow(unsigned char* destRow, const unsigned char* sourceRow, const Rule& rule) const {
    unsigned char* dest = destRow + m_first * 4;
    if (IsLeftAlone(dest, sourceRow, 0, m_count, rule)) return;
    for (std::int64_t i = 0; i < m_count; i += kGroup) {
      const std::int64_t count = std::min(kGroup, m_count - i);
      if (!IsLeftAlone(dest, sourceRow, i, count, rule)) ComposeGroup(dest, sourceRow, i, count, rule);
    }
  }

 private:
  static constexpr std::int64_t kGroup = 16;  // pixels gathered and skipped together

  template <class Rule>
  bool IsLeftAlone(const unsigned char* dest, const unsigned char* sourceRow, std::int64_t i,
                   std::int64_t count, const Rule&) const {
    const std::int64_t first = Column(i);
    return Rule::LeavesAlone(dest + i * 4, static_cast<std::size_t>(count), sourceRow + first * 4,
                             static_cast<std::size_t>(Column(i + count - 1) - first + 1));
  }

  template <class Rule>
  void ComposeGroup(unsigned char* dest, const unsigned char* sourceRow, std::int64_t i, std::int64_t count,
                    const Rule& rule) const {
    std::uint32_t pixels[kGroup];
    for (std::int64_t k = 0; k < count; ++k) {
      std::memcpy(&pixels[k], sourceRow + Column(i + k) * 4, kBytesPerPixel32);
    }
    rule(dest + i * 4, reinterpret_cast<const unsigned char*>(pixels), static_cast<std::size_t>(count));
  }

  std::int64_t Column(std::int64_t i) const { return m_columns[static_cast<std::size_t>(i)]; }

  std::int64_t m_first;
  std::int64_t m_count;
  std::array<std::int32_t, kLength> m_columns;
};

template <class Rule>
void Overlay(XpPixmap32& destination, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
             std::int32_t destHeight, const XpPixmap32& source, std::int32_t sourceWidth,
             std::int32_t sourceHeight, XpRowRange drawn, const Rule& rule) {
  if (destWidth < 1 || destHeight < 1 || sourceWidth < 1 || sourceHeight < 1) return;
  if (destWidth == sourceWidth && destHeight == sourceHeight) {
    OverlayUnscaled(destination, destX, destY, sourceWidth, sourceHeight, source, 0, rule);
    return;
  }
  const XpPlaneBase* to = destination.GetPlane(0);
  const XpPlaneBase* from = source.GetPlane(0);
  if (to == nullptr || from == nullptr) return;
  const XpAxisStretch columns = ClipAxisStretch(destX, destWidth, 0, sourceWidth, to->width, from->width);
  XpAxisStretch rows = ClipAxisStretch(destY, destHeight, 0, sourceHeight, to->height, from->height);
  while (!rows.IsEmpty() && rows.SourceAt(rows.first) < drawn.first) ++rows.first;
  while (!rows.IsEmpty() && rows.SourceAt(rows.last - 1) >= drawn.last) --rows.last;
  if (columns.IsEmpty() || rows.IsEmpty()) return;
  for (std::int64_t x = columns.first; x < columns.last; x += GatheredRun::kLength) {
    const GatheredRun run(columns, x);
    for (std::int64_t y = rows.first; y < rows.last; ++y) {
      run.ComposeRow(to->Row(static_cast<std::int32_t>(y)),
                     from->Row(static_cast<std::int32_t>(rows.SourceAt(y))), rule);
    }
  }
}

}  // namespace

void OverlayPixmap(XpPixmap32& destination, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                   std::int32_t destHeight, const XpPixmap32& source, std::int32_t sourceWidth,
                   std::int32_t sourceHeight, XpRowRange drawn) {
  Overlay(destination, destX, destY, destWidth, destHeight, source, sourceWidth, sourceHeight, drawn,
          OverlayRule{});
}

void OverlaySmoothPixmap(XpPixmap32& destination, std::int32_t destX, std::int32_t destY,
                         std::int32_t destWidth, std::int32_t destHeight, const XpPixmap32& source,
                         std::int32_t sourceWidth, std::int32_t sourceHeight, XpRowRange drawn) {
  Overlay(destination, destX, destY, destWidth, destHeight, source, sourceWidth, sourceHeight, drawn,
          OverlaySmoothRule{});
}

void OverlayPixmapWithAlpha(XpPixmap32& destination, std::int32_t destX, std::int32_t destY,
                            std::int32_t destWidth, std::int32_t destHeight, const XpPixmap32& source,
                            std::int32_t sourceWidth, std::int32_t sourceHeight, std::uint8_t alpha,
                            XpRowRange drawn) {
  Overlay(destination, destX, destY, destWidth, destHeight, source, sourceWidth, sourceHeight, drawn,
          OverlayWithAlphaRule{alpha});
}

void OverlayPixmapBlock(XpPixmap32& destination, std::int32_t destX, std::int32_t destY, std::int32_t width,
                        std::int32_t height, const XpPixmap32& source, std::int32_t sourceY) {
  OverlayUnscaled(destination, destX, destY, width, height, source, sourceY, OverlayRule{});
}

void OverlaySmoothPixmapBlock(XpPixmap32& destination, std::int32_t destX, std::int32_t destY,
                              std::int32_t width, std::int32_t height, const XpPixmap32& source,
                              std::int32_t sourceY) {
  OverlayUnscaled(destination, destX, destY, width, height, source, sourceY, OverlaySmoothRule{});
}
