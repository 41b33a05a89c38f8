// The track view worked out in the plain way: every scene from the positions on, step after step, and drawn
// layer after layer. The track, which keeps its layout, has to give the same numbers and the same pixels.
#pragma once

#include <cmath>
#include <optional>
#include <vector>

#include "gps/track/TrackMetrics.h"
#include "gps/trackview/TrackScene.h"
#include "imaging/pixmap/XpPixmapOverlay.h"

namespace vrx::gps {

struct PlainClip {
  KVUGPSInfoList list;
  KVSGPSBounds bounds;
  double start = 0, end = 0;
  bool keepLast = true;
};

/// A TrackScene whose lines are written out.
struct PlainScene {
  struct Stretch {
    std::vector<drawing::Point> walked, ahead;
    bool isJoined = false;
    std::vector<TrackDot> dots;
    friend bool operator==(const Stretch&, const Stretch&) = default;
  };
  std::vector<Stretch> stretches;
  std::optional<TrackScene::Ends> ends;
  std::optional<drawing::Point> position;
  friend bool operator==(const PlainScene&, const PlainScene&) = default;
};

class PlainTrack {
 public:
  using Rect = drawing::Rect;
  using Point = drawing::Point;

  PlainTrack(const std::vector<PlainClip>& clips, const Rect& rect) : m_rect(rect) {
    for (const PlainClip& clip : clips) m_segments.push_back(Build(clip));
  }

  PlainScene PerClip(double ms) const {
    PlainScene scene;
    const double t = ms / 1000.0;
    if (m_segments.empty()) return scene;
    const Segment* s = &m_segments.back();
    for (std::size_t i = m_segments.size(); i-- > 0;) {
      if (m_segments[i].start <= t && t <= m_segments[i].end) s = &m_segments[i];
    }
    if (s->display.size() < 2) return scene;
    scene.stretches.resize(1);
    bool known = false;
    const Point position = Lists(*s, t - s->start, scene.stretches[0], known);
    if (known) scene.position = position;
    scene.ends = TrackScene::Ends{Flag(s->display.front()), Flag(s->display.back())};
    return scene;
  }

  PlainScene Whole(double ms) const {
    PlainScene scene;
    const double t = ms / 1000.0;
    bool hasEnds = false, known = false;
    double previousEnd = 0, firstStart = 0, lastEnd = 0;
    Point position, reported;
    Display previousLast, start, goal;
    for (const Segment& s : m_segments) {
      PlainScene::Stretch& stretch = scene.stretches.emplace_back();
      const double rel = std::max(std::trunc(t - s.start), 0.0);
      if (s.display.size() >= 2) reported = Lists(s, rel, stretch, known);
      if (s.start <= t && t <= s.end && known) scene.position = position = reported;
      if (s.display.empty()) continue;
      const double a = s.start + s.beforeFix;
      if (!hasEnds) {
        hasEnds = true;
        firstStart = s.start, lastEnd = s.end;
        start = s.display.front(), goal = s.display.back();
      } else {
        Dots(previousLast, s.display.front(), t, std::min(a, previousEnd), a, stretch.dots);
        if (firstStart > s.start) {
          firstStart = s.start, start = s.display.front();
        } else if (lastEnd < s.end) {
          lastEnd = s.end, goal = s.display.back();
        }
      }
      previousLast = s.display.back();
      previousEnd = a + previousLast.index + 1;
    }
    if (hasEnds) scene.ends = TrackScene::Ends{Flag(start), Flag(goal)};
    return scene;
  }

