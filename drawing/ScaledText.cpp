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

bool TextScale::IsUsable() const {
  constexpr double kLargest = 1000.0;
  return xFactor > 0.0 && yFactor > 0.0 && xFactor <= kLargest && yFactor <= kLargest;
}

double LimitOutline(double outline, double emPixels, std::u16string_view text) {
  constexpr std::size_t kMostUnits = 2048;
  return outline > 0.0 && text.size() <= kMostUnits ? std::min({outline, kWidestOutline, emPixels}) : 0.0;
}

}  // namespace vrx::drawing
