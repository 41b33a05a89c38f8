// Pictures on a canvas: the composition and copying rules of Canvas.
#include <array>
#include <cstring>

#include "drawing/Canvas.h"
#include "imaging/pixmap/XpBlockClip.h"
#include "imaging/pixmap/XpPixelVector.h"

namespace vrx::drawing {
namespace {

using namespace vrx::pixels;

constexpr std::int64_t kRun = 256;
using Run = std::array<unsigned char, kRun * 4>;

unsigned char* At(const XpBitmap& bitmap, std::int64_t x, std::int64_t y) {
  return bitmap.bits + y * bitmap.rowBytes + x * bitmap.BytesPerPixel();
}

void Widen(const unsigned char* in, unsigned char* out) {
  std::memcpy(out, in, 3);
  out[3] = 255;
}

/// Composes runs of up to kRun pixels, as 4-byte pixels whatever the two formats are. `rule` takes
/// destination, source and count; a run of a 24-bit destination goes through a buffer.
template <class Rule>
class PictureWalk {
 public:
  PictureWalk(const XpBitmap& dest, const XpBitmap& source, const Rule& rule)
      : m_dest(dest), m_source(source), m_rule(rule) {}

  void Compose(const Rect& to, const Rect& from) {
    const XpAxisStretch columns =
        ClipAxisStretch(to.left, to.Width(), from.left, from.Width(), m_dest.width, m_source.width);
    const XpAxisStretch rows =
        ClipAxisStretch(to.top, to.Height(), from.top, from.Height(), m_dest.height, m_source.height);
    for (std::int64_t x = columns.first; x < columns.last; x += kRun) {
      const std::int64_t count = std::min(kRun, columns.last - x);
      for (std::int64_t i = 0; i < count; ++i) {
        m_columns[static_cast<std::size_t>(i)] = columns.SourceAt(x + i);
      }
      for (std::int64_t y = rows.first; y < rows.last; ++y) {
        ComposeRun(At(m_dest, x, y), At(m_source, 0, rows.SourceAt(y)), static_cast<std::size_t>(count));
      }
    }
  }

 private:
  void ComposeRun(unsigned char* dest, const unsigned char* sourceRow, std::size_t count) {
    Gather(sourceRow, count);
    if (m_dest.format == XpBitmapFormat::Bgra32) {
      m_rule(dest, m_gathered.data(), count);
      return;
    }
    for (std::size_t i = 0; i < count; ++i) Widen(dest + i * 3, m_widened.data() + i * 4);
    m_rule(m_widened.data(), m_gathered.data(), count);
    for (std::size_t i = 0; i < count; ++i) std::memcpy(dest + i * 3, m_widened.data() + i * 4, 3);
  }

  void Gather(const unsigned char* row, std::size_t count) {
    if (m_source.format == XpBitmapFormat::Bgr24) {
      for (std::size_t i = 0; i < count; ++i) Widen(row + m_columns[i] * 3, m_gathered.data() + i * 4);
    } else if (m_columns[count - 1] - m_columns[0] + 1 == static_cast<std::int64_t>(count)) {
      std::memcpy(m_gathered.data(), row + m_columns[0] * 4, count * 4);
    } else {
      for (std::size_t i = 0; i < count; ++i)
        std::memcpy(m_gathered.data() + i * 4, row + m_columns[i] * 4, 4);
    }
  }

  const XpBitmap& m_dest;
  const XpBitmap& m_source;
  const Rule& m_rule;
  std::array<std::int64_t, kRun> m_columns;
  Run m_gathered;
  Run m_widened;
};

/// Each lane divided by 255 and rounded; exact for products of two bytes.
Vector16 DividedBy255(Vector16 products) {
  const Vector16 raised = products + 128;
  return (raised + (raised >> 8)) >> 8;
}

/// Each lane, which is below 2^15, held to 255.
Vector16 AtMost255(Vector16 value) {
  using Signed16 = std::int16_t __attribute__((vector_size(16)));  // compares in one instruction
  const auto above = reinterpret_cast<Vector16>(reinterpret_cast<Signed16>(value) > std::int16_t{255});
  return (value & ~above) | (above & 255);
}

Vector32 ComposedPremultiplied(Vector32 d, Vector16 even, Vector16 odd) {
  const Vector16 rest = 255 - InBothHalves(As32(odd) >> 16);
  const Vector16 evenSum = AtMost255(even + DividedBy255(As16(d & kEvenBytes) * rest));
  const Vector16 oddSum = AtMost255(odd + DividedBy255(As16(d >> 8 & kEvenBytes) * rest));
  return As32(evenSum) | As32(oddSum) << 8;
}

struct PremultipliedRule {
  std::uint16_t constant;
  bool perPixel;

  void operator()(unsigned char* dest, const unsigned char* source, std::size_t count) const {
    if (perPixel && AreClear(source, count, ~0u)) return;
    const Vector32 opaque = perPixel ? Vector32{} : Vector32{} + kAlphaMask;
    const std::uint16_t factor = constant;
    if (factor == 255) {
      ForEachFour(dest, source, count, [opaque](Vector32 d, Vector32 s) {
        s |= opaque;
        return ComposedPremultiplied(d, As16(s & kEvenBytes), As16(s >> 8 & kEvenBytes));
      });
      return;
    }
    ForEachFour(dest, source, count, [factor, opaque](Vector32 d, Vector32 s) {
      s |= opaque;
      return ComposedPremultiplied(d, DividedBy255(As16(s & kEvenBytes) * factor),
                                   DividedBy255(As16(s >> 8 & kEvenBytes) * factor));
    });
  }
};

struct ColorKeyRule {
  unsigned char key[3];

  void operator()(unsigned char* dest, const unsigned char* source, std::size_t count) const {
    for (std::size_t i = 0; i < count * 4; i += 4) {
      if (std::memcmp(source + i, key, sizeof key) != 0) Widen(source + i, dest + i);
    }
  }
};

struct CopyRule {
  void operator()(unsigned char* dest, const unsigned char* source, std::size_t count) const {
    std::memcpy(dest, source, count * 4);
  }
};

template <class Rule>
bool ComposePicture(const XpBitmap& dest, const Rect& to, XpBitmapHandle source, const Rect& from,
                    const Rule& rule) {
  if (dest.bits == nullptr || source == nullptr || source->bits == dest.bits) return false;
  if (to.IsEmpty() || from.IsEmpty() || from != Intersect(from, {0, 0, source->width, source->height})) {
    return false;
  }
  PictureWalk<Rule>(dest, *source, rule).Compose(to, from);
  return true;
}

}  // namespace

bool Canvas::AlphaBlend(const Rect& to, XpBitmapHandle source, const Rect& from, std::uint8_t alpha,
                        bool perPixel) {
  return ComposePicture(m_bitmap, to, source, from, PremultipliedRule{alpha, perPixel});
}

bool Canvas::TransparentBlt(const Rect& to, XpBitmapHandle source, const Rect& from, ColorRef key) {
  return ComposePicture(m_bitmap, to, source, from, ColorKeyRule{{BlueOf(key), GreenOf(key), RedOf(key)}});
}

bool Canvas::StretchBlt(const Rect& to, XpBitmapHandle source, const Rect& from) {
  return ComposePicture(m_bitmap, to, source, from, CopyRule{});
}

}  // namespace vrx::drawing
