// The instruments of the GPS overlay that are pictures: the symbol that says whether there is a position, the
// meter's face and its needle.
#pragma once

#include <cstdint>

#include "gps/log/KVUGPSInfo.h"
#include "gps/templates/KorvoTemplate.h"
#include "overlay/painter/PainterSurface.h"

namespace vrx::gps {

/// The needle's picture at a point, where `maxSpeed` in knots is the fastest speed of the movie; empty
/// without a meter. Slow walks keep part of the scale.
PainterPicture NeedleAt(const KVUGPSInfo& point, double maxSpeed, std::int32_t unit,
                        const KorvoTemplateScenario& scenario);

/// `look` has a scenario and a structure.
void DrawGpsBaseLayer(const KorvoTemplate& look, bool hasFix, overlay::PainterSurface& surface);

}  // namespace vrx::gps
