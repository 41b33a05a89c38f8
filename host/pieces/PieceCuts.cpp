#include "host/pieces/PieceCuts.h"

#include <algorithm>

namespace vrx::host {

PieceCuts::PieceCuts(const std::vector<EngineSpan>& spans) {
  for (const EngineSpan& span : spans) {
    if (span.track == VRXVideoTrack && span.frames > 0) AddSpan(span);
  }
}

void PieceCuts::AddSpan(const EngineSpan& span) {
  const std::int64_t first = m_frames;
  const std::int64_t perFrame = span.copied ? kCopiedWork : kEncodedWork;
  m_stretches.push_back({first, perFrame, m_work});
  m_frames += span.frames;
  m_work += perFrame * span.frames;
  const bool isCutAnywhere = !span.copied && span.frames >= kLeastCutSpan;
  AddPlaces(first, isCutAnywhere ? m_frames - 1 : first);
  for (const std::int64_t start : span.starts) {
    if (span.copied && start < m_frames) AddPlaces(start, start);
  }
}

/// Frame 0 is no place: nothing lies before it.
void PieceCuts::AddPlaces(std::int64_t first, std::int64_t last) {
  const std::int64_t least = m_places.empty() ? 1 : m_places.back().last + 1;
  first = std::max(first, least);
  if (first <= last) m_places.push_back({first, last, GetPlaceCount()});
}

std::int64_t PieceCuts::GetPlaceCount() const {
  return m_places.empty() ? 0 : m_places.back().before + m_places.back().last - m_places.back().first + 1;
}

std::int64_t PieceCuts::PlaceAt(std::int64_t index) const {
  const auto after = std::ranges::upper_bound(m_places, index, {}, &Places::before);
  const Places& places = *std::prev(after);
  return places.first + index - places.before;
}

std::int64_t PieceCuts::WorkBefore(std::int64_t frame) const {
  const auto after = std::ranges::upper_bound(m_stretches, frame, {}, &Stretch::first);
  if (after == m_stretches.begin()) return 0;
  const Stretch& stretch = *std::prev(after);
  return stretch.workBefore + (frame - stretch.first) * stretch.perFrame;
}

std::int64_t PieceCuts::GetWork(const FrameRange& range) const {
  return WorkBefore(range.end) - WorkBefore(range.first);
}

/// The index, from `least` to `most`, of the place before which there is about this work.
std::int64_t PieceCuts::PlaceNear(std::int64_t work, std::int64_t least, std::int64_t most) const {
  std::int64_t low = least;
  for (std::int64_t high = most; low < high;) {
    const std::int64_t middle = low + (high - low) / 2;
    if (WorkBefore(PlaceAt(middle)) < work) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  if (low == least) return low;
  const std::int64_t after = WorkBefore(PlaceAt(low)) - work;
  const std::int64_t before = work - WorkBefore(PlaceAt(low - 1));
  return before <= after ? low - 1 : low;
}

std::vector<FrameRange> PieceCuts::Cut(std::int64_t count) const {
  const std::int64_t places = GetPlaceCount();
  const std::int64_t pieces = std::clamp<std::int64_t>(count, 1, places + 1);
  std::vector<FrameRange> ranges{{0, m_frames}};
  std::int64_t next = 0;  // index of the first place that can be taken
  for (std::int64_t left = pieces; left > 1; --left) {
    const std::int64_t done = WorkBefore(ranges.back().first);
    const std::int64_t index = PlaceNear(done + (m_work - done) / left, next, places - left + 1);
    const std::int64_t frame = PlaceAt(index);
    ranges.back().end = frame;
    ranges.push_back({frame, m_frames});
    next = index + 1;
  }
  return ranges;
}

}  // namespace vrx::host
