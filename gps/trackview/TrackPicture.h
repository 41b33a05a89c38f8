// Draws a scene of the track view. KVSGPSTrack uses it.
#pragma once

#include "drawing/Geometry.h"
#include "gps/trackview/TrackScene.h"
#include "overlay/painter/PainterSurface.h"

namespace vrx::gps {

/// Shadows first, then what lies ahead, what has been travelled, the flags and the marker. `rect` is the one
/// that the scene was made for; texts of flags stay left of its right edge.
void DrawTrackPicture(const TrackScene& scene, const TrackLook& look, const drawing::Rect& rect,
                      overlay::PainterSurface& surface);

/// Makes every pixel of the grey 0x333333 in the rectangle a translucent shadow.
void FixTrackShadowAlpha(XpPixmap32& pixmap, const drawing::Rect& rect);

}  // namespace vrx::gps
