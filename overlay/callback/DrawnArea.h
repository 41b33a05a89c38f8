// Which pixels of an overlay picture hold anything, row by row, so that blending and clearing touch no
// others. Used by the frame callback.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/pixmap/XpPixmap.h"
#include "imaging/pixmap/XpRowRange.h"

namespace vrx::overlay {

class DrawnArea {
 public:
  /// Columns `first` to `last` - 1 of a row; nothing when they are equal.
  struct Span {
    std::int32_t first = 0;
    std::int32_t last = 0;
  };

  /// Looks for pixels with any byte that is not 0; there is none outside `rows`. A span may be wider than
  /// what is drawn, never narrower.
  void Find(const XpPixmap32& picture, XpRowRange rows = {});
  /// Zeroes what Find found, and forgets it.
  void Clear(XpPixmap32& picture);
  void Reset() { m_firstRow = m_lastRow = 0; }

  bool IsEmpty() const { return m_firstRow >= m_lastRow; }
  std::int32_t GetFirstRow() const { return m_firstRow; }
  std::int32_t GetLastRow() const { return m_lastRow; }  // one past the last
  Span GetSpan(std::int32_t row) const { return m_spans[static_cast<std::size_t>(row)]; }

 private:
  std::vector<Span> m_spans;  // one a row
  std::int32_t m_firstRow = 0;
  std::int32_t m_lastRow = 0;
};

}  // namespace vrx::overlay
