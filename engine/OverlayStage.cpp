#include "engine/OverlayStage.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <libyuv.h>

#include <algorithm>

namespace vrx::engine {
namespace {

constexpr int kPair = 2;  // rows that share their chroma

}  // namespace

OverlayStage::OverlayStage(IVRXIntermediateRawOutputCallback* callback, std::vector<OverlaySpan> spans,
                           int width, int height)
    : m_spans(callback, std::move(spans)),
      m_width(width),
      m_height(height),
      m_matrix(MatrixOfHeight(height)) {
  if (m_spans.IsEmpty()) return;
  m_buffer.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  m_pair.resize(static_cast<std::size_t>(width) * kPair);
}

void OverlayStage::Apply(std::int64_t number, FramePtr& frame) {
  const OverlaySpan* span = m_spans.Find(number);
  if (span == nullptr) return;
  PlanarToBgr(PlanarPicture::Of(*frame), m_matrix, DrawnRows(0));
  if (m_spans.Process(number, *span, m_buffer)) TakeOver(frame);
}

/// Converts rows of the frame again to see what was changed in them, two at a time, which fit into the
/// first-level cache. That costs less than keeping a copy of the whole picture.
void OverlayStage::TakeOver(FramePtr& frame) {
  const BgrRows before{m_pair.data(), m_width};
  bool writable = false;
  std::int32_t first = 0, end = 0;
  m_spans.GetCallback()->GetChangedRows(first, end);
  end = std::min(end, m_height);
  for (int top = std::max(first, 0) / kPair * kPair; top < end; top += kPair) {
    const int rows = std::min(kPair, m_height - top);
    PlanarToBgr(PlanarPicture::Of(*frame).Part(0, top, m_width, rows), m_matrix, before);
    const BgrRows after = DrawnRows(top);
    if (SameRows(before, after, m_width, rows)) continue;
    if (!writable) MakeWritable(frame);
    writable = true;
    ChangedBgrToPlanar(after, before, m_matrix, PlanarPicture::Of(*frame).Part(0, top, m_width, rows));
  }
}

BgrRows OverlayStage::DrawnRows(int top) {
  return {m_buffer.data() + static_cast<std::ptrdiff_t>(m_height - 1 - top) * m_width, -m_width};
}

/// The decoder may still predict other frames from its picture, and a held picture is shown several times.
void OverlayStage::MakeWritable(FramePtr& frame) {
  if (av_frame_is_writable(frame.get()) != 0) return;
  FramePtr copy = m_frames.Get(m_width, m_height);
  libyuv::I420Copy(frame->data[0], frame->linesize[0], frame->data[1], frame->linesize[1], frame->data[2],
                   frame->linesize[2], copy->data[0], copy->linesize[0], copy->data[1], copy->linesize[1],
                   copy->data[2], copy->linesize[2], m_width, m_height);
  frame = std::move(copy);
}

}  // namespace vrx::engine
