#include "gps/painter/GpsTextFields.h"

namespace vrx::gps {
namespace {

using drawing::ColorRef;
using drawing::Font;
using drawing::Rect;
using drawing::Saturated;
using drawing::Size;
using overlay::TextAt;

constexpr std::uint32_t kPlain = drawing::DT_NOPREFIX;
constexpr ColorRef kShadowColor = drawing::MakeColor(8, 8, 8);

/// Of a frame of 1920 by 1080.
constexpr std::int64_t kSpeedGap = 10;
constexpr std::int64_t kMargin = 15;
constexpr std::int64_t kInset = 10;
constexpr std::int64_t kTitleLeft = 30;
constexpr std::int64_t kTitleBottom = 55;
constexpr std::int32_t kDateGrowth = 2;  // pixels of the frame, beyond what the date needs

class TextFields {
 public:
  TextFields(KorvoTemplate& look, overlay::PainterSurface& surface)
      : m_scenario(*look.scenario), m_structure(*look.structure), m_surface(surface) {}

  /// Value and unit side by side; the larger digits stand a sixth of the difference lower.
  void DrawSpeed(const XpString& label, const XpString& value, const XpString& unit) {
    Draw(label, m_scenario.GetSpeedLabelFont(), m_scenario.GetSpeedLabelColor(),
         m_scenario.GetSpeedLabelRect());
    const ColorRef color = m_scenario.GetSpeedValueColor();
    const Rect valueRect = m_scenario.GetSpeedValueRect(), unitRect = m_scenario.GetSpeedUnitRect();
    const Size valueSize = Measure(value, m_scenario.GetSpeedValueFont(), valueRect);
    const Size unitSize = Measure(unit, m_scenario.GetSpeedUnitFont(), unitRect);
    const std::int64_t gap = m_structure.ScaleX(kSpeedGap);
    const std::int64_t unitBottom = std::int64_t{unitRect.top} + unitSize.height;
    const std::int64_t bottom = unitBottom + (std::int64_t{valueSize.height} - unitSize.height) / 6;
    Draw(value, m_scenario.GetSpeedValueFont(), color,
         Box(valueRect.right - valueSize.width - gap, bottom - valueSize.height, valueRect.right, bottom));
    Draw(unit, m_scenario.GetSpeedUnitFont(), color,
         Box(unitRect.left, unitRect.top, unitRect.left + unitSize.width + gap, unitBottom));
  }

  void DrawDateAndClock(const XpString& date, const XpString& clock) {
    const Rect rect = m_structure.GetDateRect();
    const std::int64_t tooWide = DrawValue(date, rect) - rect.Width();
    if (tooWide > 0) {
      const std::int32_t growth = Saturated(tooWide + kDateGrowth);
      m_structure.GrowDateRect(0, growth, 0, 0);
      m_structure.GrowClockRect(growth, growth, 0, 0);
    }
    DrawValue(clock, m_structure.GetClockRect());
  }

  /// The label in the upper left corner, the value in the lower right.
  void DrawRow(const Rect& rect, const XpString& label, const XpString& value) {
    const std::int64_t margin = m_structure.ScaleX(kMargin), inset = m_structure.ScaleX(kInset);
    const Size labelSize = Measure(label, m_scenario.GetRowLabelFont(), rect);
    DrawShadowed(label, m_scenario.GetRowLabelFont(), m_scenario.GetRowLabelColor(),
                 Box(rect.left + margin, rect.top + margin, rect.right - margin,
                     rect.top + margin + labelSize.height));
    const Size size = Measure(value, m_scenario.GetRowValueFont(), rect);
    DrawShadowed(value, m_scenario.GetRowValueFont(), m_scenario.GetRowValueColor(),
                 Box(rect.right - size.width - margin - inset, rect.bottom - size.height - margin,
                     rect.right - margin, rect.bottom - margin));
  }

  void DrawTitle(const XpString& title) {
    const Rect map = m_structure.GetMapRect();
    const Size size = Measure(title, m_scenario.GetTitleFont(), map);
    const std::int64_t left = map.left + m_structure.ScaleX(kTitleLeft);
    const std::int64_t bottom = m_structure.ScaleY(kTitleBottom);
    Draw(title, m_scenario.GetTitleFont(), m_scenario.GetTitleColor(),
         Box(left, bottom - size.height, left + size.width, bottom));
  }

 private:
  static Rect Box(std::int64_t left, std::int64_t top, std::int64_t right, std::int64_t bottom) {
    return {Saturated(left), Saturated(top), Saturated(right), Saturated(bottom)};
  }

  Size Measure(const XpString& text, const Font& font, const Rect& rect) {
    return m_surface.GetText().Measure(text.AsView(), font, Saturated(rect.Width()), kPlain);
  }

  void Draw(const XpString& text, const Font& font, ColorRef color, const Rect& rect) {
    m_surface.Text(text.AsView(), font, color, rect, kPlain);
  }

  void DrawShadowed(const XpString& text, const Font& font, ColorRef color, Rect rect) {
    if (m_scenario.HasTextShadow()) {
      Draw(text, font, kShadowColor, rect);
      rect = drawing::Moved(rect, -1, 1);
    }
    Draw(text, font, color, rect);
  }

  /// Returns the width of the text.
  std::int32_t DrawValue(const XpString& value, const Rect& rect) {
    const std::int64_t margin = m_structure.ScaleX(kMargin), inset = m_structure.ScaleX(kInset);
    const Size size = Measure(value, m_scenario.GetRowValueFont(), rect);
    DrawShadowed(value, m_scenario.GetRowValueFont(), m_scenario.GetRowValueColor(),
                 Box(rect.left - margin - inset, rect.top, rect.left + size.width - margin,
                     std::int64_t{rect.top} + size.height));
    return size.width;
  }

  const KorvoTemplateScenario& m_scenario;
  KorvoTemplateStructure& m_structure;
  overlay::PainterSurface& m_surface;
};

}  // namespace

GpsLabels GpsLabelsFrom(const overlay::TextTable& texts) {
  return {.speed = TextAt(texts, 6),
          .elapsed = TextAt(texts, 8),
          .total = TextAt(texts, 9),
          .average = TextAt(texts, 11),
          .distance = TextAt(texts, 12),
          .title = TextAt(texts, 13)};
}

void DrawGpsTextFields(KorvoTemplate& look, const GpsLabels& labels, const GpsReadouts& readouts,
                       const XpString& speedUnit, overlay::PainterSurface& surface) {
  const KorvoTemplateStructure& structure = *look.structure;
  TextFields fields(look, surface);
  fields.DrawSpeed(labels.speed, readouts.speed, speedUnit);
  fields.DrawDateAndClock(readouts.date, readouts.clock);
  fields.DrawRow(structure.GetElapsedRect(), labels.elapsed, readouts.elapsed);
  fields.DrawRow(structure.GetTotalRect(), labels.total, readouts.total);
  fields.DrawRow(structure.GetAverageRect(), labels.average, readouts.average);
  fields.DrawRow(structure.GetDistanceRect(), labels.distance, readouts.distance);
  if (structure.IsTopBottom()) fields.DrawTitle(labels.title);
}

}  // namespace vrx::gps
