// The movie's sound as packets of its source, where one file has all of it as the movie needs it. Used by
// SoundTrack in place of the encoder.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/AudioDecoder.h"
#include "engine/AudioTrack.h"
#include "engine/AvPointers.h"
#include "engine/EngineResult.h"
#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"

namespace vrx::engine {

/// Every sample lies where the encoder would put it. MP4 and QuickTime files leave out by an edit list what
/// the first packets have before the movie's first sample; a transport stream begins with a whole packet, and
/// ends with one. Belongs to one thread.
class AudioCopier {
 public:
  /// Leaves `copier` null where the sound has to be encoded, with a `reason` for people. The movie has
  /// `samples` of each channel, all from the run but LargestShortfall. Reads the source's packets up to
  /// there. Fails as AudioDecoder::Open does. `stop` must live as long as the copier.
  static Result Open(const SoundRun& run, std::int64_t samples, const AudioPlan& plan, Container container,
                     const StopSignal& stop, std::unique_ptr<AudioCopier>& copier, std::string& reason);
  AudioCopier(const AudioCopier&) = delete;
  AudioCopier& operator=(const AudioCopier&) = delete;
  ~AudioCopier() = default;

  /// Of the packets that are written.
  const AVCodecParameters& GetParameters() const { return *m_parameters; }
  AVRational GetTimeBase() const { return {1, m_parameters->sample_rate}; }
  std::int64_t GetPackets() const { return m_packets; }
  /// Samples of the movie in the packets that were written so far.
  std::int64_t GetSamples() const;

  /// Writes packets until they hold `samples` of each channel, or all. kSourceUnreadable with a logged line
  /// when the file is no longer as it was.
  Result CopyUpTo(std::int64_t samples, MovieWriter& writer, int stream);

 private:
  explicit AudioCopier(const StopSignal& stop) : m_stop(stop) {}
  Result OpenSource(const std::string& path);
  std::string CheckFormat(const AudioPlan& plan) const;
  std::string FindPackets(std::int64_t first, std::int64_t end, Container container);
  std::string ChooseFirst(std::int64_t first, Container container);
  std::string ReadHeaders(const AVPacket& packet);
  const AVPacket* NextInGrid(std::string& fault);
  bool IsNearEnough(std::int64_t first, std::int64_t end) const;
  bool Take(const AVPacket& packet);
  std::int64_t PlaceOf(std::int64_t packet) const { return m_grid + packet * m_packetSamples; }

  const StopSignal& m_stop;
  std::unique_ptr<AudioDecoder> m_source;
  CodecParametersPtr m_parameters;
  BitstreamFilterPtr m_filter;  // null where packets are written as they are
  PacketPtr m_packet;
  int m_packetSamples = 0;         // of each channel
  bool m_ended = false;            // no packet is left
  std::int64_t m_grid = 0;         // place of the source's first packet
  std::int64_t m_read = 0;         // packets of the source so far
  std::int64_t m_firstPacket = 0;  // of the source, that is written
  std::int64_t m_firstTime = 0;    // of that packet in the movie, in samples; not positive
  std::int64_t m_packets = 0;      // to write
  std::int64_t m_written = 0;      // packets
  std::int64_t m_samples = 0;      // of the movie
};

}  // namespace vrx::engine
