// The sound stream of a movie: packets of the source where they can stay as they are, or else the decoded
// clips, encoded. Used by the sequences.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/AudioCopier.h"
#include "engine/AudioEncoder.h"
#include "engine/AudioTrack.h"
#include "engine/EngineResult.h"
#include "engine/MovieWriter.h"
#include "engine/OutputPlan.h"

namespace vrx::engine {

/// Frames are those of the stretch of the movie that is written, from 0 on. Belongs to one thread.
class SoundTrack {
 public:
  /// Opens every clip, as AudioTrack::Open does. The plan has sound. `stop` must live as long as the track.
  Result Open(std::vector<AudioClip> clips, const OutputPlan& plan, std::int64_t firstFrame,
              std::int64_t frameCount, const StopSignal& stop);
  /// The same for the sound of these frames, which is all that the file at `path` has. It is copied unless a
  /// transport stream cannot begin as the file does. kUnusableSettings, with a logged line that names the
  /// file, where it has not all of it.
  Result OpenPiece(const std::string& path, const OutputPlan& plan, std::int64_t firstFrame,
                   std::int64_t frameCount, const StopSignal& stop);
  /// Tells the host whether it is copied, or why not.
  void Report() const;
  Result AddTo(MovieWriter& writer);
  /// The most packets that it becomes.
  std::int64_t GetPackets() const;
  /// Samples of each channel that were taken so far.
  std::int64_t GetSamples() const;

  /// Writes the sound of the first `frames` frames, up to a packet.
  Result WriteUpTo(std::int64_t frames, MovieWriter& writer);
  /// Writes all that is left. Nothing may follow.
  Result Finish(MovieWriter& writer);

 private:
  Result OpenClips(std::vector<AudioClip> clips, const OutputPlan& plan, std::int64_t first, std::int64_t end,
                   const StopSignal& stop);
  Result FindInFile(std::int64_t samples, const StopSignal& stop, bool& isThere) const;
  void SetFrames(const OutputPlan& plan, std::int64_t firstFrame, std::int64_t frameCount);
  std::int64_t SamplesBefore(std::int64_t frame) const;

  AudioPlan m_plan{};
  FrameDuration m_frameDuration{};
  std::int64_t m_firstFrame = 0;  // of the whole movie
  std::int64_t m_frameCount = 0;
  std::uint32_t m_clip = 0;  // the first that is copied, counted from 1
  std::string m_reason;      // why it is not copied
  std::unique_ptr<AudioTrack> m_track;
  std::unique_ptr<AudioCopier> m_copier;  // null where the sound is encoded
  AudioEncoder m_encoder;
  int m_stream = 0;
};

}  // namespace vrx::engine
