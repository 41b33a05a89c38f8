// Makes of the fixes of any receiver what a log of ours holds: one a second, in order, with a speed.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "gps/receiver/ReceiverLog.h"

namespace vrx::receiver {

inline constexpr double kKnotsPerMeterPerSecond = 3600.0 / 1852.0;
/// Over a longer time without a fix, the way between its ends says little about the speed at them.
inline constexpr std::int64_t kLongestSpeedGapMilliseconds = 10'000;

/// What ThinToSeconds left out.
struct ThinCounts {
  std::uint64_t voidFixes = 0;
  std::uint64_t duplicates = 0;  // of a time that another fix has, too
  std::uint64_t outOfOrder = 0;  // their time runs backward
  std::uint64_t thinned = 0;     // a fix nearer to the same second was kept
};

/// The valid fixes, at most one for each whole second: the one nearest to it, within half a second, with its
/// own time. Parts of the log that are more than an hour apart are put in order of their times first, since
/// programs write the last track first as well; in what remains, the largest set of fixes whose times rise is
/// kept, so that a single wrong time costs no other fix.
std::vector<Fix> ThinToSeconds(std::span<const Fix> fixes, ThinCounts* counts);

/// The whole second that a fix stands for, since 1970.
std::int64_t NearestSecond(const Fix& fix);

/// Gives fixes of unknown speed, whose times rise, the mean speed on the straight lines from the fix before
/// and to the fix after. A neighbour more than kLongestSpeedGapMilliseconds away does not count; without any,
/// or when it comes out as an impossible one, the speed stays unknown. Returns how many speeds were made.
std::size_t FillSpeeds(std::span<Fix> fixes);

/// The straight line through the earth's ellipsoid (WGS 84) in metres, which for fixes that are kilometres
/// apart is the way on the ground to within a millimetre, also at the poles and the antimeridian.
double DistanceMeters(const Fix& from, const Fix& to);

}  // namespace vrx::receiver
