// How far the tennis counters have rolled towards the next shot, as numbers: two neighbouring values and how
// far the upper one has come in. The painter draws what these say.
#pragma once

#include <cstdint>

#include "overlay/tennis/TennisShots.h"

namespace vrx::overlay {

/// A counter shows `lower` at offset 0 and `upper` at the height of one step; the lines move down between.
struct CounterRoll {
  std::int32_t upper = 0;
  std::int32_t lower = 0;
  std::int32_t offset = 0;  // pixels of a frame 1080 lines high
  friend bool operator==(const CounterRoll&, const CounterRoll&) = default;
};

/// The unit that speeds are converted to; others show the km/h of the metadata.
inline constexpr std::int32_t kTennisUnitMph = 1;

/// The counters of one moment.
class CounterRolls {
 public:
  /// `current` and `next` are the shots before and after `t` (ms), null for none: their values count as 0.
  /// `rollHeight` is that of one step.
  CounterRolls(const TennisShot* current, const TennisShot* next, std::int64_t t, std::int32_t rollHeight);

  CounterRoll Count() const;
  /// Of a speed field, rounded to whole units. A difference of up to 4 rolls by one at a time, a larger one
  /// in four equal steps.
  CounterRoll Speed(double TennisShot::*field, std::int32_t unit) const;

 private:
  /// Makes the roll of `steps` steps, from the values that `valueAt` gives for each step.
  template <class ValueAt>
  CounterRoll Roll(std::int64_t steps, bool rises, ValueAt valueAt) const;

  const TennisShot* m_current;
  const TennisShot* m_next;
  std::int64_t m_progress;  // of the whole roll, 0 to kWholeRoll
  std::int64_t m_rollHeight;
};

}  // namespace vrx::overlay
