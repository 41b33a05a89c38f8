#include "drawing/BoxTextRenderer.h"

#include <algorithm>
#include <vector>

#include "drawing/Coverage.h"
#include "drawing/TextLines.h"
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

void DrawBox(const XpBitmap& bitmap, const Rect& box, const Rect& clip, bool smooth, ColorRef color) {
  const Rect visible = Intersect(box, clip);
  for (std::int32_t y = visible.top; y < visible.bottom; ++y) {
    for (std::int32_t x = visible.left; x < visible.right; ++x) {
      const bool edge = x == box.left || x == box.right - 1 || y == box.top || y == box.bottom - 1;
      const unsigned char coverage = smooth && edge ? kEdge : kInside;
      ComposeRow(bitmap.bits + std::int64_t{y} * bitmap.rowBytes + std::int64_t{x} * bitmap.BytesPerPixel(),
                 bitmap.format, &coverage, 1, color);
    }
  }
}

}  // namespace

Size BoxTextRenderer::Measure(std::u16string_view text, const Font& font, std::int32_t width,
                              std::uint32_t format) {
  return SizeOfLines(LayOut(text, font, width, format).sizes);
}

void BoxTextRenderer::Draw(const Canvas& canvas, std::u16string_view text, const Font& font, ColorRef color,
                           const Rect& rect, std::uint32_t format) {
  const Rect all = canvas.GetClipBox();
  const Rect clip = (format & DT_NOCLIP) != 0 ? all : Intersect(rect, all);
  if (rect.IsEmpty() || clip.IsEmpty()) return;
  const BoxLayout layout = LayOut(text, font, Saturated(rect.Width()), format);
  const LinePlacement placement = PlaceLines(layout.sizes, rect, format);
  const BoxMetrics& m = layout.metrics;
  std::int64_t top = placement.top;
  for (std::size_t i = 0; i < placement.lineCount; ++i, top += m.lineHeight) {
    const std::int64_t left = rect.left + LineOffset(layout.sizes[i].width, rect.Width(), format);
    const Rect cell = {0, m.em - std::max(m.em * 4 / 5, 1), std::max(m.advance - 1, 1), m.em};
    for (std::size_t k = 0; k < layout.lines[i].size(); ++k) {
      if (layout.lines[i][k] == U' ') continue;
      DrawBox(canvas.GetBitmap(), Moved(cell, left + static_cast<std::int64_t>(k) * m.advance, top), clip,
              font.smooth, color);
    }
  }
}

}  // namespace vrx::drawing
