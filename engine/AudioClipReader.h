// The samples of one clip at the movie's rate: AudioSource from the clip's start on, resampled where the
// rates differ. AudioTrack plays its clips through it, one after the other.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/AudioSource.h"
#include "engine/AudioTrack.h"
#include "engine/EngineResult.h"

struct SwrContext;

namespace vrx::engine {

/// Belongs to one thread. One file is open at a time.
class AudioClipReader {
 public:
  /// `stop` must live as long as the reader; once it is set, what is left is silent.
  AudioClipReader(AudioFormat format, const StopSignal& stop);
  AudioClipReader(const AudioClipReader&) = delete;
  AudioClipReader& operator=(const AudioClipReader&) = delete;
  ~AudioClipReader();

  /// Goes to `start` of `path`, in units of 1 / `scale` seconds. A file that is open already stays open.
  /// Fails with a line in the log when the file cannot be opened.
  Result Start(const std::string& path, std::int64_t start, std::uint64_t scale);

  /// Writes the next `count` samples of each channel; silence after the end of the file.
  Result Read(float* const* planes, int count);

 private:
  Result OpenResampler();
  void SeekResampled(std::int64_t place);
  Result Resample(float* const* planes, int count);

  const AudioFormat m_format;
  const StopSignal& m_stop;
  std::unique_ptr<AudioSource> m_source;
  SwrContext* m_resampler = nullptr;          // null while the rates are the same
  int m_resamplerRate = 0;                    // the rate of its input
  std::vector<std::vector<float>> m_input;    // for the resampler
  std::vector<std::vector<float>> m_leading;  // what comes out before the clip's start
  std::vector<float*> m_inputPlanes;
  std::vector<float*> m_leadingPlanes;
};

/// `ticks` of 1 / `scale` seconds as samples at `rate`, rounded to the nearest; INT64_MAX when it does not
/// fit. `scale` is not 0, `ticks` not negative.
std::int64_t SamplesOf(std::int64_t ticks, std::uint64_t scale, int rate);

}  // namespace vrx::engine
