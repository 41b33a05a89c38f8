// Puts a position and a moment into the GPS fields that a picture has, in the form that they have there.
#pragma once

#include <optional>
#include <string>

#include "foundation/time/XpDateTime.h"
#include "imaging/tags/GpsTags.h"

namespace vrx::host {

struct NewPosition {
  double latitude = 0;               // degrees, north of the equator
  double longitude = 0;              // degrees, east of Greenwich
  std::optional<double> altitude;    // metres above sea level
  std::optional<XpDateTime> moment;  // UTC
};

/// "48.137,11.575" in degrees. Nothing unless both are numbers and lie on the globe.
std::optional<NewPosition> ReadPosition(const std::string& text);
/// "2024-05-01T10:11:12Z".
std::optional<XpDateTime> ReadMoment(const std::string& text);

/// Fractions keep their denominators where the new value is then exact to 1/100 of a second of arc or 5 mm;
/// otherwise seconds get 1,000,000 and metres 1,000. Of the moment only what the record has is set, time or
/// date. What the record lacks, such as "latitude", or nothing; it is half changed then.
std::string PutPosition(const NewPosition& position, XpGPSRecord& record);

}  // namespace vrx::host
