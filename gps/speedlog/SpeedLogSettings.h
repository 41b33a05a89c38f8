// What the user's settings say about the speed graph.
#pragma once

#include <cstdint>

namespace vrx::gps {

/// Seconds that the strip shows at a time, 10 to 100.
std::int32_t GetViewAreaTime();

/// Where the cursor stands, in percent of the strip, 30 to 100.
std::int32_t GetViewAreaPosition();

}  // namespace vrx::gps
