// Draws the texts of the GPS overlay: the speed with its unit, date and clock, and the labelled rows. The
// painter asks for it on each frame.
#pragma once

#include "gps/painter/GpsReadouts.h"
#include "gps/templates/KorvoTemplate.h"
#include "overlay/document/TextTable.h"
#include "overlay/painter/PainterSurface.h"

namespace vrx::gps {

/// In the user's language.
struct GpsLabels {
  XpString speed;
  XpString elapsed;
  XpString total;
  XpString average;
  XpString distance;
  XpString title;  // of the track in the stacked layout
};
GpsLabels GpsLabelsFrom(const overlay::TextTable& texts);

/// `look` has a scenario with instruments and a structure. A date that is wider than its rectangle widens it
/// for good and moves the clock.
void DrawGpsTextFields(KorvoTemplate& look, const GpsLabels& labels, const GpsReadouts& readouts,
                       const XpString& speedUnit, overlay::PainterSurface& surface);

}  // namespace vrx::gps
