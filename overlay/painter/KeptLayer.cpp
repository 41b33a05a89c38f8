#include "overlay/painter/KeptLayer.h"

#include <cstring>

#include "imaging/pixmap/XpPixelVector.h"

namespace vrx::overlay {
namespace {

using drawing::Rect;

std::size_t RowLength(const Rect& rect) { return static_cast<std::size_t>(rect.Width()); }

unsigned char* At(const XpPixmap32& pixmap, std::int32_t x, std::int32_t y) {
  return pixmap.GetPlane(0)->Row(y) + std::int64_t{x} * 4;
}

bool IsClear(const XpPixmap32& pixmap, const Rect& rect) {
  for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
    if (!pixels::AreClear(At(pixmap, rect.left, y), RowLength(rect), ~0u)) return false;
  }
  return true;
}

void CopyRect(XpPixmap32& to, const XpPixmap32& from, const Rect& rect) {
  for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
    std::memcpy(At(to, rect.left, y), At(from, rect.left, y), RowLength(rect) * 4);
  }
}

void ClearRect(XpPixmap32& pixmap, const Rect& rect) {
  for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
    std::memset(At(pixmap, rect.left, y), 0, RowLength(rect) * 4);
  }
}

}  // namespace

bool KeptLayer::Prepare(PainterSurface& surface, const std::function<void(PainterSurface&)>& draw) {
  const XpPixmap32& target = surface.GetTarget();
  const bool hasSize = m_picture.width == target.width && m_picture.height == target.height;
  if (m_isDrawn && hasSize) return true;
  m_isDrawn = false;
  if (hasSize) {
    ClearRect(m_picture, m_rect);
  } else if (m_picture.Allocate(target.width, target.height) != XpOk) {
    m_rect = {};
    return false;
  }
  PainterSurface kept(m_picture, surface.GetText(), surface.GetRenditions());
  draw(kept);
  m_rect = kept.GetTouched();
  m_isDrawn = true;
  return true;
}

void KeptLayer::Show(PainterSurface& surface, const std::function<void(PainterSurface&)>& draw) {
  // What was composed on a clear ground can be copied to a clear ground only.
  if (Prepare(surface, draw) && IsClear(surface.GetTarget(), m_rect)) {
    CopyRect(surface.GetTarget(), m_picture, m_rect);
    surface.Touch(m_rect);
  } else {
    draw(surface);
  }
}

}  // namespace vrx::overlay
