// Writes a route as a GPX document.
#pragma once

#include <string>

#include "samples/route/Route.h"

namespace vrx::test_support {

/// Where a point's speed stands: nowhere, in an element of its own as in GPX 1.0, or in the extensions
/// of 1.1.
enum class GpxSpeed { kNone, kElement, kExtension };

struct GpxStyle {
  std::string version = "1.1";
  GpxSpeed speed = GpxSpeed::kNone;
  std::string prefix;    // of GPX's own elements, with its colon
  int zoneMinutes = 0;   // of the times; 0 writes "Z"
  int rate = 1;          // points a second; a divisor of 20
  bool isUtf16 = false;  // little-endian with a byte order mark
};

std::string GpxLog(const Route& route, const GpxStyle& style);

}  // namespace vrx::test_support
