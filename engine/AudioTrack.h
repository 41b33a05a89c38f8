// The sound of the movie before encoding: the audio clips one after the other, decoded, resampled and cut or
// padded to the length of the picture. The sequence pulls it block by block.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/EngineResult.h"
#include "engine/StopSignal.h"

namespace vrx::engine {

/// A clip on the audio track. Times are on the source's clock in units of 1 / `scale` seconds; an `end` not
/// after `start` means the whole source, a negative `start` counts as 0.
struct AudioClip {
  std::string path;  // native bytes
  std::int64_t start;
  std::int64_t end;
  std::uint64_t scale;
};

/// Room for the channels of any AudioFormat.
inline constexpr int kMaxChannels = 8;

struct AudioFormat {
  int sampleRate;  // Hz
  int channels;    // 1, 2 or 6 in the order of libav's default layouts
};

/// Copied sound may end this much before the picture, in samples at `rate`: cameras stop it up to some
/// packets early, and what is missing would be silent.
constexpr std::int64_t LargestShortfall(int rate) { return rate / 10; }

/// A stretch of one file's sound that is played in one go.
struct SoundRun {
  std::string path;    // native bytes
  std::int64_t start;  // on the source's clock, in units of 1 / `scale` seconds
  std::uint64_t scale;
  std::int64_t skipped;  // samples of the movie from `start` to the first that is heard
  std::size_t clip;      // the first on the track that is a part of it, counted from 0
};

/// Belongs to one thread.
class AudioTrack {
 public:
  virtual ~AudioTrack() = default;

  /// Opens every clip once, so that a missing or unusable source fails before anything is written. The track
  /// has the samples of the movie, at the output rate, from `first` on and below `end`. `stop` must live as
  /// long as the track; once it is set, what is left is silent.
  static Result Open(std::vector<AudioClip> clips, AudioFormat format, std::int64_t first, std::int64_t end,
                     const StopSignal& stop, std::unique_ptr<AudioTrack>& track);

  /// Writes the next `count` samples of each channel as planar floats; `got` is less than `count` only at the
  /// end of the track and 0 after it. Samples without a source are silence.
  virtual Result Read(float* const* planes, int count, int& got) = 0;

  /// What the whole track plays where that is a single run, with no silence before it, and none after it but
  /// LargestShortfall. Else `reason`
  /// says for people why it is none. Before anything is read.
  virtual std::optional<SoundRun> FindSingleRun(std::string& reason) const = 0;
};

}  // namespace vrx::engine
