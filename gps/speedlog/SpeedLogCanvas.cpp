#include "gps/speedlog/SpeedLogCanvas.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "foundation/number/Saturate.h"

namespace vrx::gps {
namespace {

constexpr std::int32_t kFadedColumns = 64;  // at either end
constexpr std::int32_t kFadePerColumn = 4;
constexpr std::int32_t kMarkMargin = 5;  // pixels of a 1920 by 1080 frame

}  // namespace

std::int32_t ScaledLength(std::int32_t length, double scale) {
  return Saturate<std::int32_t>(std::min(length * std::max(scale, 1.0), length * scale + 1));
}

void PaintSpeedLogMark(drawing::Point place, const PainterPicture& picture, double scale,
                       overlay::PainterSurface& surface) {
  if (!picture) return;
  const std::int32_t width = ScaledLength(picture->width, scale),
                     height = ScaledLength(picture->height, scale);
  const std::int32_t y = std::max({place.y, ScaledLength(kMarkMargin, scale), height / 2});
  surface.Overlay(picture, drawing::Moved({0, 0, width, height}, std::int64_t{place.x} - width / 2,
                                          std::int64_t{y} - height / 2));
}

bool SpeedLogCanvas::Prepare(drawing::Size size) {
  if (m_pixmap.width == size.width && m_pixmap.height == size.height) {
    std::memset(m_pixmap.data, 0, m_pixmap.size);
    return true;
  }
  if (m_pixmap.Allocate(size.width, size.height) != XpOk) return false;
  m_fade.resize(static_cast<std::size_t>(size.width));
  const std::int32_t half = size.width / 2;
  for (std::int32_t x = 0; x < size.width; ++x) {
    const std::int32_t outside = std::max(0, std::abs(x - half) - (half - kFadedColumns));
    m_fade[static_cast<std::size_t>(x)] = std::max(0, 255 - kFadePerColumn * outside);
  }
  return true;
}

const XpPixmap32* SpeedLogCanvas::Paint(const SpeedLogScene& scene, const SpeedLogLook& look,
                                        const XpString& fontName, bool hasLabels,
                                        overlay::PainterSurface& surface) {
  const bool isKept =
      m_isDrawn && m_scene == scene && m_look == look && m_fontName == fontName && m_hasLabels == hasLabels;
  if (isKept) return &m_pixmap;
  m_isDrawn = false;
  if (!Prepare(scene.canvas)) return nullptr;
  overlay::PainterSurface canvas(m_pixmap, surface.GetText(), surface.GetRenditions());
  PaintSpeedLogScale(scene, look, StyleOfLabels(scene, fontName, surface.GetText()), hasLabels, m_fade,
                     canvas);
  PaintSpeedLogCurve(scene, look, m_fade, canvas);
  if (scene.position) PaintSpeedLogMark(*scene.position, look.positionMarker, scene.scale, canvas);
  m_scene = scene;
  m_look = look;
  m_fontName = fontName;
  m_hasLabels = hasLabels;
  m_isDrawn = true;
  return &m_pixmap;
}

}  // namespace vrx::gps
