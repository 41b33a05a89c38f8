// What the engine knows of the movie's picture codecs: their encoders in libav, what those need of a plan,
// and the files that hold them. Used by the output plan and by the video encoder.
#pragma once

#include <array>

#include "engine/AvPointers.h"
#include "engine/OutputPlan.h"

namespace vrx::engine {

/// An encoder of libav that runs on the processor.
struct SoftwareEncoder {
  const char* name;  // libav's
  /// Its own options, after SetUpPicture.
  void (*setUp)(const VideoPlan& plan, AVCodecContext& codec);
  bool endsOnlyAfterAFrame = false;  // closing it before hangs
};

struct CodecFacts {
  const char* name;                         // for people
  std::array<SoftwareEncoder, 2> software;  // the first that takes the plan; may end with null
  std::array<const char*, 4> hardware;      // libav's names, best first; may end with null
  double quality;     // constant rate factor where a movie has neither that nor a bitrate
  bool takesQuality;  // a constant rate factor means something to it
  bool takesInterlaced;
  bool inQuickTime;  // beside MP4, which holds every codec
  bool inTransportStream;
};

const CodecFacts& FactsOf(VideoCodec codec);

/// What every encoder receives: size, rate, colour, bitrate. `globalHeader` as
/// MovieWriter::WantsGlobalHeader.
void SetUpPicture(const VideoPlan& plan, bool globalHeader, AVCodecContext& codec);

/// The constant rate factor that a plan without a bitrate gets.
double QualityOf(const VideoPlan& plan);

/// kUnusableSettings, with a logged line, where the codec does not fit the file or the other settings.
Result CheckCodec(const OutputPlan& plan);

}  // namespace vrx::engine
