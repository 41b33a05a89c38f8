#include "resources/maker/Swing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace vrx::pictures {
namespace {

constexpr double kFirstGhost = 0.4;   // frames behind the racket
constexpr double kSecondGhost = 0.8;  // frames behind the racket
constexpr double kTrailFrames = 2.2;  // length of the trail
constexpr int kTrailLayers = 40;

/// A cubic through the points b and c (Catmull and Rom), at `t` between them.
double Between(double a, double b, double c, double d, double t) {
  const double slopeB = (c - a) / 2.0, slopeC = (d - b) / 2.0;
  const double t2 = t * t, t3 = t2 * t;
  return (2 * t3 - 3 * t2 + 1) * b + (t3 - 2 * t2 + t) * slopeB + (3 * t2 - 2 * t3) * c + (t3 - t2) * slopeC;
}

/// The pose at a moment between two frames.
Pose PoseAt(const Swing& swing, double frame) {
  const auto last = static_cast<double>(swing.poses.size() - 1);
  frame = std::clamp(frame, 0.0, last);
  const auto at = [&swing](double i) -> const Pose& {
    const auto highest = static_cast<double>(swing.poses.size() - 1);
    return swing.poses[static_cast<std::size_t>(std::clamp(i, 0.0, highest))];
  };
  const double start = std::min(std::floor(frame), last - 1.0);
  const Pose &a = at(start - 1.0), &b = at(start), &c = at(start + 1.0), &d = at(start + 2.0);
  const double t = frame - start;
  const auto value = [&](double Pose::*member) {
    return Between(a.*member, b.*member, c.*member, d.*member, t);
  };
  return {value(&Pose::handX), value(&Pose::handY), value(&Pose::turn), value(&Pose::scale),
          value(&Pose::open)};
}

std::string Transform(const Swing& swing, const Pose& pose) {
  char text[160];
  std::snprintf(text, sizeof(text), "translate(%.3f %.3f) rotate(%.3f) scale(%.4f %.4f) translate(%.3f %.3f)",
                pose.handX, pose.handY, pose.turn, pose.scale * pose.open, pose.scale, -swing.grip.x,
                -swing.grip.y);
  return text;
}

/// Where a point on the racket's axis is in the picture; `reach` counts from the grip to the tip.
Point OnAxis(const Swing& swing, const Pose& pose, double reach) {
  const double angle = pose.turn * std::numbers::pi / 180.0;
  const double length = (swing.grip.y - swing.head.y) * reach * pose.scale;
  return {pose.handX + length * std::sin(angle), pose.handY - length * std::cos(angle)};
}

void Append(std::string& path, char command, const Point& point) {
  char text[48];
  std::snprintf(text, sizeof(text), "%c%.2f %.2f", command, point.x, point.y);
  path += text;
}

/// What the head swept since `from`. Layers that all reach to the present add up to a trail that grows
/// stronger towards the racket, without seams.
std::string SweptPath(const Swing& swing, double from, double to, int steps) {
  std::string path;
  for (int i = 0; i <= steps; ++i) {
    const Pose pose = PoseAt(swing, from + (to - from) * i / steps);
    Append(path, i == 0 ? 'M' : 'L', OnAxis(swing, pose, 1.0));
  }
  for (int i = steps; i >= 0; --i) {
    const Pose pose = PoseAt(swing, from + (to - from) * i / steps);
    Append(path, 'L', OnAxis(swing, pose, swing.innerReach));
  }
  return "<path d=\"" + path + "Z\"/>";
}

std::string Trail(const Swing& swing, double frame) {
  const double from = std::max(0.0, frame - kTrailFrames);
  std::string paths;
  for (int layer = 0; layer < kTrailLayers && frame > from; ++layer) {
    const double start = from + (frame - from) * layer / kTrailLayers;
    paths += SweptPath(swing, start, frame, kTrailLayers - layer);
  }
  return paths;
}

}  // namespace

std::map<std::string, std::string> SwingValues(const Swing& swing, int frame) {
  const auto last = static_cast<int>(swing.poses.size()) - 1;
  const bool isMoving = frame > 0 && frame < last;
  const double now = frame;
  return {{"pose", Transform(swing, PoseAt(swing, now))},
          {"ghost1", Transform(swing, PoseAt(swing, now - kFirstGhost))},
          {"ghost2", Transform(swing, PoseAt(swing, now - kSecondGhost))},
          {"ghosts", isMoving ? "1" : "0"},
          {"trail", isMoving ? Trail(swing, now) : std::string()}};
}

}  // namespace vrx::pictures
