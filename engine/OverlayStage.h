// Sends the frames of the registered ranges through the host's overlay callback, and takes over what it drew.
// Used by the sequence.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/BgrConversion.h"
#include "engine/FramePool.h"
#include "engine/OverlaySpans.h"

namespace vrx::engine {

/// Belongs to one thread, on which the callback is called.
class OverlayStage {
 public:
  /// `callback` is not owned and may be null when there are no spans. Sizes in pixels.
  OverlayStage(IVRXIntermediateRawOutputCallback* callback, std::vector<OverlaySpan> spans, int width,
               int height);

  /// Tells the callback of the frames of its spans that lie before frame `number`, which is the first to
  /// come. Later calls do nothing.
  void SkipTo(std::int64_t number) { m_spans.SkipTo(number); }

  /// Hands frame `number` to the callback if it lies in a span; numbers must rise. If the callback changed
  /// something, `frame` becomes a copy with the changed samples, unless nothing else refers to it.
  void Apply(std::int64_t number, FramePtr& frame);

 private:
  /// The rows of the callback's picture from `top` on, counted from the upper edge.
  BgrRows DrawnRows(int top);
  void TakeOver(FramePtr& frame);
  void MakeWritable(FramePtr& frame);

  OverlaySpans m_spans;
  int m_width;
  int m_height;
  OutputMatrix m_matrix;
  std::vector<std::uint32_t> m_buffer;  // the callback's picture, bottom row first
  std::vector<std::uint32_t> m_pair;    // two rows of the frame as they were before the callback
  FramePool m_frames;
};

}  // namespace vrx::engine
