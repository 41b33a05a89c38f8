// The places of videos in picture-in-picture and split-screen arrangements of a 1920 by 1080 frame.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "drawing/Geometry.h"

namespace vrx::overlay {

/// Videos in order, the main one first.
struct VideoPlaces {
  std::uint32_t count = 0;
  std::array<drawing::Rect, 4> rects{};

  std::span<const drawing::Rect> Get() const { return {rects.data(), count}; }
};

struct VideoLayout {
  bool hasSizes = false;  // without them only `normal` counts
  VideoPlaces normal;
  VideoPlaces middle;
  VideoPlaces large;

  /// `subVideoSize` 1 and 2 take the larger places of a layout that has them.
  const VideoPlaces& PlacesFor(std::int32_t subVideoSize) const;
};

/// Null for a type outside 1 to 15.
const VideoLayout* FindVideoLayout(std::int32_t layoutType);

}  // namespace vrx::overlay
