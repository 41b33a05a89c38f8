// Turns finished frames into packets of the movie's video stream. Used by the sequence.
#pragma once

#include <cstdint>
#include <memory>

#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/HardwareEncoder.h"
#include "engine/OutputPlan.h"
#include "engine/PacketSink.h"
#include "engine/StopSignal.h"

namespace vrx::engine {

/// Belongs to one thread; the codec has threads of its own.
class VideoEncoder {
 public:
  VideoEncoder() = default;
  VideoEncoder(const VideoEncoder&) = delete;
  VideoEncoder& operator=(const VideoEncoder&) = delete;
  ~VideoEncoder();

  /// In hardware where the plan asks for it and such an encoder works; the log says which does, or why none.
  /// kUnusableSettings when the codec refuses the plan, with a logged line.
  Result Open(const VideoPlan& plan, bool globalHeader);
  const AVCodecContext& GetContext() const { return *m_codec; }
  bool HasFrames() const { return m_hasFrames; }

  /// Encodes `frame` as number `index` of the movie and writes what comes out. The frame's own time and
  /// picture type are overwritten.
  Result Encode(AVFrame& frame, std::int64_t index, PacketSink& sink);
  /// Writes all that the codec still holds, or part of it when `stop` is set. No frame may follow.
  Result Drain(PacketSink& sink, const StopSignal& stop);

 private:
  Result OpenSoftware(const VideoPlan& plan, bool globalHeader);
  void FeedBeforeClosing();
  Result Send(const AVFrame* frame);
  Result Fail(int error) const;
  Result WritePackets(PacketSink& sink, const StopSignal& stop);

  std::unique_ptr<DeviceFrames> m_deviceFrames;  // of an encoder in hardware
  CodecPtr m_codec;
  PacketPtr m_packet;
  bool m_interlaced = false;
  bool m_hasFrames = false;   // was sent some
  bool m_needsFrame = false;  // the codec had none yet and would not close
};

}  // namespace vrx::engine
