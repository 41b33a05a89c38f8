// Turns finished frames into packets of the movie's video stream. Used by the sequence.
#pragma once

#include <cstdint>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"
#include "engine/StopSignal.h"

namespace vrx::engine {

/// Belongs to one thread; the codec has threads of its own.
class VideoEncoder {
 public:
  /// kUnusableSettings when the codec refuses the plan, with a logged line.
  Result Open(const VideoPlan& plan, bool globalHeader);
  const AVCodecContext& GetContext() const { return *m_codec; }

  /// Encodes `frame` as number `index` of the movie and writes what comes out. The frame's own time and
  /// picture type are overwritten.
  Result Encode(AVFrame& frame, std::int64_t index, MovieWriter& writer, int stream);
  /// Writes all that the codec still holds, or part of it when `stop` is set. No frame may follow.
  Result Drain(MovieWriter& writer, int stream, const StopSignal& stop);

 private:
  Result Send(const AVFrame* frame);
  Result WritePackets(MovieWriter& writer, int stream, const StopSignal& stop);

  CodecPtr m_codec;
  PacketPtr m_packet;
  bool m_interlaced = false;
};

}  // namespace vrx::engine
