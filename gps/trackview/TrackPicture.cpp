#include "gps/trackview/TrackPicture.h"

#include <algorithm>
#include <span>

#include "imaging/pixmap/XpPlane.h"

namespace vrx::gps {
namespace {

using drawing::ColorRef;
using drawing::MakeColor;
using drawing::Point;
using drawing::Rect;
using overlay::PainterSurface;

// Of the dots between clips. The grey is found again when the shadow gets its alpha.
constexpr ColorRef kWhite = MakeColor(0xFE, 0xFE, 0xFE);
constexpr ColorRef kOrange = MakeColor(0xFF, 0x73, 0x00);
constexpr unsigned char kShadowGrey = 0x33;
constexpr ColorRef kGrey = MakeColor(kShadowGrey, kShadowGrey, kShadowGrey);
constexpr unsigned char kShadowAlpha = 0x66;
constexpr std::int64_t kNominalWidth = 1920;
constexpr std::int64_t kNominalHeight = 1080;

/// Draws lines with one pen and reports where.
class LineDrawer {
 public:
  LineDrawer(PainterSurface& surface, const drawing::Pen& pen) : m_surface(surface), m_pen(pen) {}

  void Polyline(std::span<const Point> points) {
    for (std::size_t i = 1; i < points.size(); ++i) Line(points[i - 1], points[i]);
  }
  void Ahead(const TrackWalk& walk) {
    if (walk.isJoined) Line(walk.walked.back(), walk.ahead.front());
    Polyline(walk.ahead);
  }
  /// The white lines never leave the frame at the left or at the top.
  void HoldInFrame() { m_least = 0; }

 private:
  void Line(Point from, Point to) {
    from = {std::max(from.x, m_least), std::max(from.y, m_least)};
    to = {std::max(to.x, m_least), std::max(to.y, m_least)};
    m_surface.GetCanvas().DrawLine(from, to, m_pen);
    const std::int64_t reach = std::int64_t{m_pen.width} / 2 + 1;
    m_surface.Touch({drawing::Saturated(std::min(from.x, to.x) - reach),
                     drawing::Saturated(std::min(from.y, to.y) - reach),
                     drawing::Saturated(std::max(from.x, to.x) + reach),
                     drawing::Saturated(std::max(from.y, to.y) + reach)});
  }

  PainterSurface& m_surface;
  drawing::Pen m_pen;
  std::int32_t m_least = INT32_MIN;
};

void DrawDot(const Rect& bounds, ColorRef color, PainterSurface& surface) {
  surface.GetCanvas().DrawEllipse(bounds, {color, 1}, drawing::Brush{color});
  surface.Touch(bounds);
}

/// A length of a picture in a frame of `frame` pixels.
std::int64_t Scaled(std::int64_t length, std::int32_t frame, std::int64_t nominal) {
  return frame * length / nominal;
}

struct PictureSize {
  std::int64_t width = 0;
  std::int64_t height = 0;
};

PictureSize SizeOnFrame(const PainterPicture& picture, const TrackLook& look) {
  if (!picture) return {};
  return {Scaled(picture->width, look.frameWidth, kNominalWidth),
          Scaled(picture->height, look.frameHeight, kNominalHeight)};
}

void DrawPicture(const PainterPicture& picture, std::int64_t left, std::int64_t top, PictureSize size,
                 PainterSurface& surface) {
  surface.Overlay(picture, {drawing::Saturated(left), drawing::Saturated(top),
                            drawing::Saturated(left + size.width), drawing::Saturated(top + size.height)});
}

/// The start's text hangs from the middle of its marker and the goal's stands above it, so that both can be
/// read where a route ends at its start.
void DrawEndMark(Point at, bool isStart, const TrackLook& look, const Rect& rect, PainterSurface& surface) {
  const PainterPicture& marker = isStart ? look.startMarker : look.goalMarker;
  const PainterPicture& text = isStart ? look.startText : look.goalText;
  const PictureSize size = SizeOnFrame(marker, look);
  const std::int64_t left = at.x - size.width / 2, right = at.x + size.width / 2;
  const std::int64_t top = at.y - size.height / 2;
  DrawPicture(marker, left, top, size, surface);
  const PictureSize textSize{SizeOnFrame(text, look).width, size.height};
  const bool hasRoom = rect.right >= right + textSize.width;
  const std::int64_t half = size.height / 2;
  DrawPicture(text, hasRoom ? right : left - textSize.width, isStart ? top + half : top - half, textSize,
              surface);
}

void DrawPosition(Point at, const TrackLook& look, PainterSurface& surface) {
  const PictureSize size = SizeOnFrame(look.positionMarker, look);
  DrawPicture(look.positionMarker, at.x - size.width / 2, at.y - size.height / 2, size, surface);
}

void DrawShadows(const TrackScene& scene, const TrackLook& look, PainterSurface& surface) {
  LineDrawer lines(surface, {look.shadowColor, look.shadowWidth});
  for (const TrackScene::Stretch& stretch : scene.stretches) {
    lines.Ahead(stretch.walk);
    lines.Polyline(stretch.walk.walked);
    for (const TrackDot& dot : stretch.dots) DrawDot(dot.shadow, kGrey, surface);
  }
}

void DrawAhead(const TrackScene& scene, const TrackLook& look, PainterSurface& surface) {
  LineDrawer lines(surface, {look.aheadColor, look.aheadWidth});
  lines.HoldInFrame();
  for (const TrackScene::Stretch& stretch : scene.stretches) {
    lines.Ahead(stretch.walk);
    for (const TrackDot& dot : stretch.dots) {
      if (!dot.isReached) DrawDot(dot.dot, kWhite, surface);
    }
  }
}

void DrawWalked(const TrackScene& scene, const TrackLook& look, PainterSurface& surface) {
  LineDrawer lines(surface, {look.walkedColor, look.walkedWidth});
  for (const TrackScene::Stretch& stretch : scene.stretches) {
    lines.Polyline(stretch.walk.walked);
    for (const TrackDot& dot : stretch.dots) {
      if (dot.isReached) DrawDot(dot.dot, kOrange, surface);
    }
  }
}

}  // namespace

void DrawTrackPicture(const TrackScene& scene, const TrackLook& look, const Rect& rect,
                      PainterSurface& surface) {
  DrawShadows(scene, look, surface);
  DrawAhead(scene, look, surface);
  DrawWalked(scene, look, surface);
  if (scene.ends) {
    DrawEndMark(scene.ends->start, true, look, rect, surface);
    DrawEndMark(scene.ends->goal, false, look, rect, surface);
  }
  if (scene.position) DrawPosition(*scene.position, look, surface);
  FixTrackShadowAlpha(surface.GetTarget(), rect);
}

void FixTrackShadowAlpha(XpPixmap32& pixmap, const Rect& rect) {
  const XpPlaneBase* plane = pixmap.GetPlane(0);
  if (plane == nullptr) return;
  const Rect inside = drawing::Intersect(rect, {0, 0, pixmap.width, pixmap.height});
  for (std::int32_t y = inside.top; y < inside.bottom; ++y) {
    unsigned char* row = plane->Row(y);
    for (std::int32_t x = inside.left; x < inside.right; ++x) {
      unsigned char* pixel = row + std::ptrdiff_t{x} * 4;
      const bool isShadow = pixel[0] == kShadowGrey && pixel[1] == kShadowGrey && pixel[2] == kShadowGrey;
      pixel[3] = isShadow ? kShadowAlpha : pixel[3];
    }
  }
}

}  // namespace vrx::gps
