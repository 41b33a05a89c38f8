// A media file's sound as an endless, continuous stream of samples: before its start, after its
// end and in gaps it is silent. AudioClipReader reads clips from it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/AudioDecoder.h"
#include "engine/EngineResult.h"

struct SwrContext;
struct AVChannelLayout;

namespace vrx::engine {

/// Samples are planar floats at the file's own rate in the channels asked for. Places are samples from time 0
/// of the file. Belongs to one thread.
class AudioSource {
 public:
  /// Fails as AudioDecoder::Open does. A file without sound is silent.
  static Result Open(const std::string& path, int channels, const StopSignal& stop,
                     std::unique_ptr<AudioSource>& source);

  AudioSource(const AudioSource&) = delete;
  AudioSource& operator=(const AudioSource&) = delete;
  ~AudioSource();

  bool HasSound() const { return m_decoder->HasSound(); }
  int GetRate() const { return m_decoder->GetRate(); }  // Hz; 0 without sound
  const std::string& GetPath() const { return m_decoder->GetPath(); }
  std::int64_t GetFileMicroseconds() const { return m_decoder->GetFileMicroseconds(); }

  /// The place after the last sample, found by decoding the end of the file: lengths in headers include what
  /// the encoder added, or are guesses. Leaves the stream at an unspecified place.
  std::int64_t MeasureEnd();

  /// Whether any of the sound can be decoded. Leaves the stream at an unspecified place.
  bool CanDecode();

  /// The next Read begins at `place`, which may be negative. From here on damage is reported again.
  void Seek(std::int64_t place);

  /// Writes the next `count` samples of each channel.
  void Read(float* const* planes, int count);

 private:
  AudioSource(std::unique_ptr<AudioDecoder> decoder, int channels);

  std::int64_t DecodedEnd();
  bool SeekDecoder(std::int64_t place);
  bool FillBlock();
  bool Convert(const struct AVFrame& frame);
  bool OpenConverter(const AVFrame& frame);
  void PlaceBlock(std::int64_t place);  // in samples, or kNoPlace
  std::int64_t FirstPlaceInGrid(std::int64_t place) const;
  void MakeFinite();
  void Warn();

  std::unique_ptr<AudioDecoder> m_decoder;
  const int m_channels;
  std::int64_t m_place = 0;  // of the next sample to be read

  // The frame decoded last.
  std::vector<std::vector<float>> m_block;
  int m_blockSize = 0;
  std::int64_t m_blockPlace = 0;
  std::int64_t m_blockEnd = 0;  // the place of the next frame if nothing is missing
  bool m_joined = false;        // a frame came before the next one since the last seek
  bool m_ended = false;
  bool m_warned = false;

  // Turns frames of this format into m_block.
  SwrContext* m_converter = nullptr;
  std::unique_ptr<AVChannelLayout> m_inLayout;
  int m_inFormat = -1;
  int m_inRate = 0;
};

}  // namespace vrx::engine