  static void Draw(const PlainScene& scene, const TrackLook& look, const Rect& rect, XpPixmap32& target) {
    drawing::Canvas canvas(target.GetBitmapHandle());
    const auto ahead = [&](const PlainScene::Stretch& walk, const drawing::Pen& pen) {
      if (walk.isJoined) canvas.DrawLine(walk.walked.back(), walk.ahead.front(), pen);
      canvas.DrawPolyline(walk.ahead, pen);
    };
    const auto dot = [&](const Rect& bounds, drawing::ColorRef color) {
      canvas.DrawEllipse(bounds, {color, 1}, drawing::Brush{color});
    };
    for (const auto& stretch : scene.stretches) {
      ahead(stretch, {look.shadowColor, look.shadowWidth});
      canvas.DrawPolyline(stretch.walked, {look.shadowColor, look.shadowWidth});
      for (const TrackDot& d : stretch.dots) dot(d.shadow, 0x333333);
    }
    for (const auto& stretch : scene.stretches) {
      PlainScene::Stretch raised = stretch;
      for (auto* list : {&raised.walked, &raised.ahead}) {
        for (Point& p : *list) p = {std::max(p.x, 0), std::max(p.y, 0)};
      }
      ahead(raised, {look.aheadColor, look.aheadWidth});
      for (const TrackDot& d : stretch.dots) dot(d.dot, d.isReached ? 0x0073FF : 0xFEFEFE);
    }
    for (const auto& stretch : scene.stretches) {
      canvas.DrawPolyline(stretch.walked, {look.walkedColor, look.walkedWidth});
      for (const TrackDot& d : stretch.dots) {
        if (d.isReached) dot(d.dot, 0x0073FF);
      }
    }
    for (std::int32_t y = std::max(rect.top, 0); y < std::min(rect.bottom, target.height); ++y) {
      for (std::int32_t x = std::max(rect.left, 0); x < std::min(rect.right, target.width); ++x) {
        unsigned char* p = target.GetPlane(0)->Row(y) + std::ptrdiff_t{x} * 4;
        if (p[0] == 0x33 && p[1] == 0x33 && p[2] == 0x33) p[3] = 0x66;
      }
    }
    if (scene.ends) {
      Mark(scene.ends->start, *look.startMarker, *look.startText, true, look, rect, target);
      Mark(scene.ends->goal, *look.goalMarker, *look.goalText, false, look, rect, target);
    }
    if (scene.position) {
      const std::int32_t w = look.frameWidth * look.positionMarker->width / 1920,
                         h = look.frameHeight * look.positionMarker->height / 1080;
      Overlay(target, scene.position->x - w / 2, scene.position->y - h / 2, w, h, *look.positionMarker);
    }
  }

 private:
  struct Position {
    double x = 0, y = 0;
  };
  struct Display {
    double x = 0, y = 0, index = 0;
    bool hasArc = false;
    Position arcStart, arcMid, arcEnd;
  };
  struct Segment {
    std::vector<Display> display;
    double beforeFix = 0, start = 0, end = 0;
  };

  Segment Build(const PlainClip& clip) const {
    Segment s{{}, 0, clip.start, clip.end};
    double cw = 800, ch = 800;
    const KVSGPSBounds& b = clip.bounds;
    if (b.width != 0 && b.height != 0) {
      if (b.width / b.height <= 1) {
        cw = b.width * 800 / b.height;
      } else {
        ch = b.height * 800 / b.width;
      }
    }
    std::vector<Point> mapped;
    int maxX = 0, maxY = 0, minX = 0x7FFFFFFF, minY = 0x7FFFFFFF;
    for (const KVUGPSInfo& p : clip.list) {
      if (p.status == 0 && p.kind == GPSPointBeforeFix) s.beforeFix += 1;
      if (p.status == 0 && (p.kind == GPSPointBeforeFix || p.kind == GPSPointAfterFix)) continue;
      int x = 500, y = 500;
      if (b.width != 0) {
        x = static_cast<int>(static_cast<int>(cw) * std::fabs(p.longitude - b.left) / b.width) -
            static_cast<int>(cw - 1000) / 2;
      }
      if (b.height != 0) {
        y = static_cast<int>(static_cast<int>(ch) * std::fabs(p.latitude - b.top) / b.height) -
            static_cast<int>(ch - 1000) / 2;
      }
      maxX = std::max(maxX, x), maxY = std::max(maxY, y);
      minX = std::min(minX, x), minY = std::min(minY, y);
      mapped.push_back({x, y});
    }
    const int w = m_rect.right - m_rect.left, h = m_rect.bottom - m_rect.top;
    Point reference;
    for (std::size_t n = 0; n < mapped.size(); ++n) {
      const bool isFar = std::abs(mapped[n].x - reference.x) >= (maxX - minX) / 80 ||
                         std::abs(mapped[n].y - reference.y) >= (maxY - minY) / 80;
      if (n != 0 && !isFar && !(clip.keepLast && n == mapped.size() - 1)) continue;
      reference = mapped[n];
      Display d;
      d.x = mapped[n].x * w / 1000, d.y = mapped[n].y * h / 1000, d.index = static_cast<double>(n);
      s.display.push_back(d);
    }
    for (std::size_t i = 1; i + 1 < s.display.size(); ++i)
      Round(s.display[i - 1], s.display[i], s.display[i + 1]);
    return s;
  }

