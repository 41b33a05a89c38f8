#include "gps/trackview/TrackPicture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <utility>

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
// Pixels as they lie in memory.
using PixelBytes = std::array<unsigned char, 4>;
constexpr auto kColorBits = std::bit_cast<std::uint32_t>(PixelBytes{255, 255, 255, 0});
constexpr auto kGreyColor =
    std::bit_cast<std::uint32_t>(PixelBytes{kShadowGrey, kShadowGrey, kShadowGrey, 0});
constexpr auto kShadowPixel =
    std::bit_cast<std::uint32_t>(PixelBytes{kShadowGrey, kShadowGrey, kShadowGrey, kShadowAlpha});
constexpr std::size_t kLongLine = 256;  // points; from here on maps are faster
constexpr std::size_t kMostMaps = 4;    // bounds the memory that many long clips take
constexpr std::int64_t kNominalWidth = 1920;
constexpr std::int64_t kNominalHeight = 1080;

/// Draws the two sides of split lines with one pen and reports where.
class LineDrawer {
 public:
  LineDrawer(PainterSurface& surface, const drawing::Pen& pen) : m_surface(surface), m_pen(pen) {}

  /// A map is that of the line for the same pen and side; without one the line is drawn part after part.
  void Ahead(const TrackWalk& walk, const std::optional<TrackLineMap>& map) {
    const std::span<const Point> ahead = walk.GetAhead();
    if (ahead.empty()) return;
    if (walk.isJoined) Line(*walk.GetPosition(), ahead.front());
    Parts(ahead, map, walk.passed);
  }
  void Walked(const TrackWalk& walk, const std::optional<TrackLineMap>& map) {
    const std::span<const Point> passed = walk.GetPassed();
    if (passed.empty()) return;
    Parts(passed, map, walk.passed - 1);
    if (walk.present) Line(passed.back(), *walk.present);
  }
  /// Lines never leave the frame at the left or at the top.
  void HoldInFrame() { m_least = 0; }

 private:
  void Parts(std::span<const Point> points, const std::optional<TrackLineMap>& map, std::size_t split) {
    if (map) {
      map->Draw(split, m_pen.color, m_surface.GetTarget());
      m_surface.Touch(map->GetArea());
      return;
    }
    for (std::size_t i = 1; i < points.size(); ++i) Line(points[i - 1], points[i]);
  }
  void Line(Point from, Point to) {
    from = {std::max(from.x, m_least), std::max(from.y, m_least)};
    to = {std::max(to.x, m_least), std::max(to.y, m_least)};
    m_surface.GetCanvas().DrawLine(from, to, m_pen);
    m_surface.Touch(LineBounds(from, to, m_pen.width));
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

}  // namespace

void TrackPicture::Draw(const TrackScene& scene, const TrackLook& look, const Rect& rect,
                        PainterSurface& surface) {
  const XpPixmap32& frame = surface.GetTarget();
  const MapSizes sizes{look.shadowWidth, look.aheadWidth, look.walkedWidth, {frame.width, frame.height}};
  if (sizes != m_sizes) Forget();
  m_sizes = sizes;
  // Another clip needs the room.
  std::erase_if(m_maps, [&scene](const LineMaps& maps) {
    return std::none_of(
        scene.stretches.begin(), scene.stretches.end(),
        [&maps](const TrackScene::Stretch& stretch) { return stretch.walk.line == maps.line; });
  });
  DrawShadows(scene, look, surface);
  DrawAhead(scene, look, surface);
  DrawWalked(scene, look, surface);
  // Before the pictures, whose soft edges would stay dark on a shadow that is still opaque.
  FixTrackShadowAlpha(surface.GetTarget(), rect);
  if (scene.ends) {
    DrawEndMark(scene.ends->start, true, look, rect, surface);
    DrawEndMark(scene.ends->goal, false, look, rect, surface);
  }
  if (scene.position) DrawPosition(*scene.position, look, surface);
}

const TrackPicture::LineMaps& TrackPicture::FindMaps(const TrackWalk& walk) {
  static const LineMaps none;
  if (!walk.line || walk.line->size() < kLongLine) return none;
  for (const LineMaps& maps : m_maps) {
    if (maps.line == walk.line) return maps;
  }
  if (m_maps.size() >= kMostMaps) return none;
  using Side = TrackLineMap::Side;
  const auto make = [&](std::int32_t width, Side side) {
    return TrackLineMap::Make(*walk.line, width, side, m_sizes.frame);
  };
  m_maps.push_back({walk.line, make(m_sizes.shadowWidth, Side::After),
                    make(m_sizes.shadowWidth, Side::Before), make(m_sizes.aheadWidth, Side::After),
                    make(m_sizes.walkedWidth, Side::Before)});
  return m_maps.back();
}

void TrackPicture::DrawShadows(const TrackScene& scene, const TrackLook& look, PainterSurface& surface) {
  LineDrawer lines(surface, {look.shadowColor, look.shadowWidth});
  for (const TrackScene::Stretch& stretch : scene.stretches) {
    const LineMaps& maps = FindMaps(stretch.walk);
    lines.Ahead(stretch.walk, maps.shadowAhead);
    lines.Walked(stretch.walk, maps.shadowWalked);
    for (const TrackDot& dot : stretch.dots) DrawDot(dot.shadow, kGrey, surface);
  }
}

void TrackPicture::DrawAhead(const TrackScene& scene, const TrackLook& look, PainterSurface& surface) {
  LineDrawer lines(surface, {look.aheadColor, look.aheadWidth});
  lines.HoldInFrame();
  for (const TrackScene::Stretch& stretch : scene.stretches) {
    const LineMaps& maps = FindMaps(stretch.walk);
    lines.Ahead(stretch.walk, maps.ahead);
    for (const TrackDot& dot : stretch.dots) {
      if (!dot.isReached) DrawDot(dot.dot, kWhite, surface);
    }
  }
}

void TrackPicture::DrawWalked(const TrackScene& scene, const TrackLook& look, PainterSurface& surface) {
  LineDrawer lines(surface, {look.walkedColor, look.walkedWidth});
  for (const TrackScene::Stretch& stretch : scene.stretches) {
    const LineMaps& maps = FindMaps(stretch.walk);
    lines.Walked(stretch.walk, maps.walked);
    for (const TrackDot& dot : stretch.dots) {
      if (dot.isReached) DrawDot(dot.dot, kOrange, surface);
    }
  }
}

void FixTrackShadowAlpha(XpPixmap32& pixmap, const Rect& rect) {
  const XpPlaneBase* plane = pixmap.GetPlane(0);
  if (plane == nullptr) return;
  const Rect inside = drawing::Intersect(rect, {0, 0, pixmap.width, pixmap.height});
  for (std::int32_t y = inside.top; y < inside.bottom; ++y) {
    auto* pixels = reinterpret_cast<std::uint32_t*>(plane->Row(y));
    for (std::int32_t x = inside.left; x < inside.right; ++x)
      pixels[x] = (pixels[x] & kColorBits) == kGreyColor ? kShadowPixel : pixels[x];
  }
}

}  // namespace vrx::gps
