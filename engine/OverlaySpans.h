// The frames that go through the host's overlay callback, and the calls that hand them over. Used by the
// overlay stage, and where overlays are written alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/TimelinePlan.h"

namespace vrx::engine {

/// Belongs to one thread, on which the callback is called. Frame numbers must rise from call to call.
class OverlaySpans {
 public:
  /// `callback` is not owned; without one there are no spans.
  OverlaySpans(IVRXIntermediateRawOutputCallback* callback, std::vector<OverlaySpan> spans);

  bool IsEmpty() const { return m_spans.empty(); }
  IVRXIntermediateRawOutputCallback* GetCallback() const { return m_callback; }

  /// Tells the callback of the frames of its spans that lie before frame `number`, which is the first to
  /// come.
  void SkipTo(std::int64_t number);
  /// The span that holds frame `number`; null when none does.
  const OverlaySpan* Find(std::int64_t number);
  /// Hands frame `number` of `span` to the callback: `pixels` is the whole picture, bottom row first. What
  /// the callback answers.
  bool Process(std::int64_t number, const OverlaySpan& span, std::span<std::uint32_t> pixels);

 private:
  IVRXIntermediateRawOutputCallback* m_callback;
  std::vector<OverlaySpan> m_spans;
  std::size_t m_next = 0;  // the first that does not end before the frame
};

}  // namespace vrx::engine
