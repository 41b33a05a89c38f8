#include "foundation/platform/TimeZone.h"

#include <ctime>

namespace vrx::platform {

std::int32_t UtcOffsetMinutes() {
  constexpr long kSecondsPerMinute = 60;
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) return 0;
  return static_cast<std::int32_t>(local.tm_gmtoff / kSecondsPerMinute);
}

}  // namespace vrx::platform
