#include "drawing/pango/PangoTextLayout.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "drawing/TextLines.h"
#include "vrx/XpTextCodec.h"

namespace vrx::drawing {
namespace {

static_assert(std::endian::native == std::endian::little,
              "Cairo's pixels are read as blue, green, red, alpha");

constexpr std::int32_t kMaxWrapWidth = 1 << 20;  // pixels; Pango counts 1/1024 in 32 bits
// Larger glyphs are filled as outlines: a picture of each would need memory for its whole area.
constexpr double kLargestGlyphPicture = 512;
// Colour glyphs are pictures whatever their size.
constexpr double kLargestColorGlyph = 1024;
constexpr unsigned char kHalfCovered = 128;
constexpr std::int32_t kInkMargin = 2;  // hinting and smoothing reach a little beyond the outline

bool HasColorGlyphs(PangoLayoutLine* line) {
  for (const GSList* run = line->runs; run != nullptr; run = run->next) {
    const PangoGlyphString* glyphs = static_cast<const PangoGlyphItem*>(run->data)->glyphs;
    for (int i = 0; i < glyphs->num_glyphs; ++i) {
      if (glyphs->glyphs[i].attr.is_color) return true;
    }
  }
  return false;
}

PangoOwned<PangoAttrList> LinesThroughText(const Font& font) {
  PangoOwned<PangoAttrList> attributes(pango_attr_list_new());
  if (font.underline)
    pango_attr_list_insert(attributes.get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
  if (font.strikeOut) pango_attr_list_insert(attributes.get(), pango_attr_strikethrough_new(TRUE));
  return attributes;
}

std::int32_t PixelsUp(int units) {
  return static_cast<std::int32_t>(std::ceil(double{1} * units / PANGO_SCALE));
}

void CopyCoverage(const unsigned char* row, std::int64_t width, bool smooth, unsigned char* out) {
  if (smooth) {
    std::memcpy(out, row, static_cast<std::size_t>(width));
    return;
  }
  for (std::int64_t x = 0; x < width; ++x) out[x] = row[x] >= kHalfCovered ? 255 : 0;
}

/// From premultiplied colours to plain ones.
void CopyColors(const unsigned char* row, std::int64_t width, bool smooth, unsigned char* out) {
  for (std::int64_t x = 0; x < width; ++x, row += 4, out += 4) {
    const unsigned alpha = row[3];
    if (alpha == 0 || (!smooth && alpha < kHalfCovered)) continue;
    for (int c = 0; c < 3; ++c) {
      out[c] = static_cast<unsigned char>(std::min(255u, (row[c] * 255u + alpha / 2) / alpha));
    }
    out[3] = smooth ? static_cast<unsigned char>(alpha) : 255;
  }
}

}  // namespace

PangoTextLayout::PangoTextLayout(PangoFonts& fonts, std::u16string_view text, const Font& font,
                                 std::int32_t wrapWidth, std::uint32_t format)
    : m_smooth(font.smooth) {
  const PangoFonts::Entry& entry = fonts.Resolve(font);
  m_emPixels = entry.emPixels;
  m_layout.reset(pango_layout_new(fonts.GetContext(font.smooth)));
  pango_layout_set_font_description(m_layout.get(), entry.description.get());
  const std::string bytes = textcodec::ToUtf8(CleanText(CutText(text, TextLimit(m_emPixels)), format));
  pango_layout_set_text(m_layout.get(), bytes.data(), static_cast<int>(bytes.size()));
  if (font.underline || font.strikeOut) {
    pango_layout_set_attributes(m_layout.get(), LinesThroughText(font).get());
  }
  if (wrapWidth > 0) {
    pango_layout_set_width(m_layout.get(), std::min(wrapWidth, kMaxWrapWidth) * PANGO_SCALE);
    pango_layout_set_wrap(m_layout.get(),
                          (format & DT_EDITCONTROL) != 0 ? PANGO_WRAP_WORD_CHAR : PANGO_WRAP_WORD);
  }
  Measure();
  if (m_colored && m_emPixels > kLargestColorGlyph) {
    PangoOwned<PangoFontDescription> smaller(pango_font_description_copy(entry.description.get()));
    pango_font_description_set_absolute_size(smaller.get(), kLargestColorGlyph * PANGO_SCALE);
    pango_layout_set_font_description(m_layout.get(), smaller.get());
    m_emPixels = kLargestColorGlyph;
    Measure();
  }
}

void PangoTextLayout::Measure() {
  m_lines.clear();
  m_sizes.clear();
  m_colored = false;
  for (GSList* at = pango_layout_get_lines_readonly(m_layout.get()); at != nullptr; at = at->next) {
    auto* line = static_cast<PangoLayoutLine*>(at->data);
    PangoRectangle ink, logical;
    pango_layout_line_get_extents(line, &ink, &logical);
    const std::int32_t ascent = PixelsUp(PANGO_ASCENT(logical));
    const std::int32_t descent = PixelsUp(PANGO_DESCENT(logical));
    pango_extents_to_pixels(&ink, nullptr);
    m_lines.push_back({line, ascent, {ink.x, ink.y, ink.x + ink.width, ink.y + ink.height}});
    m_sizes.push_back({std::max(PixelsUp(logical.width), 0), std::max(ascent + descent, 1)});
    m_colored = m_colored || HasColorGlyphs(line);
  }
}

Rect PangoTextLayout::InkBox(std::size_t lineCount, std::int64_t rectWidth, std::uint32_t format) const {
  Rect all{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
  std::int64_t top = 0;
  for (std::size_t i = 0; i < lineCount; ++i) {
    const Line& line = m_lines[i];
    if (!line.ink.IsEmpty()) {
      const Rect ink = Moved(line.ink, LineOffset(m_sizes[i].width, rectWidth, format), top + line.ascent);
      all = {std::min(all.left, ink.left), std::min(all.top, ink.top), std::max(all.right, ink.right),
             std::max(all.bottom, ink.bottom)};
    }
    top += m_sizes[i].height;
  }
  if (all.IsEmpty()) return {};
  return {Saturated(std::int64_t{all.left} - kInkMargin), Saturated(std::int64_t{all.top} - kInkMargin),
          Saturated(std::int64_t{all.right} + kInkMargin), Saturated(std::int64_t{all.bottom} + kInkMargin)};
}

void PangoTextLayout::Paint(cairo_t* context, const Rect& box, std::size_t lineCount, std::int64_t rectWidth,
                            std::uint32_t format) const {
  const bool asOutlines = m_emPixels > kLargestGlyphPicture && !m_colored;
  std::int64_t top = 0;
  for (std::size_t i = 0; i < lineCount; ++i) {
    const Line& line = m_lines[i];
    const std::int64_t left = LineOffset(m_sizes[i].width, rectWidth, format);
    const Rect ink = Moved(line.ink, left, top + line.ascent);
    const bool isSeen = ink.bottom + kInkMargin > box.top && ink.top - kInkMargin < box.bottom;
    if (!ink.IsEmpty() && isSeen) {
      cairo_move_to(context, static_cast<double>(left - box.left),
                    static_cast<double>(top + line.ascent - box.top));
      if (asOutlines) {
        pango_cairo_layout_line_path(context, line.line);
        cairo_fill(context);
      } else {
        pango_cairo_show_layout_line(context, line.line);
      }
    }
    top += m_sizes[i].height;
  }
}

std::shared_ptr<const Coverage> PangoTextLayout::Render(const Rect& box, std::size_t lineCount,
                                                        std::int64_t rectWidth, std::uint32_t format,
                                                        ColorRef color) const {
  const auto width = static_cast<std::int32_t>(box.Width()), height = static_cast<std::int32_t>(box.Height());
  PangoOwned<cairo_surface_t> surface(
      cairo_image_surface_create(m_colored ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_A8, width, height));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  PangoOwned<cairo_t> context(cairo_create(surface.get()));
  cairo_set_source_rgb(context.get(), RedOf(color) / 255.0, GreenOf(color) / 255.0, BlueOf(color) / 255.0);
  cairo_set_antialias(context.get(), m_smooth ? CAIRO_ANTIALIAS_GRAY : CAIRO_ANTIALIAS_NONE);
  Paint(context.get(), box, lineCount, rectWidth, format);
  if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  cairo_surface_flush(surface.get());

  auto coverage = std::make_shared<Coverage>();
  coverage->box = box;
  coverage->colored = m_colored;
  const std::size_t rowBytes = static_cast<std::size_t>(width) * (m_colored ? 4 : 1);
  coverage->bytes.resize(rowBytes * static_cast<std::size_t>(height));
  const unsigned char* row = cairo_image_surface_get_data(surface.get());
  unsigned char* out = coverage->bytes.data();
  for (std::int32_t y = 0; y < height; ++y, out += rowBytes) {
    if (m_colored) {
      CopyColors(row, width, m_smooth, out);
    } else {
      CopyCoverage(row, width, m_smooth, out);
    }
    row += cairo_image_surface_get_stride(surface.get());
  }
  return coverage;
}

}  // namespace vrx::drawing
