// The checked output settings as the engine uses them. Made once per sequence from the host's record; used by
// the encoders, the writer and the sequence.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/EngineResult.h"
#include "engine/ExactTime.h"
#include "engine/RenderOverrides.h"
#include "vrx/VRXOutputSetting.h"

namespace vrx::engine {

enum class AudioCodec { Aac, Ac3, Pcm16, Pcm24 };
enum class Container { Mp4, QuickTime, MpegTs };

struct VideoPlan {
  VideoCodec codec;
  int width;   // pixels, even
  int height;  // pixels, even
  FrameDuration frameDuration;
  std::int64_t bitrate;           // bits per second; 0 for constant quality
  std::optional<double> quality;  // constant rate factor; none: by the codec
  bool interlaced;
  const char* preset;  // as x264 names them
  bool hardware;       // by an encoder in hardware where one works
  // Of H.264 that goes with copied pictures; 0 else.
  int parameterSetId;        // number of its parameter sets
  std::int64_t peakBitrate;  // bits per second
  std::int64_t bufferBits;   // of the decoder that the bitrate may vary in
};

struct AudioPlan {
  AudioCodec codec;
  int channels;    // 1, 2 or 6
  int sampleRate;  // Hz
};

struct OutputPlan {
  std::string path;  // native bytes
  Container container;
  VideoPlan video;
  std::optional<AudioPlan> audio;
  std::string timeZone;         // hexadecimal digits of the time-zone item; empty without one
  std::int64_t firstFrame = 0;  // of the movie: the first that is written
  std::int64_t frameCount = 0;  // 0: all that are left
  bool overlaysAlone = false;
  SmartRendering smart = SmartRendering::Off;  // never by the record
  Tracks tracks = Tracks::All;
  std::optional<PieceLabel> piece;  // without its frames
};

/// kInvalidArgument for a record without its parts, kUnusableSettings with a logged line that names the
/// setting.
Result MakeOutputPlan(const VRXSystemOutputSetting& setting, const RenderOverrides& overrides,
                      OutputPlan& plan);

/// Samples of a movie of `frames` frames, rounded to the nearest.
std::int64_t SamplesOfFrames(std::int64_t frames, FrameDuration duration, int sampleRate);

}  // namespace vrx::engine
