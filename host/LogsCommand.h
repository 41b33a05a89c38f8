// `vrx logs`: shows the log of the current run, and goes on as entries arrive.
#pragma once

#include <cstdint>

#include "foundation/log/LogChannel.h"

namespace vrx::host {

struct LogsOptions {
  std::uint32_t channel = SfLogOutput;
  std::int64_t lines = 1000;  // the last ones
  bool follow = false;        // until interrupted
  bool path = false;          // print where the log lies instead
};

/// Returns the exit status: kFailed when nothing was logged yet.
int RunLogs(const LogsOptions& options);

}  // namespace vrx::host
