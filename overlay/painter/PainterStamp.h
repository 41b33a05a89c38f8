// Lets a painter say, without drawing, that its picture at some times equals one that it has drawn before.
// The frame callback keeps the overlay picture while all painters give the stamps of the frame before.
#pragma once

#include <cstdint>

/// The moment that a frame shows, as each kind of painter counts it.
struct PainterTimes {
  std::int32_t videoId = 0;
  std::int64_t gpsMs = 0;
  std::int64_t tennisMs = 0;
  std::int64_t captionMs = 0;
};

/// Two equal known stamps of one painter mean equal pixels on equal pixmaps. `generation` counts the
/// painter's configurations, so that a stamp never means two pictures.
struct PainterStamp {
  bool isKnown = false;       // false: the painter is asked to draw every frame
  std::uint64_t painter = 0;  // its id, filled by the painter manager
  std::uint64_t generation = 0;
  std::uint64_t content = 0;

  friend bool operator==(const PainterStamp&, const PainterStamp&) = default;
};
