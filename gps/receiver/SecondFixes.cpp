#include "gps/receiver/SecondFixes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <numbers>

#include "gps/receiver/UtcTime.h"

namespace vrx::receiver {
namespace {

constexpr std::int64_t kPartGapMilliseconds = 3'600'000;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

std::vector<Fix> ValidFixes(std::span<const Fix> fixes) {
  std::vector<Fix> valid;
  std::ranges::copy_if(fixes, std::back_inserter(valid), &Fix::isValid);
  return valid;
}

/// Puts the parts of the log that are far apart in order of their first times.
std::vector<Fix> SortedParts(std::vector<Fix> fixes) {
  std::vector<std::span<const Fix>> parts;
  std::size_t start = 0;
  for (std::size_t i = 1; i <= fixes.size(); ++i) {
    if (i < fixes.size() &&
        std::abs(fixes[i].utcMilliseconds - fixes[i - 1].utcMilliseconds) <= kPartGapMilliseconds) {
      continue;
    }
    parts.push_back(std::span(fixes).subspan(start, i - start));
    start = i;
  }
  std::ranges::stable_sort(parts, {}, [](const auto& part) { return part.front().utcMilliseconds; });
  std::vector<Fix> sorted;
  sorted.reserve(fixes.size());
  for (const auto& part : parts) sorted.insert(sorted.end(), part.begin(), part.end());
  return sorted;
}

/// The longest subsequence whose times rise; of two fixes of one time the later one, which a receiver has
/// written with its clock set right.
std::vector<Fix> LongestRising(const std::vector<Fix>& fixes) {
  std::vector<std::size_t> ends;  // at i: where the best sequence of i + 1 fixes ends
  std::vector<std::size_t> before(fixes.size(), kNone);
  for (std::size_t i = 0; i < fixes.size(); ++i) {
    const auto place = std::ranges::lower_bound(ends, fixes[i].utcMilliseconds, {},
                                                [&](std::size_t at) { return fixes[at].utcMilliseconds; });
    if (place != ends.begin()) before[i] = *(place - 1);
    if (place == ends.end()) {
      ends.push_back(i);
    } else {
      *place = i;
    }
  }
  std::vector<Fix> rising(ends.size());
  std::size_t at = ends.empty() ? kNone : ends.back();
  for (auto fix = rising.rbegin(); fix != rising.rend(); ++fix) {
    *fix = fixes[at];
    at = before[at];
  }
  return rising;
}

std::int64_t DistanceToSecond(const Fix& fix) {
  return std::abs(fix.utcMilliseconds - NearestSecond(fix) * kMillisecondsPerSecond);
}

std::array<double, 3> EarthCentred(const Fix& fix) {
  constexpr double kSemiMajorAxis = 6'378'137;
  constexpr double kFlattening = 1 / 298.257223563;
  constexpr double kEccentricity2 = kFlattening * (2 - kFlattening);
  constexpr double kRadian = std::numbers::pi / 180;
  const double latitude = fix.latitude * kRadian;
  const double longitude = fix.longitude * kRadian;
  const double sine = std::sin(latitude);
  const double normal = kSemiMajorAxis / std::sqrt(1 - kEccentricity2 * sine * sine);
  return {normal * std::cos(latitude) * std::cos(longitude),
          normal * std::cos(latitude) * std::sin(longitude), normal * (1 - kEccentricity2) * sine};
}

}  // namespace

std::vector<Fix> ThinToSeconds(std::span<const Fix> fixes, ThinCounts* counts) {
  ThinCounts ignored;
  ThinCounts& left = counts == nullptr ? ignored : *counts;
  left = {};
  const std::vector<Fix> sorted = SortedParts(ValidFixes(fixes));
  left.voidFixes = fixes.size() - sorted.size();
  const std::vector<Fix> rising = LongestRising(sorted);
  const auto isKept = [&](const Fix& fix) {
    return std::ranges::binary_search(rising, fix.utcMilliseconds, {}, &Fix::utcMilliseconds);
  };
  const auto withKeptTime = static_cast<std::uint64_t>(std::ranges::count_if(sorted, isKept));
  left.duplicates = withKeptTime - rising.size();
  left.outOfOrder = sorted.size() - withKeptTime;

  std::vector<Fix> seconds;
  for (const Fix& fix : rising) {
    if (seconds.empty() || NearestSecond(fix) != NearestSecond(seconds.back())) {
      seconds.push_back(fix);
    } else if (DistanceToSecond(fix) < DistanceToSecond(seconds.back())) {
      seconds.back() = fix;
    }
  }
  left.thinned = rising.size() - seconds.size();
  return seconds;
}

std::int64_t NearestSecond(const Fix& fix) {
  // Times are not before 1970, so that the division rounds down.
  return (fix.utcMilliseconds + kMillisecondsPerSecond / 2) / kMillisecondsPerSecond;
}

std::size_t FillSpeeds(std::span<Fix> fixes) {
  std::size_t filled = 0;
  for (std::size_t i = 0; i < fixes.size(); ++i) {
    if (fixes[i].speedKnots >= 0) continue;
    double meters = 0;
    std::int64_t milliseconds = 0;
    const auto addWay = [&](const Fix& from, const Fix& to) {
      const std::int64_t taken = to.utcMilliseconds - from.utcMilliseconds;
      if (taken <= 0 || taken > kLongestSpeedGapMilliseconds) return;
      meters += DistanceMeters(from, to);
      milliseconds += taken;
    };
    if (i > 0) addWay(fixes[i - 1], fixes[i]);
    if (i + 1 < fixes.size()) addWay(fixes[i], fixes[i + 1]);
    if (milliseconds == 0) continue;
    const double seconds = static_cast<double>(milliseconds) / static_cast<double>(kMillisecondsPerSecond);
    const double knots = meters / seconds * kKnotsPerMeterPerSecond;
    if (knots > kFastestKnots) continue;
    fixes[i].speedKnots = knots;
    ++filled;
  }
  return filled;
}

double DistanceMeters(const Fix& from, const Fix& to) {
  const auto a = EarthCentred(from);
  const auto b = EarthCentred(to);
  return std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
}

}  // namespace vrx::receiver
