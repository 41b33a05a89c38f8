// How the frames of a movie are made, as the engine says it when it makes a sequence: which it copies from
// their source and which it encodes, and why. Reports of renders and checks and the plan of pieces use it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vrx/VRXEngineExtras.h"

namespace vrx::host {

struct EngineSpan {
  VRXTrackKind track = VRXVideoTrack;
  bool copied = false;
  std::int64_t firstFrame = 0;  // of the whole movie
  std::int64_t frames = 0;
  std::uint32_t clip = 0;            // on its track, counted from 1; 0 for none
  std::string reason;                // why it is encoded; empty for a copied span
  std::vector<std::int64_t> starts;  // frames of a copied span at which another copy could begin, rising
};

/// All spans of one sequence. Empty for an engine that tells none.
class EngineSpans {
 public:
  /// Far above real movies: a span has a second or more, and a source a few starts in a second.
  static constexpr std::size_t kMostSpans = 50'000;
  static constexpr std::size_t kMostStarts = 2'000'000;

  /// Copies it. Past the limits the frames are only counted, and starts left out.
  void Add(const VRXRenderSpan& span);

  bool IsEmpty() const { return m_copiedFrames + m_encodedFrames == 0 && m_spans.empty(); }
  /// Those of the picture in their order, then that of the sound.
  const std::vector<EngineSpan>& GetSpans() const { return m_spans; }
  std::uint64_t GetLeftOut() const { return m_leftOut; }
  std::int64_t GetCopiedFrames() const { return m_copiedFrames; }  // of the picture
  std::int64_t GetEncodedFrames() const { return m_encodedFrames; }
  /// Null when the movie has no sound.
  const EngineSpan* FindSound() const;

 private:
  std::vector<EngineSpan> m_spans;
  std::uint64_t m_leftOut = 0;
  std::size_t m_starts = 0;
  std::int64_t m_copiedFrames = 0;
  std::int64_t m_encodedFrames = 0;
};

}  // namespace vrx::host
