// The motion of a racket: from one pose for each frame of an animation to what the drawing shows of it, which
// is the racket, two fainter ones behind it and the trail of its head.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace vrx::pictures {

struct Point {
  double x = 0.0;
  double y = 0.0;
};

struct Pose {
  double handX = 0.0;  // where the grip is, in the picture
  double handY = 0.0;
  double turn = 0.0;   // degrees, clockwise
  double scale = 1.0;  // smaller while the racket is farther away
  double open = 1.0;   // width of the face as it is seen: 1 from the front, 0 from its edge
};

struct Swing {
  std::vector<Pose> poses;  // one a frame
  Point grip;               // in the racket's drawing
  Point head;               // the tip of the head
  double innerReach = 0.0;  // where the trail begins, between the grip (0) and the tip (1)
};

/// The values "pose", "ghost1", "ghost2" (transforms), "ghosts" (0 in the first and the last frame, else 1)
/// and "trail" (paths).
std::map<std::string, std::string> SwingValues(const Swing& swing, int frame);

}  // namespace vrx::pictures
