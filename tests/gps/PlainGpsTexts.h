// The texts of the GPS overlay in the plain way: each box worked out on its own and filled on the frame. The
// painter has to give the same pixels.
#pragma once

#include "drawing/BoxTextRenderer.h"
#include "gps/painter/GpsTextFields.h"

namespace vrx::gps {

class PlainGpsTexts {
 public:
  using Rect = drawing::Rect;
  using Size = drawing::Size;

  PlainGpsTexts(std::int32_t scenario, bool isStacked, std::int32_t width, std::int32_t height)
      : m_look(MakeTemplateScenario(scenario, width, height, u"")),
        m_isStacked(isStacked),
        m_hasShadow(scenario == 1 || scenario == 4),
        m_width(width),
        m_height(height),
        m_date(isStacked ? Rect{1520, 540, 1920, 675} : Rect{506, 910, 766, 960}),
        m_clock(isStacked ? Rect{1520, 675, 1920, 810} : Rect{766, 910, 926, 960}) {
    m_look->SetSize(width, height);
  }

  void Draw(const GpsLabels& labels, const GpsReadouts& says, const XpString& unit, XpPixmap32& target) {
    m_canvas.Bind(target.GetBitmapHandle());
    DrawSpeed(labels.speed, says.speed, unit);
    const Rect date = Scaled(m_date);
    const std::int32_t more = Beside(date, says.date) - (date.right - date.left) + 2;
    if (more > 2) {
      m_date.right += more * 1920 / m_width;
      m_clock.left += more * 1920 / m_width;
      m_clock.right += more * 1920 / m_width;
    }
    Beside(Scaled(m_clock), says.clock);
    Row(m_isStacked ? Rect{1520, 810, 1920, 945} : Rect{786, 960, 1106, 1080}, labels.elapsed, says.elapsed);
    Row(m_isStacked ? Rect{1520, 945, 1920, 1080} : Rect{466, 960, 786, 1080}, labels.total, says.total);
    Row(m_isStacked ? Rect{0, 478, 400, 613} : Rect{1106, 960, 1426, 1080}, labels.average, says.average);
    Row(m_isStacked ? Rect{0, 343, 400, 478} : Rect{1426, 960, 1746, 1080}, labels.distance, says.distance);
    if (!m_isStacked) return;
    const auto& font = m_look->GetTitleFont();
    const Size size = SizeOf(labels.title, font);
    const std::int32_t left = Scaled({1520, 0, 0, 0}).left + Px(30), bottom = m_height * 55 / 1080;
    Text(labels.title, font, 0xB3B3B3, {left, bottom - size.height, left + size.width, bottom});
  }

 private:
  std::int32_t Px(std::int32_t length) const { return m_width * length / 1920; }
  Rect Scaled(const Rect& r) const {
    return {Px(r.left), m_height * r.top / 1080, Px(r.right), m_height * r.bottom / 1080};
  }
  Size SizeOf(const XpString& text, const drawing::Font& font) {
    return m_boxes.Measure(text.AsView(), font, 0, drawing::DT_NOPREFIX);
  }
  void Text(const XpString& text, const drawing::Font& font, drawing::ColorRef color, const Rect& rect) {
    m_boxes.Draw(m_canvas, text.AsView(), font, color, rect, drawing::DT_NOPREFIX);
  }
  void Raised(const XpString& text, const drawing::Font& font, drawing::ColorRef color, Rect r) {
    if (m_hasShadow) {
      Text(text, font, 0x080808, r);
      r = {r.left - 1, r.top + 1, r.right - 1, r.bottom + 1};
    }
    Text(text, font, color, r);
  }

  void DrawSpeed(const XpString& label, const XpString& value, const XpString& unit) {
    Text(label, m_look->GetSpeedLabelFont(), 0xCCCCCC, m_look->GetSpeedLabelRect());
    const Rect unitRect = m_look->GetSpeedUnitRect();
    const Size v = SizeOf(value, m_look->GetSpeedValueFont()), u = SizeOf(unit, m_look->GetSpeedUnitFont());
    const std::int32_t right = m_look->GetSpeedValueRect().right, unitBottom = unitRect.top + u.height;
    const std::int32_t bottom = unitBottom + (v.height - u.height) / 6;
    Text(value, m_look->GetSpeedValueFont(), 0xFEFEFE,
         {right - v.width - Px(10), bottom - v.height, right, bottom});
    Text(unit, m_look->GetSpeedUnitFont(), 0xFEFEFE,
         {unitRect.left, unitRect.top, unitRect.left + u.width + Px(10), unitBottom});
  }
  /// Returns the width of the text.
  std::int32_t Beside(const Rect& r, const XpString& value) {
    const Size size = SizeOf(value, m_look->GetRowValueFont());
    Raised(value, m_look->GetRowValueFont(), 0xFEFEFE,
           {r.left - Px(15) - Px(10), r.top, r.left + size.width - Px(15), r.top + size.height});
    return size.width;
  }
  void Row(const Rect& place, const XpString& label, const XpString& value) {
    const Rect r = Scaled(place);
    const std::int32_t margin = Px(15), labelHeight = SizeOf(label, m_look->GetRowLabelFont()).height;
    Raised(label, m_look->GetRowLabelFont(), 0xB3B3B3,
           {r.left + margin, r.top + margin, r.right - margin, r.top + margin + labelHeight});
    const Size size = SizeOf(value, m_look->GetRowValueFont());
    Raised(value, m_look->GetRowValueFont(), 0xFEFEFE,
           {r.right - size.width - margin - Px(10), r.bottom - size.height - margin, r.right - margin,
            r.bottom - margin});
  }

  drawing::BoxTextRenderer m_boxes;
  drawing::Canvas m_canvas;
  std::unique_ptr<KorvoTemplateScenario> m_look;
  bool m_isStacked, m_hasShadow;
  std::int32_t m_width, m_height;
  Rect m_date, m_clock;
};

}  // namespace vrx::gps
