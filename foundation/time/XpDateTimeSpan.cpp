#include "foundation/time/XpDateTimeSpan.h"

#include <cmath>
#include <limits>

#include "foundation/time/SerialDate.h"

namespace {

constexpr double kLongestSpan = 3615899.999988426;
constexpr double kInt64Limit = 9223372036854775808.0;  // 2^63

}  // namespace

XpDateTimeSpan::XpDateTimeSpan(double days)
    : m_valid(days >= -kLongestSpan && days <= kLongestSpan), m_days(days) {}

std::int64_t XpDateTimeSpan::GetTotalSeconds() const {
  using vrx::serialdate::kHalfSecond;
  using vrx::serialdate::kSecondsPerDay;
  const double rounded = m_days < 0.0 ? m_days - kHalfSecond : m_days + kHalfSecond;
  const double seconds = rounded * static_cast<double>(kSecondsPerDay);
  if (std::isnan(seconds)) return 0;
  if (seconds >= kInt64Limit) return std::numeric_limits<std::int64_t>::max();
  if (seconds < -kInt64Limit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(seconds);
}
