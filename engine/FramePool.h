// Frames of one size and pixel format, the movie's unless told otherwise, whose memory is reused. Used
// wherever the engine makes pictures of its own.
#pragma once

#include "engine/AvPointers.h"

namespace vrx::engine {

/// Frames may be freed on any thread, and after the pool.
class FramePool {
 public:
  explicit FramePool(AVPixelFormat format = AV_PIX_FMT_YUV420P) : m_format(format) {}
  FramePool(const FramePool&) = delete;
  FramePool& operator=(const FramePool&) = delete;
  ~FramePool();

  /// A writable frame of `width` x `height` with undefined content. Each row begins where the widest vectors
  /// may, and has room after its end for a scaler that writes whole ones. Throws std::bad_alloc.
  FramePtr Get(int width, int height);

 private:
  AVPixelFormat m_format;
  AVBufferPool* m_pool = nullptr;
  int m_width = 0;
  int m_height = 0;
};

/// Another reference to the picture of `frame`, without its side data. Throws std::bad_alloc.
FramePtr ShareFrame(const AVFrame& frame);

/// Limited-range black everywhere.
void FillBlack(AVFrame& frame);

}  // namespace vrx::engine
