#include "engine/OverlayStage.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <libyuv.h>

#include <algorithm>

namespace vrx::engine {
namespace {

constexpr int kBlock = 16;  // pixels: side of the squares that are looked at as one
constexpr std::uint32_t kPixelBytes = 4;

}  // namespace

OverlayStage::OverlayStage(IVRXIntermediateRawOutputCallback* callback, std::vector<OverlaySpan> spans,
                           int width, int height)
    : m_callback(callback),
      m_spans(std::move(spans)),
      m_width(width),
      m_height(height),
      m_matrix(MatrixOfHeight(height)) {
  if (m_callback == nullptr) m_spans.clear();
  if (m_spans.empty()) return;
  m_buffer.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  m_strip.resize(static_cast<std::size_t>(width) * kBlock);
  m_changes.resize(static_cast<std::size_t>(width));
}

void OverlayStage::Apply(std::int64_t number, FramePtr& frame) {
  const OverlaySpan* span = SpanOf(number);
  if (span == nullptr) return;
  PlanarToBgr(PlanarPicture::Of(*frame), m_matrix, DrawnRows(0));
  const auto size = static_cast<std::uint32_t>(m_buffer.size() * kPixelBytes);
  if (m_callback->ProcessFrame(static_cast<std::uint64_t>(number), m_buffer.data(), size, span->stage,
                               span->format)) {
    TakeOver(frame);
  }
}

const OverlaySpan* OverlayStage::SpanOf(std::int64_t number) {
  while (m_span < m_spans.size() && m_spans[m_span].last < number) ++m_span;
  return m_span < m_spans.size() && m_spans[m_span].first <= number ? &m_spans[m_span] : nullptr;
}

void OverlayStage::TakeOver(FramePtr& frame) {
  bool writable = false;
  for (int top = 0; top < m_height; top += kBlock) {
    if (TakeOverStrip(top, writable, frame)) writable = true;
  }
}

/// Whether the callback left the rows from `top` on as they were. They are converted once more for that, two
/// at a time, which stay in the innermost cache: cheaper than a copy of the whole picture.
bool OverlayStage::IsUntouched(int top, int rows, const AVFrame& frame) {
  constexpr int kPair = 2;  // rows that share their chroma
  const BgrRows before{m_strip.data(), m_width};
  for (int row = top; row < top + rows; row += kPair) {
    const int count = std::min(kPair, top + rows - row);
    PlanarToBgr(PlanarPicture::Of(frame).Part(0, row, m_width, count), m_matrix, before);
    if (!SameRows(before, DrawnRows(row), m_width, count)) return false;
  }
  return true;
}

BgrRows OverlayStage::DrawnRows(int top) {
  return {m_buffer.data() + static_cast<std::ptrdiff_t>(m_height - 1 - top) * m_width, -m_width};
}

/// Returns whether something of the rows from `top` on was taken over.
bool OverlayStage::TakeOverStrip(int top, bool writable, FramePtr& frame) {
  const int rows = std::min(kBlock, m_height - top);
  if (IsUntouched(top, rows, *frame)) return false;
  const BgrRows before{m_strip.data(), m_width};
  PlanarToBgr(PlanarPicture::Of(*frame).Part(0, top, m_width, rows), m_matrix, before);
  const BgrRows after = DrawnRows(top);
  FindChangedBlocks(before, after, rows);
  bool any = false;
  for (int x = 0; x < m_width; x += kBlock) {
    const int first = x;
    // Neighbours go together: long rows convert faster.
    while (x < m_width && IsBlockChanged(x)) x += kBlock;
    if (x == first) continue;
    if (!writable && !any) MakeWritable(frame);
    any = true;
    ChangedBgrToPlanar({after.top + first, after.stride}, {before.top + first, before.stride}, m_matrix,
                       PlanarPicture::Of(*frame).Part(first, top, std::min(x, m_width) - first, rows));
  }
  return any;
}

bool OverlayStage::IsBlockChanged(int x) const {
  const auto block = m_changes.begin() + x;
  return std::any_of(block, block + std::min(kBlock, m_width - x),
                     [](std::uint32_t bits) { return bits != 0; });
}

void OverlayStage::FindChangedBlocks(BgrRows before, BgrRows after, int rows) {
  std::fill(m_changes.begin(), m_changes.end(), 0);
  const auto isWholeStripChanged = [&] {
    for (int x = 0; x < m_width; x += kBlock) {
      if (!IsBlockChanged(x)) return false;
    }
    return true;
  };
  for (int row = 0; row < rows; ++row) {
    GatherChanges(after.top + row * after.stride, before.top + row * before.stride, m_width,
                  m_changes.data());
    // A picture that is drawn all over shows it in the first row.
    if (row == 0 && isWholeStripChanged()) return;
  }
}

/// Other frames may still be predicted from a decoder's picture, and a picture on hold comes again.
void OverlayStage::MakeWritable(FramePtr& frame) {
  if (av_frame_is_writable(frame.get()) != 0) return;
  FramePtr copy = m_frames.Get(m_width, m_height);
  libyuv::I420Copy(frame->data[0], frame->linesize[0], frame->data[1], frame->linesize[1], frame->data[2],
                   frame->linesize[2], copy->data[0], copy->linesize[0], copy->data[1], copy->linesize[1],
                   copy->data[2], copy->linesize[2], m_width, m_height);
  frame = std::move(copy);
}

}  // namespace vrx::engine
