// Copies rendered pieces together to their movie, while the main thread waits for interrupts. The commands
// `join` and `render --jobs` use it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "foundation/platform/Signals.h"
#include "host/EngineModule.h"

namespace vrx::host {

struct JoinRequest {
  std::vector<XpString> pieces;  // native paths, in any order
  XpString output;
  /// Called on this thread with the hundredths that are done; false when the movie is no longer wanted.
  std::function<bool(std::uint32_t percent)> onPercent;
  /// Called when an interrupt has to end the program at once; it ends it.
  std::function<void()> endNow;
};

struct JoinOutcome {
  enum class End { Done, Failed, Cancelled };
  End end = End::Failed;
  std::uint32_t code = 0;  // of a failure
  std::string cause;       // likewise
};

/// The movie is written, or nothing under its name. The first interrupt cancels.
JoinOutcome JoinPieces(EngineModule& engine, platform::InterruptWaiter& waiter, const JoinRequest& request);

}  // namespace vrx::host
