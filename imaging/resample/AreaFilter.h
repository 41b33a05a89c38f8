// Makes lines shorter: each target sample is the mean of the stretch of the source that it covers, in exact
// fractions.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/resample/LineFilter.h"

namespace vrx::resample {

/// For `target` below `source`. The mean is a multiplication by a reciprocal that is rounded down, so that
/// a mean without a fraction may come out one lower.
std::unique_ptr<LineFilter> MakeAreaFilter(std::int32_t source, std::int32_t target);

}  // namespace vrx::resample
