// The canvas of the speed graph: the scale and the curve of a scene, painted once and kept until the scene
// changes. KVSGPSSpeedLog lays it over the frames.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/Color.h"
#include "gps/speedlog/SpeedLogLabels.h"
#include "gps/speedlog/SpeedLogScene.h"
#include "imaging/pixmap/XpPixmap.h"
#include "overlay/painter/PainterSurface.h"
#include "overlay/resources/PainterResources.h"
#include "vrx/XpString.h"

namespace vrx::gps {

/// Pictures that are empty are left out.
struct SpeedLogLook {
  PainterPicture scale1;  // the longer ticks
  PainterPicture scale2;
  PainterPicture startMarker;
  PainterPicture goalMarker;
  PainterPicture positionMarker;
  drawing::ColorRef labelColor = 0;
  friend bool operator==(const SpeedLogLook&, const SpeedLogLook&) = default;
};

class SpeedLogCanvas {
 public:
  /// `surface` gives the text renderer and the renditions of the pictures; nothing is drawn on it. Null
  /// without memory. Valid until the next call.
  const XpPixmap32* Paint(const SpeedLogScene& scene, const SpeedLogLook& look, const XpString& fontName,
                          bool hasLabels, overlay::PainterSurface& surface);
  const EdgeFade& GetFade() const { return m_fade; }

 private:
  bool Prepare(drawing::Size size);

  XpPixmap32 m_pixmap;
  EdgeFade m_fade;
  bool m_isDrawn = false;
  SpeedLogScene m_scene;
  SpeedLogLook m_look;
  XpString m_fontName;
  bool m_hasLabels = true;
};

/// A length at the scale, rounded up where that does not enlarge a picture on a small frame.
std::int32_t ScaledLength(std::int32_t length, double scale);

/// Lays a marker around `place`, moved down where it would leave the canvas at its upper edge.
void PaintSpeedLogMark(drawing::Point place, const PainterPicture& picture, double scale,
                       overlay::PainterSurface& surface);

/// Ticks, labels if wanted, and the band of the base line, on a clear canvas.
void PaintSpeedLogScale(const SpeedLogScene& scene, const SpeedLogLook& look,
                        const SpeedLogLabelStyle& labels, bool hasLabels, const EdgeFade& fade,
                        overlay::PainterSurface& surface);

/// The curve over the scale: pale where it has not been reached, in the colours of the speed and filled below
/// up to the cursor, with the marks of its start and end.
void PaintSpeedLogCurve(const SpeedLogScene& scene, const SpeedLogLook& look, const EdgeFade& fade,
                        overlay::PainterSurface& surface);

}  // namespace vrx::gps
