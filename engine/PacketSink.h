// Where an encoder's packets go: into the movie as they are, or through the seams between copied and encoded
// spans. Used by the video encoder.
#pragma once

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"

namespace vrx::engine {

class PacketSink {
 public:
  /// Takes the packet's content. Its times are in `timeBase`.
  virtual Result Write(AVPacket& packet, AVRational timeBase) = 0;

 protected:
  ~PacketSink() = default;
};

}  // namespace vrx::engine
