#include "engine/FramePool.h"

extern "C" {
#include <libavutil/buffer.h>
#include <libavutil/dict.h>
#include <libavutil/imgutils.h>
}

#include <libyuv.h>

#include <new>

namespace vrx::engine {
namespace {

constexpr int kRowAlignment = 64;  // bytes, for the widest vectors
constexpr int kRowSlack = 64;      // pixels; half of it in the chroma rows is still a vector
constexpr int kBlackLuma = 16;
constexpr int kNeutralChroma = 128;

}  // namespace

FramePool::~FramePool() { av_buffer_pool_uninit(&m_pool); }

FramePtr FramePool::Get(int width, int height) {
  if (m_pool == nullptr || width != m_width || height != m_height) {
    av_buffer_pool_uninit(&m_pool);
    const int size = av_image_get_buffer_size(m_format, width + kRowSlack, height, kRowAlignment);
    if (size > 0) m_pool = av_buffer_pool_init(static_cast<std::size_t>(size) + kRowAlignment, nullptr);
    if (m_pool == nullptr) throw std::bad_alloc();
    m_width = width;
    m_height = height;
  }
  FramePtr frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->buf[0] = av_buffer_pool_get(m_pool);
  if (frame->buf[0] == nullptr) throw std::bad_alloc();
  frame->format = m_format;
  frame->width = width;
  frame->height = height;
  av_image_fill_arrays(frame->data, frame->linesize, frame->buf[0]->data, m_format, width + kRowSlack, height,
                       kRowAlignment);
  return frame;
}

FramePtr ShareFrame(const AVFrame& frame) {
  FramePtr share(av_frame_alloc());
  if (!share || av_frame_ref(share.get(), &frame) < 0) throw std::bad_alloc();
  // Encoders would copy side data, such as a source's captions, into the movie.
  while (share->nb_side_data > 0) av_frame_remove_side_data(share.get(), share->side_data[0]->type);
  av_dict_free(&share->metadata);
  av_buffer_unref(&share->opaque_ref);
  return share;
}

void FillBlack(AVFrame& frame) {
  libyuv::I420Rect(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1], frame.data[2],
                   frame.linesize[2], 0, 0, frame.width, frame.height, kBlackLuma, kNeutralChroma,
                   kNeutralChroma);
}

}  // namespace vrx::engine
