#include "overlay/tennis/DigitStrip.h"

#include <cstdlib>
#include <cstring>

#include "foundation/text/XpFormat.h"
#include "imaging/pixmap/XpPixelVector.h"
#include "imaging/pixmap/XpPixmapOverlay.h"

namespace vrx::overlay {
namespace {

using namespace drawing;
using Layout = KVSTennisMetaPainterLayoutBase;

constexpr std::uint32_t kMeasureFormat = DT_NOPREFIX | DT_VCENTER;
constexpr std::uint32_t kDigitFormat = DT_NOPREFIX | DT_BOTTOM | DT_RIGHT;
constexpr std::uint32_t kSignFormat = DT_NOPREFIX | DT_VCENTER | DT_RIGHT;
constexpr std::int32_t kBelowRect = 10;  // that the digits reach below a counter's rectangle
constexpr char16_t kWidestDigits[] = u"999";

std::int32_t MeasureGap(TextRenderer& text, const Layout& layout, const DigitMetrics& digits) {
  XpPixmap32 probe;
  if (probe.Allocate(digits.threeWidth, digits.lineHeight) != XpOk) return 0;
  Font font = layout.GetDigitFont();
  font.smooth = false;  // a row that is touched in part is no ink
  text.Draw(Canvas(probe.GetBitmapHandle()), kWidestDigits, font, layout.GetValueColor(),
            {0, 0, probe.width, probe.height}, kDigitFormat);
  const XpPlaneBase& plane = *probe.GetPlane(0);
  std::int32_t y = probe.height - 1;
  while (y >= 0 && pixels::AreClear(plane.Row(y), static_cast<std::size_t>(probe.width), ~0u)) --y;
  return y < 0 ? 0 : probe.height - y;
}

/// Draws the lines of a strip.
class StripDrawing {
 public:
  StripDrawing(XpPixmap32& strip, const DigitMetrics& digits, const Layout& layout, TextRenderer& text)
      : m_canvas(strip.GetBitmapHandle()),
        m_width(strip.width),
        m_digits(digits),
        m_layout(layout),
        m_text(text) {}

  void DrawSpeed(std::int32_t value, std::int32_t top) {
    XpString text;
    XpFormat(text, u"%3d", value);
    DrawDigits(text, top);
  }

  void DrawCount(std::int32_t value, std::int32_t top) {
    XpString text;
    XpFormat(text, u"%I64d", std::abs(std::int64_t{value}));
    const std::int32_t digitsWidth =
        m_text.Measure(text.AsView(), m_layout.GetDigitFont(), m_width, kMeasureFormat).width;
    const std::int32_t right = m_width - digitsWidth;
    const std::int32_t signTop = top + (m_digits.lineHeight - m_digits.signHeight) / 2;
    const char16_t* sign = value > 0 ? u"+" : value < 0 ? u"-" : u"";
    m_text.Draw(m_canvas, sign, m_layout.GetSignFont(), m_layout.GetValueColor(),
                {right - m_digits.signWidth, signTop, right, signTop + m_digits.signHeight}, kSignFormat);
    DrawDigits(text, top);
  }

 private:
  void DrawDigits(const XpString& digits, std::int32_t top) {
    m_text.Draw(m_canvas, digits.AsView(), m_layout.GetDigitFont(), m_layout.GetValueColor(),
                {0, top, m_width, top + m_digits.lineHeight}, kDigitFormat);
  }

  Canvas m_canvas;
  std::int32_t m_width;
  const DigitMetrics& m_digits;
  const Layout& m_layout;
  TextRenderer& m_text;
};

}  // namespace

DigitMetrics MeasureDigits(TextRenderer& text, const Layout& layout) {
  const Size sign = text.Measure(u"+", layout.GetSignFont(), 0, kMeasureFormat);
  const Size three = text.Measure(kWidestDigits, layout.GetDigitFont(), 0, kMeasureFormat);
  DigitMetrics digits{.twoWidth = text.Measure(u"99", layout.GetDigitFont(), 0, kMeasureFormat).width,
                      .threeWidth = three.width,
                      .signWidth = sign.width,
                      .signHeight = sign.height,
                      .lineHeight = three.height};
  digits.gap = MeasureGap(text, layout, digits);
  return digits;
}

std::int32_t LeftPadOf(const Layout& layout) { return layout.ScaleX(layout.HasSeparator() ? 16 : 10); }

StripPlace PlaceStrip(CounterKind kind, const DigitMetrics& digits, const Layout& layout, const Rect& rect) {
  const std::int32_t height = digits.lineHeight;
  const std::int32_t lineTop = rect.bottom + layout.ScaleY(kBelowRect) - height;
  const std::int32_t left = rect.left + LeftPadOf(layout);
  if (kind == CounterKind::Count) {
    const std::int32_t margin = digits.gap / 2;
    const std::int32_t stripHeight = 2 * height - digits.gap;
    return {.left = left + 2 * digits.signWidth,
            .top = lineTop + margin,
            .width = digits.twoWidth + digits.signWidth,
            .height = stripHeight,
            .windowHeight = height - digits.gap,
            .firstRow = stripHeight - height + margin};
  }
  // The gap of a speed counts one row more; without ink there is none.
  const double ratio = digits.gap == 0 ? 0.0 : (digits.gap + 1.0) / height;
  const auto margin = static_cast<std::int32_t>(height * ratio * 0.5);
  const std::int32_t stripHeight = 2 * (height - margin);
  return {.left = left,
          .top = lineTop + margin,
          .width = digits.threeWidth,
          .height = stripHeight,
          .windowHeight = height - 2 * margin,
          .firstRow = stripHeight - height + margin};
}

bool DigitStrip::Prepare(const CounterRoll& roll, const DigitMetrics& digits, const Layout& layout,
                         const StripPlace& place, TextRenderer& text) {
  const bool hasSize = m_strip.width == place.width && m_strip.height == place.height;
  if (m_isDrawn && hasSize && m_upper == roll.upper && m_lower == roll.lower) return true;
  m_isDrawn = false;
  if (hasSize) {
    std::memset(m_strip.data, 0, m_strip.size);
  } else if (m_strip.Allocate(place.width, place.height) != XpOk) {
    return false;
  }
  StripDrawing drawing(m_strip, digits, layout, text);
  const auto draw = m_kind == CounterKind::Count ? &StripDrawing::DrawCount : &StripDrawing::DrawSpeed;
  (drawing.*draw)(roll.lower, place.height - digits.lineHeight);
  (drawing.*draw)(roll.upper, 0);
  m_upper = roll.upper;
  m_lower = roll.lower;
  m_isDrawn = true;
  return true;
}

void DigitStrip::Draw(const CounterRoll& roll, const DigitMetrics& digits, const Layout& layout,
                      const Rect& rect, PainterSurface& surface) {
  const StripPlace place = PlaceStrip(m_kind, digits, layout, rect);
  if (!Prepare(roll, digits, layout, place, surface.GetText())) return;
  OverlaySmoothPixmapBlock(surface.GetTarget(), place.left, place.top, place.width, place.windowHeight,
                           m_strip, place.firstRow - roll.offset);
  surface.Touch({place.left, place.top, place.left + place.width, place.top + place.windowHeight});
}

}  // namespace vrx::overlay
