// Sizes, frame rates and bitrates as they are written on the command line. Each parser gives nothing for what
// it does not understand, and each check an empty text, or what is wrong in one line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "vrx/VRXTimeline.h"

namespace vrx::host {

struct PictureSize {
  std::int32_t width = 0;  // pixels
  std::int32_t height = 0;
  friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// "1920x1080": both even and within the limits of a movie.
std::optional<PictureSize> ParsePictureSize(const std::string& text);
std::string CheckPictureSize(const std::string& text);

/// "25", "30000/1001", and "29.97" for the broadcast rate that is meant by it. Gives the length of a frame.
std::optional<VRXTimeInfo> ParseFrameRate(const std::string& text);
std::string CheckFrameRate(const std::string& text);

/// Bits a second: "8000000", "8000k", "8M", "2.5M".
std::optional<std::int32_t> ParseBitrate(const std::string& text);
std::string CheckBitrate(const std::string& text);

/// The usual rate that is nearest to that of a source, whose clock may waver, and at most 60 frames a second.
VRXTimeInfo UsualFrameDuration(const VRXTimeInfo& source);

/// "29.97", "25": with at most three decimals.
std::string RateText(const VRXTimeInfo& frameDuration);

}  // namespace vrx::host
