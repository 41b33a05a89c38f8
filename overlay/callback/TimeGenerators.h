// From the engine's frame number to the time that each kind of overlay shows. The clocks of GPS logs and
// tennis data follow the speed segments of the movie; captions run on the movie's own time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "overlay/document/SlowInfoRecord.h"
#include "vrx/VRXTimeline.h"

namespace vrx::overlay {

/// When `frame` begins, in seconds of the movie. `length` is that of a frame and must have a scale.
inline double SecondsAt(std::uint64_t frame, const VRXTimeInfo& length) {
  return static_cast<double>(frame) * static_cast<double>(length.value) / static_cast<double>(length.scale);
}

/// The part of the movie in which the clocks run, seconds in the movie, both ends included.
struct DrawSpan {
  double start = 0.0;
  double end = 0.0;
};

/// The running state that both segment clocks have. Frames must come in rising order.
class SegmentClock {
 public:
  static constexpr std::int32_t kNoTime = -1;

  void Reset(std::span<const SlowInfoRecord> records);
  void SetPosition(double seconds) { m_position = seconds; }

 protected:
  virtual ~SegmentClock() = default;
  SegmentClock() = default;
  SegmentClock(const SegmentClock&) = default;
  SegmentClock& operator=(const SegmentClock&) = default;

  /// Milliseconds on the log's axis at `frame`; `videoId` is set when a segment names it.
  std::int64_t Advance(std::uint64_t frame, const VRXTimeInfo& length, const DrawSpan& span,
                       std::int32_t& videoId);

 private:
  /// Position at `time` inside the segment that a frame has just entered.
  virtual double PositionInside(const SlowInfoRecord& segment, double time, double start) const = 0;
  /// Position at `time` after the last segment, `position` being the running one.
  virtual double PositionAfter(const SlowInfoRecord& last, double time, double start,
                               double position) const = 0;

  void Enter(double time, double start, std::int32_t& videoId);

  std::vector<SlowInfoRecord> m_segments;
  std::size_t m_cursor = 0;
  std::int32_t m_lastMs = kNoTime;
  double m_previousTime = 0.0;  // s in the movie
  double m_position = 0.0;      // s on the log's axis
};

}  // namespace vrx::overlay

class VRXGPSTimeGenerate final : public vrx::overlay::SegmentClock {
 public:
  /// -1, with nothing changed, for a frame length without a scale. Outside the span the clock stops.
  std::int64_t Generate(std::uint64_t frameNumber, std::int32_t& videoId, const VRXTimeInfo& length,
                        const vrx::overlay::DrawSpan& span) {
    return Advance(frameNumber, length, span, videoId);
  }
  /// Whether positions count the trimmed parts of a clip.
  void SetCountsTrimmed(bool counts) { m_countsTrimmed = counts; }
  double StartOf(const SlowInfoRecord& segment) const {
    return m_countsTrimmed ? segment.sourceTimeWithTrim : segment.sourceTime;
  }

 private:
  double PositionInside(const SlowInfoRecord& segment, double time, double start) const override;
  double PositionAfter(const SlowInfoRecord& last, double time, double start, double position) const override;

  bool m_countsTrimmed = false;
};

class VRXTennisMetaTimeGenerate final : public vrx::overlay::SegmentClock {
 public:
  std::int64_t Generate(std::uint64_t frameNumber, const VRXTimeInfo& length,
                        const vrx::overlay::DrawSpan& span) {
    std::int32_t ignored = 0;
    return Advance(frameNumber, length, span, ignored);
  }

 private:
  double PositionInside(const SlowInfoRecord& segment, double time, double start) const override;
  double PositionAfter(const SlowInfoRecord& last, double time, double start, double position) const override;
};

class VRXCaptionTimeGenerate final {
 public:
  /// The movie's time in milliseconds; -1 for a frame length without a scale.
  std::int64_t Generate(std::uint64_t frameNumber, const VRXTimeInfo& length) const;
};
