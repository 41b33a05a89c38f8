#include "drawing/pango/PangoFonts.h"

#include <algorithm>

#include "drawing/TextLines.h"
#include "vrx/XpTextCodec.h"

namespace vrx::drawing {
namespace {

constexpr std::size_t kMaxFonts = 32;
constexpr int kProbePixels = 1000;
constexpr char kAnyFace[] = "Sans";

PangoOwned<PangoContext> MakeContext(PangoFontMap* map, bool smooth) {
  PangoOwned<PangoContext> context(pango_font_map_create_context(map));
  PangoOwned<cairo_font_options_t> options(cairo_font_options_create());
  // Grey levels only: colour fringes are made for screens of known pixel geometry, not for video. Outlines
  // move to whole rows but keep their widths.
  cairo_font_options_set_antialias(options.get(), smooth ? CAIRO_ANTIALIAS_GRAY : CAIRO_ANTIALIAS_NONE);
  cairo_font_options_set_hint_style(options.get(), smooth ? CAIRO_HINT_STYLE_SLIGHT : CAIRO_HINT_STYLE_FULL);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
  pango_cairo_context_set_font_options(context.get(), options.get());
  return context;
}

PangoOwned<PangoFontDescription> Describe(const Font& font) {
  PangoOwned<PangoFontDescription> description(pango_font_description_new());
  const auto face = textcodec::ToUtf8(CleanText(CutText(font.face.AsView(), kMaxFaceUnits), DT_NOPREFIX));
  pango_font_description_set_family(description.get(), face.empty() ? kAnyFace : face.c_str());
  const int weight = font.weight <= 0 ? PANGO_WEIGHT_NORMAL : std::clamp(font.weight, 100, 1000);
  pango_font_description_set_weight(description.get(), static_cast<PangoWeight>(weight));
  pango_font_description_set_style(description.get(), font.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  return description;
}

}  // namespace

PangoFonts::PangoFonts()
    : m_map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT)),
      m_smooth(MakeContext(m_map.get(), true)),
      m_unsmoothed(MakeContext(m_map.get(), false)),
      m_entries(kMaxFonts) {}

double PangoFonts::EmOfLineHeight(const PangoFontDescription* description, std::int32_t lineHeight) {
  PangoOwned<PangoFontDescription> probe(pango_font_description_copy(description));
  pango_font_description_set_absolute_size(probe.get(), double{kProbePixels} * PANGO_SCALE);
  PangoOwned<PangoFont> font(pango_context_load_font(m_smooth.get(), probe.get()));
  if (font == nullptr) return lineHeight;
  PangoOwned<PangoFontMetrics> metrics(pango_font_get_metrics(font.get(), nullptr));
  const int units =
      pango_font_metrics_get_ascent(metrics.get()) + pango_font_metrics_get_descent(metrics.get());
  return units <= 0 ? lineHeight : static_cast<double>(lineHeight) * kProbePixels * PANGO_SCALE / units;
}

const PangoFonts::Entry& PangoFonts::Resolve(const Font& font) {
  if (const Entry* known = m_entries.Find([&font](const Entry& e) { return e.font == font; })) return *known;
  Entry entry{font, Describe(font), 0};
  const double em = font.height < 0 ? -static_cast<double>(font.height)
                                    : EmOfLineHeight(entry.description.get(),
                                                     font.height == 0 ? kDefaultLineHeight : font.height);
  entry.emPixels = std::clamp(em, 1.0, double{kMaxEmPixels});
  pango_font_description_set_absolute_size(entry.description.get(), entry.emPixels * PANGO_SCALE);
  return m_entries.Insert(std::move(entry));
}

}  // namespace vrx::drawing
