// Still pictures that a host lays onto every frame, each at a place of its own.
#pragma once

#include <cstddef>
#include <vector>

#include "drawing/Geometry.h"
#include "foundation/memory/XpSharedPtr.h"
#include "imaging/pixmap/XpPixmap.h"

struct ContentImageEntry {
  XpSharedPtr<XpPixmapBase> picture;
  vrx::drawing::Rect rect;  // in a frame of 1920 by 1080
};

/// In the order of insertion, but empty pictures before all others. The later of two lies on top.
class ContentImageList {
 public:
  void Add(const ContentImageEntry& entry);
  void Clear() { m_entries.clear(); }
  std::size_t GetSize() const { return m_entries.size(); }
  auto begin() const { return m_entries.begin(); }
  auto end() const { return m_entries.end(); }

 private:
  std::vector<ContentImageEntry> m_entries;
};
