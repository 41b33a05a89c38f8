// Where a movie is cut into pieces that are rendered apart from each other. Numbers only; the plan of pieces
// uses it.
#pragma once

#include <cstdint>
#include <vector>

#include "host/EngineSpans.h"
#include "host/TimeRange.h"

namespace vrx::host {

/// The work of a movie's pictures, frame after frame.
class PieceCuts {
 public:
  // An encoded frame costs about as much as fifty copied ones.
  static constexpr std::int64_t kEncodedWork = 50;
  static constexpr std::int64_t kCopiedWork = 1;
  /// Encoded spans with fewer frames stay whole.
  static constexpr std::int64_t kLeastCutSpan = 24;

  /// `spans` follow each other without a gap from frame 0 on; those of the sound are passed over.
  explicit PieceCuts(const std::vector<EngineSpan>& spans);

  /// Of the frames of a range.
  std::int64_t GetWork(const FrameRange& range) const;
  /// Up to `count` ranges of about equal work that make up the movie: fewer where it has not so many places
  /// to cut. Cuts cost no quality: they lie between spans, inside encoded ones, and where a copy can begin.
  std::vector<FrameRange> Cut(std::int64_t count) const;

 private:
  /// Frames first to last are places to cut, each before its frame.
  struct Places {
    std::int64_t first;
    std::int64_t last;
    std::int64_t before;  // places before these
  };
  struct Stretch {
    std::int64_t first;
    std::int64_t perFrame;    // work
    std::int64_t workBefore;  // of all frames before it
  };

  void AddSpan(const EngineSpan& span);
  void AddPlaces(std::int64_t first, std::int64_t last);
  std::int64_t WorkBefore(std::int64_t frame) const;
  std::int64_t GetPlaceCount() const;
  std::int64_t PlaceAt(std::int64_t index) const;
  std::int64_t PlaceNear(std::int64_t work, std::int64_t least, std::int64_t most) const;

  std::vector<Places> m_places;
  std::vector<Stretch> m_stretches;
  std::int64_t m_frames = 0;
  std::int64_t m_work = 0;
};

}  // namespace vrx::host
