// What the GPS overlay shows at a moment. Equal scenes are equal pictures, so the painter compares two to
// know whether anything changed.
#pragma once

#include <optional>

#include "gps/painter/GpsReadouts.h"
#include "gps/speedlog/SpeedLogScene.h"
#include "gps/trackview/TrackScene.h"
#include "overlay/resources/PainterResources.h"

namespace vrx::gps {

struct GpsScene {
  bool isVisible = false;  // without it, nothing else counts
  bool hasFix = false;
  PainterPicture needle;  // may be empty
  std::optional<SpeedLogScene> speedLog;
  std::optional<TrackScene> track;
  std::optional<GpsReadouts> readouts;
  friend bool operator==(const GpsScene&, const GpsScene&) = default;
};

}  // namespace vrx::gps
