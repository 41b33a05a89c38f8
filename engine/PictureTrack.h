// The movie's picture stream, made of encoded spans and of spans whose packets are copied from the sources.
// Used by the sequence, and by the join of pieces.
#pragma once

#include <cstdint>
#include <memory>

#include "engine/CopyReader.h"
#include "engine/JoinedStream.h"
#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"
#include "engine/SmartPlan.h"
#include "engine/StopSignal.h"
#include "engine/VideoEncoder.h"

namespace vrx::engine {

/// Belongs to one thread. Without a copied span the packets are the encoder's own.
///
/// With one, each encoded span is a stream of its own that begins with a key frame and ends complete, and so
/// is each copied span. Frame n has the time n; packet i of the stream, in decoding order, has the decoding
/// time i - d, where d is the deepest reordering of all spans: so both rise through every seam.
class PictureTrack {
 public:
  /// Opens an encoder if the plan needs one. `plan` and `stop` must outlive the track.
  Result Open(const OutputPlan& output, const SmartPlan& plan, const StopSignal& stop);
  /// Adds the stream to the movie, which must outlive the track.
  Result AddTo(MovieWriter& writer);

  /// Encodes `frame` as number `number`.
  Result Encode(AVFrame& frame, std::int64_t number);
  /// Writes the next packet of the copied span `span`: as many calls as it has frames write it whole.
  Result Copy(const PictureSpan& span);
  /// Writes all that an encoder still holds, or part of it when the stop signal is set. Nothing may follow.
  Result Drain();

  /// Packets written so far.
  std::uint64_t GetPacketCount() const { return m_writer->GetPacketCount(m_stream); }

 private:
  class PlainSink;
  class SeamSink;

  Result OpenForCopies(const OutputPlan& output, int level);
  Result OpenEncoder();
  Result EndEncodedSpan();
  Result WriteEncoded(AVPacket& packet, AVRational timeBase);
  Result WriteInOrder(AVPacket& packet, std::int64_t number);

  const SmartPlan* m_plan = nullptr;
  const StopSignal* m_stop = nullptr;
  MovieWriter* m_writer = nullptr;
  int m_stream = 0;
  VideoPlan m_video{};  // with what encoded spans need to go with copied ones
  bool m_wantsHeader = false;
  bool m_hasCopies = false;
  JoinedStream m_joined;     // with copies
  std::int64_t m_delay = 0;  // d

  std::unique_ptr<VideoEncoder> m_encoder;  // of the span at work; the first is opened ahead
  std::unique_ptr<CopyReader> m_reader;     // with copies
};

}  // namespace vrx::engine
