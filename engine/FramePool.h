// Frames of one size in the movie's pixel format, whose memory is reused. Used wherever the engine makes
// pictures of its own.
#pragma once

#include "engine/AvPointers.h"

namespace vrx::engine {

/// Frames may be freed on any thread, and after the pool.
class FramePool {
 public:
  FramePool() = default;
  FramePool(const FramePool&) = delete;
  FramePool& operator=(const FramePool&) = delete;
  ~FramePool();

  /// A writable 8-bit 4:2:0 frame of `width` x `height` with undefined content. Each row has room after its
  /// end for a scaler that writes whole vectors. Throws std::bad_alloc.
  FramePtr Get(int width, int height);

 private:
  AVBufferPool* m_pool = nullptr;
  int m_width = 0;
  int m_height = 0;
};

/// Another reference to the picture of `frame`, without its side data. Throws std::bad_alloc.
FramePtr ShareFrame(const AVFrame& frame);

/// Limited-range black everywhere.
void FillBlack(AVFrame& frame);

}  // namespace vrx::engine
