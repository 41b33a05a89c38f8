#include "drawing/BoxTextRenderer.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "drawing/Coverage.h"
#include "drawing/TextLines.h"
#include "foundation/number/Saturate.h"
#include "imaging/pixmap/XpStraightAlpha.h"
#include "vrx/XpTextCodec.h"

namespace vrx::drawing {
namespace {

constexpr unsigned char kInside = 255, kEdge = 128;

struct BoxMetrics {
  std::int32_t em, advance, lineHeight;
};

BoxMetrics MetricsOf(const Font& font) {
  const std::int64_t height = font.height == 0 ? kDefaultLineHeight : font.height;
  const auto em = static_cast<std::int32_t>(
      std::clamp<std::int64_t>(height < 0 ? -height : (height * 5 + 5) / 6, 1, kMaxEmPixels));
  const std::int32_t line = height > 0 && em < kMaxEmPixels ? static_cast<std::int32_t>(height) : em + em / 5;
  return {em, (em * 3 + 4) / 5, std::max(line, 1)};
}

/// The lines of a text; each character is one code point.
std::vector<std::u32string> Wrapped(std::u16string_view text, const BoxMetrics& metrics, std::int32_t width,
                                    std::uint32_t format) {
  const bool wraps = (format & DT_WORDBREAK) != 0 && (format & DT_SINGLELINE) == 0;
  const bool breaksWords = (format & DT_EDITCONTROL) != 0;
  const auto room = static_cast<std::size_t>(std::max(width / metrics.advance, 1));
  std::vector<std::u32string> lines(1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (textcodec::IsHighSurrogate(c)) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - char32_t{0xDC00});
    }
    if (c == U'\n') {
      lines.emplace_back();
      continue;
    }
    std::u32string& line = lines.back();
    if (wraps && line.size() >= room && c != U' ') {
      const std::size_t blank = line.find_last_of(U' ');
      if (blank != std::u32string::npos) {
        std::u32string word = line.substr(blank + 1);
        line.erase(line.find_last_not_of(U' ', blank) + 1);
        lines.push_back(std::move(word));
      } else if (breaksWords) {
        lines.emplace_back();
      }
    }
    lines.back().push_back(c);
  }
  return lines;
}

struct BoxLayout {
  BoxMetrics metrics;
  std::vector<std::u32string> lines;
  std::vector<Size> sizes;
};

BoxLayout LayOut(std::u16string_view text, const Font& font, std::int32_t width, std::uint32_t format) {
  BoxLayout layout{MetricsOf(font), {}, {}};
  const std::u16string clean = CleanText(CutText(text, TextLimit(layout.metrics.em)), format);
  layout.lines = Wrapped(clean, layout.metrics, width, format);
  for (const auto& line : layout.lines) {
    layout.sizes.push_back(
        {static_cast<std::int32_t>(line.size()) * layout.metrics.advance, layout.metrics.lineHeight});
  }
  return layout;
}

void DrawBox(const XpBitmap& bitmap, const Rect& box, const Rect& clip, bool smooth, ColorRef color,
             std::uint8_t alpha = 255) {
  const Rect visible = Intersect(box, clip);
  for (std::int32_t y = visible.top; y < visible.bottom; ++y) {
    for (std::int32_t x = visible.left; x < visible.right; ++x) {
      const bool edge = x == box.left || x == box.right - 1 || y == box.top || y == box.bottom - 1;
      const unsigned char coverage = pixels::Mixed(0, smooth && edge ? kEdge : kInside, alpha);
      ComposeRow(bitmap.bits + std::int64_t{y} * bitmap.rowBytes + std::int64_t{x} * bitmap.BytesPerPixel(),
                 bitmap.format, &coverage, 1, color);
    }
  }
}

/// The boxes of the lines that are drawn, where the layout has them.
std::vector<Rect> PlaceBoxes(std::u16string_view text, const Font& font, const Rect& rect,
                             std::uint32_t format) {
  const BoxLayout layout = LayOut(text, font, Saturated(rect.Width()), format);
  const LinePlacement placement = PlaceLines(layout.sizes, rect, format);
  const BoxMetrics& m = layout.metrics;
  const Rect cell = {0, m.em - std::max(m.em * 4 / 5, 1), std::max(m.advance - 1, 1), m.em};
  std::vector<Rect> boxes;
  std::int64_t top = placement.top;
  for (std::size_t i = 0; i < placement.lineCount; ++i, top += m.lineHeight) {
    const std::int64_t left = rect.left + LineOffset(layout.sizes[i].width, rect.Width(), format);
    for (std::size_t k = 0; k < layout.lines[i].size(); ++k) {
      if (layout.lines[i][k] == U' ') continue;
      boxes.push_back(Moved(cell, left + static_cast<std::int64_t>(k) * m.advance, top));
    }
  }
  return boxes;
}

Rect ScaledBox(const Rect& box, const TextScale& scale, double outline, Point offset) {
  const auto at = [](double start, double position, double factor) {
    return Saturate<std::int32_t>(std::round(start + position * factor));
  };
  Rect scaled{
      at(scale.left, box.left - outline, scale.xFactor), at(scale.top, box.top - outline, scale.yFactor),
      at(scale.left, box.right + outline, scale.xFactor), at(scale.top, box.bottom + outline, scale.yFactor)};
  scaled.right = std::max(scaled.right, Saturated(std::int64_t{scaled.left} + 1));
  scaled.bottom = std::max(scaled.bottom, Saturated(std::int64_t{scaled.top} + 1));
  return Moved(scaled, offset.x, offset.y);
}

}  // namespace

Size BoxTextRenderer::Measure(std::u16string_view text, const Font& font, std::int32_t width,
                              std::uint32_t format) {
  return SizeOfLines(LayOut(text, font, width, format).sizes);
}

std::size_t BoxTextRenderer::CountLines(std::u16string_view text, const Font& font, std::int32_t width,
                                        std::uint32_t format) {
  return LayOut(text, font, width, format).lines.size();
}

void BoxTextRenderer::Draw(const Canvas& canvas, std::u16string_view text, const Font& font, ColorRef color,
                           const Rect& rect, std::uint32_t format) {
  const Rect all = canvas.GetClipBox();
  const Rect clip = (format & DT_NOCLIP) != 0 ? all : Intersect(rect, all);
  if (rect.IsEmpty() || clip.IsEmpty()) return;
  for (const Rect& box : PlaceBoxes(text, font, rect, format)) {
    DrawBox(canvas.GetBitmap(), box, clip, font.smooth, color);
  }
}

Rect BoxTextRenderer::DrawScaled(const Canvas& canvas, const ScaledText& text, const TextInk& ink,
                                 const Rect& clip) {
  const Rect visible = Intersect(clip, canvas.GetClipBox());
  if (text.rect.IsEmpty() || visible.IsEmpty() || !text.scale.IsUsable()) return {};
  Rect drawn;
  for (const Rect& place : PlaceBoxes(text.text, text.font, text.rect, text.format)) {
    const double outline = LimitOutline(ink.outline, MetricsOf(text.font).em, text.text);
    const Rect box = ScaledBox(place, text.scale, outline, ink.offset);
    DrawBox(canvas.GetBitmap(), box, visible, text.font.smooth, ink.color, ink.alpha);
    drawn = Unite(drawn, Intersect(box, visible));
  }
  return drawn;
}

}  // namespace vrx::drawing
