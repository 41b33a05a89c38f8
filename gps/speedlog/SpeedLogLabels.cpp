#include "gps/speedlog/SpeedLogLabels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "foundation/number/Saturate.h"
#include "foundation/text/XpFormat.h"
#include "imaging/pixmap/XpPixmapOverlay.h"

namespace vrx::gps {
namespace {

using namespace drawing;

constexpr std::int32_t kLabelSeconds = 60;
constexpr std::int32_t kFontHeight = 24;  // this and the next: pixels of a 1920 by 1080 frame
constexpr std::int32_t kBelowLabel = 3, kLabelShift = 8;
constexpr std::int32_t kStrongest = 255;

}  // namespace

SpeedLogLabelStyle StyleOfLabels(const SpeedLogScene& scene, const XpString& fontName,
                                 TextRenderer& renderer) {
  SpeedLogLabelStyle style;
  style.font = {.face = fontName, .height = -Saturate<std::int32_t>(kFontHeight * scene.scale)};
  style.size = renderer.Measure(u"00:00:00", style.font, scene.canvas.width, kSpeedLogLabelFormat);
  const auto height =
      static_cast<double>(Saturate<std::int32_t>(style.size.height + kBelowLabel * scene.scale));
  style.top = Saturate<std::int32_t>(scene.canvas.height - height + kLabelShift * scene.scale);
  return style;
}

void ForEachTick(const SpeedLogScene& scene, std::int32_t halfLabel,
                 const std::function<void(std::int32_t x, std::int64_t second)>& visit) {
  const double step = scene.pixelsPerSecond * scene.scale;
  if (!(step > 0)) return;
  double x = scene.scale * scene.tickOffset;
  std::int64_t second = scene.firstSecond;
  while (x > 0 && second > 0) {
    --second;
    x -= step;
  }
  const std::int64_t end = std::int64_t{scene.canvas.width} + halfLabel;
  for (; Saturate<std::int32_t>(x) < end; ++second, x += step) visit(Saturate<std::int32_t>(x), second);
}

bool HasLabel(std::int64_t second) { return second % kLabelSeconds == 0; }

XpString LabelText(std::int64_t second) {
  XpString text;
  XpFormat(text, u"%02I64d:%02d:%02d", second / 3600, static_cast<std::int32_t>(second / 60 % 60),
           static_cast<std::int32_t>(second % 60));
  return text;
}

Rect PlaceOfLabel(std::int32_t x, const SpeedLogScene& scene, const SpeedLogLabelStyle& style) {
  const std::int32_t left = x - style.size.width / 2;
  return {left, style.top, left + style.size.width, scene.canvas.height};
}

void SharpSpeedLogLabels::Show(const SpeedLogScene& scene, const XpString& fontName, ColorRef color,
                               const EdgeFade& fade, const Rect& rect, overlay::PainterSurface& surface) {
  const Size size{Saturated(rect.Width()), Saturated(rect.Height())};
  const TextScale scale{static_cast<double>(size.width) / scene.canvas.width,
                        static_cast<double>(size.height) / scene.canvas.height, 0, 0};
  const bool isKept = m_isDrawn && m_pixmap.width == size.width && m_pixmap.height == size.height &&
                      m_scene == scene && m_fontName == fontName && m_color == color;
  if (!isKept) {
    m_isDrawn = false;
    if (!Prepare(size)) return;
    m_scene = scene;
    m_fontName = fontName;
    m_color = color;
    Paint(scale, surface.GetText());
    Fade(fade, Saturate<std::int32_t>(std::floor(scene.BandBottom() * scale.yFactor)));
    m_isDrawn = true;
  }
  OverlaySmoothPixmap(surface.GetTarget(), rect.left, rect.top, size.width, size.height, m_pixmap, size.width,
                      size.height);
}

bool SharpSpeedLogLabels::Prepare(Size size) {
  if (m_pixmap.width != size.width || m_pixmap.height != size.height) {
    return m_pixmap.Allocate(size.width, size.height) == XpOk;
  }
  std::memset(m_pixmap.data, 0, m_pixmap.size);
  return true;
}

void SharpSpeedLogLabels::Paint(const TextScale& scale, TextRenderer& renderer) {
  const SpeedLogLabelStyle style = StyleOfLabels(m_scene, m_fontName, renderer);
  const Canvas canvas(m_pixmap.GetBitmapHandle());
  ForEachTick(m_scene, style.size.width / 2, [&](std::int32_t x, std::int64_t second) {
    if (!HasLabel(second)) return;
    const Rect place = PlaceOfLabel(x, m_scene, style);
    renderer.DrawScaled(canvas, {LabelText(second).AsView(), style.font, place, kSpeedLogLabelFormat, scale},
                        {.color = m_color}, ScaledOutwards(place, scale));
  });
}

/// From the first row below the band on, as on the canvas.
void SharpSpeedLogLabels::Fade(const EdgeFade& fade, std::int32_t firstRow) {
  const auto columns = static_cast<std::int64_t>(fade.size());
  const XpPlaneBase& plane = *m_pixmap.GetPlane(0);
  for (std::int32_t y = std::max(firstRow, 0); y < m_pixmap.height; ++y) {
    unsigned char* row = plane.Row(y);
    for (std::int32_t x = 0; x < m_pixmap.width; ++x) {
      const auto column = static_cast<std::size_t>(x * columns / m_pixmap.width);
      unsigned char& alpha = row[std::int64_t{x} * 4 + 3];
      alpha = static_cast<unsigned char>(alpha * fade[column] / kStrongest);
    }
  }
}

}  // namespace vrx::gps
