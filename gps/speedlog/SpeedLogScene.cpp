#include "gps/speedlog/SpeedLogScene.h"

#include <algorithm>
#include <span>

#include "foundation/number/Saturate.h"

namespace vrx::gps {
namespace {

using drawing::Point;

constexpr double kMsOfSecond = 1000;
constexpr double kLongestMs = 1e12;  // 31 years: times stay exact to a fraction of a pixel

/// Where the strip stands, in pixels of a 1920 by 1080 frame.
struct Scroll {
  std::int64_t passed = 0;  // that the strip has moved on
  std::int64_t lead = 0;    // from its left edge to the curve's start, before it moves
};

Scroll ScrollAt(double seconds, double anchorSeconds, double pixelsPerSecond) {
  if (seconds < anchorSeconds)
    return {.lead = Saturate<std::int64_t>((anchorSeconds - seconds) * pixelsPerSecond)};
  return {.passed = Saturate<std::int64_t>((seconds - anchorSeconds) * pixelsPerSecond)};
}

/// The first tick that can be seen, as the scene has it.
void PlaceTicks(double sinceFirstMs, double anchorMs, double firstMs, std::int64_t lead,
                SpeedLogScene& scene) {
  if (lead > 0) {
    scene.tickOffset = drawing::Saturated(lead);
    scene.firstSecond = Saturate<std::int64_t>(firstMs / kMsOfSecond);
    return;
  }
  const double passedMs = sinceFirstMs - anchorMs;
  const auto wholeSeconds = static_cast<double>(Saturate<std::int64_t>(passedMs / kMsOfSecond));
  const auto atSecond = Saturate<std::int64_t>(wholeSeconds * scene.pixelsPerSecond);
  const auto now = Saturate<std::int64_t>(passedMs * scene.pixelsPerSecond / kMsOfSecond);
  scene.tickOffset = drawing::Saturated(SaturatedSubtract(atSecond, now));
  scene.firstSecond = Saturate<std::int64_t>((firstMs + sinceFirstMs - anchorMs) / kMsOfSecond);
}

/// Takes the points of the curve that reach the canvas into a scene.
class CurveWalk {
 public:
  CurveWalk(const SpeedLogRecord& record, const Scroll& scroll, std::int32_t farthest, SpeedLogScene& scene)
      : m_points(record.points), m_shift(scroll.lead - scroll.passed), m_farthest(farthest), m_scene(scene) {}

  void Run() {
    if (m_points.empty()) return;
    if (m_points.front().valid) m_scene.start = PlaceOf(m_points.front());
    std::size_t i = FirstToVisit();
    while (i < m_points.size() && Visit(i)) ++i;
    EndStroke();
  }
  bool MeetsCursor() const { return m_meetsCursor; }
  std::int32_t GetCursorY() const { return m_cursorY; }

 private:
  Point PlaceOf(const SpeedLogPoint& point) const {
    return {XOf(point),
            Saturate<std::int32_t>((std::int64_t{m_scene.graphHeight} - point.y) * m_scene.scale)};
  }
  std::int32_t XOf(const SpeedLogPoint& point) const {
    return Saturate<std::int32_t>(static_cast<double>(point.x + m_shift) * m_scene.scale);
  }

  /// The last point left of the canvas. Those before it, whose x are smaller, draw nothing.
  std::size_t FirstToVisit() const {
    const auto visible = std::partition_point(m_points.begin(), m_points.end(),
                                              [this](const SpeedLogPoint& point) { return XOf(point) < 0; });
    const auto index = static_cast<std::size_t>(visible - m_points.begin());
    return index == 0 ? 0 : index - 1;
  }

  /// False when the walk is over.
  bool Visit(std::size_t i) {
    const SpeedLogPoint& point = m_points[i];
    if (!point.valid) {
      m_hasPrevious = false;
      EndStroke();
      return true;
    }
    const Point place = PlaceOf(point);
    FindCursor(place);
    if (m_hasPrevious && (place.x >= 0 || m_previous.x >= 0)) {
      if (IsStrokeEmpty()) m_scene.curve.push_back(m_previous);
      m_scene.curve.push_back(place);
    }
    if (m_previous.x > m_farthest) return false;
    if (i + 1 == m_points.size()) m_scene.goal = place;
    m_previous = place;
    m_hasPrevious = true;
    return true;
  }

