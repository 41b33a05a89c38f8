#include "overlay/tennis/TennisPanel.h"

#include "overlay/tennis/DigitStrip.h"

namespace vrx::overlay {
namespace {

using namespace drawing;

constexpr std::uint32_t kWrapped = DT_NOPREFIX | DT_WORDBREAK;
constexpr std::uint32_t kPlain = DT_NOPREFIX;

constexpr ColorRef kSeparatorColor = 0xFFFFFF;
constexpr std::int32_t kSeparatorMargin = 14;  // above and below
constexpr std::int32_t kUnitGap = 10;          // after the digits
constexpr std::int32_t kDateTop = 10;          // below the panel's upper edge
constexpr std::int32_t kDateGap = 20;          // between date and time
constexpr std::int64_t kTimeLineTotal = 10000;
constexpr std::int32_t kHalfTimeTop = 14;

class PanelDrawing {
 public:
  PanelDrawing(const KVSTennisMetaPainterLayoutBase& layout, PainterSurface& surface)
      : m_layout(layout), m_surface(surface) {}

  void DrawName(const XpString& name) {
    const Rect rect = m_layout.GetNameRect();
    const auto width = static_cast<std::int32_t>(rect.Width());
    const Font* font = &m_layout.GetNameFont();
    Size size = Measure(name, *font, width, kWrapped);
    Rect place = AtFoot(rect, size, rect.bottom);
    if (Measure(name, *font, width, kPlain | DT_SINGLELINE).height < size.height) {
      font = &m_layout.GetSmallNameFont();
      size = Measure(name, *font, width, kWrapped);
      place = AtFoot(place, size, rect.bottom);
    }
    m_surface.Text(name.AsView(), *font, m_layout.GetNameColor(), place, kWrapped | DT_CENTER);
  }

  void DrawSeparator(const Rect& counter) {
    const std::int32_t margin = m_layout.ScaleY(kSeparatorMargin);
    m_surface.VerticalLine({counter.left, counter.top + margin}, counter.bottom - margin, kSeparatorColor);
  }

  void DrawLabel(const Rect& counter, const XpString& label) {
    const Rect rect = m_layout.GetLabelRect();
    const Font& font = m_layout.GetLabelFont();
    const Size size = Measure(label, font, static_cast<std::int32_t>(rect.Width()), kWrapped);
    const std::int32_t left = counter.left + LeftPadOf(m_layout);
    const std::int32_t top = rect.top + static_cast<std::int32_t>((rect.Height() - size.height) / 2);
    m_surface.Text(label.AsView(), font, m_layout.GetValueColor(),
                   {left, top, left + size.width, top + size.height}, kWrapped);
  }

  void DrawUnit(const Rect& counter, const XpString& unit, std::int32_t digitsWidth) {
    const Font& font = m_layout.GetUnitFont();
    const Size size = Measure(unit, font, static_cast<std::int32_t>(counter.Width()), kPlain);
    const std::int32_t left = counter.left + LeftPadOf(m_layout) + digitsWidth + m_layout.ScaleX(kUnitGap);
    const std::int32_t bottom = counter.bottom - m_layout.GetUnitMargin();
    m_surface.Text(unit.AsView(), font, m_layout.GetValueColor(),
                   {left, bottom - size.height, left + size.width, bottom}, kPlain);
  }

  void DrawDates(const XpString& date, const XpString& span) {
    const std::int32_t left = DrawDate(date, m_layout.GetDateLeftRect().left, kPlain);
    DrawDate(span, left + m_layout.ScaleX(kDateGap), kPlain | DT_SINGLELINE);
  }

 private:
  Size Measure(const XpString& text, const Font& font, std::int32_t width, std::uint32_t format) {
    return m_surface.GetText().Measure(text.AsView(), font, width, format);
  }

  /// A place of `size` in the middle of `rect`, above `bottom`.
  static Rect AtFoot(const Rect& rect, const Size& size, std::int32_t bottom) {
    const std::int32_t left = rect.left + static_cast<std::int32_t>((rect.Width() - size.width) / 2);
    return {left, bottom - size.height, left + size.width, bottom};
  }

  /// Gives the text's right edge.
  std::int32_t DrawDate(const XpString& text, std::int32_t left, std::uint32_t format) {
    const Font& font = m_layout.GetLabelFont();
    const Size size = Measure(text, font, 0, format);
    const std::int32_t top = m_layout.GetDateRect().top + m_layout.ScaleY(kDateTop);
    const Rect place{left, top, left + size.width, top + size.height};
    m_surface.Text(text.AsView(), font, m_layout.GetDateColor(), place, format | DT_CENTER);
    return place.right;
  }

  const KVSTennisMetaPainterLayoutBase& m_layout;
  PainterSurface& m_surface;
};

}  // namespace

std::array<Rect, kTennisCounters> CounterRects(const KVSTennisMetaPainterLayoutBase& layout) {
  return {layout.GetCountRect(), layout.GetSecondSpeedRect(), layout.GetThirdSpeedRect()};
}

void DrawTennisPanel(const KVSTennisMetaPainterLayoutBase& layout, const TennisMetaResource& resources,
                     const TennisTexts& texts, const XpString& name, std::int32_t threeWidth,
                     PainterSurface& surface) {
  PanelDrawing panel(layout, surface);
  surface.Overlay(layout.GetShade(), layout.GetPanelRect());
  if (layout.HasTimeLine()) panel.DrawName(name);
  const auto counters = CounterRects(layout);
  for (std::size_t i = 0; i < counters.size(); ++i) {
    if (layout.HasSeparator()) panel.DrawSeparator(counters[i]);
    panel.DrawLabel(counters[i], texts.labels[i]);
    if (i > 0) panel.DrawUnit(counters[i], texts.unit, threeWidth);
  }
  if (!layout.HasTimeLine()) return;
  surface.Overlay(resources.timeLine, layout.GetTimeLineRect());
  surface.Overlay(resources.timeTop, layout.GetTimeMarkerRect(0, kTimeLineTotal, kHalfTimeTop));
  panel.DrawDates(texts.date, texts.span);
}

}  // namespace vrx::overlay
