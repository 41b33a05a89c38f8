#include "overlay/callback/TimeGenerators.h"

#include <cmath>

#include "foundation/number/Saturate.h"

namespace vrx::overlay {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

}  // namespace

void SegmentClock::Reset(std::span<const SlowInfoRecord> records) {
  m_segments.assign(records.begin(), records.end());
  m_cursor = 0;
}

std::int64_t SegmentClock::Advance(std::uint64_t frame, const VRXTimeInfo& length, const DrawSpan& span,
                                   std::int32_t& videoId) {
  if (length.scale == 0) return kNoTime;
  const double time = SecondsAt(frame, length);
  if (frame != 0) m_previousTime = SecondsAt(frame - 1, length);
  if (time < span.start || time > span.end) {
    if (m_lastMs == kNoTime) m_lastMs = 0;
    return m_lastMs;
  }
  if (m_cursor >= m_segments.size()) {
    m_position += time - m_previousTime;
  } else if (const SlowInfoRecord& segment = m_segments[m_cursor]; time < segment.endTime + span.start) {
    m_position += (time - m_previousTime) * segment.speed;
    videoId = segment.videoId;
  } else {
    Enter(time, span.start, videoId);
  }
  m_lastMs = Saturate<std::int32_t>(m_position * kMillisecondsPerSecond);
  return m_lastMs;
}

void SegmentClock::Enter(double time, double start, std::int32_t& videoId) {
  // Segments need not be in order, so each search starts at the first.
  m_cursor = 0;
  while (m_cursor < m_segments.size() && m_segments[m_cursor].endTime + start <= time) ++m_cursor;
  const bool isPast = m_cursor == m_segments.size();
  const SlowInfoRecord& segment = isPast ? m_segments.back() : m_segments[m_cursor];
  m_position =
      isPast ? PositionAfter(segment, time, start, m_position) : PositionInside(segment, time, start);
  videoId = segment.videoId;
}

}  // namespace vrx::overlay

double VRXGPSTimeGenerate::PositionInside(const SlowInfoRecord& segment, double time, double start) const {
  return StartOf(segment) + (time - segment.startTime - start) * segment.speed;
}

double VRXGPSTimeGenerate::PositionAfter(const SlowInfoRecord& last, double time, double start,
                                         double position) const {
  return position + (time - last.endTime - start);
}

double VRXTennisMetaTimeGenerate::PositionInside(const SlowInfoRecord& segment, double time,
                                                 double start) const {
  return segment.sourceTime + (time - start - segment.startTime) * segment.speed;
}

double VRXTennisMetaTimeGenerate::PositionAfter(const SlowInfoRecord& last, double time, double start,
                                                double /*position*/) const {
  const double seconds = double{last.endTime} - double{last.startTime};
  const double end = std::abs(double{last.speed}) * seconds + double{last.sourceTime};
  return end + (time - start - last.endTime);
}

std::int64_t VRXCaptionTimeGenerate::Generate(std::uint64_t frameNumber, const VRXTimeInfo& length) const {
  if (length.scale == 0) return vrx::overlay::SegmentClock::kNoTime;
  return vrx::Saturate<std::int64_t>(vrx::overlay::SecondsAt(frameNumber, length) *
                                     vrx::overlay::kMillisecondsPerSecond);
}
