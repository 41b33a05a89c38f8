// Points, sizes and rectangles of the drawing layer, in pixels with y running down. Used by all painters.
#pragma once

#include <algorithm>
#include <cstdint>

namespace vrx::drawing {

struct Point {
  std::int32_t x = 0;
  std::int32_t y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  std::int32_t width = 0;
  std::int32_t height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

/// Right and bottom lie one past the last pixel.
struct Rect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  bool IsEmpty() const { return right <= left || bottom <= top; }
  /// Widths of any 32-bit edges; negative when the edges are inverted.
  std::int64_t Width() const { return std::int64_t{right} - left; }
  std::int64_t Height() const { return std::int64_t{bottom} - top; }
  friend bool operator==(const Rect&, const Rect&) = default;
};

/// Empty when the two have no pixel in common.
inline Rect Intersect(const Rect& a, const Rect& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
          std::min(a.bottom, b.bottom)};
}

/// A 64-bit coordinate held within the 32-bit range.
inline std::int32_t Saturated(std::int64_t value) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

/// Grown on all four sides.
inline Rect Grown(const Rect& rect, std::int32_t by) {
  return {Saturated(std::int64_t{rect.left} - by), Saturated(std::int64_t{rect.top} - by),
          Saturated(std::int64_t{rect.right} + by), Saturated(std::int64_t{rect.bottom} + by)};
}

/// The smallest rectangle with both; an empty one has no influence.
inline Rect Unite(const Rect& a, const Rect& b) {
  if (a.IsEmpty()) return b.IsEmpty() ? Rect() : b;
  if (b.IsEmpty()) return a;
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
          std::max(a.bottom, b.bottom)};
}

inline Rect Moved(const Rect& rect, std::int64_t dx, std::int64_t dy) {
  return {Saturated(rect.left + dx), Saturated(rect.top + dy), Saturated(rect.right + dx),
          Saturated(rect.bottom + dy)};
}

}  // namespace vrx::drawing
