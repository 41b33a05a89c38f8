#include "engine/OverlaySpans.h"

#include <algorithm>
#include <utility>

namespace vrx::engine {

OverlaySpans::OverlaySpans(IVRXIntermediateRawOutputCallback* callback, std::vector<OverlaySpan> spans)
    : m_callback(callback), m_spans(std::move(spans)) {
  if (m_callback == nullptr) m_spans.clear();
}

void OverlaySpans::SkipTo(std::int64_t number) {
  for (OverlaySpan& span : m_spans) {
    const std::int64_t end = std::min(span.last + 1, number);
    if (span.first >= end) continue;
    m_callback->SkipFrames(static_cast<std::uint64_t>(span.first), static_cast<std::uint64_t>(end));
    span.first = end;
  }
}

const OverlaySpan* OverlaySpans::Find(std::int64_t number) {
  while (m_next < m_spans.size() && m_spans[m_next].last < number) ++m_next;
  return m_next < m_spans.size() && m_spans[m_next].first <= number ? &m_spans[m_next] : nullptr;
}

bool OverlaySpans::Process(std::int64_t number, const OverlaySpan& span, std::span<std::uint32_t> pixels) {
  return m_callback->ProcessFrame(static_cast<std::uint64_t>(number), pixels.data(),
                                  static_cast<std::uint32_t>(pixels.size_bytes()), span.stage, span.format);
}

}  // namespace vrx::engine
