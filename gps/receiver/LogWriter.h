// Writes fixes as the text of a log in a movie's sidecar.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "gps/receiver/ReceiverLog.h"
#include "vrx/XpResult.h"

namespace vrx::receiver {

struct LogStyle {
  /// What the reader adds to a movie's UTC time to find its place in the log: the log's clock minus the
  /// movie's.
  std::int64_t shiftSeconds = 0;
  bool hasHeaderMark = false;  // the reader then does not link the log with those of other clips
};

/// `seconds` are fixes as ThinToSeconds gives them, each written at its whole second. Void fixes are left
/// out: the reader would show their stale positions as logged ones, whereas it draws a gap as a gap. The
/// format has no text for an unknown speed, so such speeds are written as 0; FillSpeeds makes them first.
/// XpErrInvalidArgument when no fix is left, when the seconds do not rise, when a date lies outside of the
/// years 2000 to 2099, which the format can tell apart, when a position or speed is out of range, or when the
/// shift is more than 32 bits of seconds.
XpResult WriteLog(std::span<const Fix> seconds, const LogStyle& style, std::string& text);

}  // namespace vrx::receiver
