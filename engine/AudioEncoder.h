// Pulls the movie's sound from the audio track and turns it into packets of the audio stream. Used by the
// sequence.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/AudioTrack.h"
#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"

namespace vrx::engine {

/// Belongs to one thread, and so does the track that it pulls from.
class AudioEncoder {
 public:
  /// kUnusableSettings when the codec refuses the plan, with a logged line.
  Result Open(const AudioPlan& plan, bool globalHeader);
  const AVCodecContext& GetContext() const { return *m_codec; }
  /// Samples of each channel that were encoded so far.
  std::int64_t GetSamples() const { return m_samples; }

  /// The most packets that so many samples of each channel become.
  std::int64_t PacketsOf(std::int64_t samples) const;

  /// Encodes blocks until `samples` of each channel are taken or the track has ended.
  Result EncodeUpTo(std::int64_t samples, AudioTrack& track, MovieWriter& writer, int stream);
  /// Encodes the rest of the track and writes all that the codec still holds. Nothing may follow.
  Result Drain(AudioTrack& track, MovieWriter& writer, int stream);

 private:
  Result ReadBlock(AudioTrack& track, bool& ended);
  Result StoreBlock(int count);
  Result Send(const AVFrame* frame);
  Result WritePackets(MovieWriter& writer, int stream);

  CodecPtr m_codec;
  FramePtr m_frame;
  PacketPtr m_packet;
  std::vector<std::vector<float>> m_planes;  // a block as it comes from the track
  std::vector<float*> m_planePointers;
  int m_channels = 0;
  int m_blockSize = 0;         // samples of each channel
  int m_tail = 0;              // samples of silence to encode after the last, which the codec keeps to itself
  std::int64_t m_sent = 0;     // samples encoded so far, with that silence
  std::int64_t m_samples = 0;  // taken so far
};

}  // namespace vrx::engine
