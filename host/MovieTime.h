// Times as they are written on the command line. Every command that takes one reads it with this.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "vrx/VRXTimeline.h"

namespace vrx::host {

/// A moment on the movie's clock: in seconds, or as the number of a frame.
struct MovieTime {
  double seconds = 0.0;
  std::optional<std::int64_t> frame;  // counted from 0; counts when it is there
};

/// "12.5", "1:02.5" and "00:01:02" are seconds, minutes and hours; "310f" is a frame. Nothing for what is
/// none of them, and for times below 0.
std::optional<MovieTime> ParseMovieTime(const std::string& text);

/// Empty when the text is such a time; else what is wrong with it, and what may have been meant.
std::string CheckMovieTime(const std::string& text);

/// For options that take a length: makes a number of seconds of "90", "1:30" and, where `least` is below 0,
/// "-1:30". Empty, or what is wrong with the text.
std::string ReadSeconds(std::string& text, double least, double most);

/// The frame that is shown at `time`; 0 for a frame without a length.
std::int64_t FrameAt(const MovieTime& time, const VRXTimeInfo& frameDuration);

}  // namespace vrx::host
