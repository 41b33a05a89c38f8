// Points and rectangles as numbers in the messages of failed tests.
#pragma once

#include <ostream>

#include "drawing/Geometry.h"

namespace vrx::drawing {

inline void PrintTo(const Point& point, std::ostream* out) {
  *out << "(" << point.x << ", " << point.y << ")";
}
inline void PrintTo(const Rect& rect, std::ostream* out) {
  *out << "(" << rect.left << ", " << rect.top << ", " << rect.right << ", " << rect.bottom << ")";
}

}  // namespace vrx::drawing
