// Writes the shots of a match into a painter document. The importer of shots uses it.
#pragma once

#include <cstdint>
#include <span>

#include "content/plist/XpIniDict.h"
#include "overlay/tennis/TennisShots.h"

namespace vrx::overlay {

struct TennisDocumentSettings {
  std::int32_t layoutType = 1;
  std::int32_t unit = 0;  // of the speeds that are shown: 0 km/h, 1 mph, 2 knots
  XpDateTime start;       // of the match, local time; not valid: no date is shown
  double durationSeconds = 0.0;
};

/// Replaces the tennis part of `document`, which may be empty, and the unit. Everything else that is there
/// stays; what the overlay needs beside it is added: texts in English, a size, and an end of the drawn span
/// that no movie reaches. The painter converts km/h to mph but shows knots as they are written, so these are
/// converted here.
XpResult PutTennisShots(std::span<const TennisShot> shots, const TennisDocumentSettings& settings,
                        XpIniDict& document);

}  // namespace vrx::overlay
