#include "drawing/pango/PangoTextLayout.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "drawing/TextLines.h"
#include "drawing/pango/GlyphOutlines.h"
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

PangoOwned<PangoAttrList> AttributesOf(const Font& font) {
  PangoOwned<PangoAttrList> attributes(pango_attr_list_new());
  // A word that is broken for want of room gets no character that its writer did not type.
  pango_attr_list_insert(attributes.get(), pango_attr_insert_hyphens_new(FALSE));
  if (font.underline)
    pango_attr_list_insert(attributes.get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
  if (font.strikeOut) pango_attr_list_insert(attributes.get(), pango_attr_strikethrough_new(TRUE));
  return attributes;
}

std::int32_t PixelsUp(int units) {
  return static_cast<std::int32_t>(std::ceil(static_cast<double>(units) / PANGO_SCALE));
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

/// Whether the path, and what lies up to `reach` pixels around it, meets a picture of the size of `box`.
bool IsSeen(cairo_t* context, const Rect& box, double reach) {
  double left = 0, top = 0, right = 0, bottom = 0;
  cairo_save(context);
  cairo_identity_matrix(context);
  cairo_path_extents(context, &left, &top, &right, &bottom);
  cairo_restore(context);
  return left - reach < static_cast<double>(box.Width()) && right + reach > 0 &&
         top - reach < static_cast<double>(box.Height()) && bottom + reach > 0;
}

}  // namespace

PangoTextLayout::PangoTextLayout(PangoFonts& fonts, std::u16string_view text, const Font& font,
                                 std::int32_t wrapWidth, std::uint32_t format)
    : m_raster(fonts.GetRaster()), m_smooth(font.smooth) {
  const PangoFonts::Entry& entry = fonts.Resolve(font);
  m_emPixels = entry.emPixels;
  m_layout.reset(pango_layout_new(fonts.GetContext(font.smooth)));
  pango_layout_set_font_description(m_layout.get(), entry.description.get());
  const std::string bytes = textcodec::ToUtf8(CleanText(CutText(text, TextLimit(m_emPixels)), format));
  pango_layout_set_text(m_layout.get(), bytes.data(), static_cast<int>(bytes.size()));
  pango_layout_set_attributes(m_layout.get(), AttributesOf(font).get());
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
    m_colored = m_colored || HasColorGlyphs(*line);
  }
}

template <class Visit>
void PangoTextLayout::ForEachLine(const TextView& view, Visit visit) const {
  std::int64_t top = 0;
  for (std::size_t i = 0; i < view.lineCount; ++i) {
    const Line& line = m_lines[i];
    if (!line.ink.IsEmpty()) {
      visit(line, LineOffset(m_sizes[i].width, view.rectWidth, view.format), top + line.ascent);
    }
    top += m_sizes[i].height;
  }
}

Rect PangoTextLayout::InkBox(const TextView& view) const {
  Rect all;
  ForEachLine(view, [&](const Line& line, std::int64_t left, std::int64_t baseline) {
    all = Unite(all, Moved(line.ink, left, baseline));
  });
  if (all.IsEmpty()) return {};
  if (view.isScaled) {
    const auto outline = static_cast<std::int32_t>(std::ceil(view.outline));
    all = ScaledOutwards(Grown(all, outline), view.scale);
  }
  return Grown(all, kInkMargin);
}

void PangoTextLayout::Paint(cairo_t* context, const TextView& view) const {
  const bool asOutlines = m_emPixels > kLargestGlyphPicture && !m_colored;
  ForEachLine(view, [&](const Line& line, std::int64_t left, std::int64_t baseline) {
    const Rect ink = Moved(line.ink, left, baseline);
    if (ink.bottom + kInkMargin <= view.box.top || ink.top - kInkMargin >= view.box.bottom) return;
    cairo_move_to(context, static_cast<double>(left), static_cast<double>(baseline));
    if (asOutlines) {
      pango_cairo_layout_line_path(context, line.line);
      cairo_fill(context);
    } else {
      pango_cairo_show_layout_line(context, line.line);
    }
  });
}

/// Glyph by glyph: an outline of a whole line costs several times as much.
void PangoTextLayout::PaintScaled(cairo_t* context, cairo_surface_t* surface, const TextView& view) const {
  const TextScale& scale = view.scale;
  const auto forEachLine = [&](auto draw) {
    ForEachLine(view, [&](const Line& line, std::int64_t left, std::int64_t baseline) {
      cairo_save(context);
      // On a whole row the horizontal strokes of small letters keep their edges.
      cairo_translate(context, scale.left + static_cast<double>(left) * scale.xFactor - view.box.left,
                      std::round(scale.top + static_cast<double>(baseline) * scale.yFactor) - view.box.top);
      cairo_scale(context, scale.xFactor, scale.yFactor);
      draw(*line.line);
      cairo_restore(context);
    });
  };
  cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_width(context, 2 * view.outline);
  const double reach = view.outline * std::max(scale.xFactor, scale.yFactor);
  const auto drawOutline = [&] {
    if (!IsSeen(context, view.box, reach)) return cairo_new_path(context);
    if (view.outline > 0.0) cairo_stroke_preserve(context);
    cairo_save(context);
    cairo_identity_matrix(context);
    m_raster.Fill(context, surface, view.color);
    cairo_restore(context);
  };
  forEachLine([&](const PangoLayoutLine& line) { ForEachOutline(context, line, drawOutline); });
  const bool showsPictures = m_colored && (view.outline == 0.0 || view.isSilhouette);
  if (showsPictures) forEachLine([&](const PangoLayoutLine& line) { ShowColorGlyphs(context, line); });
}

std::shared_ptr<const Coverage> PangoTextLayout::Render(const TextView& view) const {
  const auto width = static_cast<std::int32_t>(view.box.Width());
  const auto height = static_cast<std::int32_t>(view.box.Height());
  const bool isColored = m_colored && !view.isSilhouette && view.outline == 0.0;
  PangoOwned<cairo_surface_t> surface(
      cairo_image_surface_create(isColored ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_A8, width, height));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  PangoOwned<cairo_t> context(cairo_create(surface.get()));
  const ColorRef color = view.color;
  cairo_set_source_rgb(context.get(), RedOf(color) / 255.0, GreenOf(color) / 255.0, BlueOf(color) / 255.0);
  cairo_set_antialias(context.get(), m_smooth ? CAIRO_ANTIALIAS_GRAY : CAIRO_ANTIALIAS_NONE);
  if (view.isScaled) {
    PaintScaled(context.get(), surface.get(), view);
  } else {
    cairo_translate(context.get(), -view.box.left, -view.box.top);
    Paint(context.get(), view);
  }
  if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  cairo_surface_flush(surface.get());

  auto coverage = std::make_shared<Coverage>();
  coverage->box = view.box;
  coverage->colored = isColored;
  const std::size_t rowBytes = static_cast<std::size_t>(width) * (isColored ? 4 : 1);
  coverage->bytes.resize(rowBytes * static_cast<std::size_t>(height));
  const unsigned char* row = cairo_image_surface_get_data(surface.get());
  unsigned char* out = coverage->bytes.data();
  for (std::int32_t y = 0; y < height; ++y, out += rowBytes) {
    if (isColored) {
      CopyColors(row, width, m_smooth, out);
    } else {
      CopyCoverage(row, width, m_smooth, out);
    }
    row += cairo_image_surface_get_stride(surface.get());
  }
  return coverage;
}

}  // namespace vrx::drawing
