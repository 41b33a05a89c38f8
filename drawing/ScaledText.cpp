#include "drawing/ScaledText.h"

#include <algorithm>
#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::drawing {

Rect ScaledOutwards(const Rect& rect, const TextScale& scale) {
  const auto down = [](double at) { return Saturate<std::int32_t>(std::floor(at)); };
  const auto up = [](double at) { return Saturate<std::int32_t>(std::ceil(at)); };
  return {down(scale.left + rect.left * scale.xFactor), down(scale.top + rect.top * scale.yFactor),
          up(scale.left + rect.right * scale.xFactor), up(scale.top + rect.bottom * scale.yFactor)};
}

double LimitOutline(double outline, double emPixels) {
  return outline > 0.0 ? std::min({outline, kWidestOutline, emPixels}) : 0.0;
}

}  // namespace vrx::drawing
