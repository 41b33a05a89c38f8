// What the host asks of its renders beyond their records. Set through the module's export, and read when a
// sequence is made.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/EngineResult.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

enum class VideoCodec { H264, Mpeg2, Hevc, Av1 };
enum class SmartRendering { ByRecord, Off, Auto, Require };
enum class Tracks { All, Picture, Sound };

/// What a movie that is a piece of a larger one says of itself.
struct PieceLabel {
  std::string movie;            // letters and digits
  std::uint32_t number = 0;     // from 1 on; 0 for the sound
  std::uint32_t count = 0;      // pieces of pictures
  std::int64_t firstFrame = 0;  // of the whole movie
  std::int64_t frameCount = 0;
  bool operator==(const PieceLabel&) const = default;
};

struct RenderOverrides {
  std::optional<VideoCodec> codec;
  bool hardware = false;
  const char* preset = nullptr;   // one of the names of x264, static; null: by the record
  std::optional<double> quality;  // constant rate factor
  std::int64_t firstFrame = 0;    // of the movie
  std::int64_t frameCount = 0;    // 0: all that are left
  bool overlaysAlone = false;
  SmartRendering smart = SmartRendering::ByRecord;
  Tracks tracks = Tracks::All;
  std::optional<PieceLabel> piece;  // its frames are those of the range
};

/// kUnusableSettings, with a logged line and no change, for values that are not usable. Null: none any more.
/// Thread-safe, as is the other one.
Result SetRenderOverrides(const VRXRenderOverrides* overrides);

RenderOverrides CurrentRenderOverrides();

}  // namespace vrx::engine
