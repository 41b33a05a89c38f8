// The sound of test clips, a click on each whole second, and the search for such clicks in decoded sound.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vrx::test_support {

/// A tone between the clicks is quiet enough (a tenth of full scale) not to be taken for one.
enum class ClickBackground { kSilence, kTone };

/// The sample `position` counted from time 0, between -1 and 1: for the first 2 ms of each second a burst at
/// nine tenths of full scale, which starts at its peak, and the background elsewhere.
float ClickSample(std::int64_t position, int rate, ClickBackground background);

/// The same tone without clicks.
float ToneSample(std::int64_t position, int rate);

/// Indices in `samples` at which clicks begin: the first sample louder than 0.45 after 50 ms without one.
std::vector<std::int64_t> FindClicks(std::span<const float> samples, int rate);

}  // namespace vrx::test_support
