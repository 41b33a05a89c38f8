#include "imaging/pixmap/XpPixmapBlock.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/pixmap/XpBlockClip.h"

namespace {

constexpr std::int64_t kBytesPerPixel24 = 3;

/// Plane 0 when it holds 24-bit pixels, else null.
const XpPlaneBase* Plane24(const XpPixmapBase& pixmap) {
  return pixmap.GetPlaneBytesPerPixel(0) == kBytesPerPixel24 ? pixmap.GetPlane(0) : nullptr;
}

void FillRows24(const XpPlaneBase* plane, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  if (plane == nullptr) return;
  const std::size_t bytes = static_cast<std::size_t>(plane->width) * kBytesPerPixel24;
  unsigned char* first = plane->Row(0);
  for (std::size_t i = 0; i < bytes; i += kBytesPerPixel24) {
    first[i] = blue;
    first[i + 1] = green;
    first[i + 2] = red;
  }
  for (std::int32_t y = 1; y < plane->height; ++y) std::memcpy(plane->Row(y), first, bytes);
}

/// A run of destination columns, with the byte offset of the source pixel of each.
class ColumnRun {
 public:
  static constexpr std::int64_t kLength = 512;

  ColumnRun(const XpAxisStretch& columns, std::int64_t first)
      : m_first(first), m_count(std::min(kLength, columns.last - first)) {
    for (std::int64_t i = 0; i < m_count; ++i) {
      m_offsets[static_cast<std::size_t>(i)] =
          static_cast<std::int32_t>(columns.SourceAt(first + i) * kBytesPerPixel24);
    }
  }

  void CopyRow(unsigned char* destRow, const unsigned char* sourceRow) const {
    unsigned char* out = destRow + m_first * kBytesPerPixel24;
    for (std::int64_t i = 0; i < m_count; ++i, out += kBytesPerPixel24) {
      const unsigned char* in = sourceRow + m_offsets[static_cast<std::size_t>(i)];
      out[0] = in[0];
      out[1] = in[1];
      out[2] = in[2];
    }
  }
  void RepeatRow(unsigned char* destRow, const unsigned char* rowBefore) const {
    const std::int64_t at = m_first * kBytesPerPixel24;
    std::memcpy(destRow + at, rowBefore + at, static_cast<std::size_t>(m_count * kBytesPerPixel24));
  }

 private:
  std::int64_t m_first;
  std::int64_t m_count;
  std::array<std::int32_t, kLength> m_offsets;
};

void StretchRows(const XpPlaneBase& dest, const XpPlaneBase& source, const XpAxisStretch& columns,
                 const XpAxisStretch& rows) {
  for (std::int64_t x = columns.first; x < columns.last; x += ColumnRun::kLength) {
    const ColumnRun run(columns, x);
    std::int64_t sourceRowBefore = -1;
    for (std::int64_t y = rows.first; y < rows.last; ++y) {
      const std::int64_t sourceRow = rows.SourceAt(y);
      unsigned char* destRow = dest.Row(static_cast<std::int32_t>(y));
      if (sourceRow == sourceRowBefore) {
        run.RepeatRow(destRow, destRow - dest.rowBytes);
      } else {
        run.CopyRow(destRow, source.Row(static_cast<std::int32_t>(sourceRow)));
      }
      sourceRowBefore = sourceRow;
    }
  }
}

}  // namespace

void FillPixmap(XpPixmap32& pixmap, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                std::uint8_t alpha) {
  if (pixmap.data == nullptr) return;
  const unsigned char bytes[4] = {blue, green, red, alpha};
  std::uint32_t pixel;
  std::memcpy(&pixel, bytes, sizeof pixel);
  // Rows of 4-byte pixels have no padding, so the whole memory is one run.
  std::fill_n(reinterpret_cast<std::uint32_t*>(pixmap.data), pixmap.size / sizeof pixel, pixel);
}

void FillPixmap(XpPixmap24& pixmap, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  FillRows24(pixmap.GetPlane(0), red, green, blue);
}

void FillPixmap(XpPixmap24NoHandle& pixmap, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  FillRows24(pixmap.GetPlane(0), red, green, blue);
}

std::unique_ptr<XpPixmap32> MakeSolidPixmap(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                                            std::uint8_t alpha) {
  auto pixmap = std::make_unique<XpPixmap32>();
  if (pixmap->Allocate(1, 1) != XpOk) return nullptr;
  FillPixmap(*pixmap, red, green, blue, alpha);
  return pixmap;
}

void CopyPixmapBlock(XpPixmapBase& destination, std::int32_t destX, std::int32_t destY,
                     const XpPixmapBase& source, std::int32_t sourceX, std::int32_t sourceY,
                     std::int32_t width, std::int32_t height) {
  const XpPlaneBase* to = Plane24(destination);
  const XpPlaneBase* from = Plane24(source);
  if (to == nullptr || from == nullptr) return;
  const XpAxisCopy columns = ClipAxisCopy(destX, sourceX, width, to->width, from->width);
  const XpAxisCopy rows = ClipAxisCopy(destY, sourceY, height, to->height, from->height);
  if (columns.count < 1) return;
  for (std::int64_t y = 0; y < rows.count; ++y) {
    std::memmove(to->Row(static_cast<std::int32_t>(rows.dest + y)) + columns.dest * kBytesPerPixel24,
                 from->Row(static_cast<std::int32_t>(rows.source + y)) + columns.source * kBytesPerPixel24,
                 static_cast<std::size_t>(columns.count * kBytesPerPixel24));
  }
}

void CopyPixmapBlock(XpPixmapBase& destination, const XpPixmapBase& source) {
  CopyPixmapBlock(destination, 0, 0, source, 0, 0, source.width, source.height);
}

void StretchPixmapBlock(XpPixmapBase& destination, std::int32_t destX, std::int32_t destY,
                        std::int32_t destWidth, std::int32_t destHeight, const XpPixmapBase& source,
                        std::int32_t sourceX, std::int32_t sourceY, std::int32_t sourceWidth,
                        std::int32_t sourceHeight) {
  if (destWidth < 1 || destHeight < 1 || sourceWidth < 1 || sourceHeight < 1) return;
  if (destWidth == sourceWidth && destHeight == sourceHeight) {
    CopyPixmapBlock(destination, destX, destY, source, sourceX, sourceY, sourceWidth, sourceHeight);
    return;
  }
  const XpPlaneBase* to = Plane24(destination);
  const XpPlaneBase* from = Plane24(source);
  if (to == nullptr || from == nullptr || to == from) return;
  const XpAxisStretch columns =
      ClipAxisStretch(destX, destWidth, sourceX, sourceWidth, to->width, from->width);
  const XpAxisStretch rows =
      ClipAxisStretch(destY, destHeight, sourceY, sourceHeight, to->height, from->height);
  if (columns.IsEmpty() || rows.IsEmpty()) return;
  StretchRows(*to, *from, columns, rows);
}