  static void Round(const Display& a, Display& b, const Display& c) {
    const double ax = b.x - a.x, ay = b.y - a.y, cx = c.x - b.x, cy = c.y - b.y;
    if (std::trunc(ax * cy - cx * ay) == 0) return;
    const double la = ax * ax + ay * ay, lc = cx * cx + cy * cy;
    double k = std::min(la, lc);
    if (k < 25.0) return;
    k = std::min(k, 900.0);
    b.hasArc = true;
    const double fa = std::sqrt(la / k), fc = std::sqrt(lc / k);
    b.arcStart = {b.x - ax / fa * 0.5, b.y - ay / fa * 0.5};
    b.arcEnd = {b.x + cx / fc * 0.5, b.y + cy / fc * 0.5};
    // (m - arcStart) * a = 0 and (m - arcEnd) * c = 0, by Cramer's rule.
    const double p = b.arcStart.x * ax + b.arcStart.y * ay, q = b.arcEnd.x * cx + b.arcEnd.y * cy;
    const double determinant = ax * cy - cx * ay;
    const Position m{(p * cy - q * ay) / determinant, (q * ax - p * cx) / determinant};
    const double r = std::hypot(m.x - b.arcStart.x, m.y - b.arcStart.y);
    const double d = std::hypot(b.x - m.x, b.y - m.y);
    b.arcMid = {m.x + (b.x - m.x) * r / d, m.y + (b.y - m.y) * r / d};
  }

  Point Lists(const Segment& s, double t, PlainScene::Stretch& walk, bool& known) const {
    const std::vector<Display>& d = s.display;
    const double T = t < s.beforeFix ? 0 : t - s.beforeFix;
    known = s.beforeFix <= t && t <= d.back().index + s.beforeFix + 3;
    const auto pixel = [&](double x, double y) {
      return Point{static_cast<int>(x) + m_rect.left, static_cast<int>(y) + m_rect.top};
    };
    const auto add = [&](std::vector<Point>& to, Position p) { to.push_back(pixel(p.x, p.y)); };
    const auto between = [&](Position p, Position q, double part, double whole) {
      const double ratio = whole == 0 ? 0 : part / whole;
      walk.walked.push_back(pixel(std::trunc((q.x - p.x) * ratio) + std::trunc(p.x),
                                  std::trunc((q.y - p.y) * ratio) + std::trunc(p.y)));
    };
    const auto length = [](Position p, Position q) { return std::hypot(q.x - p.x, q.y - p.y); };
    add(std::trunc(T) == 0 ? walk.ahead : walk.walked, {d[0].x, d[0].y});
    bool midPending = false, endPending = true;
    for (std::size_t i = 1; i < d.size(); ++i) {
      const Display &prev = d[i - 1], &cur = d[i];
      if (cur.index <= T) {
        if (prev.hasArc) add(walk.walked, prev.arcEnd);
        add(walk.walked, cur.hasArc ? cur.arcStart : Position{cur.x, cur.y});
        if (i + 1 == d.size() || d[i + 1].index <= T) {
          if (cur.hasArc) {
            add(walk.walked, cur.arcMid);
            midPending = false, endPending = true;
          }
          continue;
        }
        const Display& next = d[i + 1];
        const Position n = next.hasArc ? next.arcStart : Position{next.x, next.y};
        if (!cur.hasArc) {
          between({cur.x, cur.y}, n, T - cur.index, next.index - cur.index);
          continue;
        }
        const double d1 = length(cur.arcStart, cur.arcMid), d2 = length(cur.arcMid, cur.arcEnd);
        const double d3 = length(cur.arcEnd, n);
        const double v = (d1 + d2 + d3) / (next.index - cur.index), gone = (T - cur.index) * v;
        midPending = gone < d1;
        endPending = gone <= d1 + d2;
        if (gone < d1) {
          between(cur.arcStart, cur.arcMid, gone, d1);
          continue;
        }
        add(walk.walked, cur.arcMid);
        if (gone <= d1 + d2) {
          between(cur.arcMid, cur.arcEnd, gone - d1, d2);
        } else {
          add(walk.walked, cur.arcEnd);
          between(cur.arcEnd, n, gone - d1 - d2, d3);
        }
      } else {
        if (prev.hasArc) {
          if (midPending) add(walk.ahead, prev.arcMid);
          midPending = false;
          if (endPending) add(walk.ahead, prev.arcEnd);
          endPending = true;
        }
        add(walk.ahead, cur.hasArc ? cur.arcStart : Position{cur.x, cur.y});
        if (cur.hasArc) add(walk.ahead, cur.arcMid);
      }
    }
    walk.isJoined = !walk.ahead.empty() && !walk.walked.empty() && t != 0;
    return walk.walked.empty() ? walk.ahead.front() : walk.walked.back();
  }

