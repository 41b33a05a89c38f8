#include "gps/trackview/KVSGPSTrack.h"

#include <algorithm>
#include <optional>

#include "foundation/number/Saturate.h"
#include "gps/trackview/TrackLayout.h"

using namespace vrx;
using namespace vrx::gps;
using drawing::Point;
using drawing::Rect;

namespace {

constexpr double kMsPerSecond = 1000.0;
constexpr std::size_t kLinePoints = 2;  // that a line needs

bool Covers(const TrackSegment& segment, double seconds) {
  return segment.startTime <= seconds && seconds <= segment.endTime;
}

/// The point of a flag: never left of or above the view.
Point FlagPoint(const TrackDisplayPoint& point, const Rect& rect) {
  return {drawing::Saturated(std::int64_t{rect.left} + std::max(point.x, 0)),
          drawing::Saturated(std::int64_t{rect.top} + std::max(point.y, 0))};
}

/// Finds the segments at whose ends the flags stand: the one that starts first and the one that ends last.
class EndSearch {
 public:
  void Add(const TrackSegment& segment) {
    const bool isFirst = m_start == nullptr;
    if (isFirst || m_firstStart > segment.startTime) {
      m_firstStart = segment.startTime;
      m_start = &segment.display.front();
      if (!isFirst) return;
    }
    if (isFirst || m_lastEnd < segment.endTime) {
      m_lastEnd = segment.endTime;
      m_goal = &segment.display.back();
    }
  }
  std::optional<TrackScene::Ends> Get(const Rect& rect) const {
    if (m_start == nullptr) return std::nullopt;
    return TrackScene::Ends{FlagPoint(*m_start, rect), FlagPoint(*m_goal, rect)};
  }

 private:
  const TrackDisplayPoint* m_start = nullptr;
  const TrackDisplayPoint* m_goal = nullptr;
  double m_firstStart = 0.0;
  double m_lastEnd = 0.0;
};

}  // namespace

void KVSGPSTrack::BuildTrackSegment(const KVUGPSInfoList& list, const KVSGPSBounds& bounds,
                                    double startSeconds, double endSeconds, bool keepLast) {
  const XpSingleLock lock(&m_lock);
  Segments& segments = keepLast ? m_wholeSegments : m_clipSegments;
  segments.push_back(MakeTrackSegment(list, bounds, startSeconds, endSeconds, keepLast));
  m_view = {};
}

void KVSGPSTrack::ResetTrack() {
  const XpSingleLock lock(&m_lock);
  m_wholeSegments.clear();
  m_clipSegments.clear();
  m_picture.Forget();
}

void KVSGPSTrack::SetPerClip(bool perClip) {
  const XpSingleLock lock(&m_lock);
  m_perClip = perClip;
}

void KVSGPSTrack::MakeScene(const Rect& rect, std::int64_t timeMs, TrackScene& scene) {
  const XpSingleLock lock(&m_lock);
  scene.ends.reset();
  scene.position.reset();
  if (rect.IsEmpty()) {
    scene.stretches.clear();
    return;
  }
  EnsureLayout(rect);
  const double seconds = static_cast<double>(timeMs) / kMsPerSecond;
  if (m_perClip) {
    MakeClipScene(rect, seconds, scene);
  } else {
    MakeWholeScene(rect, seconds, scene);
  }
}

void KVSGPSTrack::Draw(const TrackScene& scene, const TrackLook& look, const Rect& rect,
                       overlay::PainterSurface& surface) {
  const XpSingleLock lock(&m_lock);
  m_picture.Draw(scene, look, rect, surface);
}

void KVSGPSTrack::EnsureLayout(const Rect& rect) {
  if (rect == m_view) return;
  m_view = rect;
  m_picture.Forget();
  for (Segments* segments : {&m_wholeSegments, &m_clipSegments}) {
    for (TrackSegment& segment : *segments) {
      LayoutSegment({drawing::Saturated(rect.Width()), drawing::Saturated(rect.Height())}, segment);
      RoundCorners(segment);
      MakeLine({rect.left, rect.top}, segment);
    }
  }
}

void KVSGPSTrack::MakeClipScene(const Rect& rect, double seconds, TrackScene& scene) const {
  auto found = std::find_if(m_clipSegments.begin(), m_clipSegments.end(),
                            [seconds](const TrackSegment& segment) { return Covers(segment, seconds); });
  if (found == m_clipSegments.end() && found != m_clipSegments.begin()) --found;
  if (found == m_clipSegments.end() || found->display.size() < kLinePoints) {
    scene.stretches.clear();
    return;
  }
  scene.stretches.resize(1);
  TrackScene::Stretch& stretch = scene.stretches.front();
  stretch.dots.clear();
  const double clipSeconds = seconds - found->startTime;
  stretch.walk = WalkSegment(*found, {rect.left, rect.top}, clipSeconds);
  if (IsPositionKnown(*found, clipSeconds)) scene.position = stretch.walk.GetPosition();
  EndSearch ends;
  ends.Add(*found);
  scene.ends = ends.Get(rect);
}

void KVSGPSTrack::MakeWholeScene(const Rect& rect, double seconds, TrackScene& scene) const {
  scene.stretches.resize(m_wholeSegments.size());
  EndSearch ends;
  std::optional<Point> reported;  // by the last line; a clip without a line shows it too
  const TrackDisplayPoint* previousLast = nullptr;
  double previousEnd = 0.0;
  for (std::size_t i = 0; i < m_wholeSegments.size(); ++i) {
    const TrackSegment& segment = m_wholeSegments[i];
    TrackScene::Stretch& stretch = scene.stretches[i];
    stretch.walk = {};
    stretch.dots.clear();
    if (segment.display.size() >= kLinePoints) {
      const auto clipSeconds =
          static_cast<double>(std::max<std::int64_t>(Saturate<std::int64_t>(seconds - segment.startTime), 0));
      stretch.walk = WalkSegment(segment, {rect.left, rect.top}, clipSeconds);
      reported = IsPositionKnown(segment, clipSeconds) ? stretch.walk.GetPosition() : std::nullopt;
    }
    if (Covers(segment, seconds) && reported) scene.position = reported;
    if (segment.display.empty()) continue;
    const double fixTime = segment.startTime + segment.beforeFixCount;
    if (previousLast != nullptr) {
      const TrackGap gap{seconds, previousEnd, fixTime};
      MakeGapDots(*previousLast, segment.display.front(), rect, gap, stretch.dots);
    }
    ends.Add(segment);
    previousLast = &segment.display.back();
    previousEnd = fixTime + previousLast->index + 1;
  }
  scene.ends = ends.Get(rect);
}
