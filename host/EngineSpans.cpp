#include "host/EngineSpans.h"

#include <algorithm>

namespace vrx::host {

void EngineSpans::Add(const VRXRenderSpan& span) {
  const auto frames = static_cast<std::int64_t>(span.frameCount);
  const bool isPicture = span.track == VRXVideoTrack;
  if (isPicture) (span.copied ? m_copiedFrames : m_encodedFrames) += frames;
  // The span of the sound comes last and is but one.
  if (isPicture && m_spans.size() >= kMostSpans) {
    ++m_leftOut;
    return;
  }
  EngineSpan& kept = m_spans.emplace_back();
  kept.track = span.track;
  kept.copied = span.copied;
  kept.firstFrame = static_cast<std::int64_t>(span.firstFrame);
  kept.frames = frames;
  kept.clip = span.clip;
  if (!span.copied && span.reason != nullptr) kept.reason = span.reason;
  if (!isPicture || !span.copied || span.starts == nullptr) return;
  const std::size_t count = std::min<std::size_t>(span.startCount, kMostStarts - m_starts);
  kept.starts.assign(span.starts, span.starts + count);
  m_starts += count;
}

const EngineSpan* EngineSpans::FindSound() const {
  const auto sound = std::ranges::find(m_spans, VRXAudioTrack, &EngineSpan::track);
  return sound == m_spans.end() ? nullptr : &*sound;
}

}  // namespace vrx::host
