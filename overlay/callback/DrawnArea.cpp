#include "overlay/callback/DrawnArea.h"

#include <algorithm>
#include <cstring>

#include "imaging/pixmap/XpPixelVector.h"

namespace vrx::overlay {
namespace {

constexpr std::int32_t kStride = 16;  // pixels looked at together
constexpr std::uint32_t kAnyByte = 0xFFFFFFFFu;
constexpr std::size_t kPixelBytes = 4;

bool IsClear(const unsigned char* row, std::int32_t first, std::int32_t last) {
  return pixels::AreClear(row + static_cast<std::size_t>(first) * kPixelBytes,
                          static_cast<std::size_t>(last - first), kAnyByte);
}

DrawnArea::Span FindSpan(const unsigned char* row, std::int32_t width) {
  if (IsClear(row, 0, width)) return {};
  DrawnArea::Span span{0, width};
  while (IsClear(row, span.first, std::min(span.first + kStride, width))) span.first += kStride;
  while (IsClear(row, std::max(span.last - kStride, span.first), span.last)) span.last -= kStride;
  return span;
}

}  // namespace

void DrawnArea::Find(const XpPixmap32& picture, XpRowRange rows) {
  m_spans.resize(static_cast<std::size_t>(picture.height));
  m_firstRow = picture.height;
  m_lastRow = 0;
  const std::size_t stride = static_cast<std::size_t>(picture.width) * kPixelBytes;
  const std::int32_t last = std::min(rows.last, picture.height);
  for (std::int32_t y = std::max(rows.first, 0); y < last; ++y) {
    Span& span = m_spans[static_cast<std::size_t>(y)];
    span = FindSpan(picture.data + static_cast<std::size_t>(y) * stride, picture.width);
    if (span.first == span.last) continue;
    m_firstRow = std::min(m_firstRow, y);
    m_lastRow = y + 1;
  }
}

void DrawnArea::Clear(XpPixmap32& picture) {
  const std::size_t stride = static_cast<std::size_t>(picture.width) * kPixelBytes;
  for (std::int32_t y = m_firstRow; y < m_lastRow; ++y) {
    const Span span = GetSpan(y);
    std::memset(picture.data + static_cast<std::size_t>(y) * stride +
                    static_cast<std::size_t>(span.first) * kPixelBytes,
                0, static_cast<std::size_t>(span.last - span.first) * kPixelBytes);
  }
  Reset();
}

}  // namespace vrx::overlay
