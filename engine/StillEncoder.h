// An encoder whose every picture stands alone and comes out at once. Used for the formats in which overlays
// are written alone.
#pragma once

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/OutputPlan.h"

namespace vrx::engine {

/// Belongs to one thread.
class StillEncoder {
 public:
  /// Makes an encoder for pictures of the movie's size and rate, which can be set up until Open. `name` as
  /// libavcodec has it. kEncoderFailed, with a logged line, when that was built without it.
  Result Create(const char* name, AVPixelFormat format, const VideoPlan& plan);
  AVCodecContext& GetContext() const { return *m_codec; }
  /// kUnusableSettings, with a logged line, when the codec refuses the plan.
  Result Open();

  Result Encode(AVFrame& frame);
  /// The picture that was encoded last, until the next.
  const AVPacket& GetPacket() const { return *m_packet; }

 private:
  CodecPtr m_codec;
  PacketPtr m_packet;
};

}  // namespace vrx::engine
