// What the host asks of its renders beyond their records. Set through the module's export, and read when a
// sequence is made.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/EngineResult.h"
#include "engine/PieceLabel.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::engine {

enum class VideoCodec { H264, Mpeg2, Hevc, Av1 };
enum class SmartRendering { ByRecord, Off, Auto, Require };
enum class Tracks { All, Picture, Sound };

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
  std::optional<PieceLabel> piece;  // its movie and number
};

/// kUnusableSettings, with a logged line and no change, for values that are not usable. Null: none any more.
/// Thread-safe, as is the other one.
Result SetRenderOverrides(const VRXRenderOverrides* overrides);

RenderOverrides CurrentRenderOverrides();

}  // namespace vrx::engine
