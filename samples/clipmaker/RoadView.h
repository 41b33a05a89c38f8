// What somebody on a planned way has before his eyes: puts places beside the way onto the picture, with its
// bends ahead, over level ground.
#pragma once

#include <span>
#include <vector>

#include "samples/clipmaker/FlatCanvas.h"
#include "samples/route/RoutePlan.h"

namespace vrx::test_support {

/// Seen from the eye, in meters.
struct EyePlace {
  double right = 0;
  double up = 0;
  double ahead = 0;
};

struct EyeOptions {
  double height = 1.3;       // meters above the ground
  double offset = 0;         // to the right of the way's middle
  double lookMeters = 8;     // ahead on the way, to where the eye is turned
  double sightMeters = 450;  // how far the way is drawn
};

class RoadView {
 public:
  /// All arguments outlive the view.
  RoadView(const RoutePlan& plan, double meters, const EyeOptions& eye, FlatCanvas& canvas);

  double Meters() const { return m_meters; }
  /// Meters of the way where its last part ends that is drawn.
  double SightEnd() const { return m_meters + m_sightMeters; }
  /// From where on the way no longer leads away from the eye; its ground then cannot be drawn row by row.
  double TurnedAway() const { return m_turnedAway; }
  double CourseDegrees() const { return m_courseDegrees; }
  double Focal() const { return m_focal; }  // pixels of something as wide as it is far
  double Horizon() const { return m_horizon; }

  /// `offset` is to the right of the way's middle, `height` above the ground; `meters` is of the way,
  /// and is cut to what the view holds, from a little behind the eye.
  EyePlace At(double meters, double offset, double height = 0) const;
  /// For places ahead of the eye only.
  CanvasPoint OnPicture(const EyePlace& place) const;
  /// Pixels of a meter there.
  double Scale(const EyePlace& place) const { return m_focal / place.ahead; }
  static bool IsAhead(const EyePlace& place) { return place.ahead > kNear; }

  /// A polygon; what of it lies behind the eye is cut off.
  void Face(std::span<const EyePlace> corners, const Rgb& colour, double opacity = 1.0);
  /// On the ground or upright, between two stretches of the way.
  void Face(const EyePlace& a, const EyePlace& b, const EyePlace& c, const EyePlace& d, const Rgb& colour,
            double opacity = 1.0);

  FlatCanvas& Canvas() { return m_canvas; }

 private:
  static constexpr double kNear = 0.4;  // meters
  static constexpr double kBehind = 20;

  /// A point of the way's middle; one for each meter.
  struct Spot {
    double right = 0;
    double ahead = 0;
    double turned = 0;  // from the eye's direction, radians to the right
  };

  FlatCanvas& m_canvas;
  double m_meters;
  double m_sightMeters;
  double m_turnedAway;
  double m_courseDegrees;
  double m_focal;
  double m_horizon;
  double m_eyeHeight;
  std::vector<Spot> m_spots;
  std::vector<CanvasPoint> m_outline;
};

}  // namespace vrx::test_support