  void Dots(const Display& from, const Display& to, double t, double gapStart, double gapEnd,
            std::vector<TrackDot>& dots) const {
    const double dx = to.x - from.x, dy = to.y - from.y, len = std::sqrt(dx * dx + dy * dy);
    const double span = gapEnd - gapStart, u = (m_rect.right - m_rect.left) / 380.0;
    const int shadowSize = std::max(3, static_cast<int>(10 * u)),
              dotSize = std::max(1, static_cast<int>(6 * u));
    const int spacing = std::max(1, static_cast<int>(4 * u)), pitch = shadowSize + spacing;
    if (dotSize + 2 > len) return;
    const int n = static_cast<int>(len / pitch);
    const double reached = span > 0 ? std::trunc(n * (t - gapStart) / span) : 0;
    const double offset = (len - shadowSize * n - (n - 1) * spacing + spacing) / 2;
    double x = m_rect.left + from.x + dx * offset / len, y = m_rect.top + from.y + dy * offset / len;
    for (int i = 0; i < n; ++i, x += dx * pitch / len, y += dy * pitch / len) {
      const auto around = [&](int size) {
        const double r = size * 0.5;
        return Rect{static_cast<int>(x - r - 1), static_cast<int>(y - r - 1), static_cast<int>(x + r + 1),
                    static_cast<int>(y + r + 1)};
      };
      dots.push_back({around(shadowSize), around(dotSize), i < reached || (span <= 0.03 && gapEnd <= t)});
    }
  }

  Point Flag(const Display& d) const {
    return {m_rect.left + static_cast<int>(std::max(d.x, 0.0)),
            m_rect.top + static_cast<int>(std::max(d.y, 0.0))};
  }

  static void Overlay(XpPixmap32& target, std::int32_t left, std::int32_t top, std::int32_t w, std::int32_t h,
                      const XpPixmapBase& picture) {
    overlay::PictureRenditions renditions;
    // The picture belongs to the look.
    const PainterPicture copy(picture.Clone().release());
    const XpPixmap32* scaled = renditions.Get(copy, w, h);
    if (scaled != nullptr) OverlaySmoothPixmap(target, left, top, w, h, *scaled, w, h);
  }

  static void Mark(Point at, const XpPixmapBase& marker, const XpPixmapBase& text, bool isStart,
                   const TrackLook& look, const Rect& rect, XpPixmap32& target) {
    const std::int32_t mw = look.frameWidth * marker.width / 1920,
                       mh = look.frameHeight * marker.height / 1080;
    const std::int32_t left = at.x - mw / 2, right = at.x + mw / 2, top = at.y - mh / 2;
    Overlay(target, left, top, mw, mh, marker);
    const std::int32_t tw = look.frameWidth * text.width / 1920;
    Overlay(target, rect.right < right + tw ? left - tw : right, isStart ? top + mh / 2 : top - mh / 2, tw,
            mh, text);
  }

  Rect m_rect;
  std::vector<Segment> m_segments;
};

}  // namespace vrx::gps
