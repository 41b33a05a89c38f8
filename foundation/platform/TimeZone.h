// The rules of local time that the system is set to.
#pragma once

#include <cstdint>

namespace vrx::platform {

/// Minutes that local time is ahead of UTC now, daylight time included; negative west of Greenwich.
std::int32_t UtcOffsetMinutes();

}  // namespace vrx::platform