  void FindCursor(Point place) {
    const std::int32_t x = m_scene.cursorX;
    if (place.x == x) {
      m_meetsCursor = true;
      m_cursorY = place.y;
    } else if (m_hasPrevious && m_previous.x < x && x < place.x) {
      const std::int64_t rise = std::int64_t{place.y} - m_previous.y;
      const std::int64_t run = std::int64_t{place.x} - m_previous.x;
      m_meetsCursor = true;
      m_cursorY = drawing::Saturated(m_previous.y + rise * (std::int64_t{x} - m_previous.x) / run);
    }
  }

  bool IsStrokeEmpty() const {
    return m_scene.curve.size() == (m_scene.strokeEnds.empty() ? 0 : m_scene.strokeEnds.back());
  }
  void EndStroke() {
    if (!IsStrokeEmpty()) m_scene.strokeEnds.push_back(m_scene.curve.size());
  }

  std::span<const SpeedLogPoint> m_points;
  std::int64_t m_shift;
  std::int32_t m_farthest;
  SpeedLogScene& m_scene;
  Point m_previous;  // the last valid point; also after a gap, over which no line goes
  bool m_hasPrevious = false;
  bool m_meetsCursor = false;
  std::int32_t m_cursorY = 0;
};

/// False when there is no canvas to draw on.
bool PlaceCanvas(drawing::Size size, const drawing::Rect& rect, SpeedLogScene& scene) {
  if (size.width < 1 || size.height < 1 || rect.IsEmpty()) return false;
  scene.scale = static_cast<double>(rect.Width()) / size.width;
  scene.canvas = {Saturate<std::int32_t>(size.width * scene.scale),
                  Saturate<std::int32_t>(size.height * scene.scale)};
  scene.graphHeight = SpeedGraphHeight(size.height);
  const auto [least, most] = std::minmax(scene.canvas.width, scene.canvas.height);
  return least >= 1 && most <= kMostCanvasSide;
}

}  // namespace

std::int32_t SpeedLogScene::Row(std::int64_t belowGraph) const {
  return Saturate<std::int32_t>(static_cast<double>(graphHeight + belowGraph) * scale);
}

bool MakeSpeedLogScene(const SpeedLogRecord& record, drawing::Size size, std::int32_t position,
                       const drawing::Rect& rect, double timeMs, SpeedLogScene& scene) {
  if (!PlaceCanvas(size, rect, scene)) return false;
  position = std::clamp(position, 0, 100);
  scene.pixelsPerSecond = record.pixelsPerSecond;
  scene.isInRange = timeMs >= record.firstMs;
  const double sinceFirstMs = scene.isInRange ? std::min(timeMs - record.firstMs, kLongestMs) : 0.0;
  const double viewSeconds =
      record.pixelsPerSecond > 0 ? size.width / record.pixelsPerSecond : static_cast<double>(size.width);
  const Scroll scroll =
      ScrollAt(sinceFirstMs / kMsOfSecond, position * viewSeconds / 100, record.pixelsPerSecond);
  PlaceTicks(sinceFirstMs, position * viewSeconds * kMsOfSecond / 100, record.firstMs, scroll.lead, scene);

  scene.cursorX = drawing::Saturated((std::int64_t{scene.canvas.width} - 1) * position / 100);
  scene.curve.clear();
  scene.strokeEnds.clear();
  scene.start.reset();
  scene.goal.reset();
  scene.position.reset();
  CurveWalk walk(record, scroll, std::max(size.width, scene.canvas.width), scene);
  walk.Run();

  const SpeedSample* sample = record.FindSample(Saturate<std::int64_t>(timeMs / kMsOfSecond));
  if (sample != nullptr && sample->valid && walk.MeetsCursor()) {
    const std::int64_t x = std::int64_t{position} * size.width / 100;
    scene.position = Point{Saturate<std::int32_t>(static_cast<double>(x) * scene.scale), walk.GetCursorY()};
  }
  return true;
}

}  // namespace vrx::gps
